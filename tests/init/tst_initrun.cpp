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
QtMessageHandler defaultHandler = nullptr;
bool destroyedWhileRunning = false;

// Scripts find the system's tools whatever PATH a case chose.
bool sh(const QString &script)
{
    return QProcess::execute("/bin/sh", {"-c", "PATH=/usr/sbin:/usr/bin:/sbin:/bin\n" + script}) ==
           0;
}

QSet<QString> processes()
{
    QSet<QString> pids;
    for (const QString &entry : QDir("/proc").entryList(QDir::Dirs))
        if (entry.toInt() > 0)
            pids << entry;
    return pids;
}

QStringList namespaces()
{
    return {QFile::symLinkTarget("/proc/self/ns/mnt"), QFile::symLinkTarget("/proc/self/ns/uts")};
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
    qputenv("PATH", PYX_TEST_FAKES_DIR ":" + m_path);
    QVERIFY(sh("umount /etc/hosts /etc/small 2>/dev/null; rm -rf /etc/hosts /etc/hosts.* "
               "/etc/small /etc/target /etc/orn && mkdir /etc/orn && cp /etc/pyx-hosts.default "
               "/etc/hosts && hostname ws1 && : >$SANDBOX_LOG"));
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
    const auto row = [](const char *name, const QString &setup, const QStringList &environment,
                        const QString &host, const QString &pane, const QString &emitted,
                        const QString &check = "true", const QString &stop = "") {
        QTest::newRow(name) << setup << environment << host << pane << emitted << check << stop;
    };
    const QStringList show{"FAKE_ORN_INIT_SHOW=1"}, fakes{"PATH=" PYX_TEST_FAKES_DIR};
    const QStringList simulated{"PATH=" + QString::fromLocal8Bit(m_path)};
    const QStringList orphan =
        simulated + QStringList{"SANDBOX_MODE_ORN_INIT=orphan", "SANDBOX_ORN_INIT_DURATION=60"};
    const QString seen = "[init][--force][--pass-file=/etc/orn/tempFile]\n", none, ok = "success";
    const QString written = seen + "600 0 regular file\nK/M: k:1%2 \nadmin/admin:пароль%1|";
    const QString refused = "File /etc/orn/tempFile can not be created\n" + seen;
    const QString srv = "tail -n1 /etc/hosts | grep -qx '10.0.0.5 srv.new.lan srv' && hostname | ";
    const QString ws1 = "sed -n 2p /etc/hosts | grep -qx '10.0.0.5 ws1.new.lan ws1'";
    const QString bind = "cp /etc/hosts /etc/h && mount --bind /etc/h /etc/hosts";
    const QString kept = "cmp /etc/hosts /etc/pyx-hosts.default";
    row("password file", "", show, none, written, ok);
    row("stale password file", "echo old >" + secret + "; chmod 644 " + secret, show, none, written,
        ok);
    row("link at the password path", "echo keep >/etc/target; ln -s /etc/target " + secret, show,
        none, refused + "777 0 symbolic link\nkeep\n|", ok, "grep -qx keep " + secret);
    row("pipe at the password path", "mkfifo " + secret, show, none, refused + "644 0 fifo\n|", ok);
    row("password folder writable by group", "chmod 775 /etc/orn", show, none,
        refused + "missing\n|", ok);
    row("new host name", "", {}, "srv", "", "rename success", srv + "grep -qx srv");
    row("same host name", "", {}, "ws1", "", ok, ws1 + " && grep -q '\\[ws1]' $SANDBOX_LOG");
    row("host name refused", "", {}, "a b",
        "Process hostnamectl set-hostname a b finished with error: Could not set static "
        "hostname: Invalid static hostname 'a b'\n",
        ok, "grep -qx '10.0.0.5 a b.new.lan a b' /etc/hosts");
    row("hostnamectl missing", "", fakes, "srv",
        "Process start error: hostnamectl set-hostname srv", ok, srv + "grep -qx ws1");
    // Waits out the 30 s limit; ctest runs it on its own, labelled slow.
    if (qEnvironmentVariableIsSet("PYX_INIT_SLOW"))
        row("hostnamectl hangs", "", {"SANDBOX_MODE_HOSTNAMECTL=hang"}, "srv",
            "Process finish error: hostnamectl set-hostname srv", ok, srv + "grep -qx ws1");
    row("hosts link and mode kept", "mv /etc/hosts /etc/h; chmod 640 /etc/h; ln -s h /etc/hosts",
        {}, "ws1", "", ok, "[ -L /etc/hosts ] && [ $(stat -c %a /etc/h) = 640 ] && " + ws1);
    row("hosts mounted over", bind, {}, "ws1", "", ok,
        ws1 + " && ! ls -a /etc | grep -q '^[.]hosts[.]'");
    row("hosts read-only", bind + " && mount -o remount,bind,ro /etc/hosts", {}, "ws1",
        "File /etc/hosts can not be opened", ok, kept);
    row("disk full",
        "mkdir /etc/small && mount -t tmpfs -o size=4k tmpfs /etc/small && cp /etc/hosts "
        "/etc/small && ln -sf small/hosts /etc/hosts",
        {}, "ws1", "Write error in file /etc/hosts", ok,
        kept + " && [ $(ls -A /etc/small | wc -l) = 1 ]");
    row("colours, exit 0", "", {"FAKE_ORN_INIT_OUT=\\033[1;32mok\\n"}, none, "ok", ok);
    row("standard error, exit 1", "", {"FAKE_ORN_INIT_ERR=no\\n", "FAKE_ORN_INIT_EXIT=1"}, none,
        "no", "");
    row("tool missing", "", {"PATH=/nonexistent"}, none,
        "Process start error: orn-init init --force --pass-file=/etc/orn/tempFile", "");
    row("simulated tool", "", simulated, "dc1", none, "rename success",
        "grep -qx 'domain = new.lan' /etc/orn/orn.conf");
    row("simulated tool crashes", "", simulated + QStringList{"SANDBOX_MODE_ORN_INIT=crash"}, none,
        none, "");
    // The simulated tool leaves a helper behind, which must not outlive the run either.
    row("Abort", "", orphan, none, none, "ignored", "true", "abort");
    row("dialog destroyed", "", orphan, none, none, "ignored", "true", "destroy");
}

void TestInitRun::run()
{
    QFETCH(QString, setup);
    QFETCH(QStringList, environment);
    QFETCH(QString, host);
    QFETCH(QString, pane);
    QFETCH(QString, check);
    QFETCH(QString, stop);
    QVERIFY2(sh(setup), qPrintable(setup));
    for (const QString &setting : environment)
        qputenv(qPrintable(setting.section('=', 0, 0)), setting.section('=', 1).toLocal8Bit());
    const QSet<QString> before = processes();
    QPointer<InitServerDialog> dialog = new InitServerDialog(InitRequest::make(
        " k:1%2 ", "пароль%1", !host.isNull(), "10.0.0.5", host, host + ".new.lan"));
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
            // Escape and a close request change nothing while the tool runs.
            const bool running = QTest::qWaitFor([&] { return !text->toPlainText().isEmpty(); });
            QTest::keyClick(dialog, Qt::Key_Escape);
            dialog->close();
            emitted << (running && dialog->isVisible() ? "ignored" : "closed");
            if (stop == "destroy")
                return delete dialog;
            QTest::mouseClick(box->button(QDialogButtonBox::Abort), Qt::LeftButton);
        }
        // A run that does not end is aborted, so that the test fails instead of hanging.
        if (!QTest::qWaitFor([&] { return box->button(QDialogButtonBox::Close); }, 20000))
            box->button(QDialogButtonBox::Abort)->click();
        finished = QString::asprintf("%d %d %d %x", bar->minimum(), bar->maximum(), bar->value(),
                                     unsigned(box->standardButtons()));
        shown = text->toPlainText();
        QTest::mouseClick(box->button(QDialogButtonBox::Close), Qt::LeftButton);
    });
    QCOMPARE(dialog->exec(), 0);
    delete dialog;
    QCOMPARE(finished, stop == "destroy" ? "" : "0 100 100 200000");
    QTEST(emitted.join(' '), "emitted");
    if (!pane.isNull())
        QCOMPARE(shown, pane);
    QVERIFY(!QFileInfo(secret).isFile() || QFileInfo(secret).isSymLink());
    QTRY_COMPARE(processes(), before);
    QVERIFY2(sh(check), qPrintable(check));
    QVERIFY(!host.isNull() || !sh("grep -q hostnamectl $SANDBOX_LOG"));
}

// Owner-only from birth: created 0600 whatever the umask, and no change of mode afterwards.
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
    const int inside =
        runInsideSandbox(argc, argv, {"--env", "PYX_INIT_OUTSIDE=" + namespaces().join(' ')});
    if (inside >= 0)
        return inside;
    // Nothing here may run where the mounts or the host name are the real host's.
    const QStringList host = qEnvironmentVariable("PYX_INIT_OUTSIDE").split(' ');
    if (host.size() != 2 || namespaces().contains(host.at(0)) || namespaces().contains(host.at(1)))
        return std::fputs("not on a simulated host\n", stderr), 1;
    QApplication app(argc, argv);
    TestInitRun test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_initrun.moc"
