#pragma once

#include <QProcess>

// A process that leads a process group of its own, so that it can be ended together with the
// helpers it started.
class GroupLeaderProcess : public QProcess
{
    Q_OBJECT

public:
    using QProcess::QProcess;

    // Kills the whole group; the process itself still has to be reaped.
    void killGroup();

protected:
    void setupChildProcess() override;
};
