// /etc/hosts under faults on the simulated host: full and read-only file systems, a
// file mounted over, and system calls made to fail by strace. Whatever fails, the file holds its
// old bytes or all of the new ones, no temporary file stays behind, the pane says what went
// wrong and the run still goes on to the tool and its end. The program starts itself again
// inside sandbox/run, and there once more under strace ("--drive") for each run of the dialog.
#include "initrequest.h"
#include "initserverdialog.h"
#include "simulatedtools.h"

#include <QtTest>
#include <QtWidgets>

#include <algorithm>
#include <cstdio>

namespace {

const QString strace = "/etc/pyx-strace.log";
// The calls whose failures are injected, and those that show where the rewrite went.
const QString traced = "trace=write,fsync,fchmod,fchown,rename,openat,fallocate";
// Where a call went: the file behind its descriptor, or the path it names first.
const QRegularExpression subject(R"re(^(\w+)\((?:\d+<([^>]*)>|[^"]*"([^"]*)"))re");

// Whether a line of strace's log is a call of `fault`'s system call on its file.
bool aims(const QString &line, const QStringList &fault)
{
    const QRegularExpressionMatch call = subject.match(line);
    return call.captured(1) == fault.at(0) &&
           QRegularExpression(fault.at(3)).match(call.captured(2) + call.captured(3)).hasMatch();
}

// One creation with custom network settings, closed once it has finished. Prints whether it
// finished and the tool succeeded, then the pane.
int drive(int argc, char *argv[])
{
    QApplication app(argc, argv);
    InitServerDialog dialog(InitRequest::make("k", "a", true, "10.0.0.5", "srv", "srv.new.lan"));
    bool created = false;
    QObject::connect(&dialog, &InitServerDialog::serverCreatedSuccsessfully,
                     [&] { created = true; });
    auto *box = dialog.findChild<QDialogButtonBox *>();
    auto *bar = dialog.findChild<QProgressBar *>();
    QString state = "unfinished";
    QTimer::singleShot(0, &dialog, [&] {
        if (QTest::qWaitFor([&] { return box->button(QDialogButtonBox::Close); }, 20000) &&
            bar->value() == bar->maximum())
            state = "finished";
        else
            box->button(QDialogButtonBox::Abort)->click();
        box->button(QDialogButtonBox::Close)->click();
    });
    dialog.exec();
    const QString text = dialog.findChild<QPlainTextEdit *>()->toPlainText();
    std::fputs(qPrintable(state + (created ? " created\n" : " not created\n") + text), stdout);
    return 0;
}

// The dialog's run in a child traced by strace with `injections` (inject= values): what it
// printed, and strace's log a line each. Not -f, so only the dialog's own thread is traced and
// counted, not the tools it starts.
std::pair<QString, QStringList> runDrive(const QStringList &injections)
{
    QStringList arguments{"-o", strace, "-y", "-e", traced};
    for (const QString &injection : injections)
        arguments += {"-e", "inject=" + injection};
    // LeakSanitizer cannot work under a tracer (make check-asan); the other runs check leaks.
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert("ASAN_OPTIONS", environment.value("ASAN_OPTIONS") + ":detect_leaks=0");
    const SandboxRun run = runProgram(
        "strace", arguments << "--" << QCoreApplication::applicationFilePath() << "--drive",
        environment);
    return {QString::fromUtf8(run.out), QString::fromUtf8(readFile(strace)).split('\n')};
}

// One fault and what it comes to; each setter reads as part of a sentence.
struct Fault
{
    explicit Fault(const char *name = "")
        : tag(name)
    {}

    QString tag;
    QString setup; // a shell script, before each run
    // SYSCALL:ERRNO:first|last:FILE, FILE a pattern for the call's file; the call is found in a
    // run with the injections before it.
    QStringList injections;
    QString seen; // a pattern in strace's log: the fault struck where meant
    QString pane;
    bool replaced = false; // /etc/hosts holds the new bytes, else the old ones

    Fault &after(const QString &script) { return setup = script, *this; }
    Fault &failing(const QStringList &calls) { return injections = calls, *this; }
    Fault &seenAs(const QString &pattern) { return seen = pattern, *this; }
    Fault &shows(const QString &text) { return pane = text, *this; }
    Fault &replaces() { return replaced = true, *this; }
};

} // namespace
Q_DECLARE_METATYPE(Fault)

class TestHostsFaults : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase()
    {
        QVERIFY(sh("strace -o /dev/null true"));
        // 4080 bytes, just under a page: the new line then needs a second one, which a
        // one-page file system has not got.
        m_old = readFile("/etc/hosts");
        m_old += "# " + QByteArray(4077 - m_old.size(), '-') + '\n';
        m_new = m_old + "10.0.0.5 srv.new.lan srv\n";
        QVERIFY(linkFake("orn-init"));
    }
    void faults_data();
    void faults();

private:
    // The old content at /etc/hosts, then the row's setup; again before each run.
    bool prepare(const QString &setup)
    {
        QFile hosts("/etc/hosts");
        return sh("umount /etc/hosts /etc/small 2>/dev/null; "
                  "rm -rf /etc/hosts /etc/small /etc/.hosts.* && mkdir /etc/small") &&
               hosts.open(QIODevice::WriteOnly) && hosts.write(m_old) == m_old.size() &&
               hosts.flush() && sh(setup);
    }

    QByteArray m_old, m_new;
};

void TestHostsFaults::faults_data()
{
    QTest::addColumn<Fault>("row");
    const QString small = "mount -t tmpfs -o size=8k tmpfs /etc/small && ";
    const QString moved = small + "mv /etc/hosts /etc/small && ln -s small/hosts /etc/hosts";
    const QString bind =
        small + "cp /etc/hosts /etc/small/hosts && mount --bind /etc/small/hosts /etc/hosts";
    const QString tempFile = "/etc/[.]hosts[.]\\w{6}$", hosts = "^/etc/hosts$";
    const QString unopened = "File /etc/hosts can not be opened";
    const QString unwritten = "Write error in file /etc/hosts";
    const QString busy = R"(rename\("/etc/\.hosts\.\w{6}", "/etc/hosts"\) = -1 EBUSY)";
    // clang-format off
    const QList<Fault> rows = {
        // The new file takes a page and a bit: the first write fills the free page, the next
        // fails.
        Fault("file system full").after(moved)
            .seenAs(R"(write\(\d+</etc/small/\.hosts\.\w{6}>, .*\) = 4096\n)"
                    R"(write\(\d+</etc/small/\.hosts\.\w{6}>, .*\) = -1 ENOSPC)")
            .shows(unwritten),
        // Any folder that refuses the new file (immutable, say) takes this way.
        Fault("file system read-only").after(moved + " && mount -o remount,ro /etc/small")
            .seenAs(R"("/etc/small/\.hosts\.\w{6}", .*\) = -1 EROFS)").shows(unopened),
        // The new file's calls, failed one at a time. A regular file takes all its bytes in one
        // write(): first and last are the same call here, the full file system above splits them.
        Fault("write fails").failing({"write:EIO:first:" + tempFile}).shows(unwritten),
        Fault("fchown fails").failing({"fchown:EPERM:first:" + tempFile}).shows(unwritten),
        Fault("fchmod fails").failing({"fchmod:EPERM:first:" + tempFile}).shows(unwritten),
        Fault("fsync fails").failing({"fsync:EIO:first:" + tempFile}).shows(unwritten),
        Fault("rename fails").failing({"rename:EIO:first:" + tempFile}).shows(unwritten),
        // The new name is in place; only its way to the disk is in doubt.
        Fault("fsync of the folder fails").failing({"fsync:EIO:last:^/etc$"}).replaces(),
        // Mounted over, the file can only be rewritten in place: its first write brings the new
        // bytes, its last one, after a failure, the old ones back.
        Fault("mounted over").after(bind).seenAs(busy).replaces(),
        Fault("mounted over, read-only").after(bind + " && mount -o remount,ro,bind /etc/hosts")
            .seenAs(busy).shows(unopened),
        Fault("mounted over, file system full").after(QString(bind).replace("8k", "4k"))
            .seenAs(R"(fallocate\(\d+</etc/hosts>, .*\) = -1 ENOSPC)").shows(unwritten),
        Fault("mounted over, write fails").after(bind).failing({"write:EIO:first:" + hosts})
            .seenAs(busy).shows(unwritten),
        // The new bytes are in the file when the sync fails: the old ones are written back.
        Fault("mounted over, fsync fails").after(bind).failing({"fsync:EIO:first:" + hosts})
            .seenAs(R"(write\(\d+</etc/hosts>, "127.*\) = 4080\n)").shows(unwritten),
        Fault("mounted over, fsync and the restoring write fail").after(bind)
            .failing({"fsync:EIO:first:" + hosts, "write:EIO:last:" + hosts}).seenAs(busy)
            .shows(unwritten).replaces(),
    };
    // clang-format on
    for (const Fault &row : rows)
        QTest::newRow(qPrintable(row.tag)) << row;
}

void TestHostsFaults::faults()
{
    QFETCH(Fault, row);
    const QString &setup = row.setup, &seen = row.seen;
    const QStringList &injections = row.injections;
    // Each injection's when=: its call's ordinal among all calls of that system call.
    QStringList resolved;
    for (const QString &injection : injections) {
        const QStringList fault = injection.split(':');
        QVERIFY2(prepare(setup), qPrintable(setup));
        QList<int> ordinals;
        int count = 0;
        for (const QString &line : runDrive(resolved).second) {
            count += subject.match(line).captured(1) == fault.at(0);
            if (aims(line, fault))
                ordinals << count;
        }
        QVERIFY2(!ordinals.isEmpty(), qPrintable("no call for " + injection));
        resolved << QString("%1:error=%2:when=%3")
                        .arg(fault.at(0), fault.at(1))
                        .arg(fault.at(2) == "first" ? ordinals.first() : ordinals.last());
    }
    QVERIFY2(prepare(setup), qPrintable(setup));
    const auto [out, log] = runDrive(resolved);
    // A row whose injection missed its call fails here instead of passing untested.
    const QStringList hits = log.filter(QRegularExpression("\\(INJECTED\\)$"));
    QCOMPARE(hits.size(), injections.size());
    for (const QString &injection : injections)
        QVERIFY2(std::any_of(hits.cbegin(), hits.cend(),
                             [&](const QString &line) { return aims(line, injection.split(':')); }),
                 qPrintable(injection + " missed: " + hits.join('\n')));
    QVERIFY2(QRegularExpression(seen).match(log.join('\n')).hasMatch(), qPrintable(seen));
    QCOMPARE(out, "finished created\n" + row.pane);
    QCOMPARE(readFile("/etc/hosts"), row.replaced ? m_new : m_old);
    for (const QString &folder : QStringList{"/etc", "/etc/small"})
        QCOMPARE(QDir(folder).entryList({".hosts.*"}, QDir::AllEntries | QDir::Hidden),
                 QStringList());
}

int main(int argc, char *argv[])
{
    if (const int inside = runOnSimulatedHost(argc, argv); inside >= 0)
        return inside;
    if (argc == 2 && qstrcmp(argv[1], "--drive") == 0)
        return drive(argc, argv);
    QApplication app(argc, argv);
    TestHostsFaults test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_hostsfaults.moc"
