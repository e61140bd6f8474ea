// The initialisation run on the simulated host: password file, host name, /etc/hosts and the
// tool's run in the dialog. The program starts itself again inside sandbox/run, and refuses to
// run where the mounts or the host name are the real host's.
#include "initrequest.h"
#include "initserverdialog.h"
#include "sandboxprocess.h"
#include "secretfile.h"

#include <QtTest>
#include <QtWidgets>

#include <utility>
#include <sys/inotify.h>
#include <sys/stat.h>
#include <unistd.h>

namespace {

const QString secret = "/etc/orn/tempFile";
// Distinctive, so that a leak anywhere is found; with a colon, percent signs and non-ASCII letters.
const QString kerberos = " Kdb:7%2 Qx9 ", admin = "Адм1н%1Zy8";
QtMessageHandler defaultHandler = nullptr;
bool destroyedWhileRunning = false;

QSet<QString> processes()
{
    const QStringList pids = QDir("/proc").entryList({"[1-9]*"}, QDir::Dirs);
    return QSet<QString>(pids.cbegin(), pids.cend());
}

} // namespace

class TestInitRun : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        // After the test library's own handler, which this one passes everything on to.
        defaultHandler = qInstallMessageHandler(
            [](QtMsgType type, const QMessageLogContext &context, const QString &message) {
                destroyedWhileRunning |= message.contains("Destroyed while process");
                defaultHandler(type, context, message);
            });
        QVERIFY(sh("cp /etc/hosts /etc/pyx-hosts.default"));
    }
    void init();
    void cleanup()
    {
        const bool destroyed = std::exchange(destroyedWhileRunning, false);
        QVERIFY2(!destroyed, "a process object was destroyed while its process ran");
    }
    void run_data();
    void run();
    void creationMode();

private:
    const QByteArray m_path = qgetenv("PATH");
};

void TestInitRun::init()
{
    for (const char *name : {"FAKE_ORN_INIT_SHOW", "FAKE_ORN_INIT_OUT", "FAKE_ORN_INIT_ERR",
                             "FAKE_ORN_INIT_EXIT", "SANDBOX_MODE_ORN_INIT"})
        qunsetenv(name);
    qputenv("SANDBOX_ORN_INIT_DURATION", "0");
    qputenv("SANDBOX_ENV_LOG", "/etc/pyx-tools.env");
    qputenv("PATH", PYX_TEST_FAKES_DIR ":" + m_path);
    QVERIFY(sh("rm -rf /etc/hosts /etc/h /etc/target /etc/created /etc/noexec /etc/orn && "
               "mkdir /etc/orn && cp /etc/pyx-hosts.default /etc/hosts && hostname ws1 && "
               ": >$SANDBOX_LOG && : >$SANDBOX_ENV_LOG && : >$SANDBOX_JOURNAL"));
}

void TestInitRun::run_data()
{
    QTest::addColumn<QString>("setup");
    QTest::addColumn<QStringList>("environment");
    QTest::addColumn<QString>("host"); // none: the host's own network settings
    QTest::addColumn<QString>("pane"); // none: not compared
    QTest::addColumn<QString>("emitted");
    QTest::addColumn<QString>("check");
    QTest::addColumn<QString>("stop"); // how the running tool is stopped: abort, destroy
    QTest::addColumn<QString>("journal"); // as journalSummary() tells it; none: not compared
    const auto row = [](const char *name, const QString &setup, const QStringList &environment,
                        const QString &host, const QString &pane, const QString &emitted,
                        const QString &check = "true", const QString &stop = "",
                        const QString &journal = QString()) {
        QTest::newRow(name) << setup << environment << host << pane << emitted << check << stop
                            << journal;
    };
    const QStringList show{"FAKE_ORN_INIT_SHOW=1"};
    const QStringList simulated{"PATH=" + QString::fromLocal8Bit(m_path)};
    const auto mode = [&](const QString &m) {
        return QStringList(simulated) << "SANDBOX_MODE_ORN_INIT=" + m;
    };
    const QStringList orphan = mode("orphan") << "SANDBOX_ORN_INIT_DURATION=60";
    const QString seen = "[init][--force][--pass-file=/etc/orn/tempFile]\n", none, ok = "success";
    const QString written =
        seen + "600 0 regular file\nK/M:" + kerberos + "\nadmin/admin:" + admin + "|";
    const QString refused = "File /etc/orn/tempFile can not be created\n" + seen;
    const QString srv = "tail -n1 /etc/hosts | grep -qx '10.0.0.5 srv.new.lan srv' && hostname | ";
    const QString ws1 = "sed -n 2p /etc/hosts | grep -qx '10.0.0.5 ws1.new.lan ws1'";
    // A program file without its x bit, first on PATH.
    const auto noexec = [](const QString &tool) {
        return "mkdir -p /etc/noexec && echo exit 0 >/etc/noexec/" + tool;
    };
    const QString notRun = "Process start error: orn-init init --force --pass-file=" + secret;
    const QString crashed = "Process hostnamectl set-hostname srv finished with error: ";
    // The journal's words for the lock around a tool that ran, and for a run's last steps.
    const QString locked = "inhibitor:taken output inhibitor:released ";
    const QString quiet = "password-file:written inhibitor:taken inhibitor:released ";
    const QString succeeded = "end:succeeded:exited:0";
    row("password file", "", show, none, written, ok, "true", "",
        "start password-file:written " + locked + succeeded);
    row("stale password file", "echo old >" + secret + "; chmod 644 " + secret, show, none, written,
        ok);
    row("link at the password path", "echo keep >/etc/target; ln -s /etc/target " + secret, show,
        none, refused + "777 0 symbolic link\nkeep\n|", ok,
        "[ -L " + secret + " ] && [ \"$(cat /etc/target)\" = keep ]");
    row("dangling link at the password path", "ln -s /etc/created " + secret, show, none,
        refused + "777 0 symbolic link\n|", ok, "[ -L " + secret + " ] && [ ! -e /etc/created ]");
    row("pipe at the password path", "mkfifo " + secret, show, none, refused + "644 0 fifo\n|", ok,
        "[ -p " + secret + " ]");
    row("folder at the password path", "mkdir " + secret + " && echo keep >" + secret + "/in", show,
        none, refused + "755 0 directory\n|", ok,
        "[ \"$(ls -A " + secret + ")\" = in ] && [ \"$(cat " + secret + "/in)\" = keep ]");
    row("password folder writable by group", "chmod 775 /etc/orn", show, none,
        refused + "missing\n|", ok);
    row("new host name", "", {}, "srv", "", "rename success", srv + "grep -qx srv", "",
        "start hostname:changed hosts:added " + quiet + succeeded);
    row("same host name", "", {}, "ws1", "", ok, ws1 + " && grep -q '\\[ws1]' $SANDBOX_LOG", "",
        "start hostname:unchanged hosts:replaced:127.0.1.1\tws1.example.lan\tws1 " + quiet +
            succeeded);
    row("host name refused", "", {}, "a b",
        "Process hostnamectl set-hostname a b finished with error: Could not set static "
        "hostname: Invalid static hostname 'a b'\n",
        ok, "grep -qx '10.0.0.5 a b.new.lan a b' /etc/hosts", "",
        "start hostname:failed hosts:added " + quiet + succeeded);
    row("hostnamectl not executable", noexec("hostnamectl"),
        {"PATH=/etc/noexec:" PYX_TEST_FAKES_DIR}, "srv",
        "Process start error: hostnamectl set-hostname srv", ok, srv + "grep -qx ws1");
    row("hostnamectl crashes", "", {"SANDBOX_MODE_HOSTNAMECTL=crash"}, "srv", crashed, ok,
        srv + "grep -qx ws1");
    row("hostnamectl exits 2", "", {"SANDBOX_MODE_HOSTNAMECTL=exit:2"}, "srv", crashed, ok,
        srv + "grep -qx ws1");
    row("hostnamectl prints a megabyte", "", {"SANDBOX_MODE_HOSTNAMECTL=flood:1"}, "srv", "",
        "rename success", srv + "grep -qx srv");
    // Waits out the 30 s limit; ctest runs it on its own, labelled slow.
    if (qEnvironmentVariableIsSet("PYX_INIT_SLOW"))
        row("hostnamectl hangs", "", {"SANDBOX_MODE_HOSTNAMECTL=hang"}, "srv",
            "Process finish error: hostnamectl set-hostname srv", ok, srv + "grep -qx ws1");
    row("hosts link and mode kept", "mv /etc/hosts /etc/h; chmod 640 /etc/h; ln -s h /etc/hosts",
        {}, "ws1", "", ok, "[ -L /etc/hosts ] && [ $(stat -c %a /etc/h) = 640 ] && " + ws1);
    row("colours, exit 0", "", {"FAKE_ORN_INIT_OUT=\\033[1;32mok\\n"}, none, "ok", ok);
    row("standard error, exit 1", "", {"FAKE_ORN_INIT_ERR=no\\n", "FAKE_ORN_INIT_EXIT=1"}, none,
        "no", "", "true", "", "start password-file:written " + locked + "end:failed:exited:1");
    row("tool missing", "", {"PATH=/nonexistent"}, none, notRun, "", "true", "",
        "start password-file:written inhibitor:taken tool:failed inhibitor:released "
        "end:failed:not-started");
    // Passed over like the shell would, for the one after it.
    row("tool not executable ahead of it", noexec("orn-init"),
        {"PATH=/etc/noexec:" PYX_TEST_FAKES_DIR}, none, "", ok);
    row("simulated tool", "", simulated, "dc1", none, "rename success",
        "grep -qx 'domain = new.lan' /etc/orn/orn.conf");
    row("simulated tool crashes", "", mode("crash"), none, none, "", "true", "",
        "start password-file:written " + locked + "end:failed:crashed");
    row("simulated tool prints a megabyte", "", mode("flood:1"), none, none, ok);
    // The simulated tool leaves a helper behind, which must not outlive the run either.
    // While the tool runs, logind lists the lock.
    const QString aborted = "start password-file:written " + locked + "end:failed:aborted";
    row("Abort", "", orphan, none, none, "locked ignored", "true", "abort", aborted);
    row("dialog destroyed", "", orphan, none, none, "locked ignored", "true", "destroy", aborted);
}

void TestInitRun::run()
{
    QFETCH(QString, setup);
    QFETCH(QStringList, environment);
    QFETCH(QString, host);
    QFETCH(QString, pane);
    QFETCH(QString, check);
    QFETCH(QString, stop);
    QFETCH(QString, journal);
    QVERIFY2(sh(setup), qPrintable(setup));
    for (const QString &setting : environment)
        qputenv(qPrintable(setting.section('=', 0, 0)), setting.section('=', 1).toLocal8Bit());
    const QSet<QString> before = processes();
    QPointer<InitServerDialog> dialog = new InitServerDialog(
        InitRequest::make(kerberos, admin, !host.isNull(), "10.0.0.5", host, host + ".new.lan"));
    QStringList emitted;
    connect(dialog, &InitServerDialog::serverCreatedSuccsessfully, [&] { emitted << "success"; });
    connect(dialog, &InitServerDialog::hostnameChanged,
            [&] { emitted << (dialog->isVisible() ? "rename while shown" : "rename"); });
    auto *box = dialog->findChild<QDialogButtonBox *>();
    auto *bar = dialog->findChild<QProgressBar *>();
    auto *text = dialog->findChild<QPlainTextEdit *>();
    QString finished, shown;
    QTimer::singleShot(0, this, [&] {
        if (!stop.isEmpty()) {
            // Escape, Return, Enter and a close request change nothing while the tool runs, on
            // the Abort button or elsewhere.
            const bool running =
                QTest::qWaitFor([&] { return !text->toPlainText().isEmpty(); }, 20000);
            const QByteArray locks =
                runProgram("systemd-inhibit", {"--list", "--no-legend"}).out.simplified();
            emitted << (locks.count(" shutdown:sleep:idle:handle-lid-switch ") == 1 &&
                                locks.endsWith(" block")
                            ? "locked"
                            : locks);
            QTest::keyClick(dialog, Qt::Key_Escape);
            dialog->close();
            QWidget *abort = box->button(QDialogButtonBox::Abort);
            for (QWidget *target : {abort, static_cast<QWidget *>(text)}) {
                QTest::keyClick(target, Qt::Key_Return);
                if (box->button(QDialogButtonBox::Abort))
                    QTest::keyClick(target, Qt::Key_Enter, Qt::KeypadModifier);
            }
            emitted << (running && dialog->isVisible() && box->button(QDialogButtonBox::Abort) &&
                                QFileInfo(secret).isFile()
                            ? "ignored"
                            : "closed");
            if (stop == "destroy")
                return delete dialog;
            if (box->button(QDialogButtonBox::Abort))
                QTest::keyClick(abort, Qt::Key_Space);
        }
        // A run that does not end is aborted, so that the test fails instead of hanging.
        if (!QTest::qWaitFor([&] { return box->button(QDialogButtonBox::Close); }, 20000))
            box->button(QDialogButtonBox::Abort)->click();
        finished = QString::asprintf("%d %d %d %x", bar->minimum(), bar->maximum(), bar->value(),
                                     unsigned(box->standardButtons()));
        shown = text->toPlainText();
        // Return closes the ended run from anywhere in it, not only from a focused Close.
        QTest::keyClick(text, Qt::Key_Return);
        if (dialog->isVisible()) {
            finished += " Return ignored";
            box->button(QDialogButtonBox::Close)->click();
        }
    });
    QElapsedTimer clock;
    clock.start();
    QCOMPARE(dialog->exec(), 0);
    const qint64 elapsed = clock.elapsed();
    delete dialog;
    // A hanging hostnamectl costs its 30 s limit and no more; whatever ran has been reaped.
    const bool hangs = environment.join(' ').contains("=hang");
    QVERIFY2(hangs ? elapsed >= 30000 && elapsed < 33000 : elapsed < 10000,
             qPrintable(QString::number(elapsed)));
    QCOMPARE(childProcesses().join(", "), QString());
    QCOMPARE(finished, stop == "destroy" ? "" : "0 100 100 200000");
    QTEST(emitted.join(' '), "emitted");
    if (!pane.isNull())
        QCOMPARE(shown, pane);
    QVERIFY(!QFileInfo(secret).isFile() || QFileInfo(secret).isSymLink());
    QTRY_COMPARE(processes(), before);
    QVERIFY2(sh(check), qPrintable(check));
    QVERIFY(!host.isNull() || !sh("grep -q hostnamectl $SANDBOX_LOG"));

    // The lock is taken just before the tool starts and released once it has ended, by logind's
    // record; with the simulated tool its call comes in between.
    const auto order = [] { return lockOrder(readFile(qEnvironmentVariable("SANDBOX_LOG"))); };
    QTRY_VERIFY(order().endsWith("released"));
    QCOMPARE(order(), order().contains("tool") ? "taken tool released" : "taken released");

    // Every run ends with an entry in the journal; the pane's paragraphs are the messages of
    // the output and of the steps that failed, the passwords masked.
    const auto entries = [] {
        return journalEntries(readFile(qEnvironmentVariable("SANDBOX_JOURNAL")));
    };
    QTRY_COMPARE(entries().value(entries().size() - 1)["PYX_STEP"], "end");
    if (!journal.isNull())
        QCOMPARE(journalSummary(entries()), journal);
    QStringList paragraphs;
    for (const JournalEntry &entry : entries())
        if (entry["PYX_STEP"] == "output" ||
            (entry["PYX_RESULT"] == "failed" && entry["PYX_STEP"] != "end"))
            paragraphs << entry["MESSAGE"].toString();
    if (stop != "destroy")
        QCOMPARE(paragraphs.join('\n'),
                 QString(shown).replace(kerberos, "********").replace(admin, "********"));

    // Only the stand-in that prints the file shows the passwords; no tool's arguments or
    // environment, no journal entry and no other pane holds them.
    const QByteArray calls = readFile(qEnvironmentVariable("SANDBOX_LOG")),
                     environments = readFile(qEnvironmentVariable("SANDBOX_ENV_LOG"));
    QCOMPARE(environments.isEmpty(), toolCalls(calls).isEmpty());
    const QByteArray record =
        calls + environments + readFile(qEnvironmentVariable("SANDBOX_JOURNAL")) +
        (environment.contains("FAKE_ORN_INIT_SHOW=1") ? QByteArray() : shown.toUtf8());
    for (const QString &password : {kerberos, admin})
        QVERIFY(!record.contains(password.trimmed().toUtf8()));
}

// Owner-only from birth: created 0600 whatever the umask, and no change of mode afterwards. A
// file of root's that is 0600 from the moment it exists cannot be opened by a user who races the
// run for it, however often the run writes and removes it.
void TestInitRun::creationMode()
{
    const int watch = inotify_init1(IN_NONBLOCK | IN_CLOEXEC);
    QVERIFY(inotify_add_watch(watch, "/etc/orn", IN_ATTRIB) >= 0);
    const mode_t umaskBefore = ::umask(0);
    const int fd = SecretFile::create(secret);
    ::umask(umaskBefore);
    struct stat status = {};
    QVERIFY(::fstat(fd, &status) == 0 && ::close(fd) == 0);
    char events[4096];
    QCOMPARE(::read(watch, events, sizeof events), ssize_t(-1));
    ::close(watch);
    QCOMPARE(status.st_mode & 07777, mode_t(0600));
}

// The simulated tool leaves a helper behind; neither may outlive the run.
int main(int argc, char *argv[])
{
    if (const int inside = runOnSimulatedHost(argc, argv); inside >= 0)
        return inside;
    QApplication app(argc, argv);
    TestInitRun test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_initrun.moc"
