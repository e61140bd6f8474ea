#include "outputpanefeeder.h"

#include <QPlainTextEdit>
#include <QTextDocument>

namespace {
// A flood of output reaches the pane in appends of at most sliceLines lines and sliceChars
// characters, and the event loop gets a turn once a slice of appends has taken about
// sliceBudgetMs, so that the window keeps answering. Every append lays out the pane's last
// screenful of lines again, however little it adds, so a few large appends cost far less than many
// small ones; the limits keep one append to a few milliseconds.
constexpr int sliceLines = 1000;
constexpr int sliceChars = 65536;
constexpr int sliceBudgetMs = 8;
// While output waits, the pane is repainted at most this often: each paint lays out, draws and
// sends to the display a screenful that the next append makes stale at once.
constexpr int frameMs = 40;
} // namespace

int pieceEnd(const QString &text, int from, int lines, int chars, bool forced)
{
    const QLatin1Char lineFeed('\n'), carriageReturn('\r');
    int cut = -1;
    int line = 1;
    for (int at = text.indexOf(lineFeed, from); at >= 0;
         at = text.indexOf(lineFeed, at + 1), ++line) {
        const bool within = line <= lines && at - from <= chars;
        if (!within && (cut >= 0 || !forced))
            return cut;
        if (at > from && text.at(at - 1) != carriageReturn) {
            cut = at;
            if (!within)
                return cut;
        }
    }
    if (line <= lines && text.size() - from <= chars)
        return text.size();
    return cut >= 0 || !forced ? cut : text.size();
}

OutputPaneFeeder::OutputPaneFeeder(QPlainTextEdit *pane, QObject *parent)
    : QObject(parent)
    , _pane(pane)
{
    _timer.setSingleShot(true);
    _timer.setInterval(0);
    connect(&_timer, &QTimer::timeout, this, &OutputPaneFeeder::showPending);
}

void OutputPaneFeeder::append(const QString &text)
{
    _pending.append(text);
    // While slices wait, the timer shows them, in order.
    if (!_timer.isActive())
        showPending();
}

void OutputPaneFeeder::clear()
{
    _pane->clear();
    _pending.clear();
    _pendingFrom = 0;
}

void OutputPaneFeeder::showPending()
{
    QElapsedTimer clock;
    clock.start();
    // An append takes about as long as the one before it: the turn comes before one that would
    // run past the budget rather than after it. The first append of a slice always goes ahead.
    qint64 appendNs = 0;
    while (!_pending.isEmpty()) {
        if (appendNs > 0 && clock.nsecsElapsed() + appendNs > sliceBudgetMs * 1000000LL) {
            _timer.start();
            // The event loop's next turn paints the pane only when a frame is due, and not after
            // a slice that ran long (the text document now and then copies its tables whole):
            // then it waits a turn.
            const bool paint = (!_lastFrame.isValid() || _lastFrame.hasExpired(frameMs)) &&
                               !clock.hasExpired(2 * sliceBudgetMs);
            if (paint)
                _lastFrame.start();
            _pane->setUpdatesEnabled(paint);
            return;
        }
        const qint64 before = clock.nsecsElapsed();
        _pane->appendPlainText(takeSlice());
        // Undo stays enabled, as the pane is defined, but no one can undo in a read-only pane.
        // Kept, its history (two entries a line) would be copied whole each time it doubles, in
        // one append of tens of milliseconds at a few hundred thousand lines.
        _pane->document()->clearUndoRedoStacks();
        appendNs = clock.nsecsElapsed() - before;
    }
    _pane->setUpdatesEnabled(true);
    _lastFrame.invalidate();
    emit drained();
}

QString OutputPaneFeeder::takeSlice()
{
    // Many paragraphs go in one append: a paragraph separator starts a line as a further append
    // would, and unlike a line feed it never pairs with a CR before it. An empty pane takes an
    // empty paragraph as no line at all, so nothing separates it from what follows.
    const QChar separator(QChar::ParagraphSeparator);
    const bool paneEmpty = _pane->document()->isEmpty();
    QString slice;
    int lines = sliceLines, chars = sliceChars;
    for (bool first = true; !_pending.isEmpty() && lines > 0 && chars > 0; first = false) {
        const QString &text = _pending.constFirst();
        const int end = pieceEnd(text, _pendingFrom, lines, chars, first);
        if (end < 0)
            break;
        if (!first && !(paneEmpty && slice.isEmpty()))
            slice += separator;
        const QStringRef piece = text.midRef(_pendingFrom, end - _pendingFrom);
        slice += piece;
        lines -= piece.count(QLatin1Char('\n')) + 1;
        chars -= piece.size() + 1;
        if (end < text.size()) {
            _pendingFrom = end + 1;
            break;
        }
        _pending.removeFirst();
        _pendingFrom = 0;
    }
    return slice;
}
