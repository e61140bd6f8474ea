#include "element.h"
#include "elementdata.h"
#include "orncore.h"
#include "ornserverelement.h"
#include "ornserverplugin.h"
#include "ornserverreadheavytast.h"
#include "ornserverwidget.h"
#include "ornservicemodule.h"
#include "pyxorncore.h"
#include "taskobserver.h"

#include <QFile>
#include <QHostAddress>
#include <QNetworkInterface>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QtTest>

#include <cstdio>
#include <unistd.h>

namespace {

class FakeCore : public OrnCore
{
public:
    const std::string &domainName() const override { return domain; }
    std::string realmName() const override { return {}; }
    std::string serverRole() const override { return {}; }
    bool isServer() const override { return server; }
    bool isServerOn() const override { return on; }
    bool isConfigured() const override { return configured; }
    bool refresh() override
    {
        if (!complaint.empty())
            std::fputs(complaint.c_str(), stderr);
        return true;
    }

    std::string domain = ".example.lan";
    std::string complaint;
    bool server = true;
    bool on = false;
    bool configured = true;
};

} // namespace

class TestOrnServerModule : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();
    void withoutCoreNothingIsRead();
    void stderrDuringTheReadingIsAWarning();
    void packageQueryFailureIsAnError();
    void recordHoldsTypedValues();
    void domainNameIsDecodedWhole();
    void readOfTheElementStartsOneTask();
    void otherRequestsStartNoTask_data();
    void otherRequestsStartNoTask();
    void elementAnswersItsRoles();
    void moduleDescribesItself();

private:
    ElementData *read(OrnServerElement *element, TaskDescription *outcome);
    QStringList dpkgCalls() const;

    QTemporaryDir m_dir;
    QByteArray m_path;
    FakeCore *m_core = nullptr;
    OrnServiceModule *m_module = nullptr;
    OrnServerElement *m_element = nullptr;
};

void TestOrnServerModule::initTestCase()
{
    QVERIFY(m_dir.isValid());
    QFile table(m_dir.filePath(QStringLiteral("table")));
    QVERIFY(table.open(QIODevice::WriteOnly));
    table.write("orn-server-common|install ok installed\n");
    m_path = QByteArray(PYX_TEST_FAKES_DIR) + ':' + qgetenv("PATH");
    qputenv("FAKE_DPKG_TABLE", m_dir.filePath(QStringLiteral("table")).toLocal8Bit());
    qputenv("FAKE_DPKG_LOG", m_dir.filePath(QStringLiteral("log")).toLocal8Bit());
}

void TestOrnServerModule::init()
{
    qputenv("PATH", m_path);
    QFile::remove(m_dir.filePath(QStringLiteral("log")));
    auto core = std::make_unique<FakeCore>();
    m_core = core.get();
    PyxOrnCore::instance()->setOrnCore(std::move(core));
    m_module = new OrnServiceModule(nullptr);
    m_element = static_cast<OrnServerElement *>(m_module->elements.value(0));
}

void TestOrnServerModule::cleanup()
{
    delete m_module;
    PyxOrnCore::instance()->setOrnCore(nullptr);
}

QStringList TestOrnServerModule::dpkgCalls() const
{
    QFile log(m_dir.filePath(QStringLiteral("log")));
    if (!log.open(QIODevice::ReadOnly))
        return {};
    return QString::fromUtf8(log.readAll()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);
}

// Runs the reading as the console does and returns the record the element was given.
ElementData *TestOrnServerModule::read(OrnServerElement *element, TaskDescription *outcome)
{
    QSignalSpy finished(TaskObserver::instance(nullptr), &TaskObserver::taskFinished);
    element->performOperation(OperationType::Read, nullptr, 0);
    if (!finished.wait(40000))
        return nullptr;
    *outcome = finished.first().first().value<TaskDescription>();
    return element->elementData();
}

void TestOrnServerModule::withoutCoreNothingIsRead()
{
    PyxOrnCore::instance()->setOrnCore(nullptr);
    OrnServerReadHeavyTast task(m_element);
    task.run();
    QVERIFY(task.isCompleted());
    QCOMPARE(task.description.status(), TaskDescription::Error);
    QCOMPARE(task.description.message(), QStringLiteral("Domain core not initialized"));
    QCOMPARE(task.description.description(), QStringLiteral("Read ORN server information"));
    QVERIFY(task.elementData->properties.isEmpty());
    QVERIFY(dpkgCalls().isEmpty());
}

void TestOrnServerModule::stderrDuringTheReadingIsAWarning()
{
    m_core->complaint = "orn-core: cache is stale\n";
    TaskDescription outcome;
    ElementData *record = read(m_element, &outcome);
    QVERIFY(record);
    QCOMPARE(outcome.status(), TaskDescription::Warning);
    QCOMPARE(outcome.message(), QStringLiteral("orn-core: cache is stale\n"));
    QVERIFY(record->properties.contains(QStringLiteral("orn-server-commonInstalled")));
    QVERIFY(record->properties.size() >= 7);

    m_core->complaint.clear();
    QVERIFY(read(m_element, &outcome));
    QCOMPARE(outcome.status(), TaskDescription::Success);
    QVERIFY(outcome.message().isEmpty());
}

void TestOrnServerModule::packageQueryFailureIsAnError()
{
    qputenv("PATH", m_dir.path().toLocal8Bit());
    OrnServerReadHeavyTast task(m_element);
    task.run();
    QVERIFY(task.isCompleted());
    QCOMPARE(task.description.status(), TaskDescription::Error);
    QCOMPARE(task.description.message(),
             QStringLiteral("Process error dpkg-query -W -f=${binary:Package}\t${Version}\t"
                            "${Status} orn-server-common"));
    const QMap<QString, QVariant> &record = task.elementData->properties;
    QVERIFY(!record.contains(QStringLiteral("orn-server-commonInstalled")));
    for (const char *key : {"ifServer", "ifServerOn", "ifConfigured", "ipAddresses", "hostname",
                            "domainName"})
        QVERIFY2(record.contains(QLatin1String(key)), key);
}

void TestOrnServerModule::recordHoldsTypedValues()
{
    OrnServerReadHeavyTast task(m_element);
    task.run();
    const QMap<QString, QVariant> &record = task.elementData->properties;
    const QList<QPair<const char *, int>> types = {
        {"ifServer", QMetaType::Bool},        {"ifServerOn", QMetaType::Bool},
        {"ifConfigured", QMetaType::Bool},    {"ipAddresses", QMetaType::QStringList},
        {"hostname", QMetaType::QString},     {"domainName", QMetaType::QString},
        {"orn-server-commonInstalled", QMetaType::Bool}};
    for (const auto &[key, type] : types)
        QVERIFY2(record.value(QLatin1String(key)).userType() == type, key);
    QCOMPARE(record.value(QStringLiteral("ifServer")).toBool(), true);
    QCOMPARE(record.value(QStringLiteral("ifServerOn")).toBool(), false);
    QCOMPARE(record.value(QStringLiteral("orn-server-commonInstalled")).toBool(), true);
    QCOMPARE(record.value(QStringLiteral("domainName")).toString(),
             QStringLiteral(".example.lan"));

    QStringList addresses;
    QString current;
    for (const QHostAddress &address : QNetworkInterface::allAddresses()) {
        addresses << address.toString();
        if (current.isEmpty() && address.protocol() == QAbstractSocket::IPv4Protocol
            && address != QHostAddress(QHostAddress::LocalHost))
            current = address.toString();
    }
    QCOMPARE(record.value(QStringLiteral("ipAddresses")).toStringList(), addresses);
    QCOMPARE(record.contains(QStringLiteral("currentIpAddress")), !current.isEmpty());
    if (!current.isEmpty())
        QCOMPARE(record.value(QStringLiteral("currentIpAddress")).userType(),
                 int(QMetaType::QString));
}

void TestOrnServerModule::domainNameIsDecodedWhole()
{
    m_core->domain = std::string(".\xd0\xb4\xd0\xbe\xd0\xbc\0tail", 12);
    OrnServerReadHeavyTast task(m_element);
    task.run();
    QCOMPARE(task.elementData->properties.value(QStringLiteral("domainName")).toString(),
             QString::fromUtf8(".дом") + QChar(0) + QStringLiteral("tail"));
}

void TestOrnServerModule::readOfTheElementStartsOneTask()
{
    QSignalSpy started(TaskObserver::instance(nullptr), &TaskObserver::taskStarted);
    QSignalSpy finished(TaskObserver::instance(nullptr), &TaskObserver::taskFinished);
    QSignalSpy dispatched(m_module, &Module::operationDispatched);
    QVERIFY(m_element->performOperation(OperationType::Read, nullptr, 0));
    QVERIFY(m_element->performOperation(OperationType::Read, nullptr, 0));
    QCOMPARE(started.count(), 2);
    QCOMPARE(dispatched.count(), 2);
    QTRY_COMPARE_WITH_TIMEOUT(finished.count(), 2, 40000);
    QCOMPARE(started.first().first().value<TaskDescription>().description(),
             QStringLiteral("Read ORN server information"));
    QCOMPARE(dpkgCalls().size(), 2);
}

void TestOrnServerModule::otherRequestsStartNoTask_data()
{
    QTest::addColumn<QString>("request");
    QTest::newRow("logout of the element") << QStringLiteral("logout");
    QTest::newRow("read of another element type") << QStringLiteral("other type");
    QTest::newRow("read from the form's context") << QStringLiteral("widget");
}

void TestOrnServerModule::otherRequestsStartNoTask()
{
    QFETCH(QString, request);
    QSignalSpy started(TaskObserver::instance(nullptr), &TaskObserver::taskStarted);
    QSignalSpy dispatched(m_module, &Module::operationDispatched);
    if (request == QLatin1String("logout")) {
        QVERIFY(!m_element->performOperation(OperationType::Logout, nullptr, 0));
        QCOMPARE(dispatched.count(), 0);
    } else if (request == QLatin1String("other type")) {
        Element other(*m_module, nullptr);
        other.elementTypeName = QStringLiteral("OrnServerX");
        m_module->performOperation(&other, OperationType::Read, nullptr, 0);
        QCOMPARE(dispatched.count(), 1);
    } else {
        m_module->performOperation(m_module->elementWidgets().first(), OperationType::Read,
                                   nullptr, 0);
        QCOMPARE(dispatched.count(), 1);
    }
    QCOMPARE(started.count(), 0);
}

void TestOrnServerModule::elementAnswersItsRoles()
{
    QCOMPARE(m_element->data(0, Qt::DecorationRole).userType(), int(QMetaType::QIcon));
    QCOMPARE(m_element->data(0, Qt::UserRole + 7).userType(), int(QMetaType::QIcon));
    QCOMPARE(m_element->data(1, Qt::DecorationRole), m_element->Element::data(1, Qt::DecorationRole));
    QCOMPARE(m_element->data(0, Qt::DisplayRole).toString(), QStringLiteral("ORN server"));
    QCOMPARE(m_element->caption(), QStringLiteral("ORN Server"));
    QCOMPARE(m_element->title, QStringLiteral("ORN server"));
    QCOMPARE(m_element->availableOperations(), 0x20);
    QCOMPARE(m_element->treeNodeSpecialFlags(), 1);
    QCOMPARE(m_element->typeName, QStringLiteral("OrnServer"));
    QCOMPARE(m_element->elementType(), QStringLiteral("OrnServer"));
    QCOMPARE(m_element->parentTypeName, QStringLiteral("OrnDomain"));
    QCOMPARE(m_element->placement, 2);
}

void TestOrnServerModule::moduleDescribesItself()
{
    QCOMPARE(m_module->typeName, QStringLiteral("OrnServerModule"));
    QCOMPARE(m_module->parentTypeName, QStringLiteral("OrnDomainModule"));
    QCOMPARE(m_module->placement, 2);
    QCOMPARE(m_module->moduleData->properties.value(QStringLiteral("description")),
             QVariant(QStringLiteral("Module for ORN server creating")));
    QCOMPARE(m_module->moduleData->properties.value(QStringLiteral("administrator")),
             QVariant(geteuid() == 0));
    QCOMPARE(m_module->elements.size(), 1);
    QCOMPARE(m_module->elementWidgets().size(), 1);
    auto *form = qobject_cast<OrnServerWidget *>(m_module->elementWidgets().first());
    QVERIFY(form);
    QCOMPARE(m_element->elementWidget(ElementWidgetRole::Edit), form);

    OrnServerPlugin plugin;
    QCOMPARE(plugin.modules.size(), 1);
    QVERIFY(dynamic_cast<OrnServiceModule *>(plugin.modules.first()));
    QCOMPARE(plugin.modules.first()->parent(), &plugin);
}

QTEST_MAIN(TestOrnServerModule)
#include "tst_ornservermodule.moc"
