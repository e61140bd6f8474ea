// Streams a file through the real initialisation dialog and through a bare pipe, and, when a
// terminal is named, through that terminal as well:
// bench-pane DATA-TOOL FIXTURE EXPECTED RUNS [TERMINAL]. The tool run by the dialog is a stand-in
// that plays FIXTURE with `DATA-TOOL feed`; the pipe is the same command into `cat > /dev/null`,
// and the terminal runs `DATA-TOOL show`, which writes the same way and ends once the terminal has
// taken in everything. EXPECTED is the text the pane must show. The platform is Qt's choice
// (QT_QPA_PLATFORM); the terminal uses the same DISPLAY. It writes /etc/orn/tempFile and puts the
// stand-in at /usr/bin/orn-init, where the dialog looks for the tool, so it belongs inside
// sandbox/run. Prints medians in milliseconds (the terminal's whole run, and its
// run on an empty file as its start-up), the longest gap between 5 ms heartbeats of the GUI
// thread, the memory the pane took per line, whether the text matched and whether undo stayed
// enabled.
#include "benchtools.h"
#include "initrequest.h"
#include "initserverdialog.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QFile>
#include <QPlainTextEdit>
#include <QTemporaryDir>
#include <QTimer>

#include <cstdio>
#include <cstdlib>

namespace {

long residentBytes()
{
    QFile statm(QStringLiteral("/proc/self/statm"));
    if (!statm.open(QIODevice::ReadOnly))
        return 0;
    const QList<QByteArray> fields = statm.readAll().split(' ');
    return fields.size() > 1 ? fields.at(1).toLong() * sysconf(_SC_PAGESIZE) : 0;
}

struct PaneRun
{
    double ms = 0;
    double longestGapMs = 0;
    long grownBytes = 0;
    bool undo = false;
    QString text;
};

// The stand-in orn-init that plays `fixture`. The dialog gives the tool no environment of ours,
// so the paths are written into it.
bool installTool(const QString &dataTool, const QString &fixture)
{
    const auto quoted = [](const QString &path) -> QByteArray {
        const QByteArray name = QFile::encodeName(path);
        return "'" + QByteArray(name).replace('\'', "'\\''") + "'";
    };
    QFile tool(QStringLiteral("/usr/bin/orn-init"));
    const QByteArray script =
        "#!/bin/sh\nexec " + quoted(dataTool) + " feed " + quoted(fixture) + "\n";
    tool.remove();
    return tool.open(QIODevice::WriteOnly) && tool.write(script) == script.size() &&
           tool.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
}

PaneRun runDialog(const QString &dataTool, const QString &fixture)
{
    PaneRun run;
    if (!installTool(dataTool, fixture)) {
        std::fprintf(stderr, "bench-pane: cannot set up the stand-in tool\n");
        return run;
    }
    const long before = residentBytes();
    // Passwords of a real length: the journal's copy of every paragraph masks them, and a
    // one-letter password would be masked wherever that letter occurs in the output.
    InitServerDialog dialog(InitRequest::make(QStringLiteral("Kerberos-db-2024"),
                                              QStringLiteral("Directory-admin-77"), false, {}, {},
                                              {}));
    auto *pane = dialog.findChild<QPlainTextEdit *>(QStringLiteral("_plainTextEdit"));
    QElapsedTimer clock, beat;
    QTimer heartbeat;
    heartbeat.setTimerType(Qt::PreciseTimer);
    heartbeat.setInterval(5);
    const auto tick = [&run, &beat] {
        if (beat.isValid())
            run.longestGapMs = std::max(run.longestGapMs, beat.nsecsElapsed() / 1e6);
        beat.start();
    };
    QObject::connect(&heartbeat, &QTimer::timeout, tick);
    QObject::connect(&dialog, &InitServerDialog::serverCreatedSuccsessfully, [&] {
        run.ms = clock.nsecsElapsed() / 1e6;
        tick();
        heartbeat.stop();
        run.grownBytes = residentBytes() - before;
        run.undo = pane->isUndoRedoEnabled();
        run.text = pane->toPlainText();
        QTimer::singleShot(0, &dialog, &QDialog::reject);
    });
    // A stand-in that never ends must not hold the benchmark forever.
    QTimer::singleShot(300000, &dialog, [&dialog] { dialog.done(QDialog::Rejected); });
    heartbeat.start();
    clock.start();
    dialog.exec();
    return run;
}

} // namespace

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    const int runs = argc == 5 || argc == 6 ? std::max(1, std::atoi(argv[4])) : 0;
    if (runs == 0) {
        std::fprintf(stderr, "usage: bench-pane DATA-TOOL FIXTURE EXPECTED RUNS [TERMINAL]\n");
        return 2;
    }
    const std::string terminal = argc == 6 ? argv[5] : "";
    const QString dataTool = QString::fromLocal8Bit(argv[1]);
    const QString fixture = QString::fromLocal8Bit(argv[2]);
    QFile expectedFile(QString::fromLocal8Bit(argv[3]));
    QTemporaryDir fakes;
    if (!expectedFile.open(QIODevice::ReadOnly) || !fakes.isValid()) {
        std::fprintf(stderr, "bench-pane: cannot read %s\n", argv[3]);
        return 1;
    }
    // The pane shows every line, and the final line feed starts no further line.
    QString expected = QString::fromLocal8Bit(expectedFile.readAll());
    expected.chop(expected.endsWith(QLatin1Char('\n')) ? 1 : 0);
    const int lines = expected.count(QLatin1Char('\n')) + 1;

    // Fonts, styles and the first window cost once, in any console.
    QFile small(fakes.filePath(QStringLiteral("small")));
    if (small.open(QIODevice::WriteOnly) && small.write("warm\n") == 5)
        small.close();
    runDialog(dataTool, small.fileName());

    QElapsedTimer clock;
    // The terminal's whole run, from its start until it has ended; false when it ended without
    // having taken in everything.
    const std::string mark = fakes.filePath(QStringLiteral("shown")).toStdString();
    const auto showInTerminal = [&](const QString &file, std::vector<double> &times) {
        std::remove(mark.c_str());
        clock.start();
        runTool({terminal, "-e", dataTool.toStdString(), "show", file.toStdString(), mark});
        times.push_back(clock.nsecsElapsed() / 1e6);
        return QFile::exists(QString::fromStdString(mark));
    };
    std::vector<double> dialogMs, pipeMs, terminalMs, terminalStartMs;
    QFile empty(fakes.filePath(QStringLiteral("empty")));
    if (!terminal.empty() &&
        (!empty.open(QIODevice::WriteOnly) || !showInTerminal(empty.fileName(), terminalStartMs))) {
        std::fprintf(stderr, "bench-pane: %s did not show the empty file\n", terminal.c_str());
        return 1;
    }
    PaneRun first;
    bool same = true;
    for (int run = 0; run < runs; ++run) {
        clock.start();
        runTool({"/bin/sh", "-c", "\"$0\" feed \"$1\" | cat >/dev/null", dataTool.toStdString(),
                 fixture.toStdString()});
        pipeMs.push_back(clock.nsecsElapsed() / 1e6);
        if (!terminal.empty()) {
            if (!showInTerminal(fixture, terminalMs) ||
                !showInTerminal(empty.fileName(), terminalStartMs)) {
                std::fprintf(stderr, "bench-pane: %s did not show everything\n", terminal.c_str());
                return 1;
            }
        }
        PaneRun pane = runDialog(dataTool, fixture);
        dialogMs.push_back(pane.ms);
        same = same && pane.text == expected;
        if (run == 0)
            first = pane;
        first.longestGapMs = std::max(first.longestGapMs, pane.longestGapMs);
        first.undo = first.undo && pane.undo;
    }
    std::printf("pane_ms %.0f\npipe_ms %.1f\nlines %d\nlines_per_s %.0f\nlongest_gap_ms %.1f\n"
                "bytes_per_line %.0f\nsame_text %d\nundo %d\n",
                median(dialogMs), median(pipeMs), lines, lines / (median(dialogMs) / 1000),
                first.longestGapMs, double(first.grownBytes) / lines, same, first.undo);
    if (!terminal.empty())
        std::printf("terminal_ms %.0f\nterminal_start_ms %.0f\n", median(terminalMs),
                    median(terminalStartMs));
    return same && first.undo ? 0 : 1;
}
