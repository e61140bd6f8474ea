#pragma once

#include <QProcessEnvironment>
#include <QString>
#include <QStringList>

class QProcess;

// The programs the plug-in starts run as root, from a console that a user started through sudo,
// perhaps keeping their own PATH and variables. So a program is looked for in the system's own
// folders alone, and sees of the console's environment only what it needs: nothing set before
// sudo may choose what runs as root, nor steer it.
class SystemProgram
{
public:
    // The folders searched, in order; also the PATH the programs get.
    static QString searchPath();
    // The absolute path of the executable `name` in the search path, or an empty text.
    static QString find(const QString &name);
    // The console's locale settings, PATH set to the search path, and those of the variables in
    // `kept` that the console has.
    static QProcessEnvironment environment(const QStringList &kept = {});
    // That of a program that opens windows: also the display the console was given.
    static QProcessEnvironment desktopEnvironment();
    // Gives `process` the program `name` as found in the search path, `arguments` and
    // `environment`. Returns false, leaving `process` as it was, when `name` is not there.
    static bool prepare(QProcess &process, const QString &name, const QStringList &arguments,
                        const QProcessEnvironment &environment = SystemProgram::environment());
};
