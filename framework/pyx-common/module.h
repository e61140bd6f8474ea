#pragma once

#include "operationtype.h"
#include "treenode.h"

class ContextOperation;
class Element;
class ElementData;
class ElementWidget;

class PYX_COMMON_EXPORT Module : public TreeNode
{
    Q_OBJECT

public:
    // `hidden` keeps the module out of the navigation tree; its elements are still placed.
    Module(const QString &name, QObject *parent, bool hidden);
    ~Module() override;

    QVariant data(int column, int role) const override;
    bool setData(int column, const QVariant &value, int role) override;
    Qt::ItemFlags flags(int column) const override;
    bool canFetchMore() const override;
    void fetchMore() override;
    virtual bool performOperation(ContextOperation *context, OperationType operation,
                                  ElementData *data, int n);
    virtual void loadSettings();
    virtual void saveSettings() const;

    static bool isAdministrator(const Module &module);
    static bool isAdministratorHierarchy(const Module &module);

    // Takes ownership of the widget.
    void insertElementWidget(ElementWidget *widget);
    // Gives every element the registered widget made for its type.
    void connectElementWidgets();
    QList<ElementWidget *> elementWidgets() const { return m_widgets; }
    bool isHidden() const { return m_hidden; }

    ElementData *moduleData;
    QList<Element *> elements;

signals:
    // The console's dispatch: every operation passes here before a module acts on it.
    void operationDispatched(ContextOperation *context, OperationType operation);

private:
    bool m_hidden;
    QList<ElementWidget *> m_widgets;
};
