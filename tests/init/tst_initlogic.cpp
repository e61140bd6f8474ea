// What the initialisation run decides without touching the host: the request, the rewritten
// /etc/hosts, the text shown for a chunk of the tool's output, and the journal's socket, here one
// in a temporary folder.
#include "hostsfile.h"
#include "initrequest.h"
#include "initserverdialog.h"
#include "journalsocket.h"

#include <QPlainTextEdit>
#include <QSocketNotifier>
#include <QtEndian>
#include <QtTest>

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

// The journal's end: takes each entry as it arrives, as a list of "NAME=value".
class JournalReceiver
{
public:
    struct Entry
    {
        QByteArrayList fields;
        int seals = -1; // of the memory file it came in; -1: it came in the datagram
    };
    QList<Entry> entries;

    explicit JournalReceiver(const QString &path)
        : _fd(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0))
        , _notifier(_fd, QSocketNotifier::Read)
    {
        sockaddr_un address = {};
        address.sun_family = AF_UNIX;
        qstrncpy(address.sun_path, QFile::encodeName(path).constData(), sizeof address.sun_path);
        if (::bind(_fd, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0)
            qFatal("cannot bind %s", qPrintable(path));
        QObject::connect(&_notifier, &QSocketNotifier::activated, [this] { receive(); });
    }
    ~JournalReceiver() { ::close(_fd); }
    QByteArrayList joined() const
    {
        QByteArrayList list;
        for (const Entry &entry : entries)
            list << entry.fields.join(' ');
        return list;
    }
    void receive()
    {
        for (ssize_t size; (size = ::recv(_fd, nullptr, 0, MSG_PEEK | MSG_TRUNC)) >= 0;) {
            QByteArray payload(int(qMax<ssize_t>(size, 1)), Qt::Uninitialized);
            iovec part = {payload.data(), size_t(payload.size())};
            alignas(cmsghdr) char control[CMSG_SPACE(sizeof(int))];
            msghdr message = {};
            message.msg_iov = &part;
            message.msg_iovlen = 1;
            message.msg_control = control;
            message.msg_controllen = sizeof control;
            payload.truncate(int(::recvmsg(_fd, &message, MSG_CMSG_CLOEXEC)));
            Entry entry;
            if (const cmsghdr *header = CMSG_FIRSTHDR(&message)) {
                int file;
                memcpy(&file, CMSG_DATA(header), sizeof file);
                entry.seals = ::fcntl(file, F_GET_SEALS);
                payload.clear();
                char buffer[65536];
                for (ssize_t n; (n = ::pread(file, buffer, sizeof buffer, payload.size())) > 0;)
                    payload.append(buffer, int(n));
                ::close(file);
            }
            entry.fields = decode(payload);
            entries << entry;
        }
    }

private:
    // NAME=value and a line feed, or NAME, a line feed, the length as 64 bits little-endian, the
    // value and a line feed.
    static QByteArrayList decode(const QByteArray &entry)
    {
        QByteArrayList fields;
        for (int at = 0; at < entry.size();) {
            const int end = entry.indexOf('\n', at);
            const int equals = entry.indexOf('=', at);
            if (end < 0)
                return fields << "unterminated";
            if (equals >= 0 && equals < end) {
                fields << entry.mid(at, end - at);
                at = end + 1;
                continue;
            }
            const int start = end + 9;
            const qint64 length =
                start <= entry.size() ? qFromLittleEndian<qint64>(entry.constData() + end + 1) : -1;
            if (length < 0 || start + length >= entry.size() || entry.at(start + length) != '\n')
                return fields << "bad length";
            fields << entry.mid(at, end - at) + '=' + entry.mid(start, int(length));
            at = start + int(length) + 1;
        }
        return fields;
    }

    int _fd;
    QSocketNotifier _notifier;
};

class TestInitLogic : public QObject
{
    Q_OBJECT

private slots:
    void request()
    {
        const auto own = InitRequest::make(" k ", "a", false, "10.0.0.5", "srv", "srv.lan");
        QCOMPARE(own.keys().join(' '), "adminPassword customNetworkSettings kerberosPassword");
        const auto custom = InitRequest::make(" k ", "a", true, "", "srv", "srv.lan");
        QCOMPARE(custom.keys().join(' '), "adminPassword customNetworkSettings hostname ipAddress "
                                          "kerberosPassword serverName");
    }

    void hostsEntry_data();
    void hostsEntry()
    {
        QFETCH(QByteArray, content);
        QFETCH(QString, hostname);
        QTEST(HostsFile::withEntry(content, hostname, "srv.new.lan", "10.0.0.5"), "rewritten");
    }

    void outputParagraph_data();
    void outputParagraph()
    {
        QFETCH(QByteArray, chunk);
        QTEST(InitServerDialog::removeTrailingNewlines(InitServerDialog::outputText(chunk)),
              "paragraph");
    }

    // A flood reaches the pane in slices, with the event loop between them: the pane's text is
    // still that of appending each paragraph whole.
    void paneSlices_data();
    void paneSlices()
    {
        QFETCH(QString, text);
        InitServerDialog dialog({});
        const auto *pane = dialog.findChild<QPlainTextEdit *>("_plainTextEdit");
        QPlainTextEdit whole;
        for (const QString &paragraph : {QString("first"), text, QString("last")}) {
            QVERIFY(QMetaObject::invokeMethod(&dialog, "insertText", Q_ARG(QString, paragraph)));
            whole.appendPlainText(paragraph);
        }
        QTRY_COMPARE(pane->toPlainText(), whole.toPlainText());
        QCOMPARE(pane->document()->blockCount(), whole.document()->blockCount());
    }

    // A journal that stops reading holds up no send; once it reads again it gets the entries in
    // order, or those the bound kept and then how many were lost.
    void journalFlood_data();
    void journalFlood()
    {
        QFETCH(qint64, limit);
        QTemporaryDir dir;
        JournalReceiver journal(dir.filePath("socket"));
        JournalSocket socket(dir.filePath("socket"), limit);
        const int count = 20000;
        qint64 longest = 0;
        for (int i = 0; i < count; ++i) {
            // Room at the journal while entries still wait: the last must not overtake them.
            if (i == count - 1)
                journal.receive();
            QElapsedTimer timer;
            timer.start();
            socket.send(identity, {{"PRIORITY", "6"}, {"MESSAGE", entryText(i)}});
            longest = std::max(longest, timer.elapsed());
        }
        QVERIFY2(longest < 100, QByteArray(QByteArray::number(longest) + " ms").constData());
        QVERIFY(socket.pendingBytes() > 0);
        const auto warned = [&] {
            return !journal.entries.isEmpty() &&
                   journal.entries.last().fields.contains("PRIORITY=4");
        };
        QTRY_VERIFY_WITH_TIMEOUT(journal.entries.size() == count || warned(), 30000);
        QByteArrayList expected;
        const int kept = journal.entries.size() - warned();
        for (int i = 0; i < kept; ++i)
            expected << "SYSLOG_IDENTIFIER=tst PYX_RUN_ID=r1 PRIORITY=6 MESSAGE=" + entryText(i);
        if (limit < JournalSocket::defaultQueueLimit) {
            QVERIFY(kept < count);
            expected << "SYSLOG_IDENTIFIER=tst PYX_RUN_ID=r1 PRIORITY=4 MESSAGE=Journal entries "
                        "lost, as the journal did not take them in time: " +
                            QByteArray::number(count - kept);
        }
        QCOMPARE(journal.joined(), expected);
        QCOMPARE(socket.pendingBytes(), 0);
    }

    void journalValues_data();
    void journalValues()
    {
        QFETCH(QByteArray, value);
        QTemporaryDir dir;
        JournalReceiver journal(dir.filePath("socket"));
        const auto descriptors = [] {
            return QDir("/proc/self/fd").entryList(QDir::AllEntries | QDir::System).size();
        };
        const int before = descriptors();
        {
            JournalSocket socket(dir.filePath("socket"));
            socket.send(identity, {{"MESSAGE", value}, {"AFTER", "end"}});
            QTRY_COMPARE(journal.entries.size(), 1);
        }
        QCOMPARE(descriptors(), before);
        QCOMPARE(journal.entries[0].fields,
                 QByteArrayList(
                     {"SYSLOG_IDENTIFIER=tst", "PYX_RUN_ID=r1", "MESSAGE=" + value, "AFTER=end"}));
        QTEST(journal.entries[0].seals, "seals");
    }

    // Without a journal an entry is dropped at once; one that comes later is found.
    void journalAbsent_data();
    void journalAbsent()
    {
        QFETCH(bool, stale);
        QTemporaryDir dir;
        const QString path = dir.filePath("socket");
        if (stale) {
            // Bound, then closed: the file stays behind, and nobody reads it.
            JournalReceiver gone(path);
        }
        JournalSocket socket(path);
        QElapsedTimer timer;
        timer.start();
        socket.send(identity, {{"MESSAGE", "dropped"}});
        QVERIFY(timer.elapsed() < 1000);
        QCOMPARE(socket.pendingBytes(), 0);
        QFile::remove(path);
        JournalReceiver journal(path);
        socket.send(identity, {{"MESSAGE", "taken"}});
        QTRY_COMPARE(journal.joined(),
                     QByteArrayList{"SYSLOG_IDENTIFIER=tst PYX_RUN_ID=r1 MESSAGE=taken"});
    }

private:
    const JournalSocket::Fields identity{{"SYSLOG_IDENTIFIER", "tst"}, {"PYX_RUN_ID", "r1"}};
    static QByteArray entryText(int i) { return QByteArray::number(i).rightJustified(5, '0'); }
};

void TestInitLogic::hostsEntry_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("hostname");
    QTest::addColumn<QByteArray>("rewritten");
    const auto row = [](const char *name, const QByteArray &content, const QString &hostname,
                        const QByteArray &rewritten) {
        QTest::newRow(name) << content << hostname << rewritten;
    };
    const QByteArray e = "10.0.0.5 srv.new.lan srv\n";
    const QByteArray v6 = "\n# The following lines are desirable for IPv6 capable hosts\n"
                          "::1     localhost ip6-localhost ip6-loopback\nff02::1 ip6-allnodes\n";
    const QByteArray fedora = "127.0.0.1   localhost localhost.localdomain localhost4\n"
                              "::1         localhost localhost.localdomain localhost6\n";
    row("Debian default", "127.0.0.1\tlocalhost\n127.0.1.1\tsrv.old.lan\tsrv\n" + v6, "srv",
        "127.0.0.1\tlocalhost\n" + e + v6);
    row("Fedora default", fedora, "srv", fedora + e);
    row("commented out", "  # 10.0.0.5 srv\n", "srv", "  # 10.0.0.5 srv\n" + e);
    row("first of two, aliases and comment dropped", " 1.1.1.1 a srv b # c\n2.2.2.2 srv\n", "srv",
        e + "2.2.2.2 srv\n");
    row("other case, longer names", "1.0.0.9 SRV srv-backup srv.other\n", "srv",
        "1.0.0.9 SRV srv-backup srv.other\n" + e);
    row("CR LF", "127.0.0.1 localhost\r\n127.0.1.1 srv\r\n::1 x\r\n", "srv",
        "127.0.0.1 localhost\r\n" + e + "::1 x\r\n");
    row("IPv6 line", "fe80::1 srv\n", "srv", "fe80::1 srv\n" + e);
    row("empty file", "", "srv", e);
    row("last line without line feed", "127.0.0.1 localhost", "srv", "127.0.0.1 localhost\n" + e);
    row("a name's dots match any character", "10.0.0.1 xsrv.a\n10.0.0.2 srvXa\n", "srv.a",
        "10.0.0.1 xsrv.a\n10.0.0.5 srv.new.lan srv.a\n");
    row("hyphenated name after lines that only mention it",
        "0.0.0.0 my-srv.ads\n# 1.1.1.1 my-srv\n1.1.1.2 x my-srv\n", "my-srv",
        "0.0.0.0 my-srv.ads\n# 1.1.1.1 my-srv\n10.0.0.5 srv.new.lan my-srv\n");
    row("empty name", "127.0.1.1 srv\n", "", "127.0.1.1 srv\n10.0.0.5 srv.new.lan \n");
    row("other bytes kept", "# caf\xe9\n127.0.1.1 srv", "srv", "# caf\xe9\n" + e);
    // Pattern characters in a name: a match counts only where the name took part of the line.
    const QByteArray local = "127.0.0.1 localhost\n127.0.1.1 ws1\n";
    for (const char *name : {"srv|", "$", "x*", "[name"})
        row(name, local, name, local + "10.0.0.5 srv.new.lan " + name + "\n");
    row("a pattern name that takes a word", local + "10.0.0.1 xx\n", "x+",
        local + "10.0.0.5 srv.new.lan x+\n");
}

void TestInitLogic::outputParagraph_data()
{
    QTest::addColumn<QByteArray>("chunk");
    QTest::addColumn<QString>("paragraph");
    QTest::newRow("colours") << QByteArray("\x1b[1;32mdone\x1b[00m\n") << "done";
    QTest::newRow("one character is no sequence") << QByteArray("x\x1b[0m") << "x\x1b[0m";
    QTest::newRow("split sequence, first part") << QByteArray("ok\x1b[1;3") << "ok\x1b[1;3";
    QTest::newRow("split sequence, second part") << QByteArray("2mdone\n") << "2mdone";
    QTest::newRow("sequence across a line feed") << QByteArray("a\x1b[\n1m") << "a";
    QTest::newRow("line feeds only") << QByteArray("\n\n\n") << "";
    QTest::newRow("CR LF keeps the CR") << QByteArray("done\r\n") << "done\r";
    QTest::newRow("inner line feeds kept") << QByteArray("a\n\nb\n") << "a\n\nb";
    QTest::newRow("NUL ends the text") << QByteArray("ab\0cd\n", 6) << "ab";
    QTest::newRow("UTF-8") << QString("Готово\n").toUtf8() << "Готово";
}

void TestInitLogic::paneSlices_data()
{
    QTest::addColumn<QString>("text");
    QTest::newRow("LF and CR LF lines") << QString("line\r\nline\n").repeated(3000);
    QTest::newRow("blank lines") << QString("a\n\n\n").repeated(5000);
    QTest::newRow("CR LF where a slice would end")
        << QString(65535, 'x') + "\r\n" + QString("y\r\ny\n").repeated(30000);
    QTest::newRow("CR LF where a slice's lines end")
        << QString("a\n").repeated(999) + "b\r\n" + QString("c\n").repeated(3000);
    QTest::newRow("CR at the end, before the next paragraph")
        << QString("y\n").repeated(3000) + "\r";
    QTest::newRow("one long line") << QString(40000, 'x');
}

void TestInitLogic::journalFlood_data()
{
    QTest::addColumn<qint64>("limit");
    QTest::newRow("all kept") << JournalSocket::defaultQueueLimit;
    QTest::newRow("past the bound") << qint64(64 * 1024);
}

void TestInitLogic::journalValues_data()
{
    QTest::addColumn<QByteArray>("value");
    QTest::addColumn<int>("seals");
    QTest::newRow("line feeds") << QByteArray("two\nlines\n") << -1;
    QTest::newRow("several MB, in a sealed memory file")
        << QByteArray(9000000, 'x') + "\n=y"
        << (F_SEAL_SHRINK | F_SEAL_GROW | F_SEAL_WRITE | F_SEAL_SEAL);
}

void TestInitLogic::journalAbsent_data()
{
    QTest::addColumn<bool>("stale");
    QTest::newRow("no socket") << false;
    QTest::newRow("nobody reading the socket left behind") << true;
}

QTEST_MAIN(TestInitLogic)
#include "tst_initlogic.moc"
