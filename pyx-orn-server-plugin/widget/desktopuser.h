#pragma once

#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

#include <sys/types.h>

// The desktop user who started the console through sudo, as SUDO_USER names them. Programs that
// open windows on that user's desktop run as that user: a root-owned window on a user's desktop
// is one the desktop's editors refuse to be, and one every program of the session can drive.
class DesktopUser
{
public:
    // Looks SUDO_USER up in the password database. Invalid when it is not set, names no user, or
    // names root.
    static DesktopUser fromSudo();

    bool isValid() const { return _uid > 0; }
    // Starts the program `name` of the system's folders with `arguments`, as this user with their
    // groups and in their home, and lets it run on its own. Returns whether it started.
    bool startDetached(const QString &name, const QStringList &arguments) const;

private:
    // The session's environment: the locale, the display, and the user's own names, home and
    // runtime folder, with the session bus found there.
    QProcessEnvironment environment() const;

    uid_t _uid = 0;
    gid_t _gid = 0;
    QString _name, _home, _shell;
};
