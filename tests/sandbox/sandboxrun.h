#pragma once

// Programs run to their end, the sandbox started, and a suite started again inside it; what a
// process left behind.
#include <QtCore>

#include <cstdio>

struct SandboxRun
{
    int exitCode = -1; // -1: killed by a signal, not started, or stopped at its time limit
    QByteArray out, err;
};

// One run of a program, with the given environment or this process's own. 45 s leaves room
// inside the shortest limit a test function gets.
inline SandboxRun runProgram(const QString &program, const QStringList &arguments,
                             const QProcessEnvironment &environment = {})
{
    constexpr int limitMs = 45000;
    QProcess process;
    if (!environment.isEmpty())
        process.setProcessEnvironment(environment);
    process.start(program, arguments);
    SandboxRun run;
    if (!process.waitForFinished(limitMs) && process.state() != QProcess::NotRunning) {
        process.kill();
        process.waitForFinished();
        run.err = program.toUtf8() + " was killed after " + QByteArray::number(limitMs) + " ms\n";
    }
    if (process.exitStatus() == QProcess::NormalExit && process.error() != QProcess::FailedToStart)
        run.exitCode = process.exitCode();
    run.out = process.readAllStandardOutput();
    run.err += process.readAllStandardError();
    return run;
}

// The directory server's packages built with this tree, for the simulated host's dpkg.
inline const QStringList sandboxServices{"--debs", PYX_TEST_BINARY_DIR "/sandbox-debs"};

// One run of sandbox/run: `options -- command`.
inline SandboxRun runSandbox(const QStringList &options, const QStringList &command)
{
    return runProgram(PYX_SANDBOX_DIR "/run",
                      sandboxServices + options + QStringList{"--"} + command);
}

// A test program that must run on the simulated host starts itself again inside sandbox/run and
// returns what the inner run returned (77, no sandbox here, passes through as a skip).
// Returns -1 when this process already runs inside.
inline int runInsideSandbox(int argc, char *argv[], const QStringList &options)
{
    if (!qEnvironmentVariableIsEmpty("SANDBOX_LOG"))
        return -1;
    QCoreApplication app(argc, argv);
    QProcess inside;
    inside.setProcessChannelMode(QProcess::ForwardedChannels);
    const QStringList self{"--env", "QT_QPA_PLATFORM=offscreen", "--", app.applicationFilePath()};
    inside.start(PYX_SANDBOX_DIR "/run", sandboxServices + options + self + app.arguments().mid(1));
    // 5 s less than CTest gives this test (its TIMEOUT, in the environment), so that the reason
    // reaches the output before CTest kills it; run by hand, without a limit (negative).
    const int limitMs = qEnvironmentVariableIntValue("PYX_TEST_TIMEOUT") * 1000 - 5000;
    if (!inside.waitForFinished(limitMs)) {
        inside.kill();
        inside.waitForFinished();
        std::fprintf(stderr, "the run inside the sandbox did not end within %d s and was killed\n",
                     limitMs / 1000);
        return 1;
    }
    return inside.exitStatus() == QProcess::NormalExit ? inside.exitCode() : 1;
}

// main() of a suite of TestObject that runs on the simulated host: it starts itself again inside
// sandbox/run with `options`, a QStringList.
#define PYX_SANDBOX_TEST_MAIN(TestObject, options)                                                 \
    int main(int argc, char *argv[])                                                               \
    {                                                                                              \
        if (const int inner = runInsideSandbox(argc, argv, options); inner >= 0)                   \
            return inner;                                                                          \
        QApplication app(argc, argv);                                                              \
        TestObject test;                                                                           \
        return QTest::qExec(&test, argc, argv);                                                    \
    }

inline QStringList namespaces()
{
    return {QFile::symLinkTarget("/proc/self/ns/mnt"), QFile::symLinkTarget("/proc/self/ns/uts")};
}

// runInsideSandbox for a program that changes /etc and the host name: inside, it also refuses
// (1) to go on where the mounts or the host name are still those of the process that started it.
// Returns -1 when this process may go on.
inline int runOnSimulatedHost(int argc, char *argv[])
{
    const int inside =
        runInsideSandbox(argc, argv, {"--env", "PYX_INIT_OUTSIDE=" + namespaces().join(' ')});
    if (inside >= 0)
        return inside;
    const QStringList host = qEnvironmentVariable("PYX_INIT_OUTSIDE").split(' ');
    if (host.size() != 2 || namespaces().contains(host.at(0)) || namespaces().contains(host.at(1)))
        return std::fputs("not on a simulated host\n", stderr), 1;
    return -1;
}

// A shell script; scripts find the system's tools whatever PATH a case chose.
inline bool sh(const QString &script)
{
    return !QProcess::execute("/bin/sh", {"-c", "PATH=/usr/sbin:/usr/bin:/sbin:/bin\n" + script});
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
    for (const QString &pid : QDir("/proc").entryList(QDir::Dirs)) {
        const QByteArray stat = readFile(QString("/proc/%1/stat").arg(pid));
        const QList<QByteArray> fields = stat.mid(stat.lastIndexOf(')') + 2).split(' ');
        if (fields.size() > 1 && fields.at(1).toLongLong() == QCoreApplication::applicationPid())
            children << pid + ' ' + fields.at(0);
    }
    return children;
}
