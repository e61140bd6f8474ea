#include "hostsfile.h"

#include <QFile>
#include <QRegularExpression>

#include <cstdint>
#include <cstring>
#include <limits>
#include <sys/mman.h>
#include <unistd.h>
#include <utility>

namespace {

// Whether a line can name `hostname` only where the name's bytes stand in it: an ASCII name
// without pattern characters matches itself alone, and every locale's 8-bit encoding keeps ASCII.
bool matchesOnlyItself(const QString &hostname)
{
    for (const QChar c : hostname) {
        if (c.unicode() == 0 || c.unicode() >= 0x80 || std::strchr("\\^$.|?*+()[]{}", c.toLatin1()))
            return false;
    }
    return true;
}

// All of `file`. A block list of some megabytes read into fresh memory takes one page fault per
// page, which on a virtual machine costs more than the rest of the rewrite; the pages are taken
// in one call first (a kernel without that call only reads more slowly).
bool readAll(QFile &file, QByteArray *content)
{
    const qint64 size = file.size();
    if (size <= 0 || size >= std::numeric_limits<int>::max()) {
        *content = file.readAll();
        return file.error() == QFileDevice::NoError;
    }
    content->resize(int(size));
    const auto page = std::uintptr_t(::sysconf(_SC_PAGESIZE));
    const auto first = (std::uintptr_t(content->data()) + page - 1) & ~(page - 1);
    const auto last = (std::uintptr_t(content->data()) + std::uintptr_t(size)) & ~(page - 1);
#ifdef MADV_POPULATE_WRITE
    if (last > first)
        ::madvise(reinterpret_cast<void *>(first), last - first, MADV_POPULATE_WRITE);
#endif
    qint64 got = 0;
    while (got < size) {
        const qint64 chunk = file.read(content->data() + got, size - got);
        if (chunk < 0)
            return false;
        if (chunk == 0)
            break;
        got += chunk;
    }
    content->truncate(int(got));
    // A file that grew while it was read: the rest as well.
    if (got == size)
        content->append(file.readAll());
    return file.error() == QFileDevice::NoError;
}

} // namespace

QString HostsFile::entry(const QString &hostname, const QString &serverName,
                         const QString &ipAddress)
{
    return QStringLiteral("%1 %2 %3").arg(ipAddress, serverName, hostname);
}

QByteArray HostsFile::withEntry(QByteArray content, const QString &hostname,
                                const QString &serverName, const QString &ipAddress,
                                QByteArray *replacedLine)
{
    const QByteArray entry =
        (HostsFile::entry(hostname, serverName, ipAddress) + QLatin1Char('\n')).toUtf8();
    // The name goes into the pattern as it is: its dots match any character, like the
    // address's. Compiled once per rewrite, not per line.
    const QRegularExpression pattern(
        QStringLiteral("^(?![[:space:]]*#)[[:space:]]*(\\d{1,3}.\\d{1,3}.\\d{1,3}.\\d{1,3}).*"
                       "[[:space:]](%1)([[:space:]]|$)")
            .arg(hostname));
    // Block lists run to hundreds of thousands of lines: for a name that can match only itself,
    // a byte search skips to the next line that holds it, and only that line is decoded.
    const bool searchBytes = matchesOnlyItself(hostname);
    const QByteArray name = hostname.toLatin1();

    // An empty name names no line, nor does a name that leaves the pattern unusable ("[name");
    // Qt would warn about such a pattern once per line.
    int start = 0;
    while (!hostname.isEmpty() && pattern.isValid() && start < content.size()) {
        if (searchBytes) {
            const auto *hit = static_cast<const char *>(
                ::memmem(content.constData() + start, size_t(content.size() - start),
                         name.constData(), size_t(name.size())));
            if (!hit)
                break;
            start = content.lastIndexOf('\n', int(hit - content.constData())) + 1;
        }
        const int lineFeed = content.indexOf('\n', start);
        const int end = lineFeed < 0 ? content.size() : lineFeed + 1;
        const QByteArray line = QByteArray::fromRawData(content.constData() + start, end - start);
        // A name with pattern characters can match while naming nothing ("srv|" matches the
        // empty word at any line's end); only a match that took some of the line names the host.
        // In place: the bytes of a long list are moved, not copied into a second buffer.
        if (pattern.match(QString::fromLocal8Bit(line)).capturedLength(2) > 0) {
            if (replacedLine) {
                *replacedLine = QByteArray(line.constData(), line.size());
                while (replacedLine->endsWith('\n') || replacedLine->endsWith('\r'))
                    replacedLine->chop(1);
            }
            return content.replace(start, end - start, entry);
        }
        start = end;
    }
    if (replacedLine)
        *replacedLine = QByteArray();
    if (!content.isEmpty() && !content.endsWith('\n'))
        content += '\n';
    return content += entry;
}

AtomicFile::Result HostsFile::update(const QString &path, const QString &hostname,
                                     const QString &serverName, const QString &ipAddress,
                                     QByteArray *replacedLine)
{
    QFile hosts(path);
    QByteArray content;
    if (!hosts.open(QIODevice::ReadOnly | QIODevice::Unbuffered) || !readAll(hosts, &content))
        return AtomicFile::NotOpened;
    hosts.close();
    return AtomicFile::replace(
        path, withEntry(std::move(content), hostname, serverName, ipAddress, replacedLine));
}
