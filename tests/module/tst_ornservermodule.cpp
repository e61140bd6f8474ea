#include "elementdata.h"
#include "elementwidget.h"
#include "hostorncore.h"
#include "orncore.h"
#include "ornserverelement.h"
#include "ornserverreadheavytast.h"
#include "ornservicemodule.h"
#include "pyxorncore.h"
#include "simulatedtools.h"
#include "taskobserver.h"

#include <QApplication>
#include <QtTest>

#include <cstdio>

#include <sched.h>

Q_DECLARE_METATYPE(OperationType)

class FakeCore : public OrnCore
{
public:
    const std::string &domainName() const override { return domain; }
    std::string realmName() const override { return {}; }
    std::string serverRole() const override { return {}; }
    bool isServer() const override { return true; }
    bool isServerOn() const override { return false; }
    bool isConfigured() const override { return true; }
    bool refresh() override { return std::fputs(complaint.c_str(), stderr) >= 0; }

    // Non-ASCII, with an embedded NUL: decoded whole or not at all.
    std::string domain{".\xd0\xb4\xd0\xbe\xd0\xbc\0tail", 12};
    static inline std::string complaint;
};

// dpkg-query is the system's own, behind a stand-in that records each call: the program starts
// itself again inside sandbox/run.
class TestOrnServerModule : public QObject
{
    Q_OBJECT

    QTemporaryDir m_dir;
    std::unique_ptr<OrnServiceModule> m_module;
    OrnServerElement *m_element = nullptr;

    int dpkgCalls() const
    {
        return readFile(qEnvironmentVariable("SANDBOX_LOG")).count("dpkg-query [");
    }

private slots:
    void init()
    {
        QVERIFY(restoreSandboxTools() && linkFake("dpkg-query", "faulty") && sh(": >$SANDBOX_LOG"));
        FakeCore::complaint.clear();
        PyxOrnCore::instance()->setOrnCore(std::make_unique<FakeCore>());
        m_module = std::make_unique<OrnServiceModule>(nullptr);
        m_element = static_cast<OrnServerElement *>(m_module->elements.value(0));
    }

    void outcome_data()
    {
        QTest::addColumn<int>("status");
        QTest::addColumn<QString>("message");
        QTest::addColumn<QVariantMap>("record");

        const QVariantMap read = {{"ifServer", true},
                                  {"ifServerOn", false},
                                  {"ifConfigured", true},
                                  {"hostname", QString()},
                                  {"ipAddresses", QStringList()},
                                  {"domainName", QString::fromUtf8(".дом\0tail", 12)}};
        QVariantMap all = read;
        all.insert("orn-server-commonInstalled", true);
        QTest::newRow("no core") << int(TaskDescription::Error) << "Domain core not initialized"
                                 << QVariantMap();
        QTest::newRow("quiet") << int(TaskDescription::Success) << "" << all;
        QTest::newRow("stderr") << int(TaskDescription::Warning) << "orn-core: cache is stale\n"
                                << all;
        QTest::newRow("no dpkg-query")
            << int(TaskDescription::Error)
            << "Process error dpkg-query -W -f=${binary:Package}\t${Version}\t${Status} "
               "orn-server-common"
            << read;
    }

    void outcome()
    {
        const QByteArray setup = QTest::currentDataTag();
        QFETCH(QVariantMap, record);
        if (setup == "no core")
            PyxOrnCore::instance()->setOrnCore(nullptr);
        else if (setup == "stderr")
            FakeCore::complaint = "orn-core: cache is stale\n";
        else if (setup == "no dpkg-query")
            QVERIFY(sh("rm /usr/bin/dpkg-query"));

        OrnServerReadHeavyTast task(m_element);
        task.run();
        QVERIFY(task.isCompleted());
        QTEST(int(task.description.status()), "status");
        QTEST(task.description.message(), "message");
        // Asked exactly when its answer is in the record.
        QCOMPARE(dpkgCalls(), int(record.contains("orn-server-commonInstalled")));
        const QVariantMap actual = task.elementData->properties;
        if (actual.contains("currentIpAddress"))
            record.insert("currentIpAddress", QString());
        QCOMPARE(actual.keys(), record.keys());
        // The machine's own names and addresses: only their types are checked here.
        const QStringList hostOwn = {"hostname", "ipAddresses", "currentIpAddress"};
        for (auto it = record.cbegin(); it != record.cend(); ++it) {
            const QVariant value = actual.value(it.key());
            QVERIFY2(value.userType() == it->userType() &&
                         (hostOwn.contains(it.key()) || value == *it),
                     qPrintable(it.key()));
        }
    }

    void dispatch_data()
    {
        QTest::addColumn<int>("context"); // the element itself, another element type, the form
        QTest::addColumn<OperationType>("operation");
        QTest::addColumn<int>("times");
        QTest::addColumn<int>("tasks");
        const auto read = OperationType::Read;
        QTest::newRow("two reads") << 0 << read << 2 << 2;
        QTest::newRow("logout") << 0 << OperationType::Logout << 1 << 0;
        QTest::newRow("another element type") << 1 << read << 1 << 0;
        QTest::newRow("widget context") << 2 << read << 1 << 0;
    }

    void dispatch()
    {
        QFETCH(int, context);
        QFETCH(int, times);
        QFETCH(int, tasks);
        QFETCH(OperationType, operation);
        Element other(*m_module, nullptr);
        other.elementTypeName = "OrnServerX";
        ContextOperation *const contexts[] = {m_element, &other,
                                              m_module->elementWidgets().first()};
        QSignalSpy started(TaskObserver::instance(nullptr), &TaskObserver::taskStarted);
        QSignalSpy finished(TaskObserver::instance(nullptr), &TaskObserver::taskFinished);
        int dispatched = 0;
        connect(m_module.get(), &Module::operationDispatched, [&] { ++dispatched; });
        // Reads of the element go through it, so that its forwarding counts as well.
        for (int i = 0; i < times; ++i) {
            if (context == 0 && operation == OperationType::Read)
                m_element->performOperation(operation, nullptr, 0);
            else
                m_module->performOperation(contexts[context], operation, nullptr, 0);
        }
        QCOMPARE(started.count(), tasks);
        QCOMPARE(dispatched, times); // the console hears of every request
        QTRY_COMPARE_WITH_TIMEOUT(finished.count(), tasks, 40000);
        QCOMPARE(dpkgCalls(), tasks);
    }

    // Column 0 answers both icon roles with the element's icon; all else is the element's own.
    void iconRoles()
    {
        for (const int column : {0, 1}) {
            for (const int role : {int(Qt::DecorationRole), 263, int(Qt::DisplayRole)}) {
                const QVariant value = m_element->data(column, role);
                QVERIFY2(column == 0 && role != Qt::DisplayRole
                             ? value.userType() == QMetaType::QIcon
                             : value == m_element->Element::data(column, role),
                         qPrintable(QString("column %1, role %2").arg(column).arg(role)));
            }
        }
    }

    // The addresses, on interfaces made for the purpose in a private network namespace of this
    // test's main thread, where the task runs: worker threads stay outside, so this comes last.
    // 192.0.2.0/24 is reserved for documentation; nothing is sent to it. The peer is listed
    // before this end and carries no address at all.
    void currentIsTheFirstAddressOtherThanLocalhost()
    {
        if (unshare(CLONE_NEWNET) != 0)
            QSKIP("no private network namespace here (needs root)");
        PyxOrnCore::instance()->setOrnCore(std::make_unique<HostOrnCore>(m_dir.path()));
        const auto read = [this] {
            OrnServerReadHeavyTast task(m_element);
            task.run();
            return task.elementData->properties;
        };
        // Run from this thread, so in its namespace.
        const auto ip = [](const QStringList &commands) {
            for (const QString &command : commands)
                QVERIFY2(QProcess::execute("ip", command.split(' ')) == 0, qPrintable(command));
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

PYX_SANDBOX_TEST_MAIN(TestOrnServerModule, {})
#include "tst_ornservermodule.moc"
