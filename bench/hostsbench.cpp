// Rewrites a hosts file the way the initialisation run rewrites /etc/hosts, on a path of the
// caller's choosing: bench-hosts FILE HOSTNAME SERVER-NAME IP-ADDRESS. Prints the process's peak
// resident memory in bytes.
// bench-hosts --time FIXTURE RUNS HOSTNAME SERVER-NAME IP-ADDRESS times the rewrite itself, as the
// running console pays for it: each call on a fresh copy of FIXTURE (the copy is not timed).
// Prints the median and the first call in microseconds.
#include "benchtools.h"
#include "hostsfile.h"

#include <QElapsedTimer>
#include <QFile>
#include <QString>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <malloc.h>
#include <sys/resource.h>

namespace {

int timeUpdate(const QString &fixture, int runs, const QString &hostname,
               const QString &serverName, const QString &ipAddress)
{
    // glibc would otherwise keep a freed block of the file's size for the next call, which then
    // finds its memory already touched; the console's one rewrite gets fresh pages, so does each
    // call here.
    mallopt(M_MMAP_THRESHOLD, 128 * 1024);
    const QString copy = fixture + QStringLiteral(".timed");
    std::vector<double> times;
    QElapsedTimer clock;
    for (int run = 0; run < runs; ++run) {
        QFile::remove(copy);
        if (!QFile::copy(fixture, copy))
            return 1;
        clock.start();
        const AtomicFile::Result result = HostsFile::update(copy, hostname, serverName, ipAddress);
        times.push_back(clock.nsecsElapsed() / 1000.0);
        if (result != AtomicFile::Replaced)
            return 1;
    }
    QFile::remove(copy);
    std::printf("update_us %.0f\nfirst_us %.0f\n", median(times), times.front());
    return 0;
}

} // namespace

int main(int argc, char *argv[])
{
    if (argc == 7 && std::strcmp(argv[1], "--time") == 0)
        return timeUpdate(QString::fromLocal8Bit(argv[2]), std::max(1, std::atoi(argv[3])),
                          QString::fromLocal8Bit(argv[4]), QString::fromLocal8Bit(argv[5]),
                          QString::fromLocal8Bit(argv[6]));
    if (argc != 5) {
        std::fprintf(stderr, "usage: bench-hosts FILE HOSTNAME SERVER-NAME IP-ADDRESS\n"
                             "       bench-hosts --time FIXTURE RUNS HOSTNAME SERVER-NAME "
                             "IP-ADDRESS\n");
        return 2;
    }
    const AtomicFile::Result result =
        HostsFile::update(QString::fromLocal8Bit(argv[1]), QString::fromLocal8Bit(argv[2]),
                          QString::fromLocal8Bit(argv[3]), QString::fromLocal8Bit(argv[4]));
    struct rusage usage;
    getrusage(RUSAGE_SELF, &usage);
    std::printf("peak_rss %ld\n", usage.ru_maxrss * 1024L);
    return result == AtomicFile::Replaced ? 0 : 1;
}
