#include "elementdata.h"
#include "hostorncore.h"
#include "ornserverelement.h"
#include "ornserverreadheavytast.h"
#include "ornservicemodule.h"
#include "pyxorncore.h"

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <QtTest>

#include <sched.h>

// The reading of addresses, on interfaces made for the purpose in a private network namespace of
// this test's main thread. The task runs on that thread, since worker threads stay outside.
class TestAddresses : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void loopbackOnlyGivesNoCurrentAddress();
    void firstListedAddressOtherThanLocalhostIsCurrent();

private:
    bool ip(const QString &arguments);
    QMap<QString, QVariant> readRecord();

    QTemporaryDir m_dir;
    QStringList m_loopback;
};

void TestAddresses::initTestCase()
{
    if (unshare(CLONE_NEWNET) != 0)
        QSKIP("no private network namespace here (needs root)");
    QVERIFY(m_dir.isValid());
    qputenv("PATH", QByteArray(PYX_TEST_FAKES_DIR) + ':' + qgetenv("PATH"));
    qputenv("FAKE_DPKG_TABLE", "/dev/null");
    PyxOrnCore::instance()->setOrnCore(std::make_unique<HostOrnCore>(m_dir.path()));
    QVERIFY(ip(QStringLiteral("link set lo up")));

    m_loopback = QStringList{QStringLiteral("127.0.0.1")};
    QFile ipv6(QStringLiteral("/proc/sys/net/ipv6/conf/lo/disable_ipv6"));
    if (ipv6.open(QIODevice::ReadOnly) && ipv6.readAll().trimmed() == "0")
        m_loopback << QStringLiteral("::1");
}

bool TestAddresses::ip(const QString &arguments)
{
    QProcess process;
    process.start(QStringLiteral("ip"), arguments.split(QLatin1Char(' ')));
    return process.waitForFinished(10000) && process.exitStatus() == QProcess::NormalExit
           && process.exitCode() == 0;
}

QMap<QString, QVariant> TestAddresses::readRecord()
{
    OrnServiceModule module(nullptr);
    OrnServerReadHeavyTast task(module.elements.first());
    task.run();
    return task.elementData->properties;
}

void TestAddresses::loopbackOnlyGivesNoCurrentAddress()
{
    const QMap<QString, QVariant> record = readRecord();
    QCOMPARE(record.value(QStringLiteral("ipAddresses")).toStringList(), m_loopback);
    QVERIFY(!record.contains(QStringLiteral("currentIpAddress")));
}

// 192.0.2.0/24 is reserved for documentation; nothing is sent to it. The peer is listed before
// this end and carries no address.
void TestAddresses::firstListedAddressOtherThanLocalhostIsCurrent()
{
    QVERIFY(ip(QStringLiteral("link add pyx0 type veth peer name pyx1")));
    QVERIFY(ip(QStringLiteral("addr add 127.0.1.1/8 dev pyx0")));
    QVERIFY(ip(QStringLiteral("addr add 192.0.2.10/24 dev pyx0")));
    QFile peerIpv6(QStringLiteral("/proc/sys/net/ipv6/conf/pyx1/disable_ipv6"));
    if (peerIpv6.open(QIODevice::WriteOnly))
        peerIpv6.write("1\n");
    peerIpv6.close();
    QVERIFY(ip(QStringLiteral("link set pyx1 up")));
    QVERIFY(ip(QStringLiteral("link set pyx0 up")));

    const QMap<QString, QVariant> record = readRecord();
    const QStringList addresses = record.value(QStringLiteral("ipAddresses")).toStringList();
    const QStringList expected =
        m_loopback + QStringList{QStringLiteral("127.0.1.1"), QStringLiteral("192.0.2.10")};
    QVERIFY2(addresses.mid(0, expected.size()) == expected,
             qPrintable(addresses.join(QLatin1Char(' '))));
    QCOMPARE(record.value(QStringLiteral("currentIpAddress")).toString(),
             QStringLiteral("127.0.1.1"));
}

QTEST_MAIN(TestAddresses)
#include "tst_addresses.moc"
