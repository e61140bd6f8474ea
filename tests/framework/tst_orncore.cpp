#include "hostorncore.h"

#include <QFile>
#include <QTemporaryDir>
#include <QtTest>

class TestOrnCore : public QObject
{
    Q_OBJECT

private slots:
    void readsTheConfiguration_data();
    void readsTheConfiguration();
};

namespace {
void write(const QString &fileName, const QByteArray &content)
{
    QFile file(fileName);
    QVERIFY(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(content);
}
} // namespace

void TestOrnCore::readsTheConfiguration_data()
{
    QTest::addColumn<QByteArray>("config");
    QTest::addColumn<QByteArray>("state");
    QTest::addColumn<QString>("domain");
    QTest::addColumn<bool>("server");
    QTest::addColumn<bool>("on");
    QTest::addColumn<bool>("configured");

    QTest::newRow("nothing installed") << QByteArray() << QByteArray() << QString() << false
                                       << false << false;
    QTest::newRow("domain controller running")
        << QByteArray("# made by orn-init\ndomain = example.lan\nrealm = EXAMPLE.LAN\nrole = dc\n")
        << QByteArray("on\n") << QStringLiteral(".example.lan") << true << true << true;
    QTest::newRow("stopped member")
        << QByteArray("domain=.corp.lan\nrole = member") << QByteArray("off")
        << QStringLiteral(".corp.lan") << false << false << true;
    QTest::newRow("no domain") << QByteArray("role = dc\n") << QByteArray("on") << QString()
                               << true << true << false;
}

void TestOrnCore::readsTheConfiguration()
{
    QFETCH(QByteArray, config);
    QFETCH(QByteArray, state);
    QTemporaryDir dir;
    if (!config.isEmpty())
        write(dir.filePath(QStringLiteral("orn.conf")), config);
    if (!state.isEmpty())
        write(dir.filePath(QStringLiteral("server.state")), state);

    HostOrnCore core(dir.path());
    QTEST(QString::fromStdString(core.domainName()), "domain");
    QTEST(core.isServer(), "server");
    QTEST(core.isServerOn(), "on");
    QTEST(core.isConfigured(), "configured");
}

QTEST_GUILESS_MAIN(TestOrnCore)
#include "tst_orncore.moc"
