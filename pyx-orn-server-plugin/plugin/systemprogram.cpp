#include "systemprogram.h"

#include <QProcess>
#include <QStandardPaths>

QString SystemProgram::searchPath()
{
    return QStringLiteral("/usr/local/sbin:/usr/local/bin:/usr/sbin:/usr/bin:/sbin:/bin");
}

QString SystemProgram::find(const QString &name)
{
    // A bare name only: a path would bypass the folders.
    if (name.isEmpty() || name.contains(QLatin1Char('/')))
        return QString();
    return QStandardPaths::findExecutable(name, searchPath().split(QLatin1Char(':')));
}

QProcessEnvironment SystemProgram::environment(const QStringList &kept)
{
    const QProcessEnvironment console = QProcessEnvironment::systemEnvironment();
    QProcessEnvironment environment;
    for (const QString &name : console.keys()) {
        if (name == QLatin1String("LANG") || name == QLatin1String("LANGUAGE") ||
            name.startsWith(QLatin1String("LC_")) || kept.contains(name))
            environment.insert(name, console.value(name));
    }
    environment.insert(QStringLiteral("PATH"), searchPath());
    return environment;
}

QProcessEnvironment SystemProgram::desktopEnvironment()
{
    return environment({QStringLiteral("DISPLAY"), QStringLiteral("XAUTHORITY")});
}

bool SystemProgram::prepare(QProcess &process, const QString &name, const QStringList &arguments,
                            const QProcessEnvironment &environment)
{
    const QString program = find(name);
    if (program.isEmpty())
        return false;
    process.setProgram(program);
    process.setArguments(arguments);
    process.setProcessEnvironment(environment);
    return true;
}
