// Makes the benchmark's fixtures from a fixed seed, and plays a file through a pipe the way a
// line-buffered tool would.
//
//   bench-data hosts LINES OUT     ad-block-style hosts file; "127.0.1.1 ws1.example.lan ws1"
//                                  stands ten lines before the end, no line names dc1
//   bench-data status COUNT OUT    dpkg status file of COUNT packages, orn-server-common among them
//   bench-data log BYTES OUT       log lines of 86 characters with colour sequences; OUT.plain
//                                  holds the same lines without them
//   bench-data short LINES OUT     short lines
//   bench-data feed FILE           FILE to standard output in writes of at most 4096 bytes, each
//                                  ending at a line end, so a reader never gets a line in halves
//   bench-data show FILE MARK      FILE fed the same way into the terminal on standard input and
//                                  output; then asks the terminal for its attributes and, once it
//                                  has answered (it answers in order, so it has taken in all of
//                                  FILE), creates MARK. Exits 1 without MARK if no answer comes
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <fstream>
#include <random>
#include <string>

#include <fcntl.h>
#include <poll.h>
#include <sys/mman.h>
#include <sys/stat.h>
#include <termios.h>
#include <unistd.h>

namespace {

std::mt19937 random(20240611);

// Below `n`, from the generator's raw output, so that every machine draws the same numbers.
unsigned below(unsigned n)
{
    return unsigned(random() % n);
}

std::string word(unsigned shortest, unsigned longest, const char *alphabet)
{
    const unsigned size = unsigned(std::strlen(alphabet));
    std::string text(shortest + below(longest - shortest + 1), ' ');
    for (char &c : text)
        c = alphabet[below(size)];
    return text;
}

const char *const letters = "abcdefghijklmnopqrstuvwxyz";
const char *const alnum = "abcdefghijklmnopqrstuvwxyz0123456789";

std::string domain()
{
    static const char *const tlds[] = {"com", "net", "org", "io", "ru", "info", "xyz"};
    // One draw per statement: the operands of + are evaluated in no fixed order.
    std::string name = word(3, 8, alnum);
    name += '.' + word(4, 10, letters);
    if (below(2))
        name += '-' + word(3, 6, letters);
    return name + '.' + tlds[below(7)];
}

void hosts(long lines, std::ofstream &out)
{
    out << "# Title: generated block list\n# One name per line, sent nowhere.\n#\n"
           "127.0.0.1 localhost\n::1 localhost ip6-localhost ip6-loopback\n\n";
    for (long line = 6; line < lines; ++line)
        out << (line == lines - 10 ? "127.0.1.1 ws1.example.lan ws1" : "0.0.0.0 " + domain())
            << '\n';
}

void status(long count, std::ofstream &out)
{
    static const char *const sections[] = {"libs", "utils", "net", "admin", "devel", "python"};
    const long common = long(below(unsigned(count)));
    for (long index = 0; index < count; ++index) {
        const std::string name =
            index == common ? "orn-server-common" : word(3, 9, letters) + std::to_string(index);
        const bool removed = below(20) == 0;
        out << "Package: " << name
            << "\nStatus: " << (removed ? "deinstall ok config-files" : "install ok installed")
            << "\nPriority: optional\nSection: " << sections[below(6)]
            << "\nInstalled-Size: " << 16 + below(40000)
            << "\nMaintainer: Bench Maintainers <bench@example.invalid>\nArchitecture: amd64\n";
        if (below(3) == 0)
            out << "Multi-Arch: foreign\n";
        out << "Version: " << below(10) << '.' << below(30) << '.' << below(100) << '-'
            << 1 + below(5) << "\nDepends: libc6 (>= 2.34)";
        for (unsigned dependency = below(5); dependency > 0; --dependency)
            out << ", " << word(3, 9, letters) << " (>= " << below(9) << '.' << below(20) << ')';
        out << "\nDescription: " << word(4, 12, letters) << ' ' << word(4, 12, letters) << '\n';
        for (unsigned line = 2 + below(5); line > 0; --line) {
            out << ' ';
            for (unsigned words = 6 + below(6); words > 0; --words)
                out << ' ' << word(2, 10, letters);
            out << '\n';
        }
        if (!removed)
            out << "Homepage: https://example.invalid/" << name << '\n';
        out << '\n';
    }
}

void log(long bytes, std::ofstream &out, std::ofstream &plain)
{
    static const char *const levels[] = {"INFO", "WARN", "FAIL", "NOTE"};
    static const char *const colours[] = {"\x1b[1;32m", "\x1b[1;33m", "\x1b[1;31m", "\x1b[01m"};
    long written = 0;
    for (long line = 0; written < bytes; ++line) {
        const unsigned level = below(4);
        char stamp[40];
        std::snprintf(stamp, sizeof stamp, "2024-06-11 %02ld:%02ld:%02ld.%03u ", line / 3600 % 24,
                      line / 60 % 60, line % 60, below(1000));
        std::string rest = "] slapd[" + std::to_string(1000 + below(9000));
        rest += "]: conn=" + std::to_string(below(100000));
        rest += " op=" + std::to_string(below(50));
        rest += " SRCH base=\"dc=" + word(3, 8, letters);
        rest += ",dc=lan\" filter=\"(uid=" + word(3, 10, alnum) + ")\"";
        rest.resize(86 - std::strlen(stamp) - 5, '.');
        const bool coloured = below(10) < 7;
        const std::string shown = std::string(stamp) + '[' + levels[level] + rest;
        const std::string sent =
            coloured ? std::string(stamp) + '[' + colours[level] + levels[level] + "\x1b[00m" + rest
                     : shown;
        out << sent << '\n';
        plain << shown << '\n';
        written += long(sent.size()) + 1;
    }
}

void shortLines(long lines, std::ofstream &out)
{
    for (long line = 0; line < lines; ++line)
        out << word(4, 14, alnum) << '\n';
}

int feed(const char *path)
{
    // Mapped, not read: the feeder should cost no more than `cat`.
    const int fd = ::open(path, O_RDONLY | O_CLOEXEC);
    struct stat status;
    if (fd < 0 || ::fstat(fd, &status) != 0)
        return 1;
    const size_t size = size_t(status.st_size);
    void *mapped = size ? ::mmap(nullptr, size, PROT_READ, MAP_PRIVATE, fd, 0) : nullptr;
    ::close(fd);
    if (mapped == MAP_FAILED)
        return 1;
    const char *data = static_cast<const char *>(mapped);
    size_t start = 0;
    while (start < size) {
        size_t end = std::min(start + 4096, size);
        if (end < size) {
            const void *lineFeed = ::memrchr(data + start, '\n', end - start);
            if (lineFeed)
                end = size_t(static_cast<const char *>(lineFeed) - data) + 1;
        }
        const ssize_t written = ::write(1, data + start, end - start);
        if (written <= 0)
            return 1;
        start += size_t(written);
    }
    return 0;
}

int show(const char *path, const char *mark)
{
    termios saved;
    if (!::isatty(0) || ::tcgetattr(0, &saved) != 0)
        return 1;
    // The answer comes without a line end and must not be echoed onto the screen.
    termios raw = saved;
    raw.c_lflag &= ~tcflag_t(ICANON | ECHO);
    raw.c_cc[VMIN] = 1;
    raw.c_cc[VTIME] = 0;
    if (::tcsetattr(0, TCSANOW, &raw) != 0)
        return 1;
    bool answered = false;
    if (feed(path) == 0 && ::write(1, "\x1b[c", 3) == 3) {
        // "ESC [ ? ... c"; a terminal that is still busy with FILE answers late, not never.
        pollfd input = {0, POLLIN, 0};
        char c = 0;
        while (::poll(&input, 1, 60000) == 1 && ::read(0, &c, 1) == 1) {
            if (c == 'c') {
                answered = true;
                break;
            }
        }
    }
    ::tcsetattr(0, TCSANOW, &saved);
    if (!answered)
        return 1;
    const int fd = ::open(mark, O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC, 0600);
    return fd >= 0 && ::close(fd) == 0 ? 0 : 1;
}

} // namespace

int main(int argc, char *argv[])
{
    const std::string kind = argc > 1 ? argv[1] : "";
    if (kind == "feed" && argc == 3)
        return feed(argv[2]);
    if (kind == "show" && argc == 4)
        return show(argv[2], argv[3]);
    if (argc != 4) {
        std::fprintf(
            stderr,
            "usage: bench-data hosts|status|log|short COUNT OUT | feed FILE | show FILE MARK\n");
        return 2;
    }
    const long count = std::atol(argv[2]);
    std::ofstream out(argv[3], std::ios::binary);
    if (kind == "hosts") {
        hosts(count, out);
    } else if (kind == "status") {
        status(count, out);
    } else if (kind == "log") {
        std::ofstream plain(std::string(argv[3]) + ".plain", std::ios::binary);
        log(count, out, plain);
        if (!plain.flush())
            return 1;
    } else if (kind == "short") {
        shortLines(count, out);
    } else {
        return 2;
    }
    return out.flush() ? 0 : 1;
}
