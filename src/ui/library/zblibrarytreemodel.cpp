#include "ui/library/zblibrarytreemodel.h"

#include <QMimeData>
#include <QUrl>

#include "library/zblibrarycontroller.h"
#include "library/zbplaylist.h"
#include "localization/zblocalizer.h"

const QString ZBLibraryTreeModel::TracksMimeType = QStringLiteral("application/x-norvikplayer-tracks");


ZBLibraryTreeModel::ZBLibraryTreeModel(ZBLibraryController &library, QObject *parent)
    : QAbstractItemModel(parent)
    , m_library(library)
    , m_tree(library)
{
}

void ZBLibraryTreeModel::reloadTree()
{
    if (!m_tree.isLibraryOpen())
        return;
    beginResetModel();
    m_library.save();
    const QHash<QString, int> counts = listCounts();
    m_tree.rootItemReload();
    restoreListCounts(counts);
    endResetModel();
}

void ZBLibraryTreeModel::setLibraryOpen(bool open, std::vector<std::unique_ptr<ZBPlaylist>> preview)
{
    beginResetModel();
    m_tree.setLibraryOpen(open, std::move(preview));
    endResetModel();
}

void ZBLibraryTreeModel::reloadLastDownloadsCounters()
{
    m_tree.reloadLastDownloadsCounters();
    const QModelIndex downloads = rootIndex(ZBLibraryTree::DownloadsRoot);
    const int rows = rowCount(downloads);
    if (rows > 0)
        Q_EMIT dataChanged(index(0, 0, downloads), index(rows - 1, 0, downloads), {Qt::DisplayRole, CountRole});
}

QHash<QString, int> ZBLibraryTreeModel::listCounts()
{
    QHash<QString, int> counts;
    for (const QString &uuid : m_tree.countedLists())
    {
        if (const ZBNode *node = m_tree.nodeForPlaylist(uuid))
            counts.insert(uuid, node->itemsCount());
    }
    return counts;
}

void ZBLibraryTreeModel::restoreListCounts(const QHash<QString, int> &counts)
{
    // Counting again would read the whole library on this thread; the next
    // list shown brings fresh counts.
    for (auto it = counts.cbegin(); it != counts.cend(); ++it)
        m_tree.setListCount(it.key(), it.value());
}

void ZBLibraryTreeModel::setListCounts(const QStringList &playlistUUIDs, const QList<int> &counts)
{
    for (qsizetype i = 0; i < playlistUUIDs.size() && i < counts.size(); ++i)
        m_tree.setListCount(playlistUUIDs.at(i), counts.at(i));
    const QModelIndex downloads = rootIndex(ZBLibraryTree::DownloadsRoot);
    const int rows = rowCount(downloads);
    if (rows > 0)
        Q_EMIT dataChanged(index(0, 0, downloads), index(rows - 1, 0, downloads), {Qt::DisplayRole, CountRole});
}

QStringList ZBLibraryTreeModel::localFiles(const QMimeData *data)
{
    QStringList paths;
    if (!data || !data->hasUrls())
        return paths;
    for (const QUrl &url : data->urls())
    {
        if (url.isLocalFile())
            paths << url.toLocalFile();
    }
    return paths;
}

QStringList ZBLibraryTreeModel::trackUUIDs(const QMimeData *data)
{
    return data ? QString::fromUtf8(data->data(TracksMimeType)).split(u'\n', Qt::SkipEmptyParts) : QStringList();
}

ZBNode *ZBLibraryTreeModel::nodeAt(const QModelIndex &index) const
{
    return index.isValid() ? static_cast<ZBNode *>(index.internalPointer()) : nullptr;
}

QModelIndex ZBLibraryTreeModel::rootIndex(int root) const
{
    ZBNode *node = m_tree.rootItem(root);
    return node ? createIndex(root, 0, node) : QModelIndex();
}

QModelIndex ZBLibraryTreeModel::indexForPlaylist(const QString &playlistUUID)
{
    ZBNode *node = m_tree.nodeForPlaylist(playlistUUID);
    if (!node || !node->parent())
        return QModelIndex();
    return createIndex(node->parent()->indexOf(node), 0, node);
}

QModelIndex ZBLibraryTreeModel::index(int row, int column, const QModelIndex &parent) const
{
    if (column != 0 || row < 0)
        return QModelIndex();
    if (!parent.isValid())
        return row < ZBLibraryTree::RootCount ? rootIndex(row) : QModelIndex();
    ZBNode *heading = nodeAt(parent);
    ZBNode *child = heading ? heading->childAtIndex(row) : nullptr;
    return child ? createIndex(row, 0, child) : QModelIndex();
}

QModelIndex ZBLibraryTreeModel::parent(const QModelIndex &child) const
{
    ZBNode *node = nodeAt(child);
    if (!node || !node->parent())
        return QModelIndex();
    ZBNode *heading = node->parent();
    for (int root = 0; root < ZBLibraryTree::RootCount; ++root)
    {
        if (m_tree.rootItem(root) == heading)
            return createIndex(root, 0, heading);
    }
    return QModelIndex();
}

int ZBLibraryTreeModel::rowCount(const QModelIndex &parent) const
{
    if (!parent.isValid())
        return ZBLibraryTree::RootCount;
    ZBNode *node = nodeAt(parent);
    return node && node->isHeading() ? node->numberOfChildren() : 0;
}

int ZBLibraryTreeModel::columnCount(const QModelIndex &) const
{
    return 1;
}

QVariant ZBLibraryTreeModel::data(const QModelIndex &index, int role) const
{
    ZBNode *node = nodeAt(index);
    if (!node)
        return QVariant();
    switch (role)
    {
    case Qt::DisplayRole:
        // Headings and standard lists are named by keys of the string table;
        // the user's own lists keep the names the user gave them.
        return m_tree.isUserList(node) ? node->Name() : ZBLocalizer::localizedStringForKey(node->Name());
    case Qt::EditRole:
        return node->Name();
    case CountRole:
        return node->itemsCount();
    case PlaylistUUIDRole:
        return node->playlistUUID();
    case IsHeadingRole:
        return node->isHeading();
    case Qt::ToolTipRole:
        return node->isHeading() ? QVariant() : QVariant(node->Name());
    default:
        return QVariant();
    }
}

bool ZBLibraryTreeModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    ZBNode *node = nodeAt(index);
    if (role != Qt::EditRole || !node || node->isHeading())
        return false;
    const QString uuid = node->playlistUUID();
    const QString name = value.toString();
    if (name == node->Name())
        return false;
    // Renaming rebuilds the tree, so the view must start over.
    beginResetModel();
    const QHash<QString, int> counts = listCounts();
    const bool renamed = m_tree.renameList(uuid, name);
    restoreListCounts(counts);
    endResetModel();
    if (renamed)
        Q_EMIT listRenamed(uuid);
    return renamed;
}

Qt::ItemFlags ZBLibraryTreeModel::flags(const QModelIndex &index) const
{
    ZBNode *node = nodeAt(index);
    if (!node)
        return Qt::ItemIsDropEnabled;
    if (node->isHeading())
        return Qt::ItemIsEnabled;
    Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsDropEnabled | Qt::ItemNeverHasChildren;
    if (m_tree.isUserList(node))
        flags |= Qt::ItemIsEditable;
    return flags;
}

QStringList ZBLibraryTreeModel::mimeTypes() const
{
    return {QStringLiteral("text/uri-list"), TracksMimeType};
}

Qt::DropActions ZBLibraryTreeModel::supportedDropActions() const
{
    return Qt::CopyAction | Qt::LinkAction;
}

bool ZBLibraryTreeModel::canDropMimeData(const QMimeData *data, Qt::DropAction, int, int,
                                         const QModelIndex &parent) const
{
    ZBNode *node = nodeAt(parent);
    if (!data || !node || node->isHeading())
        return false;
    // Tracks already in the library only go somewhere on a plain playlist;
    // files join the library on any list.
    if (data->hasFormat(TracksMimeType))
        return !m_tree.isSmartList(node);
    return data->hasUrls();
}

bool ZBLibraryTreeModel::dropMimeData(const QMimeData *data, Qt::DropAction action, int row, int column,
                                      const QModelIndex &parent)
{
    if (!canDropMimeData(data, action, row, column, parent))
        return false;
    const QString uuid = nodeAt(parent)->playlistUUID();
    if (data->hasFormat(TracksMimeType))
    {
        Q_EMIT tracksDropped(trackUUIDs(data), uuid);
        return true;
    }
    const QStringList paths = localFiles(data);
    if (paths.isEmpty())
        return false;
    Q_EMIT filesDropped(paths, uuid);
    return true;
}
