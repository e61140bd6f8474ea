#include "packagestatus.h"

#include "systemprogram.h"

#include <QProcess>
#include <QRegExp>

namespace {
constexpr int queryTimeoutMs = 30000;
}

PackageStatus packageStatusFromOutput(const QByteArray &output)
{
    // The format ends without a line feed, so two records (one package for two architectures)
    // run together and no longer split into three fields.
    const QString text = QString::fromLocal8Bit(output.constData());
    const QStringList fields = text.split(QLatin1Char('\t'), Qt::KeepEmptyParts, Qt::CaseSensitive);
    if (fields.size() != 3)
        return PackageStatus::NotInstalled;
    const QRegExp installed(QStringLiteral("^install ok"), Qt::CaseSensitive, QRegExp::RegExp);
    return installed.indexIn(fields.at(2)) != -1 ? PackageStatus::Installed
                                                 : PackageStatus::NotInstalled;
}

PackageStatus queryPackageStatus(const QString &package, QString *program, QStringList *arguments)
{
    const QString command = QStringLiteral("dpkg-query");
    const QStringList args = {QStringLiteral("-W"),
                              QStringLiteral("-f=${binary:Package}\t${Version}\t${Status}"),
                              package};
    if (program)
        *program = command;
    if (arguments)
        *arguments = args;

    // DPKG_ADMINDIR and its kin would point the query at another database.
    QProcess process;
    if (!SystemProgram::prepare(process, command, args))
        return PackageStatus::Failed;
    process.start(QIODevice::ReadOnly);
    if (!process.waitForFinished(queryTimeoutMs)) {
        if (process.state() != QProcess::NotRunning) {
            process.kill();
            process.waitForFinished();
        }
        return PackageStatus::Failed;
    }
    if (process.exitStatus() != QProcess::NormalExit)
        return PackageStatus::Failed;
    return packageStatusFromOutput(process.readAllStandardOutput());
}
