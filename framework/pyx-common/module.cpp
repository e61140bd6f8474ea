#include "module.h"

#include "element.h"
#include "elementdata.h"
#include "elementwidget.h"

#include <unistd.h>

Module::Module(const QString &name, QObject *parent, bool hidden)
    : TreeNode(parent)
    , moduleData(new ElementData)
    , m_hidden(hidden)
{
    typeName = name;
}

Module::~Module()
{
    // Widgets shown by the console live in its window; take back those that are still alive.
    const QList<ElementWidget *> widgets = m_widgets;
    m_widgets.clear();
    qDeleteAll(widgets);
    delete moduleData;
}

QVariant Module::data(int column, int role) const
{
    if (column == 0 && (role == Qt::DisplayRole || role == Qt::ToolTipRole)) {
        const QString description = moduleData->properties.value(QStringLiteral("description"))
                                        .toString();
        if (!description.isEmpty())
            return description;
    }
    return TreeNode::data(column, role);
}

bool Module::setData(int column, const QVariant &value, int role)
{
    return TreeNode::setData(column, value, role);
}

Qt::ItemFlags Module::flags(int column) const
{
    return TreeNode::flags(column);
}

bool Module::canFetchMore() const
{
    return false;
}

void Module::fetchMore()
{
}

bool Module::performOperation(ContextOperation *context, OperationType operation, ElementData *,
                              int)
{
    emit operationDispatched(context, operation);
    return true;
}

void Module::loadSettings()
{
}

void Module::saveSettings() const
{
}

bool Module::isAdministrator(const Module &)
{
    return geteuid() == 0;
}

bool Module::isAdministratorHierarchy(const Module &module)
{
    return isAdministrator(module);
}

void Module::insertElementWidget(ElementWidget *widget)
{
    if (!widget || m_widgets.contains(widget))
        return;
    m_widgets.append(widget);
    connect(widget, &QObject::destroyed, this,
            [this, widget] { m_widgets.removeAll(widget); });
}

void Module::connectElementWidgets()
{
    for (Element *element : qAsConst(elements)) {
        for (ElementWidget *widget : qAsConst(m_widgets)) {
            if (widget->elementType() == element->elementType()) {
                element->setElementWidget(widget);
                break;
            }
        }
    }
}
