#include "simulatedlogind.h"

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusError>

#include <cstdio>

// pyx-sandbox-logind LOG: serves org.freedesktop.login1 on the system bus and prints "ready"
// once it does.
int main(int argc, char *argv[])
{
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
    std::puts("ready");
    std::fclose(stdout);
    return app.exec();
}
