// Times the reading of the machine's addresses and name against `hostname -I`, taking turns:
// bench-state RUNS. Prints the medians in microseconds, and whether both found the same
// addresses (the tool leaves out loopback and IPv6 link-local ones).
#include "benchtools.h"
#include "hostidentity.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QHostAddress>
#include <QSet>

#include <cstdio>
#include <cstdlib>

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    const int runs = argc == 2 ? std::max(1, std::atoi(argv[1])) : 0;
    if (runs == 0) {
        std::fprintf(stderr, "usage: bench-state RUNS\n");
        return 2;
    }
    std::vector<double> plugin, tool;
    HostIdentity identity;
    std::string printed;
    QElapsedTimer clock;
    for (int run = 0; run < runs; ++run) {
        clock.start();
        identity = HostIdentity::read();
        plugin.push_back(clock.nsecsElapsed() / 1000.0);
        clock.start();
        printed = runTool({"hostname", "-I"});
        tool.push_back(clock.nsecsElapsed() / 1000.0);
    }
    QSet<QString> ours;
    for (const QString &text : identity.addresses) {
        const QHostAddress address(text);
        if (!address.isLoopback() && !address.isLinkLocal())
            ours << text;
    }
    QSet<QString> theirs;
    for (const QByteArray &text : QByteArray::fromStdString(printed).simplified().split(' '))
        if (!text.isEmpty())
            theirs << QString::fromLatin1(text);
    const bool agree = ours == theirs && !identity.hostname.isEmpty();
    std::printf("plugin_us %.1f\ntool_us %.0f\naddresses %d\nagree %d\n", median(plugin),
                median(tool), int(identity.addresses.size()), agree);
    return agree ? 0 : 1;
}
