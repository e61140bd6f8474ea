// Times the plug-in's package query against one bare call of the same dpkg-query command, taking
// turns so that both meet the same machine: bench-packages PACKAGE RUNS. Both run the dpkg-query
// of /usr/bin, the plug-in by its fixed search path and the bare call through PATH. Prints the
// medians in microseconds, and whether both saw the package installed.
#include "benchtools.h"
#include "packagestatus.h"

#include <QCoreApplication>
#include <QElapsedTimer>

#include <cstdio>
#include <cstdlib>

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    if (argc != 3) {
        std::fprintf(stderr, "usage: bench-packages PACKAGE RUNS\n");
        return 2;
    }
    const std::string package = argv[1];
    const int runs = std::max(1, std::atoi(argv[2]));
    std::vector<double> plugin, bare;
    bool agree = true;
    QElapsedTimer clock;
    for (int run = 0; run < runs; ++run) {
        clock.start();
        const PackageStatus status = queryPackageStatus(QString::fromStdString(package));
        plugin.push_back(clock.nsecsElapsed() / 1000.0);
        clock.start();
        const std::string output =
            runTool({"dpkg-query", "-W", "-f=${binary:Package}\t${Version}\t${Status}", package});
        bare.push_back(clock.nsecsElapsed() / 1000.0);
        agree = agree && status == PackageStatus::Installed &&
                output.rfind(package + '\t', 0) == 0 &&
                output.find("\tinstall ok installed") != std::string::npos;
    }
    std::printf("plugin_us %.0f\nbare_us %.0f\nagree %d\n", median(plugin), median(bare), agree);
    return agree ? 0 : 1;
}
