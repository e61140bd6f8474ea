#include "desktopuser.h"

#include "systemprogram.h"

#include <QFileInfo>
#include <QProcess>

#include <pwd.h>
#include <unistd.h>

#include <vector>

DesktopUser DesktopUser::fromSudo()
{
    DesktopUser user;
    const QByteArray name = qgetenv("SUDO_USER");
    if (name.isEmpty())
        return user;
    long size = ::sysconf(_SC_GETPW_R_SIZE_MAX);
    std::vector<char> buffer(size_t(size > 0 ? size : 16384));
    passwd entry;
    passwd *found = nullptr;
    if (::getpwnam_r(name.constData(), &entry, buffer.data(), buffer.size(), &found) != 0 || !found)
        return user;
    user._uid = found->pw_uid;
    user._gid = found->pw_gid;
    user._name = QString::fromLocal8Bit(found->pw_name);
    user._home = QFile::decodeName(found->pw_dir);
    user._shell = QFile::decodeName(found->pw_shell);
    return user;
}

bool DesktopUser::startDetached(const QString &name, const QStringList &arguments) const
{
    const QString program = SystemProgram::find(name);
    QProcess process;
    if (!isValid() || program.isEmpty() ||
        !SystemProgram::prepare(process, QStringLiteral("setpriv"),
                                QStringList{QStringLiteral("--reuid=%1").arg(_uid),
                                            QStringLiteral("--regid=%1").arg(_gid),
                                            QStringLiteral("--init-groups"), QStringLiteral("--"),
                                            program} +
                                    arguments,
                                environment()))
        return false;
    if (QFileInfo(_home).isDir())
        process.setWorkingDirectory(_home);
    return process.startDetached();
}

QProcessEnvironment DesktopUser::environment() const
{
    QProcessEnvironment environment = SystemProgram::desktopEnvironment();
    environment.insert(QStringLiteral("HOME"), _home);
    environment.insert(QStringLiteral("USER"), _name);
    environment.insert(QStringLiteral("LOGNAME"), _name);
    environment.insert(QStringLiteral("SHELL"), _shell);
    const QString runtime = QStringLiteral("/run/user/%1").arg(_uid);
    environment.insert(QStringLiteral("XDG_RUNTIME_DIR"), runtime);
    if (QFileInfo(runtime + QStringLiteral("/bus")).exists())
        environment.insert(QStringLiteral("DBUS_SESSION_BUS_ADDRESS"),
                           QStringLiteral("unix:path=%1/bus").arg(runtime));
    return environment;
}
