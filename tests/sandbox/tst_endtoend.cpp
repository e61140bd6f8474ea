// A whole creation through the real console and the real plug-in on the simulated host, checked
// afterwards the way an administrator would check the machine.
#include "sandboxprocess.h"

#include <QTemporaryDir>
#include <QtTest>

class TestEndToEnd : public QObject
{
    Q_OBJECT

private slots:
    void createWithCustomNetworkSettings();
};

void TestEndToEnd::createWithCustomNetworkSettings()
{
    if (!sandboxAvailable())
        QSKIP("the sandbox cannot run here");
    const SandboxRun seed = runSandbox({}, {"cat", "/etc/hosts"});
    QCOMPARE(seed.exitCode, 0);

    QTemporaryDir state;
    const SandboxRun run = runSandbox(
        {"--state-dir", state.path(), "--orn-init-duration", "0", "--env", "SUDO_UID=1000", "--env",
         "SANDBOX_ENV_LOG=" + state.filePath("env"), "--env", "QT_QPA_PLATFORM=offscreen"},
        {PYX_WALKTHROUGH, PYX_PLUGIN_DIR, state.filePath("pictures")});
    // The walkthrough ends with 0 only once the re-read form says the server is on.
    QVERIFY2(run.exitCode == 0, run.err.constData());
    QCOMPARE(QDir(state.filePath("pictures")).entryList(QDir::Files).size(), 8);

    QCOMPARE(readFile(state.filePath("hostname")).trimmed(), QByteArray("dc1"));
    // No line names the new host yet, so its entry is added (with the address the form offered)
    // and every other line stays.
    const QByteArray hosts = readFile(state.filePath("etc/hosts"));
    QVERIFY(hosts.startsWith(seed.out) && hosts.endsWith(" dc1.corp.lan dc1\n"));
    QCOMPARE(hosts.count('\n'), seed.out.count('\n') + 1);
    QVERIFY(!QFile::exists(state.filePath("etc/orn/tempFile")));
    QVERIFY(readFile(state.filePath("etc/orn/orn.conf")).contains("corp.lan"));

    const QByteArray log = readFile(state.filePath("log"));
    QVERIFY(log.contains("hostnamectl [set-hostname] [dc1]\n"));
    QVERIFY(log.contains("orn-init [init] [--force] [--pass-file=/etc/orn/tempFile]\n"));
    QVERIFY(log.contains("vex-wmfunc [VEXWM_REBOOT] {XDG_RUNTIME_DIR=/run/user/1000}\n"));
    // Neither password in any tool's arguments or environment.
    const QByteArray environments = readFile(state.filePath("env"));
    QVERIFY(environments.contains("\ndpkg-query [-W]") &&
            environments.contains("\norn-init [init]"));
    for (const QByteArray &record : {log, environments})
        QVERIFY(!record.contains("Kerberos-2026") && !record.contains("Admin-2026"));
}

QTEST_GUILESS_MAIN(TestEndToEnd)
#include "tst_endtoend.moc"
