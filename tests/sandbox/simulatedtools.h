#pragma once

// Inside the sandbox: which simulated tools and stand-ins run, with which settings, and what the
// simulated orn-init recorded of them.
#include "sandboxrun.h"

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

// Inside the sandbox: every simulated tool back in /usr/bin, and the system's programs that a
// case may replace, after a case replaced or removed some; no settings of an earlier case.
inline bool restoreSandboxTools()
{
    return sh("rm -f /run/sandbox/settings /run/sandbox/release && "
              "for tool in /run/sandbox/tools/* /run/sandbox/usr/bin/dpkg-query "
              "/run/sandbox/usr/bin/hostnamectl; do ln -sf \"$tool\" /usr/bin/; done");
}

// Inside the sandbox: a stand-in of tests/fakes linked over the program of that name; `fake`
// names another stand-in, such as "faulty" for a system program's faults.
inline bool linkFake(const QString &tool, const QString &fake = {})
{
    return sh(QString("ln -sf %1/%2 /usr/bin/%3")
                  .arg(PYX_TEST_FAKES_DIR, fake.isEmpty() ? tool : fake, tool));
}

// What the simulated orn-init saw of the plug-in's inhibitor lock while it ran, by its line of
// the call log: "locked" (logind listed one blocking lock on shutdown, sleep, idle and the lid
// switch), "unlocked", or "no tool" where it never ran; " and inherited" follows where the tool
// was started holding a descriptor of a logind lock, which would keep the lock past the run (a
// service the tool restarts would hold off shutdown for good).
inline QString lockDuringTool(const QByteArray &log)
{
    const int call = log.indexOf("orn-init [");
    if (call < 0)
        return "no tool";
    const QByteArray line = log.mid(call, log.indexOf('\n', call) - call);
    const int listed = line.indexOf("{FDS=0:"), inhibitors = line.indexOf("{INHIBITORS=");
    if (listed < 0 || inhibitors < listed)
        return "descriptors not listed";
    const QByteArray descriptors = line.mid(listed, inhibitors - listed);
    const QByteArray locks = line.mid(inhibitors).replace("\\n", "\n");
    return QString(locks.count(" shutdown:sleep:idle:handle-lid-switch ") == 1 &&
                           locks.simplified().endsWith(" block}")
                       ? "locked"
                       : "unlocked") +
           (descriptors.contains(":/run/systemd/inhibit/") ? " and inherited" : "");
}
