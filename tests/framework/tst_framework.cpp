// The stand-in console: elements, forms, the read that reaches a form, the navigation tree, the
// task runner, the capture of stderr, the icons with an emblem, and the layout of the classes the
// plug-in is compiled against. Change tracking under the edit block is exercised by the server
// form's own tests.
#include "abstracttask.h"
#include "consolewindow.h"
#include "element.h"
#include "elementdata.h"
#include "module.h"
#include "nodetreemodel.h"
#include "orndomainelement.h"
#include "orndomainmodule.h"
#include "orncore.h"
#include "ornserverelement.h"
#include "plugin.h"
#include "readpropertyheavytask.h"
#include "streaminterceptor.h"
#include "taskobserver.h"
#include "vexicon.h"
#include "vieweditelementwidget.h"

#include <QImage>
#include <QtTest>

#include <cstddef>
#include <cstdio>
#include <cstring>
#include <future>
#include <iostream>
#include <memory>
#include <type_traits>

#include <sys/stat.h>
#include <unistd.h>

Q_DECLARE_METATYPE(TaskDescription::TaskStatus)

namespace {

// A plug-in's module: one element beneath the directory-domain element, whose read runs a task
// that ends with the element's status, and a form that records what reaches it.
struct ServerModule : Module
{
    explicit ServerModule(qint32 placement = 2)
        : Module("ServerModule", nullptr, false)
    {
        parentTypeName = "OrnDomainModule";
        element->typeName = element->elementTypeName = element->title = "Server";
        element->parentTypeName = "OrnDomain";
        form->elementTypeName = "Server";
        element->placement = placement;
        elements << element;
        insertElementWidget(form);
        connectElementWidgets();
    }

    struct Task : ReadPropertyHeavyTask
    {
        Task(Element *element, TaskDescription::TaskStatus status)
            : ReadPropertyHeavyTask(element)
            , status(status)
        {
            elementData = new ElementData;
        }
        void run() override
        {
            description.setStatus(status);
            AbstractTask::run();
        }
        TaskDescription::TaskStatus status;
    };
    struct ServerElement : Element
    {
        using Element::Element;
        bool performOperation(OperationType operation, ElementData *data, int n) override
        {
            TaskObserver::instance(nullptr)->performTask(new Task(this, status));
            return module->performOperation(this, operation, data, n);
        }
        TaskDescription::TaskStatus status = TaskDescription::Success;
    };
    struct Form : ViewEditElementWidget
    {
        using ViewEditElementWidget::ViewEditElementWidget;
        void afterSuccessfulRead(Element *element, ElementData *data) override
        {
            reads << data;
            blockedDuringRead = editBlocked;
            ViewEditElementWidget::afterSuccessfulRead(element, data);
        }
        QList<ElementData *> reads;
        bool blockedDuringRead = false;
    };

    ServerElement *element = new ServerElement(*this, nullptr);
    Form *form = new Form(*this, nullptr, nullptr);
};

// Takes the next line of `traces` and adds what it saw there as it is deleted, after the test's
// note of the finish. The worker writes only to the task: the test thread reads `traces` meanwhile.
struct ProbeTask : AbstractTask
{
    ProbeTask(bool complete, QStringList *traces)
        : complete(complete)
        , traces(traces)
    {
        description.setDescription(QString::number(traces->size()));
        traces->append(QString());
    }
    ~ProbeTask() override
    {
        (*traces)[description.description().toInt()] +=
            QString(", run off GUI %1, afterRun on GUI %2, deleted").arg(ranOff).arg(afterRanOn);
    }
    void run() override
    {
        ranOff = QThread::currentThread() != QCoreApplication::instance()->thread();
        if (complete)
            AbstractTask::run();
    }
    void afterRun() override
    {
        afterRanOn = QThread::currentThread() == QCoreApplication::instance()->thread();
    }

    const bool complete;
    QStringList *const traces;
    bool ranOff = false, afterRanOn = false;
};

// Which file fd 2 is and how many descriptors are open: a capture must leave both as it found them.
QString descriptorState()
{
    struct stat st = {};
    fstat(STDERR_FILENO, &st);
    const int open = QDir("/proc/self/fd")
                         .entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot)
                         .size();
    return QString("fd 2 is %1:%2, %3 open").arg(st.st_dev).arg(st.st_ino).arg(open);
}

// Over 1 MiB, far beyond what a pipe buffers, in numbered lines so that a lost, doubled or
// reordered chunk changes the bytes. QTest's own handler keeps messages off stderr; Qt's default
// one, told to print the bare message, writes them there.
QByteArray writeThroughEveryWriter()
{
    qputenv("QT_FORCE_STDERR_LOGGING", "1");
    qputenv("QT_MESSAGE_PATTERN", "%{message}");
    const QtMessageHandler previous = qInstallMessageHandler(nullptr);
    QByteArray expected;
    // `+=` of a built string reserves exactly the new size: without this room every line would
    // copy the whole array again, which under AddressSanitizer takes minutes.
    expected.reserve(3 * 6000 * 64);
    const auto next = [&expected] {
        const int n = expected.size() / 64;
        const QByteArray line = QByteArray::number(n).rightJustified(63, char('a' + n % 26));
        expected += line + '\n';
        return line;
    };
    for (int i = 0; i < 6000; ++i) {
        std::fprintf(stderr, "%s\n", next().constData());
        std::cerr << next().constData() << '\n';
        qWarning("%s", next().constData());
    }
    qInstallMessageHandler(previous);
    return expected;
}

// The plug-in is compiled against these headers but runs against the console's own libraries:
// a virtual that moves sends every call through its slot to another function, a field that moves
// has the plug-in write into another one, and neither shows at build time.
//
// The Itanium C++ ABI stores a pointer to a virtual member function as its byte offset in the
// vtable plus one, followed by the this-adjustment, which tells which base's vtable holds the slot
// (ARM doubles the adjustment and flags virtual in it instead). A pointer to a field is its offset.

// A virtual's slot (-1: not virtual) and the adjustment to its base, or a field's offset.
struct Place
{
    qint64 at = -1;
    qint64 adjustment = 0;
};

template <typename Member> Place placeOf(Member member)
{
    std::ptrdiff_t raw[sizeof(Member) / sizeof(std::ptrdiff_t)];
    static_assert(sizeof raw == sizeof(Member), "not the Itanium C++ ABI");
    std::memcpy(raw, &member, sizeof raw);
    if constexpr (!std::is_member_function_pointer_v<Member>)
        return {raw[0], 0};
#if defined(__arm__) || defined(__aarch64__)
    else if (raw[1] & 1)
        return {raw[0] / qint64(sizeof(void *)), raw[1] >> 1};
#else
    else if (raw[0] & 1)
        return {(raw[0] - 1) / qint64(sizeof(void *)), raw[1]};
#endif
    return {};
}

template <typename... Members> QList<Place> placesOf(Members... members)
{
    return {placeOf(members)...};
}

// Its first virtual takes the first slot after those of the Qt base.
template <typename QtBase> struct After : QtBase
{
    virtual void first() {}
};

// For rows whose members need only come in this order, not in consecutive slots.
constexpr qint64 ascending = -1;

} // namespace

Q_DECLARE_METATYPE(Place)

// A row names its members by their spelling, to say which one moved.
#define PYX_ROW(row, first, secondary, ...)                                                        \
    QTest::newRow(row) << QString(#__VA_ARGS__).split(", ") << qint64(first) << secondary          \
                       << placesOf(__VA_ARGS__)

// The plug-in writes these through their declared widths.
static_assert(std::is_same_v<decltype(TreeNode::placement), qint32> &&
              std::is_same_v<decltype(ContextOperation::contextValue), qint32>);

class TestFramework : public QObject
{
    Q_OBJECT

    QTemporaryDir m_themes;

private slots:
    // A theme of two plain squares: red "base", blue "badge".
    void initTestCase()
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

    void treeIsConsistentAndPlacedByParentType()
    {
        NodeTreeModel model;
        QAbstractItemModelTester tester(&model);
        OrnDomainModule domain(nullptr);
        ServerModule later(5);
        ServerModule earlier(1);
        model.addModule(&domain);
        model.addModule(&later);
        model.addModule(&earlier);
        model.addUnavailablePlugin("Broken", "cannot load");

        QCOMPARE(domain.domainElement()->childNodes(),
                 (QList<TreeNode *>{earlier.element, later.element}));
        QCOMPARE(later.parentNode(), &domain);
        QCOMPARE(model.node(model.indexOfType("Server")), earlier.element);
        QVERIFY(!(model.flags(model.index(1, 0)) & Qt::ItemIsEnabled));

        // Without its parent type in the tree an element stays beneath its own module.
        NodeTreeModel alone;
        ServerModule orphan;
        alone.addModule(&orphan);
        QCOMPARE(orphan.element->parentNode(), &orphan);
    }

    void openingAnElementReadsItIntoItsForm_data()
    {
        QTest::addColumn<TaskDescription::TaskStatus>("status");
        QTest::addColumn<bool>("delivered");
        QTest::newRow("success") << TaskDescription::Success << true;
        QTest::newRow("warning") << TaskDescription::Warning << true;
        QTest::newRow("error") << TaskDescription::Error << false;
    }

    void openingAnElementReadsItIntoItsForm()
    {
        QFETCH(TaskDescription::TaskStatus, status);
        QFETCH(bool, delivered);
        NodeTreeModel model;
        ServerModule server;
        server.element->status = status;
        model.addModule(&server);
        ConsoleWindow window(&model);
        QSignalSpy settled(&window, &ConsoleWindow::currentElementSettled);
        server.form->blockEditWidget(true);

        QVERIFY(window.openType("Server"));
        QVERIFY(settled.wait());
        QCOMPARE(server.form->reads.size(), delivered ? 1 : 0);
        QCOMPARE(server.element->elementData() != nullptr, delivered);
        if (delivered)
            QVERIFY(server.form->blockedDuringRead && server.form->reads.first());
    }

    void runsAndDeletesEveryTask_data()
    {
        QTest::addColumn<bool>("complete");
        QTest::newRow("run() completes") << true;
        QTest::newRow("run() stops short") << false;
    }

    void runsAndDeletesEveryTask()
    {
        QFETCH(bool, complete);
        QStringList traces, expected;
        const QObject context;
        connect(TaskObserver::instance(nullptr), &TaskObserver::taskFinished, &context,
                [&](const TaskDescription &task, bool completed) {
                    traces[task.description().toInt()] += QString("finished %1").arg(completed);
                });
        for (int i = 0; i < 8; ++i) {
            TaskObserver::instance(nullptr)->performTask(new ProbeTask(complete, &traces));
            expected
                << QString("finished %1, run off GUI 1, afterRun on GUI 1, deleted").arg(complete);
        }
        QTRY_COMPARE(traces, expected);
    }

    void capturesEveryWriterAndRestores_data()
    {
        QTest::addColumn<bool>("fromOtherThread");
        QTest::newRow("this thread") << false;
        QTest::newRow("other thread") << true;
    }

    void capturesEveryWriterAndRestores()
    {
        QFETCH(bool, fromOtherThread);
        const QString before = descriptorState();
        // Stands in for a child that inherited the captured stderr: the capture must end anyway.
        int lingeringWriter = -1;
        {
            StreamInterceptor interceptor(stderr);
            QVERIFY(interceptor.isCapturing());
            // One capture at a time: a second one sees nothing and must not undo the first.
            auto second = std::make_unique<StreamInterceptor>(stderr);
            QVERIFY(!second->isCapturing());
            QByteArray expected =
                fromOtherThread ? std::async(std::launch::async, writeThroughEveryWriter).get()
                                : writeThroughEveryWriter();
            QCOMPARE(second->streamReadAll(), QByteArray());
            second.reset();
            QCOMPARE(interceptor.streamReadAll(), expected);
            // Each read must hold what was written just before it.
            for (char c = 'a'; c <= 'z'; ++c) {
                std::fputc(c, stderr);
                expected += c;
                QCOMPARE(interceptor.streamReadAll(), expected);
            }
            lingeringWriter = dup(STDERR_FILENO);
        }
        close(lingeringWriter);
        QCOMPARE(descriptorState(), before);
    }

    // The emblem covers its corner and leaves the opposite one to the icon.
    void emblemGoesToTheCorner_data()
    {
        QTest::addColumn<QString>("emblem");
        QTest::addColumn<Qt::Corner>("corner");
        QTest::addColumn<QColor>("topLeft");
        QTest::addColumn<QColor>("bottomRight");
        const QColor red(Qt::red), blue(Qt::blue);
        QTest::newRow("top left") << "badge" << Qt::TopLeftCorner << blue << red;
        QTest::newRow("bottom right") << "badge" << Qt::BottomRightCorner << red << blue;
        QTest::newRow("emblem missing") << "absent" << Qt::TopLeftCorner << red << red;
    }

    void emblemGoesToTheCorner()
    {
        QFETCH(QString, emblem);
        QFETCH(Qt::Corner, corner);
        const QImage image =
            VexIcon::fromTheme("base", {corner, emblem}, QIcon()).pixmap(32).toImage();
        QTEST(QColor(image.pixel(4, 4)), "topLeft");
        QTEST(QColor(image.pixel(27, 27)), "bottomRight");

        // Without the icon itself the fallback comes back untouched.
        QPixmap green(8, 8);
        green.fill(Qt::green);
        const QIcon fallback(green);
        QCOMPARE(VexIcon::fromTheme("absent", {corner, emblem}, fallback).cacheKey(),
                 fallback.cacheKey());
    }

    void layout_data()
    {
        QTest::addColumn<QStringList>("names");
        QTest::addColumn<qint64>("first");
        QTest::addColumn<bool>("secondary");
        QTest::addColumn<QList<Place>>("places");
        const qint64 o = placeOf(&After<QObject>::first).at;
        PYX_ROW("Plugin", o, false, &Plugin::isValid);
        PYX_ROW("TreeNode", o, false, &TreeNode::insert, &TreeNode::removeAt,
                &TreeNode::setAlternativeExpected, &TreeNode::afterLoad,
                &TreeNode::treeNodeSpecialFlags, &TreeNode::columnCount, &TreeNode::headerData,
                &TreeNode::data, &TreeNode::setData, &TreeNode::flags, &TreeNode::canFetchMore,
                &TreeNode::fetchMore);
        PYX_ROW("Module", o + 12, false, &Module::performOperation, &Module::loadSettings,
                &Module::saveSettings);
        // The server element's three follow the element's own four.
        PYX_ROW("Element", o + 12, false, &Element::elementWidget, &Element::displayChildrenVariant,
                &Element::displayChildrenVariants, &Element::questionForRemove,
                &OrnServerElement::caption, &OrnServerElement::availableOperations,
                &OrnServerElement::performOperation);
        // Slots 0 and 1 hold the destructor, here and in the tasks.
        PYX_ROW("ContextOperation", 2, false, &ContextOperation::availableOperations,
                &ContextOperation::performOperation, &ContextOperation::caption);
        PYX_ROW("Element's second base", 2, true,
                static_cast<int (Element::*)() const>(&ContextOperation::availableOperations));
        PYX_ROW("ElementWidget's second base", 4, true,
                static_cast<QString (ElementWidget::*)() const>(&ContextOperation::caption));
        using V = ViewEditElementWidget;
        PYX_ROW("ViewEditElementWidget", placeOf(&After<QWidget>::first).at, false,
                &V::availableOperations, &V::performOperation, &V::setAlternativeExpected,
                &V::setElement, &V::read, &V::caption, &V::beforeCreation, &V::exportElementData,
                &V::afterSuccessfulRead, &V::afterSuccessfulImport, &V::afterSuccessfulUpdate,
                &V::applyContentChanges, &V::linkExternalElements, &V::reset, &V::isContentValid,
                &V::blockEditWidget);
        PYX_ROW("AbstractTask", 2, false, &AbstractTask::run, &AbstractTask::afterRun);
        // Only the order of the operations the plug-in calls is the core's (see orncore.h).
        PYX_ROW("OrnCore", ascending, false, &OrnCore::domainName, &OrnCore::isServer,
                &OrnCore::isServerOn, &OrnCore::isConfigured, &OrnCore::refresh);
        PYX_ROW("Plugin fields", ascending, false, &Plugin::interfaceVersion, &Plugin::name,
                &Plugin::description, &Plugin::modules);
        PYX_ROW("TreeNode fields", ascending, false, &TreeNode::typeName, &TreeNode::parentTypeName,
                &TreeNode::placement);
        PYX_ROW("Module fields", ascending, false, &Module::moduleData, &Module::elements);
        PYX_ROW("ContextOperation fields", ascending, false, &ContextOperation::module,
                &ContextOperation::elementTypeName, &ContextOperation::parentElementType,
                &ContextOperation::contextValue, &ContextOperation::contextElement);
    }

    void layout()
    {
        QFETCH(QStringList, names);
        QFETCH(qint64, first);
        QFETCH(bool, secondary);
        QFETCH(QList<Place>, places);
        for (int i = 0; i < places.size(); ++i) {
            const Place &place = places.at(i);
            const QString where = QStringLiteral("%1 at %2").arg(names.at(i)).arg(place.at);
            QVERIFY2(place.at >= 0, qPrintable(where));
            if (first != ascending)
                QVERIFY2(place.at == first + i, qPrintable(where));
            else if (i > 0)
                QVERIFY2(places.at(i - 1).at < place.at, qPrintable(where + " comes too early"));
            QVERIFY2((place.adjustment != 0) == secondary, qPrintable(where + " of another base"));
        }
    }
};

QTEST_MAIN(TestFramework)
#include "tst_framework.moc"
