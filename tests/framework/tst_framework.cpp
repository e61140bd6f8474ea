// The stand-in console: elements, forms, the read that reaches a form, the navigation tree, the
// task runner, the capture of stderr and the icons with an emblem. Change tracking under the edit
// block is exercised by the server form's own tests.
#include "abstracttask.h"
#include "consolewindow.h"
#include "element.h"
#include "elementdata.h"
#include "module.h"
#include "nodetreemodel.h"
#include "orndomainelement.h"
#include "orndomainmodule.h"
#include "readpropertyheavytask.h"
#include "streaminterceptor.h"
#include "taskobserver.h"
#include "vexicon.h"
#include "vieweditelementwidget.h"

#include <QImage>
#include <QtTest>

#include <cstdio>
#include <future>
#include <iostream>
#include <memory>

#include <sys/stat.h>
#include <unistd.h>

Q_DECLARE_METATYPE(TaskDescription::TaskStatus)

namespace {

// A plug-in's module: one element beneath the directory-domain element, whose read runs a task
// that ends with the status given, and a form that records what reaches it.
class ServerModule : public Module
{
public:
    explicit ServerModule(qint32 placement = 2,
                          TaskDescription::TaskStatus status = TaskDescription::Success)
        : Module("ServerModule", nullptr, false)
        , m_status(status)
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
    bool performOperation(ContextOperation *context, OperationType operation, ElementData *data,
                          int n) override
    {
        TaskObserver::instance(nullptr)->performTask(new Task(context->elementContext(), m_status));
        return Module::performOperation(context, operation, data, n);
    }

    struct ServerElement : Element
    {
        using Element::Element;
        bool performOperation(OperationType operation, ElementData *data, int n) override
        {
            return module->performOperation(this, operation, data, n);
        }
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

    ServerElement *element = new ServerElement(*this, nullptr);
    Form *form = new Form(*this, nullptr, nullptr);

private:
    TaskDescription::TaskStatus m_status;
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

} // namespace

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
        ServerModule server(2, status);
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

    void emblemGoesToTheCorner_data()
    {
        QTest::addColumn<QString>("emblem");
        QTest::addColumn<Qt::Corner>("corner");
        QTest::addColumn<QPoint>("blue"); // (-1, -1): no blue anywhere
        QTest::addColumn<QPoint>("red");
        QTest::newRow("top left") << "badge" << Qt::TopLeftCorner << QPoint(4, 4) << QPoint(27, 27);
        QTest::newRow("bottom right")
            << "badge" << Qt::BottomRightCorner << QPoint(27, 27) << QPoint(4, 4);
        QTest::newRow("emblem missing")
            << "absent" << Qt::TopLeftCorner << QPoint(-1, -1) << QPoint(4, 4);
    }

    void emblemGoesToTheCorner()
    {
        QFETCH(QString, emblem);
        QFETCH(Qt::Corner, corner);
        QFETCH(QPoint, blue);
        QFETCH(QPoint, red);
        const QImage image =
            VexIcon::fromTheme("base", {corner, emblem}, QIcon()).pixmap(32).toImage();
        if (blue.x() >= 0)
            QCOMPARE(QColor(image.pixel(blue)), QColor(Qt::blue));
        int bluePixels = 0;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                bluePixels += QColor(image.pixel(x, y)) == QColor(Qt::blue);
        QCOMPARE(bluePixels > 0, blue.x() >= 0);
        QCOMPARE(QColor(image.pixel(red)), QColor(Qt::red));

        // Without the icon itself the fallback comes back untouched.
        QPixmap green(8, 8);
        green.fill(Qt::green);
        const QIcon fallback(green);
        QCOMPARE(VexIcon::fromTheme("absent", {corner, emblem}, fallback).cacheKey(),
                 fallback.cacheKey());
    }
};

QTEST_MAIN(TestFramework)
#include "tst_framework.moc"
