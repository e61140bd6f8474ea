#include "ornserverplugin.h"

#include "ornservicemodule.h"
#include "packagestatus.h"

OrnServerPlugin::OrnServerPlugin(QObject *parent)
    : Plugin(parent)
{
    interfaceVersion = 1;
    name = tr("OrnServerPlugin");
    description = tr("Support ORN server");
    modules.append(new OrnServiceModule(this));
}

bool OrnServerPlugin::isValid() const
{
    for (const QString &package : {QStringLiteral("orn-admin"), QStringLiteral("orn-server-dc")}) {
        if (queryPackageStatus(package) != PackageStatus::Installed)
            return false;
    }
    return true;
}
