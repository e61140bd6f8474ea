#include "element.h"

#include "elementdata.h"
#include "module.h"

Element::Element(Module &module, Permission permission)
    : TreeNode(&module)
    , ContextOperation(ElementContext)
    , m_permission(permission)
{
    this->module = &module;
    contextElement = this;
}

Element::~Element()
{
    delete m_elementData;
}

void Element::insert(int row, const QList<TreeNode *> &nodes)
{
    TreeNode::insert(row, nodes);
}

void Element::removeAt(int row, int count)
{
    TreeNode::removeAt(row, count);
}

int Element::columnCount() const
{
    return 1;
}

QVariant Element::data(int column, int role) const
{
    if (column == 0) {
        if (role == Qt::DisplayRole)
            return title.isEmpty() ? typeName : title;
        if (role == Qt::ToolTipRole)
            return caption();
    }
    return TreeNode::data(column, role);
}

bool Element::canFetchMore() const
{
    return false;
}

void Element::fetchMore()
{
}

ElementWidget *Element::elementWidget(ElementWidgetRole)
{
    return m_widget;
}

QVariant Element::displayChildrenVariant() const
{
    return {};
}

QVariantList Element::displayChildrenVariants() const
{
    return {};
}

QString Element::questionForRemove() const
{
    return {};
}

void Element::setElementData(ElementData *data)
{
    if (data == m_elementData)
        return;
    delete m_elementData;
    m_elementData = data;
}

bool Element::isPermitted() const
{
    return !m_permission || m_permission(*module);
}
