#pragma once

#include "operationtype.h"
#include "pyx_common_export.h"

#include <QString>

class Element;
class ElementData;
class ElementWidget;
class Module;

// Something the console performs operations on: an element, or the editor showing one.
class PYX_COMMON_EXPORT ContextOperation
{
public:
    enum ContextType { ElementContext = 0, ElementWidgetContext = 1 };

    virtual ~ContextOperation();
    virtual int availableOperations() const;
    // Returns whether the operation was carried out; the base carries out nothing.
    virtual bool performOperation(OperationType operation, ElementData *data, int n);
    virtual QString caption() const;

    int contextType() const { return m_contextType; }
    Element *elementContext() const;
    ElementWidget *elementWidgetContext();
    const QString &elementType() const { return elementTypeName; }

    Module *module = nullptr;
    QString elementTypeName;
    QString parentElementType;
    qint32 contextValue = 0;
    Element *contextElement = nullptr;

protected:
    explicit ContextOperation(ContextType type);
    ContextOperation(const ContextOperation &) = delete;
    ContextOperation &operator=(const ContextOperation &) = delete;

private:
    ContextType m_contextType;
};
