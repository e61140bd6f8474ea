#include "abstracttask.h"

AbstractTask::~AbstractTask() = default;

void AbstractTask::run()
{
    m_completed = true;
}

void AbstractTask::afterRun()
{
}
