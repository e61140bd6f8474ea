#pragma once

#include "element.h"
#include "pyx_common_orn_export.h"

// The directory domain the console is attached to. Its record says whether the administrator is
// logged in to the domain ("isLogin") and names the domain ("domainName").
class PYX_COMMON_ORN_EXPORT OrnDomainElement : public Element
{
    Q_OBJECT

public:
    OrnDomainElement(Module &module, Permission permission);

    QString caption() const override;
    int availableOperations() const override;
    bool performOperation(OperationType operation, ElementData *data, int n) override;

    bool isLoggedIn() const;

signals:
    void loginChanged(bool loggedIn);

private:
    void setLoggedIn(bool loggedIn);
};
