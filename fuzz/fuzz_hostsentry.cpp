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

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace {

constexpr std::size_t none = std::string::npos;

// Each line with its line feed; the last one may lack it.
std::vector<std::string> lines(const std::string &content)
{
    std::vector<std::string> result;
    for (std::size_t start = 0; start < content.size();) {
        const std::size_t lineFeed = content.find('\n', start);
        const std::size_t end = lineFeed == none ? content.size() : lineFeed + 1;
        result.push_back(content.substr(start, end - start));
        start = end;
    }
    return result;
}

// The matching rule as written, on one line with its line end: the pattern with the name in it
// as it stands, and a match only when the name's group took part of the line.
bool countsAsEntry(const QRegularExpression &pattern, const std::string &line)
{
    const std::string bytes = line.substr(0, line.find('\0'));
    return pattern.match(QString::fromUtf8(bytes.data(), int(bytes.size()))).capturedLength(2) > 0;
}

std::vector<std::string> words(const std::string &content)
{
    std::vector<std::string> result;
    const char *const blanks = " \t\n\r\v\f";
    for (std::size_t start = content.find_first_not_of(blanks); start != none;) {
        const std::size_t end = content.find_first_of(blanks, start);
        result.push_back(content.substr(start, end - start));
        start = end == none ? none : content.find_first_not_of(blanks, end);
    }
    return result;
}

std::string appended(const std::string &content, const std::string &entry)
{
    std::string result = content;
    if (!result.empty() && result.back() != '\n')
        result += '\n';
    return result + entry;
}

std::string rewrite(const std::string &content, const QString &host, const QString &server,
                    const QString &address)
{
    const QByteArray result = HostsFile::withEntry(QByteArray(content.data(), int(content.size())),
                                                   host, server, address);
    return std::string(result.constData(), std::size_t(result.size()));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    if (size < 5)
        return 0;
    const std::string input(reinterpret_cast<const char *>(data), size);
    const bool fromFile = data[0] & 2;
    const bool asWritten = !fromFile && (data[0] & 1);
    const QString address = QStringLiteral("%1.%2.%3.%4")
                                .arg(int(data[1]))
                                .arg(int(data[2]))
                                .arg(int(data[3]))
                                .arg(int(data[4]));
    std::size_t at = 5;
    const auto field = [&input, &at] {
        const std::size_t lineFeed = std::min(input.find('\n', at), input.size());
        const std::string text = input.substr(at, lineFeed - at);
        at = std::min(lineFeed + 1, input.size());
        return text;
    };
    std::string hostBytes = field();
    std::string serverBytes = field();
    serverBytes.erase(std::remove(serverBytes.begin(), serverBytes.end(), '\0'), serverBytes.end());
    const std::string content = input.substr(at);
    if (fromFile) {
        const std::vector<std::string> all = words(content);
        hostBytes = all.empty() ? std::string() : all[hostBytes.size() % all.size()];
    } else if (!asWritten) {
        std::string kept;
        for (const char c : hostBytes) {
            if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') ||
                c == '-')
                kept += c;
        }
        hostBytes = kept;
    }
    const bool plain = !fromFile && !asWritten;
    const QString host = QString::fromUtf8(hostBytes.data(), int(hostBytes.size()));
    const QString server = QString::fromUtf8(serverBytes.data(), int(serverBytes.size()));
    const QByteArray entryBytes =
        (address + QLatin1Char(' ') + server + QLatin1Char(' ') + host + QLatin1Char('\n'))
            .toUtf8();
    const std::string entry(entryBytes.constData(), std::size_t(entryBytes.size()));

    const std::string result = rewrite(content, host, server, address);
    const QRegularExpression pattern(
        QStringLiteral("^(?![[:space:]]*#)[[:space:]]*(\\d{1,3}.\\d{1,3}.\\d{1,3}.\\d{1,3}).*"
                       "[[:space:]](%1)([[:space:]]|$)")
            .arg(host));
    // The first line that counts, as where it starts in the file and its length.
    std::size_t start = 0, length = none;
    for (const std::string &line : lines(content)) {
        if (pattern.isValid() && countsAsEntry(pattern, line)) {
            length = line.size();
            break;
        }
        start += line.size();
    }
    if (length == none)
        require(result == appended(content, entry), "without the host's line the entry is added");
    else
        require(result == std::string(content).replace(start, length, entry),
                "the host's first line is the one replaced");
    if (plain && !host.isEmpty())
        require(rewrite(result, host, server, address) == result,
                "a second rewrite changes nothing");
    return 0;
}
