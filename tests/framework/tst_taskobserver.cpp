#include "taskobserver.h"

#include "abstracttask.h"

#include <QCoreApplication>
#include <QRegularExpression>
#include <QSemaphore>
#include <QSignalSpy>
#include <QTest>
#include <QThread>

#include <atomic>

namespace {

// What a task saw; outlives the task so the test can read it after the deletion.
struct Probe
{
    std::atomic<QThread *> runThread{nullptr};
    std::atomic<QThread *> afterRunThread{nullptr};
    std::atomic<bool> deleted{false};
    std::atomic<bool> gateOpened{false};
    // run() waits for this when set, so the test decides when the work ends.
    QSemaphore *gate = nullptr;
};

class ProbeTask : public AbstractTask
{
public:
    ProbeTask(const QString &name, bool complete, Probe *probe)
        : m_complete(complete)
        , m_probe(probe)
    {
        description.setDescription(name);
    }
    ~ProbeTask() override { m_probe->deleted = true; }

    void run() override
    {
        m_probe->runThread = QThread::currentThread();
        if (m_probe->gate) {
            m_probe->gateOpened = m_probe->gate->tryAcquire(1, 5000);
        }
        if (m_complete) {
            AbstractTask::run();
        }
    }
    void afterRun() override { m_probe->afterRunThread = QThread::currentThread(); }

private:
    bool m_complete;
    Probe *m_probe;
};

QRegularExpression notCompletedWarning(const QString &name)
{
    return QRegularExpression(QRegularExpression::escape(name) + "\\b.*completion");
}

} // namespace

class TestTaskObserver : public QObject
{
    Q_OBJECT

private slots:
    void oneRunnerPerApplication();
    void runsOffThreadAndFinishesOnOwnerThread_data();
    void runsOffThreadAndFinishesOnOwnerThread();
    void performReturnsBeforeRunEnds();
    void manyTasksAllFinish();
    void destructionFreesTasksStillQueued();
};

void TestTaskObserver::oneRunnerPerApplication()
{
    TaskObserver *runner = TaskObserver::instance(nullptr);
    QVERIFY(runner);
    QCOMPARE(runner->parent(), QCoreApplication::instance());
    QObject other;
    QCOMPARE(TaskObserver::instance(&other), runner);
}

void TestTaskObserver::runsOffThreadAndFinishesOnOwnerThread_data()
{
    QTest::addColumn<bool>("complete");
    QTest::newRow("run() reaches the completion step") << true;
    QTest::newRow("run() stops short") << false;
}

void TestTaskObserver::runsOffThreadAndFinishesOnOwnerThread()
{
    QFETCH(bool, complete);
    TaskObserver *runner = TaskObserver::instance(nullptr);
    QSignalSpy started(runner, &TaskObserver::taskStarted);
    QSignalSpy finished(runner, &TaskObserver::taskFinished);
    bool deletedAtFinish = true;
    Probe probe;
    const QMetaObject::Connection connection = connect(
        runner, &TaskObserver::taskFinished, this, [&] { deletedAtFinish = probe.deleted; });

    if (!complete) {
        QTest::ignoreMessage(QtWarningMsg, notCompletedWarning(QStringLiteral("probe")));
    }
    runner->performTask(new ProbeTask(QStringLiteral("probe"), complete, &probe));
    QCOMPARE(started.count(), 1);
    QCOMPARE(started.at(0).at(0).value<TaskDescription>().description(), QStringLiteral("probe"));

    QVERIFY(finished.wait());
    disconnect(connection);
    QCOMPARE(finished.count(), 1);
    QCOMPARE(finished.at(0).at(0).value<TaskDescription>().description(), QStringLiteral("probe"));
    QCOMPARE(finished.at(0).at(1).toBool(), complete);
    QVERIFY(probe.runThread.load());
    QVERIFY(probe.runThread.load() != runner->thread());
    QCOMPARE(probe.afterRunThread.load(), runner->thread());
    QVERIFY(!deletedAtFinish);
    QTRY_VERIFY(probe.deleted);
    QCOMPARE(runner->activeTaskCount(), 0);
}

void TestTaskObserver::performReturnsBeforeRunEnds()
{
    TaskObserver *runner = TaskObserver::instance(nullptr);
    QSignalSpy finished(runner, &TaskObserver::taskFinished);
    QSemaphore gate;
    Probe probe;
    probe.gate = &gate;

    runner->performTask(new ProbeTask(QStringLiteral("held"), true, &probe));
    QCOMPARE(runner->activeTaskCount(), 1);
    gate.release();
    QVERIFY(finished.wait());
    // Had performTask() run the task itself, run() would have given up waiting for the gate.
    QVERIFY(probe.gateOpened);
    QTRY_VERIFY(probe.deleted);
    QCOMPARE(runner->activeTaskCount(), 0);
}

void TestTaskObserver::manyTasksAllFinish()
{
    TaskObserver *runner = TaskObserver::instance(nullptr);
    QSignalSpy finished(runner, &TaskObserver::taskFinished);
    const int count = 24;
    Probe probes[count];

    for (int i = 0; i < count; ++i) {
        const QString name = QStringLiteral("task %1").arg(i);
        const bool complete = i % 3 != 0;
        if (!complete) {
            QTest::ignoreMessage(QtWarningMsg, notCompletedWarning(name));
        }
        runner->performTask(new ProbeTask(name, complete, &probes[i]));
    }
    QCOMPARE(runner->activeTaskCount(), count);

    QTRY_COMPARE(finished.count(), count);
    QMap<QString, bool> outcomes;
    for (const QList<QVariant> &arguments : qAsConst(finished)) {
        outcomes.insert(arguments.at(0).value<TaskDescription>().description(),
                        arguments.at(1).toBool());
    }
    QCOMPARE(outcomes.size(), count);
    for (int i = 0; i < count; ++i) {
        QCOMPARE(outcomes.value(QStringLiteral("task %1").arg(i)), i % 3 != 0);
        QVERIFY(probes[i].deleted);
    }
    QCOMPARE(runner->activeTaskCount(), 0);
}

// Last: it replaces the application's runner.
void TestTaskObserver::destructionFreesTasksStillQueued()
{
    TaskObserver *runner = TaskObserver::instance(nullptr);
    QSignalSpy finished(runner, &TaskObserver::taskFinished);
    QSemaphore gate;
    Probe probe;
    probe.gate = &gate;

    runner->performTask(new ProbeTask(QStringLiteral("orphan"), true, &probe));
    QTRY_VERIFY(probe.runThread.load());
    gate.release();
    // The runner waits for run() to end; the afterRun() it then queued must never come.
    delete runner;
    QVERIFY(probe.deleted);
    QCoreApplication::processEvents();
    QCOMPARE(finished.count(), 0);
    QCOMPARE(probe.afterRunThread.load(), nullptr);

    TaskObserver *next = TaskObserver::instance(nullptr);
    QVERIFY(next);
    QCOMPARE(next->activeTaskCount(), 0);
}

QTEST_GUILESS_MAIN(TestTaskObserver)
#include "tst_taskobserver.moc"
