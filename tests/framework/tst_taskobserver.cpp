#include "taskobserver.h"

#include "abstracttask.h"

#include <QRegularExpression>
#include <QTest>
#include <QThread>

#include <atomic>

namespace {

// Outlives its task, so the test can look after the deletion.
struct Probe
{
    bool complete = false;
    std::atomic<QThread *> runThread{nullptr};
    std::atomic<QThread *> afterRunThread{nullptr};
    std::atomic<bool> deleted{false};
};

struct ProbeTask : AbstractTask
{
    ProbeTask(int index, Probe *probe)
        : probe(probe)
    {
        description.setDescription(QString::number(index));
    }
    ~ProbeTask() override { probe->deleted = true; }
    void run() override
    {
        probe->runThread = QThread::currentThread();
        if (probe->complete) {
            AbstractTask::run();
        }
    }
    void afterRun() override { probe->afterRunThread = QThread::currentThread(); }
    Probe *const probe;
};

} // namespace

class TestTaskObserver : public QObject
{
    Q_OBJECT

private slots:
    void runsAndDeletesEveryTask_data()
    {
        QTest::addColumn<bool>("complete");
        QTest::newRow("run() completes") << true;
        QTest::newRow("run() stops short") << false;
    }

    void runsAndDeletesEveryTask()
    {
        QFETCH(bool, complete);
        TaskObserver *runner = TaskObserver::instance(nullptr);
        QThread *const guiThread = QThread::currentThread();
        Probe probes[8];
        // Per task: the completion flag, and whether the task was already gone at its finish.
        QMap<int, QPair<bool, bool>> finished, expected;
        const QObject context;
        connect(runner, &TaskObserver::taskFinished, &context,
                [&](const TaskDescription &description, bool completed) {
                    const int index = description.description().toInt();
                    finished.insert(index, qMakePair(completed, bool(probes[index].deleted)));
                });

        for (int i = 0; i < 8; ++i) {
            if (!complete) {
                QTest::ignoreMessage(QtWarningMsg, QRegularExpression("completion step"));
            }
            probes[i].complete = complete;
            expected.insert(i, qMakePair(complete, false));
            runner->performTask(new ProbeTask(i, &probes[i]));
        }
        QTRY_COMPARE(finished, expected);
        for (const Probe &probe : probes) {
            QVERIFY(probe.runThread && probe.runThread != guiThread);
            QCOMPARE(probe.afterRunThread.load(), guiThread);
            QTRY_VERIFY(probe.deleted);
        }
        QCOMPARE(runner->activeTaskCount(), 0);
    }
};

QTEST_GUILESS_MAIN(TestTaskObserver)
#include "tst_taskobserver.moc"
