#include "contextoperation.h"

#include "elementwidget.h"

ContextOperation::ContextOperation(ContextType type)
    : m_contextType(type)
{
}

ContextOperation::~ContextOperation() = default;

int ContextOperation::availableOperations() const
{
    return operationFlag(OperationType::None);
}

bool ContextOperation::performOperation(OperationType, ElementData *, int)
{
    return false;
}

QString ContextOperation::caption() const
{
    return elementTypeName;
}

Element *ContextOperation::elementContext() const
{
    return m_contextType == ElementContext ? contextElement : nullptr;
}

ElementWidget *ContextOperation::elementWidgetContext()
{
    return m_contextType == ElementWidgetContext ? dynamic_cast<ElementWidget *>(this) : nullptr;
}
