#include "hostsfile.h"

#include <QFile>
#include <QRegularExpression>

QByteArray HostsFile::withEntry(const QByteArray &content, const QString &hostname,
                                const QString &serverName, const QString &ipAddress)
{
    const QByteArray entry =
        QStringLiteral("%1 %2 %3\n").arg(ipAddress, serverName, hostname).toUtf8();
    // The name goes into the pattern as it is: its dots match any character, like the
    // address's. Compiled once per rewrite, not per line.
    const QRegularExpression pattern(
        QStringLiteral("^(?![[:space:]]*#)[[:space:]]*(\\d{1,3}.\\d{1,3}.\\d{1,3}.\\d{1,3}).*"
                       "[[:space:]](%1)([[:space:]]|$)")
            .arg(hostname));
    // A plain name must appear in a line for the line to match; a name with pattern characters
    // may match text that differs from it.
    const bool plainName = QRegularExpression::escape(hostname) == hostname;

    bool found = false;
    QByteArray result;
    result.reserve(content.size() + entry.size() + 1);
    int start = 0;
    while (start < content.size()) {
        const int lineFeed = content.indexOf('\n', start);
        const int end = lineFeed < 0 ? content.size() : lineFeed + 1;
        const QByteArray line = content.mid(start, end - start);
        start = end;
        // An empty name names no line.
        if (!found && !hostname.isEmpty()) {
            const QString text = QString::fromLocal8Bit(line);
            if ((!plainName || text.contains(hostname)) && pattern.match(text).hasMatch()) {
                result += entry;
                found = true;
                continue;
            }
        }
        result += line;
    }
    if (!found) {
        if (!result.isEmpty() && !result.endsWith('\n'))
            result += '\n';
        result += entry;
    }
    return result;
}

AtomicFile::Result HostsFile::update(const QString &path, const QString &hostname,
                                     const QString &serverName, const QString &ipAddress)
{
    QFile hosts(path);
    if (!hosts.open(QIODevice::ReadOnly))
        return AtomicFile::NotOpened;
    const QByteArray content = hosts.readAll();
    if (hosts.error() != QFileDevice::NoError)
        return AtomicFile::NotOpened;
    hosts.close();
    return AtomicFile::replace(path, withEntry(content, hostname, serverName, ipAddress));
}
