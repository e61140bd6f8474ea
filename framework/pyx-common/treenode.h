#pragma once

#include "pyx_common_export.h"

#include <QList>
#include <QObject>
#include <QVariant>

// A node of the console's navigation tree. The tree links are not ownership: nodes are owned
// through QObject parents (a plug-in owns its modules, a module its elements).
class PYX_COMMON_EXPORT TreeNode : public QObject
{
    Q_OBJECT

public:
    // Bits of treeNodeSpecialFlags().
    enum SpecialFlag { NoSpecialFlags = 0, LeafNode = 0x1 };

    explicit TreeNode(QObject *parent = nullptr);
    ~TreeNode() override;

    virtual void insert(int row, const QList<TreeNode *> &nodes);
    virtual void removeAt(int row, int count);
    virtual void setAlternativeExpected(int alternative);
    virtual void afterLoad();
    virtual int treeNodeSpecialFlags() const;
    virtual int columnCount() const;
    virtual QVariant headerData(int section, Qt::Orientation orientation, int role) const;
    virtual QVariant data(int column, int role) const;
    virtual bool setData(int column, const QVariant &value, int role);
    virtual Qt::ItemFlags flags(int column) const;
    virtual bool canFetchMore() const;
    virtual void fetchMore();

    TreeNode *parentNode() const { return m_parentNode; }
    const QList<TreeNode *> &childNodes() const { return m_children; }
    // Index among the parent's children; -1 for a root.
    int row() const;

    QString typeName;
    QString parentTypeName;
    qint32 placement = 0;

private:
    TreeNode *m_parentNode = nullptr;
    QList<TreeNode *> m_children;
};
