#pragma once

#include "atomicfile.h"

#include <QByteArray>
#include <QString>

// The host's line in /etc/hosts.
class HostsFile
{
public:
    // The host's line, without its line end: "ipAddress serverName hostname".
    static QString entry(const QString &hostname, const QString &serverName,
                         const QString &ipAddress);
    // `content` with its first line that maps an IPv4 address to `hostname` (as a whole word,
    // not commented out) replaced by "ipAddress serverName hostname", or with that entry added
    // after the last line. The name goes into the line pattern as written, and a line counts
    // only when the name's part of the match is not empty. Every other line keeps its bytes.
    // `replacedLine`, when given, gets the line replaced without its line end, or a null array
    // when the entry was added.
    static QByteArray withEntry(QByteArray content, const QString &hostname,
                                const QString &serverName, const QString &ipAddress,
                                QByteArray *replacedLine = nullptr);
    // Reads the hosts file at `path` and replaces it with `withEntry` of its content. A file
    // that cannot be read counts as not opened.
    static AtomicFile::Result update(const QString &path, const QString &hostname,
                                     const QString &serverName, const QString &ipAddress,
                                     QByteArray *replacedLine = nullptr);
};
