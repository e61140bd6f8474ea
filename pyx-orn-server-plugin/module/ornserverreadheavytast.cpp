#include "ornserverreadheavytast.h"

#include "elementdata.h"
#include "orncore.h"
#include "packagestatus.h"
#include "pyxorncore.h"
#include "serverproperties.h"
#include "streaminterceptor.h"

#include <QHostAddress>
#include <QHostInfo>
#include <QNetworkInterface>
#include <QObject>

#include <cstdio>

OrnServerReadHeavyTast::OrnServerReadHeavyTast(Element *element)
    : ReadPropertyHeavyTask(element)
{
    elementData = new ElementData;
    description.setDescription(QObject::tr("Read ORN server information"));
}

OrnServerReadHeavyTast::~OrnServerReadHeavyTast() = default;

void OrnServerReadHeavyTast::run()
{
    OrnCore *core = PyxOrnCore::instance()->ornCore();
    if (!core) {
        description.setStatus(TaskDescription::Error);
        description.setMessage(QObject::tr("Domain core not initialized"));
        AbstractTask::run();
        return;
    }

    // Whatever the core and the queries complain about while we read is the reading's warning.
    StreamInterceptor interceptor(stderr);
    core->refresh();

    QMap<QString, QVariant> &record = elementData->properties;
    record.insert(ServerProperties::ifServer, core->isServer());
    record.insert(ServerProperties::ifServerOn, core->isServerOn());
    record.insert(ServerProperties::ifConfigured, core->isConfigured());

    QStringList addresses;
    for (const QHostAddress &address : QNetworkInterface::allAddresses())
        addresses << address.toString();
    record.insert(ServerProperties::ipAddresses, addresses);
    record.insert(ServerProperties::hostname, QHostInfo::localHostName());
    const std::string &domain = core->domainName();
    record.insert(ServerProperties::domainName,
                  QString::fromUtf8(domain.data(), static_cast<int>(domain.size())));

    const QHostAddress localHost(QHostAddress::LocalHost);
    for (const QHostAddress &address : QNetworkInterface::allAddresses()) {
        if (address.protocol() == QAbstractSocket::IPv4Protocol && address != localHost) {
            record.insert(ServerProperties::currentIpAddress, address.toString());
            break;
        }
    }

    QString program;
    QStringList arguments;
    const PackageStatus common = queryPackageStatus(QStringLiteral("orn-server-common"), &program,
                                                    &arguments);
    if (common == PackageStatus::Failed) {
        description.setStatus(TaskDescription::Error);
        description.setMessage(QObject::tr("Process error %1 %2")
                                   .arg(program, arguments.join(QLatin1Char(' '))));
        AbstractTask::run();
        return;
    }
    record.insert(ServerProperties::ornServerCommonInstalled, common == PackageStatus::Installed);

    const QByteArray diagnostics = interceptor.streamReadAll();
    if (diagnostics.isEmpty()) {
        description.setStatus(TaskDescription::Success);
    } else {
        description.setStatus(TaskDescription::Warning);
        description.setMessage(QString::fromLocal8Bit(diagnostics.constData()));
    }
    AbstractTask::run();
}
