#pragma once

#include <QByteArray>
#include <QString>

// The journal's socket on the simulated host: takes each entry sent to it, whole or passed in a
// sealed memory file as libsystemd does with large ones, and writes it to a record in the
// journal's export format and as one line to the sandbox's call log.
class JournalReader
{
public:
    JournalReader(const QString &recordPath, const QString &logPath);
    ~JournalReader();

    // Binds the socket; false with errno set when that fails.
    bool listen(const QString &socketPath);
    // Records every entry until the process ends.
    [[noreturn]] void run();

    // "journal {FIELD=value}..." for an entry in the journal's native format, line feeds in
    // values written as \n.
    static QByteArray logLine(const QByteArray &entry);

private:
    QByteArray receive();
    void append(int fd, const QByteArray &bytes);

    int _socket = -1;
    int _record = -1;
    int _log = -1;
};
