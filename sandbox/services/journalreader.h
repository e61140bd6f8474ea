#pragma once

#include <QByteArray>
#include <QList>
#include <QPair>
#include <QString>

// The journal's socket on the simulated host: takes each entry sent to it, whole or passed in a
// sealed memory file as libsystemd does with large ones, and writes it to a record, one JSON
// object a line as `journalctl -o json` writes them, and as one line to the sandbox's call log.
class JournalReader
{
public:
    JournalReader(const QString &recordPath, const QString &logPath);
    ~JournalReader();

    // Binds the socket; false with errno set when that fails.
    bool listen(const QString &socketPath);
    // Records every entry until SIGTERM, and those sent before it.
    void run();

    using Fields = QList<QPair<QByteArray, QByteArray>>;
    // The fields of an entry in the journal's native format: NAME=value and a line feed, or,
    // for a value that may hold line feeds, NAME, a line feed, the value's length as 64 bits
    // little-endian, the value and a line feed.
    static Fields fields(const QByteArray &entry);

private:
    // False when no entry came (with MSG_DONTWAIT: none was waiting).
    bool receive(QByteArray *entry, int flags);
    void record(const QByteArray &entry);
    void append(int fd, const QByteArray &bytes);

    int _socket = -1;
    int _record = -1;
    int _log = -1;
};
