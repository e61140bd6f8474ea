#pragma once

#include <QProcess>
#include <QStringList>

#include <cstdio>

struct SandboxRun
{
    int exitCode = -1; // -1: killed by a signal, not started, or still running after a minute
    QByteArray out;
    QByteArray err;
};

// One run of sandbox/run: `options -- command`.
inline SandboxRun runSandbox(const QStringList &options, const QStringList &command)
{
    QProcess process;
    process.start(QStringLiteral(PYX_SANDBOX_DIR "/run"),
                  options + QStringList{QStringLiteral("--")} + command);
    if (!process.waitForFinished(60000)) {
        process.kill();
        process.waitForFinished();
    }
    SandboxRun run;
    if (process.exitStatus() == QProcess::NormalExit && process.error() != QProcess::FailedToStart)
        run.exitCode = process.exitCode();
    run.out = process.readAllStandardOutput();
    run.err = process.readAllStandardError();
    return run;
}

// Where namespaces are not available, sandbox/run and the test executables return 77, which
// CTest counts as a skip.
inline bool sandboxAvailable()
{
    const SandboxRun probe = runSandbox({}, {QStringLiteral("true")});
    if (probe.exitCode == 77)
        std::fprintf(stderr, "SKIP: %s", probe.err.constData());
    return probe.exitCode != 77;
}
