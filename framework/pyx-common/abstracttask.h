#pragma once

#include "taskdescription.h"

#include <atomic>

// A unit of work for the task runner: run() may go to a worker thread, afterRun() comes back
// on the GUI thread.
class PYX_COMMON_EXPORT AbstractTask
{
public:
    AbstractTask() = default;
    virtual ~AbstractTask();
    // The completion step; an override calls it last, on every path.
    virtual void run();
    virtual void afterRun();

    bool isCompleted() const { return m_completed; }

    TaskDescription description;

private:
    AbstractTask(const AbstractTask &) = delete;
    AbstractTask &operator=(const AbstractTask &) = delete;

    std::atomic<bool> m_completed{false};
};
