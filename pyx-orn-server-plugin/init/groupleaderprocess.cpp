#include "groupleaderprocess.h"

#include <csignal>
#include <unistd.h>

void GroupLeaderProcess::killGroup()
{
    // Until the leader is reaped its id cannot name another group.
    if (state() != NotRunning && processId() > 0)
        ::kill(-pid_t(processId()), SIGKILL);
}

void GroupLeaderProcess::setupChildProcess()
{
    ::setpgid(0, 0);
}
