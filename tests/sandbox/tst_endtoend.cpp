// A whole creation through the real console and the real plug-in on the simulated host, checked
// afterwards the way an administrator would check the machine.
#include "journalrecord.h"
#include "simulatedtools.h"

#include <QtTest>

class TestEndToEnd : public QObject
{
    Q_OBJECT

private slots:
    void createWithCustomNetworkSettings_data();
    void createWithCustomNetworkSettings();
};

void TestEndToEnd::createWithCustomNetworkSettings_data()
{
    QTest::addColumn<QStringList>("services");
    QTest::addColumn<QString>("locks");   // lockDuringTool() of the call log
    QTest::addColumn<QString>("journal"); // journalSummary() of the record
    // Those of each box and dialog photographed, but the streaming one: with a tool that takes no
    // time, the run may have ended by then.
    QTest::addColumn<QString>("buttons");
    const QString steps = "start hostname:changed hosts:added password-file:written ";
    const QString end = "end:succeeded:exited:0 reboot:requested";
    const QString english = "[OK] | [&Yes] [&No] | [Close] | [&Yes] [&No]";
    QTest::newRow("logind") << QStringList() << "locked"
                            << steps + "inhibitor:taken output inhibitor:released " + end
                            << english;
    // Without logind, or without a journal, the run goes on exactly as before. In Russian, Qt's
    // own buttons are translated with the rest.
    QTest::newRow("no logind, in Russian")
        << QStringList{"--no-logind",
                       "--unset=LANGUAGE",
                       "--unset=LC_ALL",
                       "--unset=LC_MESSAGES",
                       "--env=LANG=ru_RU.UTF-8",
                       "--translations=" PYX_TEST_BINARY_DIR "/translations"}
        << "unlocked" << steps + "inhibitor:not-taken output " + end
        << "[OK] | [&Да] [&Нет] | [Закрыть] | [&Да] [&Нет]";
    QTest::newRow("no journal") << QStringList{"--no-journal"} << "locked"
                                << "" << english;
}

void TestEndToEnd::createWithCustomNetworkSettings()
{
    QFETCH(QStringList, services);
    const SandboxRun seed = runSandbox({}, {"cat", "/etc/hosts"});
    if (seed.exitCode == 77)
        QSKIP(seed.err.constData());
    QCOMPARE(seed.exitCode, 0);

    QTemporaryDir state;
    const SandboxRun run = runSandbox(
        services + QStringList{"--state-dir", state.path(), "--orn-init-duration", "0", "--env",
                               "SUDO_UID=1000", "--env", "QT_QPA_PLATFORM=offscreen"},
        {PYX_WALKTHROUGH, PYX_PLUGIN_DIR, state.filePath("pictures")});
    // The walkthrough ends with 0 only once the re-read form says the server is on.
    QVERIFY2(run.exitCode == 0, run.err.constData());
    QCOMPARE(QDir(state.filePath("pictures")).entryList(QDir::Files).size(), 8);
    QStringList buttons;
    for (const QString &line : QString::fromUtf8(run.out).split('\n'))
        if (line.contains(".png ") && !line.contains("/05-"))
            buttons << line.section(".png ", 1);
    QTEST(buttons.join(" | "), "buttons");

    // No line names the new host yet, so its entry is added (with the address the form offered)
    // and every other line stays.
    const QByteArray hosts = readFile(state.filePath("etc/hosts"));
    QVERIFY(hosts.startsWith(seed.out) && hosts.endsWith(" dc1.corp.lan dc1\n"));
    QCOMPARE(hosts.count('\n'), seed.out.count('\n') + 1);
    QVERIFY(readFile(state.filePath("etc/orn/orn.conf")).contains("corp.lan"));

    // The tool's arguments and environment, the passwords kept out of them and out of the
    // journal, the host's new name, the password file's removal and the reboot's call are
    // checked by the dialog's and the form's suites on the same simulated host.
    const QByteArray log = readFile(state.filePath("log"));
    // The lock around the tool, and the run's record from its start (the host renamed) to the
    // reboot.
    QTEST(lockDuringTool(log), "locks");
    const QByteArray record = readFile(state.filePath("journal"));
    const QList<JournalEntry> entries = journalEntries(record);
    QTEST(journalSummary(entries), "journal");
    // The start names the sudo user and what was asked for, the address the form offered.
    QStringList start;
    for (const char *field : {"PYX_SUDO_UID", "PYX_CUSTOM_NETWORK", "PYX_HOSTNAME",
                              "PYX_SERVER_NAME", "PYX_IP_ADDRESS"})
        start << entries.value(0)[field].toString();
    const QString address = hosts.mid(hosts.lastIndexOf('\n', -2) + 1).split(' ').first();
    if (!entries.isEmpty())
        QCOMPARE(start.join(' '), "1000 yes dc1 dc1.corp.lan " + address);
}

QTEST_GUILESS_MAIN(TestEndToEnd)
#include "tst_endtoend.moc"
