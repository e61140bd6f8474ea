#pragma once

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QPair>
#include <QQueue>
#include <QString>

class QSocketNotifier;

// Entries for the system journal, in its native protocol, sent without ever waiting for it: a
// journald that stops reading would otherwise hold the window still for as long. What the journal
// cannot take yet waits here, in order, and goes out as soon as it has room again; past a bound
// entries are dropped, and one warning afterwards says how many. Without a journal entries are
// dropped at once.
class JournalSocket : public QObject
{
public:
    static constexpr qint64 defaultQueueLimit = 16 * 1024 * 1024;

    static QString defaultPath() { return QStringLiteral("/run/systemd/journal/socket"); }

    explicit JournalSocket(const QString &path = defaultPath(),
                           qint64 queueLimit = defaultQueueLimit, QObject *parent = nullptr);
    ~JournalSocket() override;

    // The process-wide sender, owned by the application: what a run queued still reaches the
    // journal after its dialog is gone.
    static JournalSocket *instance();

    using Fields = QList<QPair<QByteArray, QByteArray>>;
    // `identity` opens the entry; a warning about lost entries carries the last lost one's.
    void send(const Fields &identity, const Fields &fields);

    // Bytes of entries waiting for the journal to take them.
    qint64 pendingBytes() const { return _pendingBytes; }

private:
    // Dropped: this entry could not be sent, the next may.
    enum class Sent { Whole, Later, Dropped, NoJournal };
    bool open();
    void close();
    Sent transmit(const QByteArray &entry);
    Sent transmitInMemoryFile(const QByteArray &entry);
    void enqueue(const QByteArray &entry, const Fields &identity);
    void drain();

    QByteArray _path;
    qint64 _queueLimit;
    int _fd = -1;
    QSocketNotifier *_writable = nullptr;
    QQueue<QByteArray> _queue;
    qint64 _pendingBytes = 0;
    qint64 _lost = 0;
    Fields _lostIdentity;
};
