// What the initialisation run decides without touching the host: the request, the rewritten
// /etc/hosts, the text shown for a chunk of the tool's output and how a flood of it is cut up on
// its way into the pane.
#include "hostsfile.h"
#include "initrequest.h"
#include "initserverdialog.h"
#include "outputpanefeeder.h"

#include <QPlainTextEdit>
#include <QtTest>

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

    void pieceEnd_data();
    void pieceEnd()
    {
        QFETCH(QString, text);
        QFETCH(int, from);
        QFETCH(int, lines);
        QFETCH(int, chars);
        QFETCH(bool, forced);
        QTEST(::pieceEnd(text, from, lines, chars, forced), "end");
    }

    // A flood reaches the pane in slices, with the event loop between them: the pane's text is
    // still that of appending each paragraph whole, and all of it is there once the feeder says
    // it has drained.
    void paneSlices_data();
    void paneSlices()
    {
        QFETCH(QString, text);
        QPlainTextEdit pane, whole;
        OutputPaneFeeder feeder(&pane);
        QString shownWhenDrained;
        connect(&feeder, &OutputPaneFeeder::drained,
                [&] { shownWhenDrained = pane.toPlainText(); });
        for (const QString &paragraph : {QString("first"), text, QString("last")}) {
            feeder.append(paragraph);
            whole.appendPlainText(paragraph);
        }
        QTRY_VERIFY(!feeder.hasPending());
        QCOMPARE(pane.toPlainText(), whole.toPlainText());
        QCOMPARE(pane.document()->blockCount(), whole.document()->blockCount());
        QCOMPARE(shownWhenDrained, whole.toPlainText());
        // It paints again, and keeps undo enabled but with no history to copy.
        QVERIFY(pane.updatesEnabled());
        QVERIFY(pane.isUndoRedoEnabled());
        QVERIFY(!pane.document()->isUndoAvailable());
    }
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
    QTest::newRow("five characters are no sequence") << QByteArray("\x1b[12345m") << "\x1b[12345m";
    QTest::newRow("the longest sequence first") << QByteArray("\x1b[abmm x") << " x";
    // One pass: a sequence that a removal joins from the pieces around it stays.
    QTest::newRow("joined sequence kept") << QByteArray("\x1b\x1b[12m[34m") << "\x1b[34m";
    // Code points, never halves of a surrogate pair: three emoji are three characters.
    QTest::newRow("characters, not UTF-16 units") << QString("\x1b[😀😀😀m ok").toUtf8() << " ok";
    QTest::newRow("line feeds only") << QByteArray("\n\n\n") << "";
    QTest::newRow("CR LF keeps the CR") << QByteArray("done\r\n") << "done\r";
    QTest::newRow("inner line feeds kept") << QByteArray("a\n\nb\n") << "a\n\nb";
    QTest::newRow("NUL ends the text") << QByteArray("ab\0cd\n", 6) << "ab";
    QTest::newRow("UTF-8") << QString("Готово\n").toUtf8() << "Готово";
}

void TestInitLogic::pieceEnd_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("from");
    QTest::addColumn<int>("lines");
    QTest::addColumn<int>("chars");
    QTest::addColumn<bool>("forced");
    QTest::addColumn<int>("end"); // -1: no piece
    const bool forced = true, unforced = false;
    const auto row = [](const char *name, const char *text, int from, int lines, int chars,
                        bool force, int end) {
        QTest::newRow(name) << QString(text) << from << lines << chars << force << end;
    };
    // clang-format off
    //                                                 text          from lines chars          end
    row("the rest fits: to the text's end",            "ab\ncd",      0,  2,   5,   unforced,  5);
    row("a line too many: the last line feed within",  "a\nb\nc",     0,  2,   9,   unforced,  3);
    row("a character too many: the last within",       "ab\ncd\nef",  0,  9,   5,   unforced,  5);
    row("lines and characters count from `from` on",   "xx\nab\ncd",  3,  1,   3,   unforced,  5);
    row("no cut between CR and LF",                    "a\r\nb\nc",   0,  1,   9,   unforced, -1);
    row("forced past a CR LF to the next line feed",   "a\r\nb\nc",   0,  1,   9,   forced,    4);
    row("CR LF pairs whole when the rest fits",        "a\r\nb\r\n",  0,  3,   9,   unforced,  6);
    row("an empty line is no piece",                   "\nab",        0,  1,   9,   unforced, -1);
    row("forced past an empty line",                   "\nab\ncd",    0,  1,   9,   forced,    3);
    row("a long first line: no piece unforced",        "abcdef\ngh",  0,  9,   3,   unforced, -1);
    row("a long first line: forced to its line feed",  "abcdef\ngh",  0,  9,   3,   forced,    6);
    row("no line feed: forced to the text's end",      "abcdef",      0,  9,   3,   forced,    6);
    row("no line feed: no piece unforced",             "abcdef",      0,  9,   3,   unforced, -1);
    // clang-format on
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
    // Long enough to be still waiting when the next paragraph comes, which then joins its slice.
    QTest::newRow("CR at the end, before the next paragraph")
        << QString("y\n").repeated(100000) + "\r";
    QTest::newRow("one long line") << QString(40000, 'x');
}

QTEST_MAIN(TestInitLogic)
#include "tst_initlogic.moc"
