#include "ornserverreadheavytast.h"

#include "elementdata.h"
#include "hostidentity.h"
#include "orncore.h"
#include "packagestatus.h"
#include "pyxorncore.h"
#include "serverproperties.h"
#include "streaminterceptor.h"

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

    const HostIdentity identity = HostIdentity::read();
    record.insert(ServerProperties::ipAddresses, identity.addresses);
    record.insert(ServerProperties::hostname, identity.hostname);
    const std::string &domain = core->domainName();
    record.insert(ServerProperties::domainName,
                  QString::fromUtf8(domain.data(), static_cast<int>(domain.size())));
    if (!identity.currentAddress.isEmpty())
        record.insert(ServerProperties::currentIpAddress, identity.currentAddress);

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
