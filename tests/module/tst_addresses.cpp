#include "elementdata.h"
#include "hostorncore.h"
#include "ornserverreadheavytast.h"
#include "ornservicemodule.h"
#include "pyxorncore.h"
#include "sandboxrun.h"

#include <QApplication>
#include <QtTest>

#include <sched.h>

// The reading of addresses, on interfaces made for the purpose in a private network namespace of
// this test's main thread. The task runs on that thread, since worker threads stay outside. The
// program starts itself again inside sandbox/run, whose dpkg-query the task asks as well.
class TestAddresses : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;

    // Run from this thread, so in its namespace.
    static void ip(const QStringList &commands)
    {
        for (const QString &command : commands)
            QVERIFY2(QProcess::execute("ip", command.split(' ')) == 0, qPrintable(command));
    }

private slots:
    // 192.0.2.0/24 is reserved for documentation; nothing is sent to it. The peer is listed
    // before this end and carries no address at all.
    void currentIsTheFirstAddressOtherThanLocalhost()
    {
        if (unshare(CLONE_NEWNET) != 0)
            QSKIP("no private network namespace here (needs root)");
        PyxOrnCore::instance()->setOrnCore(std::make_unique<HostOrnCore>(m_dir.path()));
        OrnServiceModule module(nullptr);
        const auto read = [&module] {
            OrnServerReadHeavyTast task(module.elements.first());
            task.run();
            return task.elementData->properties;
        };
        ip({"link set lo up"});
        QStringList loopback = {"127.0.0.1"};
        if (readFile("/proc/sys/net/ipv6/conf/lo/disable_ipv6").trimmed() == "0")
            loopback << "::1";
        QVariantMap record = read();
        QCOMPARE(record.value("ipAddresses").toStringList(), loopback);
        QVERIFY(!record.contains("currentIpAddress"));

        ip({"link add pyx0 type veth peer name pyx1", "link set pyx1 addrgenmode none",
            "addr add 127.0.1.1/8 dev pyx0", "addr add 192.0.2.10/24 dev pyx0", "link set pyx1 up",
            "link set pyx0 up"});
        record = read();
        const QStringList expected = loopback + QStringList{"127.0.1.1", "192.0.2.10"};
        QCOMPARE(record.value("ipAddresses").toStringList().mid(0, expected.size()), expected);
        QCOMPARE(record.value("currentIpAddress").toString(), QString("127.0.1.1"));
    }
};

PYX_SANDBOX_TEST_MAIN(TestAddresses, {})
#include "tst_addresses.moc"
