#pragma once

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

// The simulated journal and logind of this build tree.
inline const QStringList sandboxServices{"--services", PYX_TEST_BINARY_DIR "/bin"};

// One run of sandbox/run: `options -- command`.
inline SandboxRun runSandbox(const QStringList &options, const QStringList &command)
{
    return runProgram(PYX_SANDBOX_DIR "/run",
                      sandboxServices + options + QStringList{"--"} + command);
}

// Where namespaces are not available, sandbox/run and the test executables return 77, which
// CTest counts as a skip.
inline bool sandboxAvailable()
{
    const SandboxRun probe = runSandbox({}, {"true"});
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

// Inside the sandbox: the settings the simulated tools (and the fakes linked over them) read
// from now on, NAME=VALUE each, in place of those set before.
inline bool setSandboxSettings(const QStringList &settings)
{
    QByteArray text;
    for (const QString &setting : settings)
        text += setting.section('=', 0, 0).toUtf8() + "='" +
                setting.section('=', 1).replace("'", "'\\''").toUtf8() + "'\n";
    QFile file("/run/sandbox/settings");
    return file.open(QIODevice::WriteOnly) && file.write(text) == text.size();
}

// Inside the sandbox: every simulated tool back in /usr/bin, after a case replaced or removed
// some, and no settings of an earlier case.
inline bool restoreSandboxTools()
{
    return sh("rm -f /run/sandbox/settings /run/sandbox/release && "
              "for tool in /run/sandbox/tools/*; do ln -sf \"$tool\" /usr/bin/; done");
}

// Inside the sandbox: a stand-in of tests/fakes linked over the simulated tool of that name.
inline bool linkFake(const QString &tool)
{
    return sh(QString("ln -sf %1/%2 /usr/bin/%2").arg(PYX_TEST_FAKES_DIR, tool));
}

inline QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

// The lines of a call log that programs wrote, without the journal's and logind's.
inline QByteArray toolCalls(const QByteArray &log)
{
    QByteArray calls;
    for (const QByteArray &line : log.split('\n'))
        if (!line.isEmpty() && !line.startsWith("journal {") && !line.startsWith("logind ["))
            calls += line + '\n';
    return calls;
}

// In a call log: "taken" and "released" for logind's locks, "tool" for the simulated orn-init.
inline QString lockOrder(const QByteArray &log)
{
    QStringList order;
    for (const QByteArray &line : log.split('\n'))
        if (line.startsWith("logind [Inhibit]"))
            order << "taken";
        else if (line.startsWith("logind [released]"))
            order << "released";
        else if (line.startsWith("orn-init ["))
            order << "tool";
    return order.join(' ');
}

using JournalEntry = QJsonObject;

// The entries of the journal's record (sandbox/run's SANDBOX_JOURNAL, or journal in its state
// folder), a JSON object a line; a line still being written reads as an empty entry.
inline QList<JournalEntry> journalEntries(const QByteArray &record)
{
    QList<JournalEntry> entries;
    for (const QByteArray &line : record.split('\n'))
        if (!line.isEmpty())
            entries << QJsonDocument::fromJson(line).object();
    return entries;
}

// What the entries of one run say, an entry a word: PYX_STEP, then PYX_RESULT, PYX_OUTCOME,
// PYX_EXIT_CODE and PYX_HOSTS_REPLACED where present, joined by ':'; output entries in a row make
// one word "output". Every entry must come from the program and carry the run's identifier.
inline QString journalSummary(const QList<JournalEntry> &entries)
{
    QStringList words;
    for (const JournalEntry &entry : entries) {
        if (entry["SYSLOG_IDENTIFIER"] != "pyx-orn-server-plugin" ||
            entry["PYX_RUN_ID"] != entries.first()["PYX_RUN_ID"] ||
            entry["PYX_RUN_ID"].toString().size() != 32)
            return "an entry of another program or run: " + entry["MESSAGE"].toString();
        QStringList word{entry["PYX_STEP"].toString()};
        for (const char *name :
             {"PYX_RESULT", "PYX_OUTCOME", "PYX_EXIT_CODE", "PYX_HOSTS_REPLACED"})
            if (entry.contains(name))
                word << entry[name].toString();
        if (word.join(':') != "output" || words.value(words.size() - 1) != "output")
            words << word.join(':');
    }
    return words.join(' ');
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
