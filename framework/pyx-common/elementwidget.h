#pragma once

#include "contextoperation.h"
#include "elementwidgetrole.h"

#include <QWidget>

class PYX_COMMON_EXPORT ElementWidget : public QWidget, public ContextOperation
{
    Q_OBJECT

public:
    using Permission = bool (*)(const Module &);

    ElementWidget(Module &module, Permission permission, QWidget *parent);
    ~ElementWidget() override;

    int availableOperations() const override;
    bool performOperation(OperationType operation, ElementData *data, int n) override;
    virtual void setAlternativeExpected(int alternative);
    virtual void setElement(Element *element, ElementWidgetRole role);
    virtual void read();
    QString caption() const override;

    Element *element() const { return contextElement; }
    ElementWidgetRole role() const { return m_role; }
    bool isPermitted() const;

protected:
    void showEvent(QShowEvent *event) override;

private:
    Permission m_permission;
    ElementWidgetRole m_role = ElementWidgetRole::View;
};
