#pragma once

#include <QElapsedTimer>
#include <QObject>
#include <QStringList>
#include <QTimer>

class QPlainTextEdit;

// Where the next piece of `text`, from `from` on, ends: at the text's end when the rest has at most
// `lines` lines and `chars` characters; else at the last line feed within those limits at which the
// text may be cut: after at least one character, and not ending a CR LF (the pane takes the pair as
// one line end, and would take a CR left at a piece's end as one more). Failing that, when
// `forced`, at the first such line feed beyond them or at the text's end; else -1.
// Appending the pieces of a text cut at such line feeds gives the text of appending it whole.
int pieceEnd(const QString &text, int from, int lines, int chars, bool forced);

// Feeds paragraphs into a plain-text pane so that a flood of them leaves the window answering:
// waiting paragraphs go in large appends, a slice of appends gives the event loop a turn once it
// has used its time, and while output waits the pane paints only now and then. The pane's text
// is that of appending each paragraph whole.
class OutputPaneFeeder : public QObject
{
    Q_OBJECT

public:
    // `pane` must outlive the feeder's last append.
    explicit OutputPaneFeeder(QPlainTextEdit *pane, QObject *parent = nullptr);

    // Appends `text` to the pane as one paragraph, after the paragraphs still waiting.
    void append(const QString &text);
    // Whether paragraphs wait to be shown.
    bool hasPending() const { return !_pending.isEmpty(); }
    // Empties the pane and drops what waits.
    void clear();

signals:
    // Everything appended so far is in the pane.
    void drained();

private:
    void showPending();
    // The next append's text: the oldest waiting output, as much as one append may take.
    QString takeSlice();

    QPlainTextEdit *_pane;
    // Paragraphs on their way into the pane, oldest first; the first from _pendingFrom on.
    QStringList _pending;
    int _pendingFrom = 0;
    QTimer _timer;
    // When the pane last got to paint while output was waiting.
    QElapsedTimer _lastFrame;
};
