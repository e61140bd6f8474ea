#include "treenode.h"

TreeNode::TreeNode(QObject *parent)
    : QObject(parent)
{
}

TreeNode::~TreeNode()
{
    // Tree links are not ownership: whoever goes first unhooks itself.
    if (m_parentNode)
        m_parentNode->m_children.removeAll(this);
    for (TreeNode *child : qAsConst(m_children))
        child->m_parentNode = nullptr;
}

void TreeNode::insert(int row, const QList<TreeNode *> &nodes)
{
    row = qBound(0, row, m_children.size());
    for (TreeNode *node : nodes) {
        if (!node || node == this)
            continue;
        if (node->m_parentNode)
            node->m_parentNode->m_children.removeAll(node);
        node->m_parentNode = this;
        m_children.insert(row++, node);
    }
}

void TreeNode::removeAt(int row, int count)
{
    for (int i = 0; i < count && row >= 0 && row < m_children.size(); ++i)
        m_children.takeAt(row)->m_parentNode = nullptr;
}

void TreeNode::setAlternativeExpected(int)
{
}

void TreeNode::afterLoad()
{
}

int TreeNode::treeNodeSpecialFlags() const
{
    return NoSpecialFlags;
}

int TreeNode::columnCount() const
{
    return 1;
}

QVariant TreeNode::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (section == 0 && orientation == Qt::Horizontal && role == Qt::DisplayRole)
        return tr("Name");
    return {};
}

QVariant TreeNode::data(int column, int role) const
{
    if (column == 0 && role == Qt::DisplayRole)
        return typeName;
    return {};
}

bool TreeNode::setData(int, const QVariant &, int)
{
    return false;
}

Qt::ItemFlags TreeNode::flags(int) const
{
    return Qt::ItemIsEnabled | Qt::ItemIsSelectable;
}

bool TreeNode::canFetchMore() const
{
    return false;
}

void TreeNode::fetchMore()
{
}

int TreeNode::row() const
{
    return m_parentNode ? m_parentNode->m_children.indexOf(const_cast<TreeNode *>(this)) : -1;
}
