#pragma once

#include "pyx_common_export.h"
#include "taskdescription.h"

#include <QObject>
#include <QSet>
#include <QThreadPool>

class AbstractTask;

// The console's task runner: run() on a worker thread, afterRun() on the thread that owns the
// runner, then the task is deleted.
class PYX_COMMON_EXPORT TaskObserver : public QObject
{
    Q_OBJECT

public:
    // One runner per application; `parent` is used only when the runner is first made (the
    // application object when null).
    static TaskObserver *instance(QObject *parent);
    ~TaskObserver() override;

    // Takes ownership of the task.
    void performTask(AbstractTask *task);
    int activeTaskCount() const { return m_active.size(); }

signals:
    void taskStarted(const TaskDescription &description);
    // `completed` tells whether run() reached the completion step.
    void taskFinished(const TaskDescription &description, bool completed);

private:
    explicit TaskObserver(QObject *parent);
    void finishTask(AbstractTask *task);

    QThreadPool m_pool;
    QSet<AbstractTask *> m_active;
};
