#include "ornserverelement.h"

#include "module.h"
#include "vexicon.h"

namespace {
// The console asks for the tree's icon with this role as well as with the decoration role.
constexpr int iconRole = Qt::UserRole + 7;
} // namespace

OrnServerElement::OrnServerElement(Module &module, Permission permission)
    : Element(module, permission)
    , icon(VexIcon::fromTheme(QStringLiteral("server-database"),
                              {Qt::TopLeftCorner, QStringLiteral("pyx-host")}, QIcon()))
{
    typeName = QStringLiteral("OrnServer");
    parentTypeName = QStringLiteral("OrnDomain");
    placement = 2;
    elementTypeName = typeName;
    title = Element::tr("ORN server");
}

OrnServerElement::~OrnServerElement() = default;

int OrnServerElement::treeNodeSpecialFlags() const
{
    return LeafNode;
}

QVariant OrnServerElement::data(int column, int role) const
{
    if (column == 0 && (role == Qt::DecorationRole || role == iconRole))
        return icon;
    return Element::data(column, role);
}

QString OrnServerElement::caption() const
{
    return Element::tr("ORN Server");
}

int OrnServerElement::availableOperations() const
{
    return operationFlag(OperationType::Read);
}

bool OrnServerElement::performOperation(OperationType operation, ElementData *data, int n)
{
    if (operation == OperationType::Read)
        return module->performOperation(this, OperationType::Read, data, n);
    return ContextOperation::performOperation(operation, data, n);
}
