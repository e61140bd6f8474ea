#pragma once

#include <QCoreApplication>
#include <QProcess>
#include <QStringList>

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
