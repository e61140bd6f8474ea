#pragma once

#include <QByteArray>
#include <QProcess>
#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

#include <cstdio>

// One run of sandbox/run: `options -- command`, with the test's environment unless `environment`
// is given. Waits for the end without polling; a run that outlives `timeoutMs` is killed and
// reported as exit code -1.
struct SandboxRun
{
    int exitCode = -1;
    QByteArray out;
    QByteArray err;
};

inline QString sandboxScript()
{
    return QStringLiteral(PYX_SANDBOX_DIR "/run");
}

inline SandboxRun runSandbox(const QStringList &options, const QStringList &command,
                             const QProcessEnvironment &environment =
                                 QProcessEnvironment::systemEnvironment(),
                             int timeoutMs = 60000)
{
    QProcess process;
    process.setProcessEnvironment(environment);
    process.start(sandboxScript(), options + QStringList{QStringLiteral("--")} + command);
    SandboxRun run;
    if (!process.waitForFinished(timeoutMs)) {
        process.kill();
        process.waitForFinished();
        run.err = process.readAllStandardError();
        return run;
    }
    run.out = process.readAllStandardOutput();
    run.err = process.readAllStandardError();
    if (process.exitStatus() == QProcess::NormalExit)
        run.exitCode = process.exitCode();
    return run;
}

// A shell script run inside, with its arguments.
inline SandboxRun runSandboxScript(const QStringList &options, const QString &script,
                                   const QStringList &arguments = {},
                                   const QProcessEnvironment &environment =
                                       QProcessEnvironment::systemEnvironment())
{
    return runSandbox(options,
                      QStringList{QStringLiteral("sh"), QStringLiteral("-c"), script,
                                  QStringLiteral("sh")} +
                          arguments,
                      environment);
}

// The status a test executable returns when the sandbox cannot run here: CTest counts it as
// skipped (SKIP_RETURN_CODE), and the reason goes to the output.
constexpr int sandboxUnavailable = 77;

inline bool sandboxAvailable()
{
    const SandboxRun probe = runSandbox({}, {QStringLiteral("true")});
    if (probe.exitCode == sandboxUnavailable) {
        std::fprintf(stderr, "SKIP: %s", probe.err.constData());
        return false;
    }
    return true;
}
