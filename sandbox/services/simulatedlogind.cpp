#include "simulatedlogind.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMetaType>
#include <QFile>
#include <QSet>
#include <QSocketNotifier>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

QDBusArgument &operator<<(QDBusArgument &argument, const Inhibitor &inhibitor)
{
    argument.beginStructure();
    argument << inhibitor.what << inhibitor.who << inhibitor.why << inhibitor.mode << inhibitor.uid
             << inhibitor.pid;
    argument.endStructure();
    return argument;
}

const QDBusArgument &operator>>(const QDBusArgument &argument, Inhibitor &inhibitor)
{
    argument.beginStructure();
    argument >> inhibitor.what >> inhibitor.who >> inhibitor.why >> inhibitor.mode >>
        inhibitor.uid >> inhibitor.pid;
    argument.endStructure();
    return argument;
}

SimulatedLogind::SimulatedLogind(const QString &logPath, QObject *parent)
    : QObject(parent)
    , _logPath(logPath)
{
    qDBusRegisterMetaType<Inhibitor>();
    qDBusRegisterMetaType<QList<Inhibitor>>();
}

QDBusUnixFileDescriptor SimulatedLogind::Inhibit(const QString &what, const QString &who,
                                                 const QString &why, const QString &mode)
{
    // As strict as logind about the words it knows.
    static const QSet<QString> known = {
        QStringLiteral("shutdown"),           QStringLiteral("sleep"),
        QStringLiteral("idle"),               QStringLiteral("handle-power-key"),
        QStringLiteral("handle-suspend-key"), QStringLiteral("handle-hibernate-key"),
        QStringLiteral("handle-lid-switch")};
    const QStringList words = what.split(QLatin1Char(':'));
    if (what.isEmpty() || !known.contains(QSet<QString>(words.cbegin(), words.cend())) ||
        (mode != QLatin1String("block") && mode != QLatin1String("delay"))) {
        sendErrorReply(QDBusError::InvalidArgs, QStringLiteral("Invalid what or mode"));
        return {};
    }
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) {
        sendErrorReply(QDBusError::Failed, QStringLiteral("no pipe"));
        return {};
    }
    QDBusConnectionInterface *bus = connection().interface();
    const Inhibitor inhibitor{what,
                              who,
                              why,
                              mode,
                              bus->serviceUid(message().service()).value(),
                              bus->servicePid(message().service()).value()};
    auto *notifier = new QSocketNotifier(ends[0], QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, [this, notifier] { released(notifier); });
    _locks.append({notifier, inhibitor});
    log(QStringLiteral("Inhibit"), inhibitor);
    // The reply carries its own copy; ours goes now, or the lock could never end.
    const QDBusUnixFileDescriptor lock(ends[1]);
    ::close(ends[1]);
    return lock;
}

QList<Inhibitor> SimulatedLogind::ListInhibitors() const
{
    QList<Inhibitor> inhibitors;
    for (const auto &lock : _locks)
        inhibitors << lock.second;
    return inhibitors;
}

void SimulatedLogind::noteClosedLocks()
{
    QList<QSocketNotifier *> closed;
    for (const auto &lock : _locks) {
        pollfd end = {int(lock.first->socket()), POLLIN, 0};
        if (::poll(&end, 1, 0) == 1)
            closed << lock.first;
    }
    for (QSocketNotifier *notifier : closed)
        released(notifier);
}

void SimulatedLogind::released(QSocketNotifier *notifier)
{
    // Nobody writes to the pipe: readable means that every writer has closed it.
    for (int i = 0; i < _locks.size(); ++i) {
        if (_locks.at(i).first == notifier) {
            log(QStringLiteral("released"), _locks.takeAt(i).second);
            break;
        }
    }
    notifier->setEnabled(false);
    ::close(int(notifier->socket()));
    notifier->deleteLater();
}

void SimulatedLogind::log(const QString &event, const Inhibitor &inhibitor) const
{
    QFile file(_logPath);
    if (file.open(QIODevice::WriteOnly | QIODevice::Append | QIODevice::Unbuffered)) {
        file.write(QStringLiteral("logind [%1] [%2] [%3] [%4] [%5] {uid=%6} {pid=%7}\n")
                       .arg(event, inhibitor.what, inhibitor.who, inhibitor.why, inhibitor.mode)
                       .arg(inhibitor.uid)
                       .arg(inhibitor.pid)
                       .toUtf8());
    }
}
