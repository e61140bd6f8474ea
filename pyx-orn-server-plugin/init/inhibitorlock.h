#pragma once

#include <QDBusUnixFileDescriptor>
#include <QString>

// A lock that asks logind to hold off shutdown, sleep and the like for as long as it is held:
// logind hands out a descriptor, and the lock ends when the last copy of it is closed. Ours is
// close-on-exec, so no program started meanwhile keeps the lock alive after we let it go.
class InhibitorLock
{
public:
    // Asks logind on the system bus, waiting at most a few seconds. Returns why no lock was
    // taken, or an empty text.
    QString take(const QString &what, const QString &who, const QString &why,
                 const QString &mode);
    // Returns whether a lock was held.
    bool release();

private:
    QDBusUnixFileDescriptor _descriptor;
};
