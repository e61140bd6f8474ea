#pragma once

#include <QCoreApplication>
#include <QDir>
#include <QFile>
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

// A test program that must run on the simulated host starts itself again inside sandbox/run and
// returns what the inner run returned (77, no namespaces here, passes through as a skip).
// Returns -1 when this process already runs inside.
inline int runInsideSandbox(int argc, char *argv[], const QStringList &options)
{
    if (!qEnvironmentVariableIsEmpty("SANDBOX_LOG"))
        return -1;
    QCoreApplication app(argc, argv);
    QProcess inside;
    inside.setProcessChannelMode(QProcess::ForwardedChannels);
    inside.start(QStringLiteral(PYX_SANDBOX_DIR "/run"),
                 options + QStringList{QStringLiteral("--env"),
                                       QStringLiteral("QT_QPA_PLATFORM=offscreen"),
                                       QStringLiteral("--"), app.applicationFilePath()}
                     + app.arguments().mid(1));
    if (!inside.waitForFinished(170000)) {
        inside.kill();
        inside.waitForFinished();
        return 1;
    }
    return inside.exitStatus() == QProcess::NormalExit ? inside.exitCode() : 1;
}

inline QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// This process's children as "pid state" (R, S, Z...): one still running or not yet reaped shows.
inline QStringList childProcesses()
{
    QStringList children;
    for (const QString &pid : QDir(QStringLiteral("/proc")).entryList(QDir::Dirs)) {
        const QByteArray stat = readFile(QStringLiteral("/proc/%1/stat").arg(pid));
        const QList<QByteArray> fields = stat.mid(stat.lastIndexOf(')') + 2).split(' ');
        if (fields.size() > 1 && fields.at(1).toLongLong() == QCoreApplication::applicationPid())
            children << pid + QLatin1Char(' ') + QString::fromLatin1(fields.at(0));
    }
    return children;
}
