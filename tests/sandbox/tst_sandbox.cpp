// The simulated host: what a sandboxed command changes stays inside, the system's services and
// packages are there as the plug-in's system tests assume, and the simulated orn-init leaves what
// the console's core reads. The reboot command and the failure modes are exercised by those tests.
#include "hostorncore.h"
#include "journalrecord.h"

#include <QtTest>

#include <signal.h>

namespace {

// What of the real host a sandboxed command could be tempted to change.
QStringList hostFacts()
{
    return {QSysInfo::machineHostName(), QString::fromLatin1(readFile("/etc/hosts").toHex()),
            QDir("/etc/orn").entryList(QDir::AllEntries | QDir::Hidden).join(' ')};
}

} // namespace

class TestSandbox : public QObject
{
    Q_OBJECT

private slots:
    void isolation();
    void tools_data();
    void tools();
};

void TestSandbox::isolation()
{
    QTemporaryDir state; // a failure to make it shows as a usage error of sandbox/run
    const QStringList before = hostFacts();
    const QString stray = QString("pyx-stray-%1").arg(QRandomGenerator::global()->generate64());

    // Ends at once unless the mount and host name namespaces differ from the host's (the links'
    // targets read "mnt:[inode]"); then does to the host by hand what the plug-in does, counts
    // logind's locks on sleep with one taken and after, sends the journal an entry too large for
    // one datagram just before it ends, and leaves a helper running.
    const QString script =
        QString("case '%1' in *\"$(readlink /proc/self/ns/mnt)\"* | "
                "*\"$(readlink /proc/self/ns/uts)\"*) exit 99 ;; esac\nset -e\n"
                "printf '127.0.0.1\\tlocalhost\\n10.1.2.3\\tdc1.corp.example\\tdc1\\n' >/etc/.h\n"
                "mv /etc/.h /etc/hosts; echo rehearsal >/etc/orn/x; hostname dc1.corp.example\n"
                "bash -c 'exec -a \"$0\" sleep 1000' %2 &\n"
                "kill -0 $!; cat /etc/hosts /etc/orn/x; hostname\n"
                "locks='systemd-inhibit --list --no-legend | grep -c \" sleep \" || :'\n"
                "systemd-inhibit --what=sleep --who=t --why=t sh -c \"$locks\"; sh -c \"$locks\"\n"
                "printf 'SYSLOG_IDENTIFIER=pyx-orn-server-plugin\\nMESSAGE=%s\\n' "
                "\"$(head -c 9000000 /dev/zero | tr '\\0' x)\" | logger --journald\n")
            .arg(namespaces().join(""), stray);
    const SandboxRun run = runSandbox({"--state-dir", state.path()}, {"sh", "-c", script});
    QStringList strays; // started inside, still running: ended here, then reported
    for (const QString &pid : QDir("/proc").entryList(QDir::Dirs)) {
        if (pid.toInt() > 0 &&
            readFile(QString("/proc/%1/cmdline").arg(pid)).contains(stray.toLatin1())) {
            ::kill(pid.toInt(), SIGKILL);
            strays << pid;
        }
    }

    QVERIFY2(run.exitCode == 0, run.err.constData());
    const QByteArray changed = "127.0.0.1\tlocalhost\n10.1.2.3\tdc1.corp.example\tdc1\n"
                               "rehearsal\ndc1.corp.example\n";
    QCOMPARE(run.out, changed + "1\n0\n");
    const auto kept = [&](const char *path) { return readFile(state.filePath(path)); };
    QCOMPARE(QByteArray(kept("etc/hosts") + kept("etc/orn/x") + kept("hostname")), changed);
    QCOMPARE(journalEntries(kept("journal")).value(0)["MESSAGE"].toString().size(), 9000000);
    QCOMPARE(hostFacts(), before);
    QCOMPARE(strays, QStringList());
}

void TestSandbox::tools_data()
{
    QTest::addColumn<QString>("options");
    QTest::addColumn<QString>("script");
    QTest::addColumn<QByteArray>("out");
    QTest::addColumn<QString>("directory"); // what the console's core reads from /etc/orn after
    const auto row = [](const char *name, const char *options, const QString &script,
                        const QByteArray &out, const QString &directory = QString()) {
        QTest::newRow(name) << QString::fromLatin1(options) << script << out << directory;
    };

    // The states the package suites meet, made by dpkg: a failed postinst, a removal that kept
    // the conffile, a second architecture; then changed inside.
    const QString packages = "dpkg-query -W -f='${Package} ${Status}\\n' 'orn-*'";
    row("packages: as dpkg leaves them",
        "--package orn-server-dc=half-configured --package orn-admin=config-files "
        "--package orn-server-common:i386=installed",
        packages + "; /run/sandbox/package orn-server-dc unpacked orn-admin missing && " + packages,
        "orn-admin deinstall ok config-files\norn-server-common install ok installed\n"
        "orn-server-common install ok installed\norn-server-dc install ok half-configured\n"
        "orn-server-common install ok installed\norn-server-common install ok installed\n"
        "orn-server-dc install ok unpacked\n");

    // The simulated tool's own strictness about the password file is the dialog's suite's: it
    // checks the file's mode and bytes as the tool receives them.
    const QString init = "printf 'K/M:Km-s3cret\\nadmin/admin:Adm1n-s3cret' >/etc/orn/p; "
                         "chmod 600 /etc/orn/p; orn-init init --force --pass-file=/etc/orn/p "
                         ">/dev/null 2>&1; echo $?";
    row("orn-init: good", "", init, "0\n", "dc .example.lan EXAMPLE.LAN on");
    row("orn-init: exit:3 stops the server", "--provisioned --mode orn-init=exit:3", init, "3\n");
}

void TestSandbox::tools()
{
    QFETCH(QString, options);
    QFETCH(QString, script);
    QFETCH(QByteArray, out);
    QFETCH(QString, directory);
    QTemporaryDir state;

    const SandboxRun run =
        runSandbox(options.split(' ', Qt::SkipEmptyParts) +
                       QStringList{"--state-dir", state.path(), "--orn-init-duration=0"},
                   {"sh", "-c", script});
    QVERIFY2(run.exitCode == 0, run.err.constData());
    QCOMPARE(run.out, out);
    const HostOrnCore core(state.filePath("etc/orn"));
    const std::string seen = core.serverRole() + ' ' + core.domainName() + ' ' + core.realmName() +
                             (core.isServerOn() ? " on" : " off");
    QCOMPARE(core.isConfigured() ? QString::fromStdString(seen) : QString(), directory);
}

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    // Where the sandbox cannot run (not root, or no namespaces), sandbox/run returns 77, which
    // CTest counts as a skip.
    const SandboxRun probe = runSandbox({}, {"true"});
    if (probe.exitCode == 77) {
        std::fprintf(stderr, "SKIP: %s", probe.err.constData());
        return 77;
    }
    TestSandbox test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_sandbox.moc"
