#pragma once

#include <QList>
#include <QString>

#include <memory>
#include <vector>

// One row of the source list: a section heading ("Tracks", "Playlists",
// "Downloads") or a list below one. Headings own their list nodes; a node
// knows its list only by UUID, so it never outlives the record it shows.
class ZBNode
{
public:
    enum NodeKind
    {
        Heading = 0,
        List = 1
    };

    ZBNode(const QString &playlistUUID, ZBNode *parent, const QString &name, int nodeType);

    int NodeType() const { return m_nodeType; }
    bool isHeading() const { return m_nodeType == Heading; }
    QString Name() const { return m_name; }
    void setName(const QString &name) { m_name = name; }
    QString playlistUUID() const { return m_playlistUUID; }
    ZBNode *parent() const { return m_parent; }
    // Shown beside the download lists.
    int itemsCount() const { return m_itemsCount; }
    void setItemsCount(int count) { m_itemsCount = count; }

    // Children are built on first request, by the tree that owns the node.
    bool childrenBuilt() const { return m_childrenBuilt; }
    int numberOfChildren() const { return int(m_children.size()); }
    ZBNode *childAtIndex(int index) const;
    int indexOf(const ZBNode *child) const;
    void setChildren(std::vector<std::unique_ptr<ZBNode>> children);

private:
    QString m_playlistUUID;
    ZBNode *m_parent;
    QString m_name;
    int m_nodeType;
    int m_itemsCount = 0;
    bool m_childrenBuilt = false;
    std::vector<std::unique_ptr<ZBNode>> m_children;
};
