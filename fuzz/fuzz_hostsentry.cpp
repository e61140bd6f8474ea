// The rewrite of /etc/hosts. Whatever the file holds, the result is the file with exactly one
// line replaced by the entry "ADDRESS SERVER HOST\n", or the file (ended by a line feed if it
// was not) with the entry after it; every other byte stays. The line replaced is the first one
// that the matching rule, applied to each line on its own, counts as the host's: the line
// pattern with the name pasted in finds a match whose name group is not empty (the test suite's
// rows pin what that pattern means for a plain name: a whole-word test). For host names of
// letters, digits and hyphens a second rewrite changes nothing.
//
// Input, byte by byte:
//   [0]       bit 1 set: the host name is one of the file's blank-separated words, the one
//             numbered by the length of the name field (so that every word of a real file,
//             pattern characters and all, gets tried);
//             else bit 0 set: the name field as written (any characters but a line feed);
//             else only the name field's letters, digits and hyphens
//   [1..4]    the IPv4 address, one byte per number
//   then      the name field up to the first line feed, the server name up to the next one
//             without its NULs, and the rest is the file. The entry stays one line of text that
//             the rewrite reads whole: a NUL would end its text early, as Qt's decoding does.
#include "fuzzcheck.h"
#include "hostsfile.h"

#include <QRegularExpression>
#include <QString>

#include <cstddef>
#include <cstdint>

namespace {

// The matching rule as written, on one line with its line end up to its first NUL: the pattern
// with the name in it as it stands, and a match only when the name's group took part of the line.
bool countsAsEntry(const QRegularExpression &pattern, const QByteArray &line)
{
    return pattern.match(QString::fromUtf8(line.constData())).capturedLength(2) > 0;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    if (size < 5)
        return 0;
    const bool fromFile = data[0] & 2;
    const bool plain = !fromFile && !(data[0] & 1);
    const QString address = QString::asprintf("%d.%d.%d.%d", data[1], data[2], data[3], data[4]);
    const QList<QByteArray> fields =
        QByteArray(reinterpret_cast<const char *>(data) + 5, int(size) - 5).split('\n');
    QByteArray hostBytes = fields.at(0);
    const QByteArray serverBytes = QByteArray(fields.value(1)).replace('\0', QByteArray());
    const QByteArray content = fields.mid(2).join('\n');
    static const QRegularExpression other("[^A-Za-z0-9-]");
    if (fromFile) {
        const QList<QByteArray> words = content.simplified().split(' ');
        hostBytes = words.at(hostBytes.size() % words.size());
    } else if (plain) {
        // Latin-1 maps each byte to one character: only those bytes stay.
        hostBytes = QString::fromLatin1(hostBytes).remove(other).toLatin1();
    }
    const QString host = QString::fromUtf8(hostBytes);
    const QString server = QString::fromUtf8(serverBytes);
    const QByteArray entry = (address + ' ' + server + ' ' + host + '\n').toUtf8();

    const QByteArray result = HostsFile::withEntry(content, host, server, address);
    const QRegularExpression pattern(
        QStringLiteral("^(?![[:space:]]*#)[[:space:]]*(\\d{1,3}.\\d{1,3}.\\d{1,3}.\\d{1,3}).*"
                       "[[:space:]](%1)([[:space:]]|$)")
            .arg(host));
    // The first line that counts, with its line feed, as where it starts and its length.
    int start = 0, length = -1;
    for (int next = 0; pattern.isValid() && start < content.size(); start = next) {
        next = content.indexOf('\n', start) + 1;
        next = next > 0 ? next : content.size();
        if (countsAsEntry(pattern, content.mid(start, next - start))) {
            length = next - start;
            break;
        }
    }
    if (length < 0)
        require(result ==
                    QByteArray(content + (content.isEmpty() || content.endsWith('\n') ? "" : "\n") +
                               entry),
                "without the host's line the entry is added");
    else
        require(result == QByteArray(content).replace(start, length, entry),
                "the host's first line is the one replaced");
    if (plain && !host.isEmpty())
        require(HostsFile::withEntry(result, host, server, address) == result,
                "a second rewrite changes nothing");
    return 0;
}
