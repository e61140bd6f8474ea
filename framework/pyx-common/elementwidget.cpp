#include "elementwidget.h"

#include "element.h"
#include "module.h"

ElementWidget::ElementWidget(Module &module, Permission permission, QWidget *parent)
    : QWidget(parent)
    , ContextOperation(ElementWidgetContext)
    , m_permission(permission)
{
    this->module = &module;
}

ElementWidget::~ElementWidget() = default;

int ElementWidget::availableOperations() const
{
    return contextElement ? contextElement->availableOperations()
                          : operationFlag(OperationType::None);
}

bool ElementWidget::performOperation(OperationType operation, ElementData *data, int n)
{
    return contextElement && contextElement->performOperation(operation, data, n);
}

void ElementWidget::setAlternativeExpected(int)
{
}

void ElementWidget::setElement(Element *element, ElementWidgetRole role)
{
    contextElement = element;
    m_role = role;
}

void ElementWidget::read()
{
    if (contextElement)
        contextElement->performOperation(OperationType::Read, nullptr, 0);
}

QString ElementWidget::caption() const
{
    return contextElement ? contextElement->caption() : windowTitle();
}

bool ElementWidget::isPermitted() const
{
    return !m_permission || m_permission(*module);
}

void ElementWidget::showEvent(QShowEvent *event)
{
    // Without the rights the editor can be looked at, not used.
    setEnabled(isPermitted());
    QWidget::showEvent(event);
}
