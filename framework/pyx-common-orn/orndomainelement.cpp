#include "orndomainelement.h"

#include "elementdata.h"
#include "module.h"
#include "orncore.h"
#include "pyxorncore.h"

namespace {
const QString loginKey = QStringLiteral("isLogin");
const QString domainKey = QStringLiteral("domainName");
} // namespace

OrnDomainElement::OrnDomainElement(Module &module, Permission permission)
    : Element(module, permission)
{
    typeName = QStringLiteral("OrnDomain");
    elementTypeName = typeName;
    title = tr("Directory domain");
    auto *record = new ElementData;
    record->properties.insert(loginKey, false);
    if (OrnCore *core = PyxOrnCore::instance()->ornCore())
        record->properties.insert(domainKey, QString::fromStdString(core->domainName()));
    setElementData(record);
}

QString OrnDomainElement::caption() const
{
    const QString domain = elementData()->properties.value(domainKey).toString();
    return domain.isEmpty() ? title : tr("Directory domain %1").arg(domain);
}

int OrnDomainElement::availableOperations() const
{
    return operationFlag(OperationType::Read) | operationFlag(OperationType::Login)
           | operationFlag(OperationType::Logout);
}

bool OrnDomainElement::performOperation(OperationType operation, ElementData *data, int n)
{
    switch (operation) {
    case OperationType::Login:
        setLoggedIn(true);
        return true;
    case OperationType::Logout:
        setLoggedIn(false);
        return true;
    case OperationType::Read:
        if (OrnCore *core = PyxOrnCore::instance()->ornCore()) {
            core->refresh();
            elementData()->properties.insert(domainKey,
                                             QString::fromStdString(core->domainName()));
        }
        return module->performOperation(this, operation, nullptr, n);
    default:
        return Element::performOperation(operation, data, n);
    }
}

bool OrnDomainElement::isLoggedIn() const
{
    return elementData()->properties.value(loginKey, false).toBool();
}

void OrnDomainElement::setLoggedIn(bool loggedIn)
{
    if (isLoggedIn() == loggedIn)
        return;
    elementData()->properties.insert(loginKey, loggedIn);
    emit loginChanged(loggedIn);
}
