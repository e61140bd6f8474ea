#pragma once

#include "contextoperation.h"
#include "elementwidgetrole.h"
#include "treenode.h"

#include <QVariantList>

class PYX_COMMON_EXPORT Element : public TreeNode, public ContextOperation
{
    Q_OBJECT

public:
    using Permission = bool (*)(const Module &);

    // The element becomes a QObject child of its module.
    Element(Module &module, Permission permission);
    ~Element() override;

    void insert(int row, const QList<TreeNode *> &nodes) override;
    void removeAt(int row, int count) override;
    int columnCount() const override;
    QVariant data(int column, int role) const override;
    bool canFetchMore() const override;
    void fetchMore() override;
    virtual ElementWidget *elementWidget(ElementWidgetRole role);
    virtual QVariant displayChildrenVariant() const;
    virtual QVariantList displayChildrenVariants() const;
    virtual QString questionForRemove() const;

    ElementData *elementData() const { return m_elementData; }
    // The element keeps the last record read for it; it takes ownership.
    void setElementData(ElementData *data);
    void setElementWidget(ElementWidget *widget) { m_widget = widget; }
    bool isPermitted() const;

    QString title;

private:
    Permission m_permission;
    ElementData *m_elementData = nullptr;
    ElementWidget *m_widget = nullptr;
};
