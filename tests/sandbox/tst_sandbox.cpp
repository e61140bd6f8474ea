// The simulated host: what a sandboxed command may change stays inside, and the simulated tools
// keep the contracts the plug-in's system tests build on.
#include "hostorncore.h"
#include "sandboxprocess.h"

#include <QCoreApplication>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMultiHash>
#include <QRandomGenerator>
#include <QSysInfo>
#include <QTemporaryDir>
#include <QtTest>

#include <signal.h>

namespace {

const QString passFile = QStringLiteral("/etc/orn/tempFile");
const QByteArray masterPassword = "Kv3ry-s3cret-KM";
const QByteArray adminPassword = "Adm1n-s3cret-pw";

// Defines KM, ADM and F for the snippets that prepare a password file.
const QString passPrelude = QStringLiteral("KM='%1'; ADM='%2'; F='%3'\n")
                                .arg(QString::fromLatin1(masterPassword),
                                     QString::fromLatin1(adminPassword), passFile);
const QString goodPassFile =
    QStringLiteral("printf 'K/M:%s\\nadmin/admin:%s' \"$KM\" \"$ADM\" >\"$F\"; chmod 600 \"$F\"\n");
const QStringList ornInitCall = {QStringLiteral("orn-init"), QStringLiteral("init"),
                                 QStringLiteral("--force"),
                                 QStringLiteral("--pass-file=/etc/orn/tempFile")};

QByteArray readFile(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void writeFile(const QString &path, const QByteArray &contents)
{
    QFile file(path);
    QVERIFY2(file.open(QIODevice::WriteOnly | QIODevice::Truncate), qPrintable(path));
    QCOMPARE(file.write(contents), qint64(contents.size()));
}

QByteArray debianHosts(const QByteArray &names)
{
    return "127.0.0.1\tlocalhost\n127.0.1.1\t" + names +
           "\n\n# The following lines are desirable for IPv6 capable hosts\n"
           "::1     localhost ip6-localhost ip6-loopback\n"
           "ff02::1 ip6-allnodes\n"
           "ff02::2 ip6-allrouters\n";
}

// Everything of the real host a sandboxed command could be tempted to change.
QString describeHost()
{
    QStringList facts;
    facts << QStringLiteral("hostname=") + QSysInfo::machineHostName();
    for (const QString &file : {QStringLiteral("/etc/hosts"), QStringLiteral("/etc/hostname")}) {
        facts << file + QLatin1Char('=') +
                     QString::fromLatin1(readFile(file).toHex());
    }
    for (const QString &path :
         {QStringLiteral("/etc/orn"), QStringLiteral("/usr/share/vex"),
          QStringLiteral("/usr/bin/vex-wmfunc")}) {
        const QFileInfo info(path);
        facts << path + QLatin1String(info.exists() ? " exists" : " absent");
    }
    const QDir orn(QStringLiteral("/etc/orn"));
    for (const QFileInfo &entry : orn.entryInfoList(QDir::AllEntries | QDir::NoDotAndDotDot |
                                                    QDir::Hidden | QDir::System)) {
        facts << entry.filePath() + QLatin1Char(' ') + QString::number(entry.size()) +
                     QLatin1Char(' ') + entry.lastModified().toString(Qt::ISODateWithMs);
    }
    return facts.join(QLatin1Char('\n'));
}

// Host processes whose command line holds `marker`, with their descendants.
QList<qint64> processesWith(const QByteArray &marker)
{
    QList<qint64> found;
    QMultiHash<qint64, qint64> children;
    const QDir proc(QStringLiteral("/proc"));
    for (const QString &entry : proc.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        bool number = false;
        const qint64 pid = entry.toLongLong(&number);
        if (!number)
            continue;
        if (readFile(proc.filePath(entry) + QStringLiteral("/cmdline")).contains(marker))
            found << pid;
        // "pid (name) state ppid ...": the name may hold spaces, its closing parenthesis not.
        const QByteArray stat = readFile(proc.filePath(entry) + QStringLiteral("/stat"));
        const QList<QByteArray> fields = stat.mid(stat.lastIndexOf(')') + 2).split(' ');
        if (fields.size() > 1)
            children.insert(fields.at(1).toLongLong(), pid);
    }
    for (int i = 0; i < found.size(); ++i)
        found += children.values(found.at(i));
    return found;
}

} // namespace

class TestSandbox : public QObject
{
    Q_OBJECT

private slots:
    void isolation_data();
    void isolation();
    void seededHost_data();
    void seededHost();
    void seededDirectorySettings_data();
    void seededDirectorySettings();
    void noProcessOutlivesTheRun();
    void exitStatus_data();
    void exitStatus();
    void dpkgQuery_data();
    void dpkgQuery();
    void hostnamectl_data();
    void hostnamectl();
    void ornInitRefuses_data();
    void ornInitRefuses();
    void ornInitProvisions_data();
    void ornInitProvisions();
    void ornInitFailureModes_data();
    void ornInitFailureModes();
    void recordingTools_data();
    void recordingTools();

private:
    QTemporaryDir m_scratch;
};

void TestSandbox::isolation_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::newRow("overlays") << QStringList();
    QTest::newRow("copies and links") << QStringList{QStringLiteral("--no-overlay")};
}

void TestSandbox::isolation()
{
    QFETCH(QStringList, options);
    QTemporaryDir state;
    QVERIFY(state.isValid());
    const QString before = describeHost();

    // What the plug-in does to a host, done by hand: an atomic rewrite of /etc/hosts by rename
    // in /etc, a file in /etc/orn, a new host name, and a folder in /usr.
    const QString script = QStringLiteral(
        "set -e\n"
        "printf '127.0.0.1\\tlocalhost\\n10.1.2.3\\tdc1.corp.example\\tdc1\\n' >/etc/.hosts.new\n"
        "mv /etc/.hosts.new /etc/hosts\n"
        "echo rehearsal >/etc/orn/x\n"
        "hostname dc1.corp.example\n"
        "mkdir -p /usr/share/vex/rehearsal\n"
        "cat /etc/hosts /etc/orn/x; hostname; ls /usr/share/vex\n");
    const SandboxRun run =
        runSandboxScript(options + QStringList{QStringLiteral("--state-dir"), state.path()}, script);
    QVERIFY2(run.exitCode == 0, run.err.constData());
    QCOMPARE(run.out, QByteArray("127.0.0.1\tlocalhost\n10.1.2.3\tdc1.corp.example\tdc1\n"
                                 "rehearsal\ndc1.corp.example\nrehearsal\ntranslations\n"));
    QCOMPARE(readFile(state.filePath(QStringLiteral("etc/hosts"))),
             QByteArray("127.0.0.1\tlocalhost\n10.1.2.3\tdc1.corp.example\tdc1\n"));
    QCOMPARE(readFile(state.filePath(QStringLiteral("etc/orn/x"))), QByteArray("rehearsal\n"));
    QCOMPARE(readFile(state.filePath(QStringLiteral("hostname"))), QByteArray("dc1.corp.example\n"));

    QCOMPARE(describeHost(), before);
}

void TestSandbox::seededHost_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QByteArray>("expected");

    const QByteArray rest = "0 755\nwmfunc\npyx-orn-server-plugin_ru.qm\n";
    QTest::newRow("default name")
        << QStringList() << "ws1\nws1\n" + debianHosts("ws1.example.lan\tws1") + rest;
    QTest::newRow("full name chosen")
        << QStringList{QStringLiteral("--hostname"), QStringLiteral("dc7.corp.example")}
        << "dc7\ndc7\n" + debianHosts("dc7.corp.example\tdc7") + rest;
    QTest::newRow("short name chosen")
        << QStringList{QStringLiteral("--hostname=solo")}
        << "solo\nsolo\n" + debianHosts("solo") + rest;
    QTest::newRow("hosts file given")
        << QStringList{QStringLiteral("--hosts"), QStringLiteral("@hosts")}
        << "ws1\nws1\n127.0.0.1 localhost\n192.168.7.2 ws1.lab.test ws1\n" + rest;
}

void TestSandbox::seededHost()
{
    QFETCH(QStringList, options);
    QFETCH(QByteArray, expected);
    const QString hostsFile = m_scratch.filePath(QStringLiteral("hosts"));
    writeFile(hostsFile, "127.0.0.1 localhost\n192.168.7.2 ws1.lab.test ws1\n");
    options.replaceInStrings(QStringLiteral("@hosts"), hostsFile);
    options << QStringLiteral("--translations")
            << QStringLiteral(PYX_TEST_BINARY_DIR "/translations");

    const QString script = QStringLiteral(
        "hostname; cat /etc/hostname /etc/hosts\n"
        "stat -c '%u %a' /etc/orn; ls -A /etc/orn\n"
        "first=${PATH%%:*}\n"
        "for tool in dpkg-query hostnamectl orn-init vex-term nm-connection-editor kate; do\n"
        "    [ \"$(command -v $tool)\" = \"$first/$tool\" ] || echo \"$tool is not first\"\n"
        "done\n"
        "[ -x /usr/bin/vex-wmfunc ] && echo wmfunc\n"
        "ls /usr/share/vex/translations/vex-admin-dak\n");
    const SandboxRun run = runSandboxScript(options, script);
    QVERIFY2(run.exitCode == 0, run.err.constData());
    QCOMPARE(run.out, expected);
}

void TestSandbox::seededDirectorySettings_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QByteArray>("ornConf");
    QTest::addColumn<QByteArray>("serverState");

    QTest::newRow("none") << QStringList() << QByteArray() << QByteArray();
    QTest::newRow("provisioned")
        << QStringList{QStringLiteral("--provisioned")}
        << QByteArray("domain = example.lan\nrealm = EXAMPLE.LAN\nrole = dc\n") << QByteArray("on\n");
    QTest::newRow("given settings, service stopped")
        << QStringList{QStringLiteral("--orn-conf"), QStringLiteral("@conf"),
                       QStringLiteral("--server-state"), QStringLiteral("off")}
        << QByteArray("domain = other.lan\nrealm = OTHER.LAN\nrole = member\n") << QByteArray("off\n");
}

void TestSandbox::seededDirectorySettings()
{
    QFETCH(QStringList, options);
    QFETCH(QByteArray, ornConf);
    QFETCH(QByteArray, serverState);
    const QString confFile = m_scratch.filePath(QStringLiteral("orn.conf"));
    writeFile(confFile, "domain = other.lan\nrealm = OTHER.LAN\nrole = member\n");
    options.replaceInStrings(QStringLiteral("@conf"), confFile);
    QTemporaryDir state;
    QVERIFY(state.isValid());

    const SandboxRun run = runSandbox(
        options + QStringList{QStringLiteral("--state-dir"), state.path()}, {QStringLiteral("true")});
    QVERIFY2(run.exitCode == 0, run.err.constData());
    const QString orn = state.filePath(QStringLiteral("etc/orn"));
    QCOMPARE(QFileInfo::exists(orn + QStringLiteral("/orn.conf")), !ornConf.isNull());
    QCOMPARE(readFile(orn + QStringLiteral("/orn.conf")), ornConf);
    QCOMPARE(readFile(orn + QStringLiteral("/server.state")), serverState);

    // The console's directory core reads the seeds as they are meant.
    HostOrnCore core(orn);
    QCOMPARE(core.isConfigured(), !ornConf.isNull());
    QCOMPARE(core.isServer(), ornConf.contains("role = dc"));
    QCOMPARE(core.isServerOn(), serverState == "on\n");
}

void TestSandbox::noProcessOutlivesTheRun()
{
    // The marker is put together only inside, so no process but the stray one carries it.
    const QByteArray first = "pyx-sandbox-stray-";
    const QByteArray second = QByteArray::number(QRandomGenerator::global()->generate64());
    const QByteArray marker = first + second;
    const QString script = QStringLiteral(
        "exec 3< <(bash -c 'echo started; sleep 1000; :' \"$1$2\")\n"
        "read -r line <&3; echo \"$line\"\n");
    const SandboxRun run = runSandbox(
        {}, {QStringLiteral("bash"), QStringLiteral("-c"), script, QStringLiteral("bash"),
             QString::fromLatin1(first), QString::fromLatin1(second)});
    QVERIFY2(run.exitCode == 0, run.err.constData());
    QCOMPARE(run.out, QByteArray("started\n"));

    const QList<qint64> strays = processesWith(marker);
    for (qint64 pid : strays)
        ::kill(pid_t(pid), SIGKILL);
    QVERIFY2(strays.isEmpty(), "a process started in the sandbox outlived it");
}

void TestSandbox::exitStatus_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QString>("script");
    QTest::addColumn<int>("exitCode");

    QTest::newRow("the command's") << QStringList() << QStringLiteral("exit 42") << 42;
    QTest::newRow("killed by SIGSEGV") << QStringList() << QStringLiteral("kill -SEGV $$") << 128 + 11;
    QTest::newRow("unknown option") << QStringList{QStringLiteral("--bogus")}
                                    << QStringLiteral("true") << 2;
    QTest::newRow("record under /etc") << QStringList{QStringLiteral("--log=/etc/sandbox.log")}
                                       << QStringLiteral("true") << 2;
}

void TestSandbox::exitStatus()
{
    QFETCH(QStringList, options);
    QFETCH(QString, script);
    QFETCH(int, exitCode);
    QCOMPARE(runSandboxScript(options, script).exitCode, exitCode);
}

void TestSandbox::dpkgQuery_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("out");
    QTest::addColumn<QByteArray>("err");
    QTest::addColumn<int>("exitCode");

    // The plug-in's query, with real tab characters in the format.
    const QString format = QStringLiteral("-f=${binary:Package}\t${Version}\t${Status}");
    for (const char *package : {"orn-admin", "orn-server-dc", "orn-server-common"}) {
        QTest::addRow("%s installed", package)
            << QStringList() << QStringList{QStringLiteral("-W"), format, QString::fromLatin1(package)}
            << QByteArray(package) + "\t4.19.2-1\tinstall ok installed" << QByteArray() << 0;
    }
    QTest::newRow("unknown package")
        << QStringList() << QStringList{QStringLiteral("-W"), format, QStringLiteral("orn-nothing")}
        << QByteArray() << QByteArray("dpkg-query: no packages found matching orn-nothing\n") << 1;
    QTest::newRow("package removed from the table")
        << QStringList{QStringLiteral("--no-package"), QStringLiteral("orn-server-dc")}
        << QStringList{QStringLiteral("-W"), format, QStringLiteral("orn-server-dc")} << QByteArray()
        << QByteArray("dpkg-query: no packages found matching orn-server-dc\n") << 1;
    QTest::newRow("only configuration files left")
        << QStringList{QStringLiteral("--package"),
                       QStringLiteral("orn-server-dc 4.19.2-1 deinstall ok config-files")}
        << QStringList{QStringLiteral("-W"), format, QStringLiteral("orn-server-dc")}
        << QByteArray("orn-server-dc\t4.19.2-1\tdeinstall ok config-files") << QByteArray() << 0;
    QTest::newRow("two architectures run together")
        << QStringList{QStringLiteral("--packages"), QStringLiteral("@multiarch")}
        << QStringList{QStringLiteral("-W"), format, QStringLiteral("orn-admin")}
        << QByteArray("orn-admin:amd64\t1.0\tinstall ok installed"
                      "orn-admin:i386\t1.0\tinstall ok installed")
        << QByteArray() << 0;
    QTest::newRow("escapes in the format")
        << QStringList()
        << QStringList{QStringLiteral("-W"), QStringLiteral("--showformat=${Package}\\t${Version}\\n"),
                       QStringLiteral("orn-admin")}
        << QByteArray("orn-admin\t4.19.2-1\n") << QByteArray() << 0;
    QTest::newRow("default format")
        << QStringList() << QStringList{QStringLiteral("--show"), QStringLiteral("orn-admin")}
        << QByteArray("orn-admin\t4.19.2-1\n") << QByteArray() << 0;
    QTest::newRow("widths and abbreviated status")
        << QStringList()
        << QStringList{QStringLiteral("-W"), QStringLiteral("-f"),
                       QStringLiteral("[${Package;-12}][${Version;3}][${db:Status-Abbrev}]\\n"),
                       QStringLiteral("orn-admin")}
        << QByteArray("[orn-admin   ][4.1][ii ]\n") << QByteArray() << 0;
    QTest::newRow("unterminated field")
        << QStringList()
        << QStringList{QStringLiteral("-W"), QStringLiteral("-f=${Package"), QStringLiteral("orn-admin")}
        << QByteArray() << QByteArray("dpkg-query: error in show format: missing closing brace\n")
        << 1;
    QTest::newRow("no action")
        << QStringList() << QStringList{QStringLiteral("orn-admin")} << QByteArray()
        << QByteArray("dpkg-query: error: need an action option\n\n"
                      "Use --help for help about querying packages.\n")
        << 2;
}

void TestSandbox::dpkgQuery()
{
    QFETCH(QStringList, options);
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, out);
    QFETCH(QByteArray, err);
    QFETCH(int, exitCode);
    const QString table = m_scratch.filePath(QStringLiteral("multiarch"));
    writeFile(table, "# two architectures\norn-admin:amd64 1.0 install ok installed\n"
                     "orn-admin:i386 1.0 install ok installed\n");
    options.replaceInStrings(QStringLiteral("@multiarch"), table);

    const SandboxRun run = runSandbox(options, QStringList{QStringLiteral("dpkg-query")} + arguments);
    QCOMPARE(run.out, out);
    QCOMPARE(run.err, err);
    QCOMPARE(run.exitCode, exitCode);
}

void TestSandbox::hostnamectl_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("result");

    const QString refused; // the name stays ws1
    const QString label63(63, QLatin1Char('a'));
    QTest::newRow("empty") << QString() << refused;
    QTest::newRow("underscore") << QStringLiteral("dc_1") << refused;
    QTest::newRow("space") << QStringLiteral("dc 1") << refused;
    QTest::newRow("non-ASCII letter") << QStringLiteral("сервер") << refused;
    QTest::newRow("line feed") << QStringLiteral("dc1\nx") << refused;
    QTest::newRow("label starts with hyphen") << QStringLiteral("dc1.-corp") << refused;
    QTest::newRow("label ends with hyphen") << QStringLiteral("dc1-.corp") << refused;
    QTest::newRow("empty label") << QStringLiteral("dc1..corp") << refused;
    QTest::newRow("leading dot") << QStringLiteral(".dc1") << refused;
    QTest::newRow("label of 64") << label63 + QLatin1Char('a') << refused;
    QTest::newRow("65 in all") << QString(32, QLatin1Char('a')) + QLatin1Char('.') +
                                      QString(32, QLatin1Char('b'))
                               << refused;

    QTest::newRow("short") << QStringLiteral("dc1") << QStringLiteral("dc1");
    QTest::newRow("full") << QStringLiteral("dc1.example.lan") << QStringLiteral("dc1.example.lan");
    QTest::newRow("capitals and hyphens") << QStringLiteral("DC-1.Corp-2.lan")
                                          << QStringLiteral("DC-1.Corp-2.lan");
    QTest::newRow("label of 63") << label63 << label63;
    QTest::newRow("64 in all") << QString(31, QLatin1Char('a')) + QLatin1Char('.') +
                                      QString(32, QLatin1Char('b'))
                               << QString(31, QLatin1Char('a')) + QLatin1Char('.') +
                                      QString(32, QLatin1Char('b'));
    QTest::newRow("final dot dropped") << QStringLiteral("dc1.example.lan.")
                                       << QStringLiteral("dc1.example.lan");
}

void TestSandbox::hostnamectl()
{
    QFETCH(QString, name);
    QFETCH(QString, result);
    const SandboxRun run = runSandboxScript(
        {}, QStringLiteral("hostnamectl set-hostname \"$1\"; echo $?; hostname; cat /etc/hostname"),
        {name});
    QCOMPARE(run.exitCode, 0);
    if (result.isEmpty()) {
        QCOMPARE(run.out, QByteArray("1\nws1\nws1\n"));
        QVERIFY2(run.err.startsWith("Could not set static hostname: Invalid static hostname"),
                 run.err.constData());
    } else {
        QCOMPARE(run.out, "0\n" + result.toUtf8() + '\n' + result.toUtf8() + '\n');
        QCOMPARE(run.err, QByteArray());
    }
}

void TestSandbox::ornInitRefuses_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QString>("prepare");
    QTest::addColumn<QStringList>("call");
    QTest::addColumn<int>("exitCode");

    const QStringList none;
    QTest::newRow("others may read it") << none << goodPassFile + QStringLiteral("chmod 644 \"$F\"")
                                        << ornInitCall << 1;
    QTest::newRow("read-only for root") << none << goodPassFile + QStringLiteral("chmod 400 \"$F\"")
                                        << ornInitCall << 1;
    QTest::newRow("owned by another user")
        << none << goodPassFile + QStringLiteral("chown 1000:1000 \"$F\"") << ornInitCall << 1;
    QTest::newRow("missing") << none << QString() << ornInitCall << 1;
    QTest::newRow("a folder") << none << QStringLiteral("mkdir -m 700 \"$F\"") << ornInitCall << 1;
    QTest::newRow("a link to a good file")
        << none << goodPassFile + QStringLiteral("mv \"$F\" \"$F.real\"; ln -s \"$F.real\" \"$F\"")
        << ornInitCall << 1;
    QTest::newRow("final line feed")
        << none << goodPassFile + QStringLiteral("echo >>\"$F\"") << ornInitCall << 1;
    QTest::newRow("one line")
        << none << QStringLiteral("printf 'K/M:%s' \"$KM\" >\"$F\"; chmod 600 \"$F\"") << ornInitCall
        << 1;
    QTest::newRow("a third line")
        << none << goodPassFile + QStringLiteral("printf '\\nextra' >>\"$F\"") << ornInitCall << 1;
    QTest::newRow("lines swapped")
        << none
        << QStringLiteral("printf 'admin/admin:%s\\nK/M:%s' \"$ADM\" \"$KM\" >\"$F\"; chmod 600 \"$F\"")
        << ornInitCall << 1;
    QTest::newRow("empty password")
        << none << QStringLiteral("printf 'K/M:\\nadmin/admin:%s' \"$ADM\" >\"$F\"; chmod 600 \"$F\"")
        << ornInitCall << 1;
    QTest::newRow("host name without a domain")
        << QStringList{QStringLiteral("--hostname"), QStringLiteral("solo")} << goodPassFile
        << ornInitCall << 1;
    QTest::newRow("no password file named")
        << none << goodPassFile << QStringList{QStringLiteral("orn-init"), QStringLiteral("init"),
                                               QStringLiteral("--force")}
        << 2;
    QTest::newRow("unknown command")
        << none << goodPassFile
        << QStringList{QStringLiteral("orn-init"), QStringLiteral("create"), QStringLiteral("--force"),
                       QStringLiteral("--pass-file=/etc/orn/tempFile")}
        << 2;
    QTest::newRow("unknown option")
        << none << goodPassFile
        << QStringList{QStringLiteral("orn-init"), QStringLiteral("init"), QStringLiteral("--force"),
                       QStringLiteral("--verbose"), QStringLiteral("--pass-file=/etc/orn/tempFile")}
        << 2;
}

void TestSandbox::ornInitRefuses()
{
    QFETCH(QStringList, options);
    QFETCH(QString, prepare);
    QFETCH(QStringList, call);
    QFETCH(int, exitCode);
    QTemporaryDir state;
    QVERIFY(state.isValid());

    const SandboxRun run = runSandboxScript(
        options + QStringList{QStringLiteral("--state-dir"), state.path(),
                              QStringLiteral("--orn-init-duration"), QStringLiteral("0")},
        passPrelude + prepare + QStringLiteral("\nexec \"$@\""), call);
    QCOMPARE(run.exitCode, exitCode);
    QCOMPARE(run.out, QByteArray());
    QVERIFY(!run.err.isEmpty());
    const QByteArray log = readFile(state.filePath(QStringLiteral("log")));
    for (const QByteArray &secret : {masterPassword, adminPassword})
        QVERIFY(!run.err.contains(secret) && !log.contains(secret));
    QVERIFY(log.startsWith("orn-init [" + call.at(1).toUtf8() + ']'));
    QVERIFY(!QFileInfo::exists(state.filePath(QStringLiteral("etc/orn/orn.conf"))));
}

void TestSandbox::ornInitProvisions_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QString>("prepare");
    QTest::addColumn<QString>("domain");

    QTest::newRow("default host") << QStringList() << QString() << QStringLiteral("example.lan");
    QTest::newRow("full name chosen")
        << QStringList{QStringLiteral("--hostname"), QStringLiteral("dc1.corp.example")} << QString()
        << QStringLiteral("corp.example");
    QTest::newRow("renamed before")
        << QStringList() << QStringLiteral("hostnamectl set-hostname dc2.branch.example.org")
        << QStringLiteral("branch.example.org");
    QTest::newRow("full name only in /etc/hosts")
        << QStringList{QStringLiteral("--hostname"), QStringLiteral("dc3"), QStringLiteral("--hosts"),
                       QStringLiteral("@hosts")}
        << QString() << QStringLiteral("lab.test");
    QTest::newRow("over a running server")
        << QStringList{QStringLiteral("--provisioned"), QStringLiteral("--hostname"),
                       QStringLiteral("dc4.old.lan")}
        << QStringLiteral("hostname dc4.new.lan") << QStringLiteral("new.lan");
}

void TestSandbox::ornInitProvisions()
{
    QFETCH(QStringList, options);
    QFETCH(QString, prepare);
    QFETCH(QString, domain);
    const QString hostsFile = m_scratch.filePath(QStringLiteral("hosts-dc3"));
    writeFile(hostsFile, "127.0.0.1 localhost\n# 127.0.1.1 dc3.wrong.test dc3\n"
                         "127.0.1.1 dc3.lab.test dc3\n");
    options.replaceInStrings(QStringLiteral("@hosts"), hostsFile);
    QTemporaryDir state;
    QVERIFY(state.isValid());

    const SandboxRun run = runSandboxScript(
        options + QStringList{QStringLiteral("--state-dir"), state.path(),
                              QStringLiteral("--orn-init-duration"), QStringLiteral("0")},
        passPrelude + prepare + QLatin1Char('\n') + goodPassFile + QStringLiteral("exec \"$@\""),
        ornInitCall);
    QVERIFY2(run.exitCode == 0, run.err.constData());

    // A transcript on both channels, coloured the way the tool's terminal output is.
    QVERIFY(run.out.contains("\x1b[1;32m") && run.out.contains("\x1b[00m"));
    QVERIFY(run.out.contains(domain.toUtf8()));
    QVERIFY(run.err.contains("\x1b["));
    const QByteArray log = readFile(state.filePath(QStringLiteral("log")));
    for (const QByteArray &secret : {masterPassword, adminPassword}) {
        QVERIFY(!run.out.contains(secret));
        QVERIFY(!run.err.contains(secret));
        QVERIFY(!log.contains(secret));
    }

    const QString orn = state.filePath(QStringLiteral("etc/orn"));
    const QByteArray realm = domain.toUpper().toUtf8();
    QCOMPARE(readFile(orn + QStringLiteral("/orn.conf")),
             "domain = " + domain.toUtf8() + "\nrealm = " + realm + "\nrole = dc\n");
    QCOMPARE(readFile(orn + QStringLiteral("/server.state")), QByteArray("on\n"));
    HostOrnCore core(orn);
    QVERIFY(core.isServer());
    QVERIFY(core.isServerOn());
    QCOMPARE(QString::fromStdString(core.domainName()), QLatin1Char('.') + domain);
    QCOMPARE(QByteArray::fromStdString(core.realmName()), realm);
}

void TestSandbox::ornInitFailureModes_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QString>("modeFromEnvironment");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<bool>("provisioned");
    QTest::addColumn<int>("minimumOutput");

    const QString mode = QStringLiteral("--mode");
    QTest::newRow("exit code, server stopped")
        << QStringList{mode, QStringLiteral("orn-init=exit:3"), QStringLiteral("--provisioned")}
        << QString() << 3 << false << 0;
    QTest::newRow("crash") << QStringList{mode, QStringLiteral("orn-init=crash")} << QString()
                           << 128 + 11 << false << 0;
    QTest::newRow("flood") << QStringList{mode, QStringLiteral("orn-init=flood:4")} << QString() << 0
                           << true << 4 * 1024 * 1024;
    QTest::newRow("helper left behind")
        << QStringList{mode, QStringLiteral("orn-init=orphan")} << QString() << 0 << true << 0;
    QTest::newRow("mode from the environment")
        << QStringList() << QStringLiteral("exit:5") << 5 << false << 0;
    QTest::newRow("environment over option")
        << QStringList{mode, QStringLiteral("orn-init=crash")} << QStringLiteral("ok") << 0 << true
        << 0;
}

void TestSandbox::ornInitFailureModes()
{
    QFETCH(QStringList, options);
    QFETCH(QString, modeFromEnvironment);
    QFETCH(int, exitCode);
    QFETCH(bool, provisioned);
    QFETCH(int, minimumOutput);
    QTemporaryDir state;
    QVERIFY(state.isValid());
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove(QStringLiteral("SANDBOX_MODE_ORN_INIT"));
    if (!modeFromEnvironment.isEmpty())
        environment.insert(QStringLiteral("SANDBOX_MODE_ORN_INIT"), modeFromEnvironment);

    const SandboxRun run = runSandboxScript(
        options + QStringList{QStringLiteral("--state-dir"), state.path(),
                              QStringLiteral("--orn-init-duration"), QStringLiteral("0")},
        passPrelude + goodPassFile + QStringLiteral("exec \"$@\""), ornInitCall, environment);
    QCOMPARE(run.exitCode, exitCode);
    QVERIFY(run.out.size() >= minimumOutput);
    QVERIFY(run.err.size() >= minimumOutput / 8);
    const QString orn = state.filePath(QStringLiteral("etc/orn"));
    QCOMPARE(QFileInfo::exists(orn + QStringLiteral("/orn.conf")), provisioned);
    const QByteArray serverState = readFile(orn + QStringLiteral("/server.state"));
    QVERIFY2(provisioned ? serverState == "on\n" : serverState != "on\n", serverState.constData());
}

void TestSandbox::recordingTools_data()
{
    QTest::addColumn<QStringList>("command");
    QTest::addColumn<QByteArray>("line");

    const QString env = QStringLiteral("env");
    const QString unset = QStringLiteral("-u");
    QTest::newRow("reboot in the session")
        << QStringList{env, QStringLiteral("XDG_RUNTIME_DIR=/run/user/1000"),
                       QStringLiteral("/usr/bin/vex-wmfunc"), QStringLiteral("VEXWM_REBOOT")}
        << QByteArray("vex-wmfunc [VEXWM_REBOOT] {XDG_RUNTIME_DIR=/run/user/1000}\n");
    QTest::newRow("reboot without a session")
        << QStringList{env, unset, QStringLiteral("XDG_RUNTIME_DIR"),
                       QStringLiteral("/usr/bin/vex-wmfunc"), QStringLiteral("VEXWM_REBOOT")}
        << QByteArray("vex-wmfunc [VEXWM_REBOOT] {XDG_RUNTIME_DIR}\n");
    QTest::newRow("terminal")
        << QStringList{env, unset, QStringLiteral("DISPLAY"), unset,
                       QStringLiteral("WAYLAND_DISPLAY"), QStringLiteral("vex-term"),
                       QStringLiteral("-e"), QStringLiteral("less /var/log/syslog")}
        << QByteArray("vex-term [-e] [less /var/log/syslog] {DISPLAY} {WAYLAND_DISPLAY}\n");
    QTest::newRow("network settings")
        << QStringList{env, unset, QStringLiteral("WAYLAND_DISPLAY"), QStringLiteral("DISPLAY=:0"),
                       QStringLiteral("nm-connection-editor")}
        << QByteArray("nm-connection-editor {DISPLAY=:0} {WAYLAND_DISPLAY}\n");
    QTest::newRow("editor")
        << QStringList{env, unset, QStringLiteral("DISPLAY"), QStringLiteral("WAYLAND_DISPLAY=wl-0"),
                       QStringLiteral("kate"), QStringLiteral("/etc/hosts")}
        << QByteArray("kate [/etc/hosts] {DISPLAY} {WAYLAND_DISPLAY=wl-0}\n");
    QTest::newRow("package query")
        << QStringList{QStringLiteral("dpkg-query"), QStringLiteral("-W"), QStringLiteral("orn-admin")}
        << QByteArray("dpkg-query [-W] [orn-admin]\n");
}

void TestSandbox::recordingTools()
{
    QFETCH(QStringList, command);
    QFETCH(QByteArray, line);
    const QString log = m_scratch.filePath(QStringLiteral("%1.log").arg(QTest::currentDataTag()));

    const SandboxRun run = runSandbox({QStringLiteral("--log"), log}, command);
    QVERIFY2(run.exitCode == 0, run.err.constData());
    QCOMPARE(readFile(log), line);
}

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    if (!sandboxAvailable())
        return sandboxUnavailable;
    TestSandbox test;
    return QTest::qExec(&test, argc, argv);
}

#include "tst_sandbox.moc"
