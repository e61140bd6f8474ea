#include "inhibitorlock.h"

#include <QDBusConnection>
#include <QDBusError>
#include <QDBusMessage>
#include <QDBusUnixFileDescriptor>
#include <QVariant>

#include <utility>

namespace {
// logind answers at once; a bus that does not must not keep the run from starting.
constexpr int callTimeoutMs = 5000;
} // namespace

QString InhibitorLock::take(const QString &what, const QString &who, const QString &why,
                            const QString &mode)
{
    release();
    // A connection of our own, closed again at once: the lock lives in its descriptor, not in
    // the connection, and a bus that was missing at the last run is tried afresh.
    const QString name = QStringLiteral("pyx-orn-server-plugin-inhibitor");
    QString error;
    {
        // The system bus at its fixed place: DBUS_SYSTEM_BUS_ADDRESS, kept through sudo, would
        // let a user's own bus answer for logind.
        QDBusConnection bus = QDBusConnection::connectToBus(
            QStringLiteral("unix:path=/run/dbus/system_bus_socket"), name);
        if (!bus.isConnected()) {
            error = QStringLiteral("no system bus: %1").arg(bus.lastError().message());
        } else if (!(bus.connectionCapabilities() & QDBusConnection::UnixFileDescriptorPassing)) {
            error = QStringLiteral("the system bus passes no descriptors");
        } else {
            QDBusMessage call = QDBusMessage::createMethodCall(
                QStringLiteral("org.freedesktop.login1"), QStringLiteral("/org/freedesktop/login1"),
                QStringLiteral("org.freedesktop.login1.Manager"), QStringLiteral("Inhibit"));
            call << what << who << why << mode;
            const QDBusMessage reply = bus.call(call, QDBus::Block, callTimeoutMs);
            const QVariant answer = reply.arguments().value(0);
            if (reply.type() == QDBusMessage::ErrorMessage) {
                error = QStringLiteral("%1: %2").arg(reply.errorName(), reply.errorMessage());
            } else if (!answer.canConvert<QDBusUnixFileDescriptor>() ||
                       !answer.value<QDBusUnixFileDescriptor>().isValid()) {
                error = QStringLiteral("logind answered without a descriptor");
            } else {
                // A copy of the reply's own, which libdbus received close-on-exec; the lock
                // outlives the reply as long as this copy is kept.
                _descriptor = answer.value<QDBusUnixFileDescriptor>();
            }
        }
    }
    QDBusConnection::disconnectFromBus(name);
    return error;
}

bool InhibitorLock::release()
{
    // Closed with its last copy.
    return std::exchange(_descriptor, QDBusUnixFileDescriptor()).isValid();
}
