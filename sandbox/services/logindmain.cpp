#include "simulatedlogind.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusError>
#include <QSocketNotifier>

#include <csignal>
#include <cstdio>

#include <pthread.h>
#include <sys/signalfd.h>

// pyx-sandbox-logind LOG: serves org.freedesktop.login1 on the system bus and prints "ready"
// once it does; ends on SIGTERM.
int main(int argc, char *argv[])
{
    // SIGTERM, as a descriptor, in every thread Qt starts: the locks closed before it are still
    // logged, then logind ends.
    sigset_t term;
    sigemptyset(&term);
    sigaddset(&term, SIGTERM);
    ::pthread_sigmask(SIG_BLOCK, &term, nullptr);
    QCoreApplication app(argc, argv);
    if (argc != 2) {
        std::fprintf(stderr, "usage: pyx-sandbox-logind LOG\n");
        return 2;
    }
    SimulatedLogind logind(QString::fromLocal8Bit(argv[1]));
    QDBusConnection bus = QDBusConnection::systemBus();
    if (!bus.registerObject(QStringLiteral("/org/freedesktop/login1"), &logind,
                            QDBusConnection::ExportAllSlots) ||
        !bus.registerService(QStringLiteral("org.freedesktop.login1"))) {
        std::fprintf(stderr, "pyx-sandbox-logind: %s\n", qPrintable(bus.lastError().message()));
        return 1;
    }
    QSocketNotifier stop(::signalfd(-1, &term, SFD_CLOEXEC), QSocketNotifier::Read);
    QObject::connect(&stop, &QSocketNotifier::activated, &app, [&logind] {
        logind.noteClosedLocks();
        QCoreApplication::quit();
    });
    std::puts("ready");
    std::fclose(stdout);
    return app.exec();
}
