#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

enum class PackageStatus {
    // The query did not finish in time, could not start, or crashed.
    Failed,
    NotInstalled,
    Installed,
};

// Classifies what `dpkg-query -W -f='${binary:Package}\t${Version}\t${Status}' PKG` printed.
PackageStatus packageStatusFromOutput(const QByteArray &output);

// Asks the package database whether `package` is installed. Blocks for up to 30 s. `program` and
// `arguments`, when given, receive the command that was run.
PackageStatus queryPackageStatus(const QString &package, QString *program = nullptr,
                                 QStringList *arguments = nullptr);
