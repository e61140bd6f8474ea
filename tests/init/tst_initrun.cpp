// The initialisation run on the simulated host: password file, host name, /etc/hosts and the
// tool's run in the dialog. The program starts itself again inside sandbox/run, and refuses to
// run where the mounts or the host name are the real host's.
#include "initrequest.h"
#include "initserverdialog.h"
#include "journalsocket.h"
#include "journalrecord.h"
#include "simulatedtools.h"
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

// Those of the simulated host but hostnamed, which the bus starts on demand and which leaves
// when idle.
QSet<QString> processes()
{
    QSet<QString> pids;
    for (const QString &pid : QDir("/proc").entryList({"[1-9]*"}, QDir::Dirs))
        if (readFile("/proc/" + pid + "/comm") != "systemd-hostnam\n")
            pids << pid;
    return pids;
}

// One run of the dialog and what it comes to; each setter reads as part of a sentence.
struct Run
{
    explicit Run(const char *name = "")
        : tag(name)
    {}

    QString tag;
    QString setup;        // a shell script, before the run
    QStringList settings; // of the tools, beyond the case's own
    QString hostname;     // null: the host's own network settings
    QString pane;         // null: not compared
    QString emitted;      // the dialog's signals, and what a stopped run saw
    QString check = "true";
    QString stop;    // how the running tool is stopped: abort, destroy
    QString journal; // as journalSummary() tells it; null: not compared

    Run &after(const QString &script) { return setup = script, *this; }
    Run &set(const QStringList &values) { return settings << values, *this; }
    Run &host(const QString &name) { return hostname = name, *this; }
    Run &shows(const QString &text) { return pane = text, *this; }
    Run &emits(const QString &names) { return emitted = names, *this; }
    Run &leaves(const QString &script) { return check = script, *this; }
    Run &stopBy(const QString &how) { return stop = how, *this; }
    Run &records(const QString &summary) { return journal = summary, *this; }
};

} // namespace
Q_DECLARE_METATYPE(Run)

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
    void journalFlood_data();
    void journalFlood();
    void journalValues_data();
    void journalValues();
    void journalAbsent();

private:
    QByteArray m_journalCursor;
};

// The stand-in orn-init of tests/fakes, unless a row links the simulated one back; the system's
// hostnamectl, its calls recorded.
void TestInitRun::init()
{
    QVERIFY(restoreSandboxTools() && linkFake("orn-init") && linkFake("hostnamectl", "faulty"));
    QVERIFY(sh("rm -rf /etc/hosts /etc/h /etc/created /etc/orn /usr/local/sbin/orn-init && "
               "mkdir /etc/orn && cp /etc/pyx-hosts.default /etc/hosts && "
               "pkill -CONT -x systemd-journal; hostnamectl set-hostname ws1 && : >$SANDBOX_LOG && "
               ": >/etc/pyx-tools.env"));
    m_journalCursor = journalCursor();
}

void TestInitRun::run_data()
{
    QTest::addColumn<Run>("row");
    const QStringList show{"FAKE_ORN_INIT_SHOW=1"};
    const QString simulated = "ln -sf /run/sandbox/tools/orn-init /usr/bin/";
    const auto mode = [](const QString &m) { return QStringList{"SANDBOX_MODE_ORN_INIT=" + m}; };
    const QStringList orphan = mode("orphan") << "SANDBOX_ORN_INIT_DURATION=60";
    const QString seen = "[init][--force][--pass-file=/etc/orn/tempFile]\n", ok = "success";
    const QString written =
        seen + "600 0 regular file\nK/M:" + kerberos + "\nadmin/admin:" + admin + "|";
    // A password file that cannot be written safely: orn-init --force is never started.
    const QString refused = "File /etc/orn/tempFile can not be created";
    const QString withheld = "start password-file:failed end:failed:not-started:the password file "
                             "could not be written safely";
    const QString misnamed = "end:failed:not-started:the host does not carry the name asked for";
    const QString srv = "tail -n1 /etc/hosts | grep -qx '10.0.0.5 srv.new.lan srv' && hostname | ";
    const QString ws1 = "sed -n 2p /etc/hosts | grep -qx '10.0.0.5 ws1.new.lan ws1'";
    // The host is not renamed: /etc/hosts stays as it was, and no tool starts.
    const QString kept = "cmp -s /etc/hosts /etc/pyx-hosts.default && hostname | grep -qx ws1";
    const QString notSrv = "\nThe host is called ws1, not srv: /etc/hosts is left as it is and "
                           "orn-init is not started";
    const QString notRun = "Process start error: orn-init init --force --pass-file=" + secret;
    const QString crashed = "Process hostnamectl set-hostname srv finished with error: ";
    // The journal's words for the lock around a tool that ran, and for a run's last steps.
    const QString locked = "inhibitor:taken output inhibitor:released ";
    const QString quiet = "password-file:written inhibitor:taken inhibitor:released ";
    const QString succeeded = "end:succeeded:exited:0";
    // A journal that stops reading as the tool starts holds nothing up; what it was sent comes
    // once it reads again. (Stopped earlier, it would hold up the bus and logind, which log too.)
    const QString journalStopped =
        simulated + " && mkdir -p /usr/local/sbin && printf '#!/bin/sh\\npkill -STOP -x "
                    "systemd-journal\\nexec /usr/bin/orn-init \"$@\"\\n' >/usr/local/sbin/orn-init "
                    "&& chmod +x /usr/local/sbin/orn-init";
    const QString aborted = "start password-file:written " + locked + "end:failed:aborted";
    // A row a sentence: what is done first and set, then what the run shows, emits, leaves and
    // records.
    // clang-format off
    QList<Run> rows = {
        Run("password file").set(show).shows(written).emits(ok)
            .records("start password-file:written " + locked + succeeded),
        Run("stale password file").after("echo old >" + secret + "; chmod 644 " + secret).set(show)
            .shows(written).emits(ok),
        // A link, pipe or folder at the path takes one way; the form's table has the link whose
        // target must keep its content, and the folder that others may change.
        Run("dangling link at the password path").after("ln -s /etc/created " + secret)
            .set(show).shows(refused).leaves("[ -L " + secret + " ] && [ ! -e /etc/created ]")
            .records(withheld),
        Run("new host name").host("srv").shows("").emits("rename success")
            .leaves(srv + "grep -qx srv")
            .records("start hostname:changed hosts:added " + quiet + succeeded),
        Run("same host name").host("ws1").shows("").emits(ok)
            .leaves(ws1 + " && grep -q '\\[ws1]' $SANDBOX_LOG")
            .records("start hostname:unchanged hosts:replaced:127.0.1.1\tws1.example.lan\tws1 " +
                     quiet + succeeded),
        // hostnamectl stores "ab" and reports success; the host then carries another name than
        // asked.
        Run("host name altered").host("a b")
            .shows("The host is called ab, not a b: /etc/hosts is left as it is and orn-init is "
                   "not started")
            .emits("rename")
            .leaves("cmp -s /etc/hosts /etc/pyx-hosts.default && hostname | grep -qx ab")
            .records("start hostname:differs " + misnamed),
        // Found in none of the system's folders, a file without its x bit is no program.
        Run("hostnamectl not executable")
            .after("rm /usr/bin/hostnamectl; echo exit 0 >/usr/bin/hostnamectl").host("srv")
            .shows("Process start error: hostnamectl set-hostname srv" + notSrv).leaves(kept)
            .records("start hostname:failed hostname:differs " + misnamed),
        // A crash leaves the signal's number as the exit code: one way with an exit of 2.
        Run("hostnamectl crashes").set({"SANDBOX_MODE_HOSTNAMECTL=crash"}).host("srv")
            .shows(crashed + notSrv).leaves(kept),
        Run("hostnamectl prints a megabyte").set({"SANDBOX_MODE_HOSTNAMECTL=flood:1"}).host("srv")
            .shows("").emits("rename success").leaves(srv + "grep -qx srv"),
        Run("hosts link and mode kept")
            .after("mv /etc/hosts /etc/h; chmod 640 /etc/h; ln -s h /etc/hosts").host("ws1")
            .shows("").emits(ok)
            .leaves("[ -L /etc/hosts ] && [ $(stat -c %a /etc/h) = 640 ] && " + ws1),
        Run("colours, exit 0").set({"FAKE_ORN_INIT_OUT=\\033[1;32mok\\n"}).shows("ok").emits(ok),
        Run("standard error, exit 1").set({"FAKE_ORN_INIT_ERR=no\\n", "FAKE_ORN_INIT_EXIT=1"})
            .shows("no").records("start password-file:written " + locked + "end:failed:exited:1"),
        Run("tool missing").after("rm /usr/bin/orn-init").shows(notRun)
            .records("start password-file:written tool:failed end:failed:not-started:orn-init is "
                     "not in /usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin"),
        // Passed over like the shell would, for the one in a later folder.
        Run("tool not executable ahead of it")
            .after("mkdir -p /usr/local/sbin && echo exit 0 >/usr/local/sbin/orn-init").shows("")
            .emits(ok),
        Run("simulated tool").after(simulated).host("dc1").emits("rename success")
            .leaves("grep -qx 'domain = new.lan' /etc/orn/orn.conf"),
        Run("simulated tool crashes").after(simulated).set(mode("crash"))
            .records("start password-file:written " + locked + "end:failed:crashed"),
        Run("journal stopped").after(journalStopped).set(mode("flood:1")).emits(ok)
            .leaves("pkill -CONT -x systemd-journal"),
        // The simulated tool leaves a helper behind, which must not outlive the run either.
        // While the tool runs, logind lists the lock.
        Run("Abort").after(simulated).set(orphan).emits("locked ignored").stopBy("abort")
            .records(aborted),
        Run("dialog destroyed").after(simulated).set(orphan).emits("locked ignored")
            .stopBy("destroy").records(aborted),
    };
    // Waits out the 30 s limit; ctest runs it on its own, labelled slow.
    if (qEnvironmentVariableIsSet("PYX_INIT_SLOW"))
        rows << Run("hostnamectl hangs").set({"SANDBOX_MODE_HOSTNAMECTL=hang"}).host("srv")
                    .shows("Process finish error: hostnamectl set-hostname srv" + notSrv)
                    .leaves(kept);
    // clang-format on
    for (const Run &row : rows)
        QTest::newRow(qPrintable(row.tag)) << row;
}

void TestInitRun::run()
{
    QFETCH(Run, row);
    const QString &setup = row.setup, &host = row.hostname, &pane = row.pane, &check = row.check,
                  &stop = row.stop, &journal = row.journal;
    const QStringList &settings = row.settings;
    QVERIFY2(sh(setup), qPrintable(setup));
    QVERIFY(setSandboxSettings(
        QStringList{"SANDBOX_ORN_INIT_DURATION=0", "SANDBOX_ENV_LOG=/etc/pyx-tools.env"} +
        settings));
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
    QString finished, shown, told;
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
        // The focus on Close tells a screen reader that the run has ended.
        told = (dialog->focusWidget() == box->button(QDialogButtonBox::Close) ? "" : "elsewhere ") +
               dialog->accessibleDescription() + " / " + text->accessibleDescription();
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
    const bool hangs = settings.join(' ').contains("=hang");
    QVERIFY2(hangs ? elapsed >= 30000 && elapsed < 33000 : elapsed < 10000,
             qPrintable(QString::number(elapsed)));
    QCOMPARE(childProcesses().join(", "), QString());
    QCOMPARE(finished, stop == "destroy" ? "" : "0 100 100 200000");
    QCOMPARE(emitted.join(' '), row.emitted);
    // After Abort the pane ends with a line of its own, which says why the output stops.
    const QString abortLine = "\nThe server creation was aborted.";
    QCOMPARE(shown.endsWith(abortLine), stop == "abort");
    if (stop == "abort")
        shown.chop(abortLine.size());
    if (!pane.isNull())
        QCOMPARE(shown, pane);
    QVERIFY(!QFileInfo(secret).isFile() || QFileInfo(secret).isSymLink());
    QTRY_COMPARE(processes(), before);
    QVERIFY2(sh(check), qPrintable(check));
    QVERIFY(!host.isNull() || !sh("grep -q hostnamectl $SANDBOX_LOG"));

    // Every run ends with an entry in the journal; the record is read once it has come.
    QList<JournalEntry> entries;
    const auto lastStep = [&] {
        entries = journalEntries(journalRecord(m_journalCursor));
        return entries.isEmpty() ? QString() : entries.last()["PYX_STEP"].toString();
    };
    QTRY_COMPARE(lastStep(), "end");
    const QString summary = journalSummary(entries);
    if (!journal.isNull())
        QCOMPARE(summary, journal);
    // The window and its pane tell a screen reader how the run ended, as the journal does; why a
    // tool did not start is the journal's alone.
    const QString end = summary.section(" end:", -1);
    const QString outcome =
        QMap<QString, QString>{
            {"succeeded:exited:0", "The server has been created."},
            {"failed:exited:1", "The server was not created: orn-init exited with code 1."},
            {"failed:crashed", "The server was not created: orn-init crashed."},
            {"failed:not-started", "The server was not created: orn-init could not be started."},
            {"failed:aborted", "The server creation was aborted."}}
            [end.startsWith("failed:not-started") ? "failed:not-started" : end];
    QCOMPARE(told, stop == "destroy" ? QString() : outcome + " / " + outcome);
    // A failed run is found among the warnings; one that succeeded is not.
    const QString run = "PYX_RUN_ID=" + entries.value(0)["PYX_RUN_ID"].toString();
    QCOMPARE(journalEntries(journalRecord({}, {"-p", "warning", run})).isEmpty(),
             !summary.contains("end:failed"));

    // logind lists the lock to the tool while it runs, and no more once the run has ended; the
    // tool inherits no descriptor of it. A tool never started takes none.
    QCOMPARE(lockDuringTool(readFile(qEnvironmentVariable("SANDBOX_LOG"))),
             summary.contains("inhibitor:taken") ? "locked" : "no tool");
    QTRY_COMPARE(runProgram("/usr/bin/systemd-inhibit", {"--list", "--no-legend"}).out, "");

    // The pane's text is that of the output and of the steps that failed, the passwords masked.
    // The journal takes whole lines, a channel's own: where a flood's pieces cut lines and
    // interleave the channels, only the amount is the same.
    QString lines;
    for (const JournalEntry &entry : entries)
        if (entry["PYX_STEP"] == "output" ||
            (entry["PYX_STEP"] != "end" &&
             (entry["PYX_RESULT"] == "failed" || entry["PYX_RESULT"] == "differs")))
            lines += entry["MESSAGE"].toString();
    const QString paneLines =
        QString(shown).replace(kerberos, "********").replace(admin, "********").remove('\n');
    if (settings.join(' ').contains("=flood"))
        QCOMPARE(lines.remove('\n').size(), paneLines.size());
    else if (stop != "destroy")
        QCOMPARE(lines.remove('\n'), paneLines);

    // Only the stand-in that prints the file shows the passwords; no tool's arguments or
    // environment, no journal entry and no other pane holds them.
    const QByteArray calls = readFile(qEnvironmentVariable("SANDBOX_LOG")),
                     environments = readFile("/etc/pyx-tools.env");
    QCOMPARE(environments.isEmpty(), calls.isEmpty());
    QByteArray written =
        calls + environments +
        (settings.contains("FAKE_ORN_INIT_SHOW=1") ? QByteArray() : shown.toUtf8());
    for (const JournalEntry &entry : entries)
        written += QJsonDocument(entry).toJson();
    for (const QString &password : {kerberos, admin})
        QVERIFY(!written.contains(password.trimmed().toUtf8()));
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

namespace {

// An entry of the journal socket's tests, found again by its run's identifier.
JournalSocket::Fields identity(const QByteArray &run)
{
    return {{"SYSLOG_IDENTIFIER", "pyx-orn-server-plugin"}, {"PYX_RUN_ID", run}};
}

QStringList messages(const QByteArray &run)
{
    QStringList found;
    if (sh("/run/sandbox/journal-sync"))
        for (const JournalEntry &entry :
             journalEntries(journalRecord({}, {"PYX_RUN_ID=" + QString::fromUtf8(run)})))
            found << entry["MESSAGE"].toString();
    return found;
}

} // namespace

// A journald that stops reading holds up no send; once it reads again it gets the entries in
// order, or those the bound kept and then how many were lost.
void TestInitRun::journalFlood_data()
{
    QTest::addColumn<qint64>("limit");
    QTest::newRow("all kept") << JournalSocket::defaultQueueLimit;
    QTest::newRow("past the bound") << qint64(64 * 1024);
}

void TestInitRun::journalFlood()
{
    QFETCH(qint64, limit);
    const QByteArray run = QTest::currentDataTag();
    JournalSocket socket(JournalSocket::defaultPath(), limit);
    QVERIFY(sh("pkill -STOP -x systemd-journal"));
    const int count = 5000;
    qint64 longest = 0;
    QStringList sent;
    for (int i = 0; i < count; ++i) {
        // The last one comes once the journal has room again while entries still wait: it must
        // not overtake them.
        if (i == count - 1)
            QVERIFY(sh("pkill -CONT -x systemd-journal && sleep 0.2"));
        QElapsedTimer timer;
        timer.start();
        socket.send(identity(run), {{"PRIORITY", "6"}, {"MESSAGE", QByteArray::number(i)}});
        longest = std::max(longest, timer.elapsed());
        sent << QString::number(i);
    }
    QVERIFY2(longest < 100, qPrintable(QString("%1 ms").arg(longest)));
    QVERIFY(socket.pendingBytes() > 0);
    QTRY_COMPARE_WITH_TIMEOUT(socket.pendingBytes(), 0, 20000);
    const QStringList taken = messages(run);
    if (limit < JournalSocket::defaultQueueLimit) {
        const int kept = taken.size() - 1;
        QVERIFY(kept > 0 && kept < count);
        sent = sent.mid(0, kept) << QString("Journal entries lost, as the journal did not take "
                                            "them in time: %1")
                                        .arg(count - kept);
    }
    QCOMPARE(taken, sent);
}

// A value with line feeds, and one larger than a datagram, which goes in a sealed memory file;
// nothing of the socket stays open after it.
void TestInitRun::journalValues_data()
{
    QTest::addColumn<QByteArray>("value");
    QTest::newRow("line feeds") << QByteArray("two\nlines\n");
    QTest::newRow("several MB") << QByteArray(9000000, 'x') + "\n=y";
}

void TestInitRun::journalValues()
{
    QFETCH(QByteArray, value);
    const QByteArray run = QTest::currentDataTag();
    const auto descriptors = [] {
        return QDir("/proc/self/fd").entryList(QDir::AllEntries | QDir::System).size();
    };
    const int before = descriptors();
    {
        JournalSocket socket;
        socket.send(identity(run), {{"MESSAGE", value}});
        QCOMPARE(socket.pendingBytes(), 0);
    }
    QCOMPARE(descriptors(), before);
    QCOMPARE(messages(run), QStringList(QString::fromUtf8(value)));
}

// Without a journal an entry is dropped at once; one that comes later is found.
void TestInitRun::journalAbsent()
{
    const QString path = "/run/sandbox/later-journal";
    JournalSocket socket(path);
    QElapsedTimer timer;
    timer.start();
    socket.send(identity("absent"), {{"MESSAGE", "dropped"}});
    QVERIFY(timer.elapsed() < 100);
    QCOMPARE(socket.pendingBytes(), 0);
    QVERIFY(sh("ln -s /run/systemd/journal/socket " + path));
    socket.send(identity("absent"), {{"MESSAGE", "taken"}});
    QCOMPARE(messages("absent"), QStringList("taken"));
}

// Inside, on a simulated host that refuses to be the real one.
int main(int argc, char *argv[])
{
    if (const int inside = runOnSimulatedHost(argc, argv); inside >= 0)
        return inside;
    QApplication app(argc, argv);
    TestInitRun test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_initrun.moc"
