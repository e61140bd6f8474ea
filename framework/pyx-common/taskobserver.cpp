#include "taskobserver.h"

#include "abstracttask.h"

#include <QCoreApplication>
#include <QMetaObject>
#include <QPointer>
#include <QRunnable>

#include <functional>
#include <utility>

namespace {

class TaskRunnable : public QRunnable
{
public:
    TaskRunnable(AbstractTask *task, std::function<void()> whenDone)
        : m_task(task)
        , m_whenDone(std::move(whenDone))
    {
        setAutoDelete(true);
    }

    void run() override
    {
        m_task->run();
        m_whenDone();
    }

private:
    AbstractTask *m_task;
    std::function<void()> m_whenDone;
};

} // namespace

TaskObserver *TaskObserver::instance(QObject *parent)
{
    static QPointer<TaskObserver> s_instance;
    if (!s_instance) {
        s_instance = new TaskObserver(parent ? parent : QCoreApplication::instance());
    }
    return s_instance;
}

TaskObserver::TaskObserver(QObject *parent)
    : QObject(parent)
{
    // The signals cross threads in queued connections.
    qRegisterMetaType<TaskDescription>();
}

TaskObserver::~TaskObserver()
{
    m_pool.waitForDone();
    // Their afterRun() was still queued; ~QObject drops those calls.
    qDeleteAll(m_active);
    m_active.clear();
}

void TaskObserver::performTask(AbstractTask *task)
{
    if (!task) {
        return;
    }
    m_active.insert(task);
    emit taskStarted(task->description);
    m_pool.start(new TaskRunnable(task, [this, task] {
        QMetaObject::invokeMethod(
            this, [this, task] { finishTask(task); }, Qt::QueuedConnection);
    }));
}

void TaskObserver::finishTask(AbstractTask *task)
{
    // Out of the set before anything else runs: afterRun() or a receiver may spin an event loop
    // that destroys the runner, whose destructor must not free this task a second time.
    m_active.remove(task);
    const QPointer<TaskObserver> self(this);
    task->afterRun();
    if (self) {
        const bool completed = task->isCompleted();
        emit taskFinished(task->description, completed);
        if (!completed) {
            qWarning("Task \"%s\" did not reach its completion step",
                     qUtf8Printable(task->description.description()));
        }
    }
    delete task;
}
