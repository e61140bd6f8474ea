#include "nodetreemodel.h"

#include "element.h"
#include "module.h"
#include "plugin.h"
#include "pluginregistry.h"

namespace {

// Lists a plug-in that has no node of its own.
class UnavailablePluginNode : public TreeNode
{
public:
    explicit UnavailablePluginNode(const QString &name) : m_name(name)
    {
        typeName = QStringLiteral("UnavailablePlugin");
    }

    QVariant data(int column, int role) const override
    {
        if (column == 0 && role == Qt::DisplayRole)
            return m_name;
        return TreeNode::data(column, role);
    }
    int treeNodeSpecialFlags() const override { return LeafNode; }

private:
    QString m_name;
};

} // namespace

NodeTreeModel::NodeTreeModel(QObject *parent)
    : QAbstractItemModel(parent)
    , m_root(new TreeNode)
{
}

// The nodes belong to their plug-ins; only the links to the console's root are ours.
NodeTreeModel::~NodeTreeModel()
{
    const QList<TreeNode *> children = m_root->childNodes();
    m_root->removeAt(0, children.size());
    for (TreeNode *child : children) {
        if (dynamic_cast<UnavailablePluginNode *>(child))
            delete child;
    }
}

void NodeTreeModel::addModule(Module *module, const QString &disabledReason)
{
    beginResetModel();
    if (!module->isHidden())
        place(module, m_root.data(), disabledReason);
    for (Element *element : qAsConst(module->elements))
        place(element, module->isHidden() ? m_root.data() : module, disabledReason);
    endResetModel();
}

void NodeTreeModel::addUnavailablePlugin(const QString &name, const QString &reason)
{
    beginResetModel();
    place(new UnavailablePluginNode(tr("%1 (unavailable)").arg(name)), m_root.data(), reason);
    endResetModel();
}

void NodeTreeModel::addPlugins(const PluginRegistry &registry)
{
    for (const PluginEntry &entry : registry.entries()) {
        if (!entry.plugin || entry.plugin->modules.isEmpty() || !entry.enabled)
            addUnavailablePlugin(entry.displayName(),
                                 entry.enabled ? tr("The plug-in has no modules") : entry.reason);
        if (!entry.plugin)
            continue;
        for (Module *module : qAsConst(entry.plugin->modules))
            addModule(module, entry.reason);
    }
}

void NodeTreeModel::place(TreeNode *node, TreeNode *fallbackParent, const QString &disabledReason)
{
    TreeNode *parent = findType(m_root.data(), node->parentTypeName);
    if (!parent || parent == node)
        parent = fallbackParent;
    const QList<TreeNode *> &siblings = parent->childNodes();
    int row = 0;
    while (row < siblings.size() && siblings.at(row)->placement <= node->placement)
        ++row;
    parent->insert(row, {node});
    if (!disabledReason.isEmpty())
        m_disabled.insert(node, disabledReason);
}

TreeNode *NodeTreeModel::findType(TreeNode *from, const QString &typeName) const
{
    if (typeName.isEmpty())
        return nullptr;
    for (TreeNode *child : from->childNodes()) {
        if (child->typeName == typeName)
            return child;
        if (TreeNode *found = findType(child, typeName))
            return found;
    }
    return nullptr;
}

TreeNode *NodeTreeModel::node(const QModelIndex &index) const
{
    return index.isValid() ? static_cast<TreeNode *>(index.internalPointer()) : m_root.data();
}

QModelIndex NodeTreeModel::indexOf(TreeNode *node) const
{
    if (!node || node == m_root.data())
        return {};
    return createIndex(node->row(), 0, node);
}

QModelIndex NodeTreeModel::indexOfType(const QString &typeName) const
{
    return indexOf(findType(m_root.data(), typeName));
}

QString NodeTreeModel::disabledReason(const TreeNode *node) const
{
    for (; node; node = node->parentNode()) {
        const QString reason = m_disabled.value(node);
        if (!reason.isEmpty())
            return reason;
    }
    return {};
}

QModelIndex NodeTreeModel::index(int row, int column, const QModelIndex &parent) const
{
    if (!hasIndex(row, column, parent))
        return {};
    return createIndex(row, column, node(parent)->childNodes().at(row));
}

QModelIndex NodeTreeModel::parent(const QModelIndex &child) const
{
    return child.isValid() ? indexOf(node(child)->parentNode()) : QModelIndex();
}

int NodeTreeModel::rowCount(const QModelIndex &parent) const
{
    if (parent.column() > 0)
        return 0;
    return node(parent)->childNodes().size();
}

int NodeTreeModel::columnCount(const QModelIndex &) const
{
    return m_root->columnCount();
}

QVariant NodeTreeModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid())
        return {};
    const TreeNode *item = node(index);
    if (role == Qt::ToolTipRole) {
        const QString reason = disabledReason(item);
        if (!reason.isEmpty())
            return reason;
    }
    return item->data(index.column(), role);
}

QVariant NodeTreeModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    return m_root->headerData(section, orientation, role);
}

Qt::ItemFlags NodeTreeModel::flags(const QModelIndex &index) const
{
    if (!index.isValid())
        return Qt::NoItemFlags;
    const TreeNode *item = node(index);
    Qt::ItemFlags flags = item->flags(index.column());
    if (!disabledReason(item).isEmpty())
        flags &= ~Qt::ItemIsEnabled;
    if ((item->treeNodeSpecialFlags() & TreeNode::LeafNode) && item->childNodes().isEmpty())
        flags |= Qt::ItemNeverHasChildren;
    return flags;
}
