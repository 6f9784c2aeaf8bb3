#include "library/zbnode.h"

ZBNode::ZBNode(const QString &playlistUUID, ZBNode *parent, const QString &name, int nodeType)
    : m_playlistUUID(playlistUUID)
    , m_parent(parent)
    , m_name(name)
    , m_nodeType(nodeType)
{
}

ZBNode *ZBNode::childAtIndex(int index) const
{
    return index >= 0 && index < int(m_children.size()) ? m_children[size_t(index)].get() : nullptr;
}

int ZBNode::indexOf(const ZBNode *child) const
{
    for (size_t i = 0; i < m_children.size(); ++i)
    {
        if (m_children[i].get() == child)
            return int(i);
    }
    return -1;
}

void ZBNode::setChildren(std::vector<std::unique_ptr<ZBNode>> children)
{
    m_children = std::move(children);
    m_childrenBuilt = true;
}
