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
    void missingIconGivesTheFallback();
    void missingEmblemLeavesTheIconPlain();

private:
    QTemporaryDir m_themes;
};

void TestVexIcon::initTestCase()
{
    QVERIFY(m_themes.isValid());
    QDir theme(m_themes.path());
    QVERIFY(theme.mkpath(QStringLiteral("test/32x32/apps")));
    QFile index(theme.filePath(QStringLiteral("test/index.theme")));
    QVERIFY(index.open(QIODevice::WriteOnly));
    index.write("[Icon Theme]\nName=test\nDirectories=32x32/apps\n\n"
                "[32x32/apps]\nSize=32\nType=Fixed\n");
    index.close();
    for (const auto &[name, colour] : {std::pair<const char *, Qt::GlobalColor>{"base", Qt::red},
                                       {"badge", Qt::blue}}) {
        QImage image(32, 32, QImage::Format_ARGB32);
        image.fill(colour);
        QVERIFY(image.save(theme.filePath(QStringLiteral("test/32x32/apps/%1.png")
                                              .arg(QLatin1String(name)))));
    }
    QIcon::setThemeSearchPaths({m_themes.path()});
    QIcon::setThemeName(QStringLiteral("test"));
}

void TestVexIcon::emblemGoesToTheCorner_data()
{
    QTest::addColumn<Qt::Corner>("corner");
    QTest::addColumn<QPoint>("badged");
    QTest::addColumn<QPoint>("plain");
    QTest::newRow("top left") << Qt::TopLeftCorner << QPoint(4, 4) << QPoint(27, 27);
    QTest::newRow("top right") << Qt::TopRightCorner << QPoint(27, 4) << QPoint(4, 27);
    QTest::newRow("bottom left") << Qt::BottomLeftCorner << QPoint(4, 27) << QPoint(27, 4);
    QTest::newRow("bottom right") << Qt::BottomRightCorner << QPoint(27, 27) << QPoint(4, 4);
}

void TestVexIcon::emblemGoesToTheCorner()
{
    QFETCH(Qt::Corner, corner);
    QFETCH(QPoint, badged);
    QFETCH(QPoint, plain);
    const QIcon icon = VexIcon::fromTheme(QStringLiteral("base"),
                                          {corner, QStringLiteral("badge")}, QIcon());
    const QImage image = icon.pixmap(32, 32).toImage();
    QCOMPARE(image.size(), QSize(32, 32));
    QCOMPARE(QColor(image.pixel(badged)), QColor(Qt::blue));
    QCOMPARE(QColor(image.pixel(plain)), QColor(Qt::red));
}

void TestVexIcon::missingIconGivesTheFallback()
{
    QImage image(8, 8, QImage::Format_ARGB32);
    image.fill(Qt::green);
    const QIcon fallback(QPixmap::fromImage(image));
    const QIcon icon = VexIcon::fromTheme(QStringLiteral("absent"),
                                          {Qt::TopLeftCorner, QStringLiteral("badge")}, fallback);
    QCOMPARE(icon.cacheKey(), fallback.cacheKey());
    QVERIFY(VexIcon::fromTheme(QStringLiteral("absent"), {Qt::TopLeftCorner, QString()}, QIcon())
                .isNull());
}

void TestVexIcon::missingEmblemLeavesTheIconPlain()
{
    const QIcon icon = VexIcon::fromTheme(QStringLiteral("base"),
                                          {Qt::TopLeftCorner, QStringLiteral("absent")}, QIcon());
    QCOMPARE(QColor(icon.pixmap(32, 32).toImage().pixel(4, 4)), QColor(Qt::red));
}

QTEST_MAIN(TestVexIcon)
#include "tst_vexicon.moc"
