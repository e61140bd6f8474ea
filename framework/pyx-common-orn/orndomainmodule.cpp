#include "orndomainmodule.h"

#include "elementdata.h"
#include "orndomainelement.h"

OrnDomainModule::OrnDomainModule(QObject *parent)
    : Module(QStringLiteral("OrnDomainModule"), parent, false)
    , m_element(new OrnDomainElement(*this, &Module::isAdministratorHierarchy))
{
    moduleData->properties.insert(QStringLiteral("description"), tr("Directory domain management"));
    moduleData->properties.insert(QStringLiteral("administrator"), isAdministrator(*this));
    elements.append(m_element);
}
