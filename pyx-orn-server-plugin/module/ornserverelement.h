#pragma once

#include "element.h"

#include <QIcon>

// The "ORN server" entry beneath the directory-domain element. Its translations use the
// context of its framework base.
class OrnServerElement : public Element
{
public:
    OrnServerElement(Module &module, Permission permission);
    ~OrnServerElement() override;

    int treeNodeSpecialFlags() const override;
    QVariant data(int column, int role) const override;
    QString caption() const override;
    int availableOperations() const override;
    bool performOperation(OperationType operation, ElementData *data, int n) override;

    QIcon icon;
};
