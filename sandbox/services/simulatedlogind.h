#pragma once

#include <QDBusArgument>
#include <QDBusContext>
#include <QDBusUnixFileDescriptor>
#include <QList>
#include <QObject>
#include <QString>

class QSocketNotifier;

// One lock as logind lists it: what, who, why, mode, the owner's uid and pid.
struct Inhibitor
{
    QString what, who, why, mode;
    uint uid = 0, pid = 0;
};
Q_DECLARE_METATYPE(Inhibitor)
Q_DECLARE_METATYPE(QList<Inhibitor>)
QDBusArgument &operator<<(QDBusArgument &argument, const Inhibitor &inhibitor);
const QDBusArgument &operator>>(const QDBusArgument &argument, Inhibitor &inhibitor);

// logind's inhibitor locks on the simulated host's system bus: Inhibit hands out the write end
// of a pipe and keeps the read end, whose end of file says that the last copy of the lock was
// closed. Each lock taken and released is a line of the sandbox's call log.
class SimulatedLogind : public QObject, protected QDBusContext
{
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.login1.Manager")

public:
    explicit SimulatedLogind(const QString &logPath, QObject *parent = nullptr);

    // Logs the locks already closed whose end the event loop has not yet seen.
    void noteClosedLocks();

public slots:
    QDBusUnixFileDescriptor Inhibit(const QString &what, const QString &who, const QString &why,
                                    const QString &mode);
    QList<Inhibitor> ListInhibitors() const;

private:
    void released(QSocketNotifier *notifier);
    void log(const QString &event, const Inhibitor &inhibitor) const;

    QString _logPath;
    QList<QPair<QSocketNotifier *, Inhibitor>> _locks;
};
