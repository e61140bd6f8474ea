#include "vexicon.h"

#include <QDir>
#include <QImage>
#include <QTemporaryDir>
#include <QtTest>

// A theme of two plain squares: red "base", blue "badge".
class TestVexIcon : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void emblemGoesToTheCorner_data();
    void emblemGoesToTheCorner();

private:
    QTemporaryDir m_themes;
};

void TestVexIcon::initTestCase()
{
    QDir theme(m_themes.path());
    QVERIFY(theme.mkpath("test/32x32/apps"));
    QFile index(theme.filePath("test/index.theme"));
    QVERIFY(index.open(QIODevice::WriteOnly) &&
            index.write("[Icon Theme]\nDirectories=32x32/apps\n[32x32/apps]\nSize=32\n") > 0);
    index.close();
    QImage image(32, 32, QImage::Format_ARGB32);
    image.fill(Qt::red);
    QVERIFY(image.save(theme.filePath("test/32x32/apps/base.png")));
    image.fill(Qt::blue);
    QVERIFY(image.save(theme.filePath("test/32x32/apps/badge.png")));
    QIcon::setThemeSearchPaths({m_themes.path()});
    QIcon::setThemeName("test");
}

void TestVexIcon::emblemGoesToTheCorner_data()
{
    QTest::addColumn<QString>("emblem");
    QTest::addColumn<Qt::Corner>("corner");
    QTest::addColumn<QPoint>("blue"); // (-1, -1): no blue anywhere
    QTest::addColumn<QPoint>("red");
    QTest::newRow("top left") << "badge" << Qt::TopLeftCorner << QPoint(4, 4) << QPoint(27, 27);
    QTest::newRow("bottom right") << "badge" << Qt::BottomRightCorner << QPoint(27, 27)
                                  << QPoint(4, 4);
    QTest::newRow("emblem missing")
        << "absent" << Qt::TopLeftCorner << QPoint(-1, -1) << QPoint(4, 4);
}

void TestVexIcon::emblemGoesToTheCorner()
{
    QFETCH(QString, emblem);
    QFETCH(Qt::Corner, corner);
    QFETCH(QPoint, blue);
    QFETCH(QPoint, red);
    const QImage image = VexIcon::fromTheme("base", {corner, emblem}, QIcon()).pixmap(32).toImage();
    if (blue.x() >= 0)
        QCOMPARE(QColor(image.pixel(blue)), QColor(Qt::blue));
    QCOMPARE(QColor(image.pixel(red)), QColor(Qt::red));

    // Without the icon itself the fallback comes back untouched.
    QImage green(8, 8, QImage::Format_ARGB32);
    green.fill(Qt::green);
    const QIcon fallback(QPixmap::fromImage(green));
    QCOMPARE(VexIcon::fromTheme("absent", {corner, emblem}, fallback).cacheKey(),
             fallback.cacheKey());
}

QTEST_MAIN(TestVexIcon)
#include "tst_vexicon.moc"
