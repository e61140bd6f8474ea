#pragma once

#include <QAbstractItemModel>
#include <QHash>
#include <QScopedPointer>

class Module;
class PluginRegistry;
class TreeNode;

// The console's navigation tree over TreeNodes. Each module goes beneath the node whose type name
// it names as parent, each element beneath the node of its parent type, or beneath its module
// when there is none; siblings are ordered by placement.
class NodeTreeModel : public QAbstractItemModel
{
    Q_OBJECT

public:
    explicit NodeTreeModel(QObject *parent = nullptr);
    ~NodeTreeModel() override;

    void addModule(Module *module, const QString &disabledReason = {});
    // Lists a plug-in that contributes nothing usable, so that the administrator sees why.
    void addUnavailablePlugin(const QString &name, const QString &reason);
    void addPlugins(const PluginRegistry &registry);

    TreeNode *node(const QModelIndex &index) const;
    QModelIndex indexOfType(const QString &typeName) const;
    QString disabledReason(const TreeNode *node) const;

    QModelIndex index(int row, int column, const QModelIndex &parent = {}) const override;
    QModelIndex parent(const QModelIndex &child) const override;
    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;

private:
    void place(TreeNode *node, TreeNode *fallbackParent, const QString &disabledReason);
    TreeNode *findType(TreeNode *from, const QString &typeName) const;
    QModelIndex indexOf(TreeNode *node) const;

    QScopedPointer<TreeNode> m_root;
    QHash<const TreeNode *, QString> m_disabled;
};
