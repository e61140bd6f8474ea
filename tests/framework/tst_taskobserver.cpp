#include "taskobserver.h"

#include "abstracttask.h"

#include <QTest>
#include <QThread>

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
};

QTEST_GUILESS_MAIN(TestTaskObserver)
#include "tst_taskobserver.moc"
