#include "ui/web/zbdownloadtreemodel.h"

#include <QColor>
#include <QFont>

#include <algorithm>

#include "localization/zblocalizer.h"
#include "playback/zbmediatypes.h"
#include "strings/zbstringformsize.h"
#include "web/zbcapturetree.h"
#include "web/zbdownloaditem.h"

namespace
{
int depthOf(const ZBDownloadItem *item)
{
    int depth = 0;
    for (; item; item = item->parent())
        ++depth;
    return depth;
}
} // namespace

ZBDownloadTreeModel::ZBDownloadTreeModel(ZBCaptureTree &tree, QObject *parent)
    : QAbstractItemModel(parent)
    , m_tree(tree)
    , m_filter(tree.currentFilter())
{
    m_flushTimer.setSingleShot(true);
    m_flushTimer.setInterval(0);
    connect(&m_flushTimer, &QTimer::timeout, this, &ZBDownloadTreeModel::flushPendingRows);
    connect(&tree, &ZBCaptureTree::childrenAppended, this, &ZBDownloadTreeModel::childrenAppended);
    connect(&tree, &ZBCaptureTree::itemChanged, this, &ZBDownloadTreeModel::itemChanged);
    connect(&tree, &ZBCaptureTree::expandRequested, this, &ZBDownloadTreeModel::expandItem);
    connect(&tree, &ZBCaptureTree::filterChanged, this, &ZBDownloadTreeModel::filterChanged);
    connect(&tree, &ZBCaptureTree::pageAboutToBeRemoved, this, &ZBDownloadTreeModel::pageAboutToBeRemoved);
    connect(&tree, &ZBCaptureTree::pageRemoved, this, &ZBDownloadTreeModel::pageRemoved);
    connect(&tree, &ZBCaptureTree::pagesAboutToBeCleared, this, &ZBDownloadTreeModel::pagesAboutToBeCleared);
    connect(&tree, &ZBCaptureTree::pagesCleared, this, &ZBDownloadTreeModel::pagesCleared);
}

ZBDownloadItem *ZBDownloadTreeModel::itemAt(const QModelIndex &index) const
{
    return index.isValid() && index.model() == this ? static_cast<ZBDownloadItem *>(index.internalPointer()) : nullptr;
}

QList<ZBDownloadItem *> ZBDownloadTreeModel::itemsAt(const QModelIndexList &indexes) const
{
    QList<ZBDownloadItem *> items;
    for (const QModelIndex &index : indexes)
    {
        ZBDownloadItem *item = itemAt(index);
        if (item && !items.contains(item))
            items << item;
    }
    return items;
}

int ZBDownloadTreeModel::actualCount(const ZBDownloadItem *owner) const
{
    return owner ? owner->numberOfChildrenWithFilter(m_filter) : int(m_tree.pages().size());
}

int ZBDownloadTreeModel::rowOf(const ZBDownloadItem *item) const
{
    if (!item->parent())
        return m_tree.indexOfPage(item);
    return int(item->parent()->childrenWithFilter(m_filter).indexOf(const_cast<ZBDownloadItem *>(item)));
}

QModelIndex ZBDownloadTreeModel::indexForItem(const ZBDownloadItem *item, int column) const
{
    if (!item || column < 0 || column >= ColumnCount)
        return QModelIndex();
    const ZBDownloadItem *parentItem = item->parent();
    const auto announced = m_announced.constFind(parentItem);
    if (announced == m_announced.cend())
        return QModelIndex();
    const int row = rowOf(item);
    if (row < 0 || row >= *announced)
        return QModelIndex();
    if (parentItem && !indexForItem(parentItem).isValid())
        return QModelIndex();
    return createIndex(row, column, const_cast<ZBDownloadItem *>(item));
}

QModelIndex ZBDownloadTreeModel::index(int row, int column, const QModelIndex &parent) const
{
    if (!hasIndex(row, column, parent))
        return QModelIndex();
    ZBDownloadItem *item =
        parent.isValid() ? itemAt(parent)->childAtIndex(row, m_filter) : m_tree.pages().value(row, nullptr);
    return item ? createIndex(row, column, item) : QModelIndex();
}

QModelIndex ZBDownloadTreeModel::parent(const QModelIndex &child) const
{
    const ZBDownloadItem *item = itemAt(child);
    if (!item || !item->parent())
        return QModelIndex();
    return indexForItem(item->parent());
}

int ZBDownloadTreeModel::rowCount(const QModelIndex &parent) const
{
    if (parent.column() > 0)
        return 0;
    const ZBDownloadItem *owner = itemAt(parent);
    if (parent.isValid() && !owner)
        return 0;
    auto announced = m_announced.find(owner);
    if (announced == m_announced.end())
        announced = m_announced.insert(owner, actualCount(owner));
    return *announced;
}

int ZBDownloadTreeModel::columnCount(const QModelIndex &) const
{
    return ColumnCount;
}

bool ZBDownloadTreeModel::isActionEnabled(const ZBDownloadItem *item, int filter)
{
    return item->parent() || item->numberOfChildrenWithFilter(filter) > 0 || item->saved();
}

QString ZBDownloadTreeModel::progressText(const ZBDownloadItem *item)
{
    qint64 done = item->receivedBytesLength();
    qint64 total = item->expectedBytesLength();
    if (item->expectedResourcesCount() > 0)
    {
        done = item->receivedResourcesCount();
        total = item->expectedResourcesCount();
    }
    if (done <= 0 || total <= 0)
        return QString();
    return QStringLiteral("%1%").arg(100 * done / total);
}

QString ZBDownloadTreeModel::sizeText(const ZBDownloadItem *item)
{
    if (item->expectedBytesLength() > 0)
        return ZBStringFormSize::stringFromSizeBin(item->expectedBytesLength(), false);
    if (item->expectedResourcesCount() > 0)
        return QString::number(item->expectedResourcesCount());
    return ZBLocalizer::localizedStringForKey(QStringLiteral("NA"));
}

QVariant ZBDownloadTreeModel::data(const QModelIndex &index, int role) const
{
    const ZBDownloadItem *item = itemAt(index);
    if (!item)
        return QVariant();
    const bool isPage = !item->parent();
    switch (role)
    {
        case Qt::DisplayRole:
            switch (index.column())
            {
                case TitleColumn:
                    // Page titles are not file names: "example.com" keeps its ".com".
                    return isPage ? item->resourceTitle()
                                  : ZBMediaTypes::getFileNameWithoutExtension(item->resourceTitle());
                case TypeColumn:
                    return item->resourceType();
                case ActionColumn:
                {
                    const QString key = ZBDownloadItem::actionKey(item->availableAction());
                    return key.isEmpty() ? QString() : ZBLocalizer::localizedStringForKey(key);
                }
                case ProgressColumn:
                    return isPage ? QString() : progressText(item);
                case SizeColumn:
                    return isPage ? QString() : sizeText(item);
                default:
                    return QVariant();
            }
        case Qt::ToolTipRole:
            return index.column() == TitleColumn ? item->resourceUrl() : QVariant();
        case Qt::TextAlignmentRole:
            return index.column() == ActionColumn ? QVariant(Qt::AlignCenter) : QVariant();
        case Qt::FontRole:
        {
            if (index.column() != ActionColumn)
                return QVariant();
            QFont font;
            font.setPointSize(11);
            font.setUnderline(isActionEnabled(item, m_filter));
            return font;
        }
        case Qt::ForegroundRole:
            if (index.column() != ActionColumn)
                return QVariant();
            return isActionEnabled(item, m_filter) ? QColor(Qt::blue) : QColor(Qt::gray);
        case ActionRole:
            return item->availableAction();
        case ActionEnabledRole:
            return isActionEnabled(item, m_filter);
        case ProgressRole:
        {
            const QString text = isPage ? QString() : progressText(item);
            return text.isEmpty() ? -1 : QStringView(text).chopped(1).toInt();
        }
        case IsPageRole:
            return isPage;
        default:
            return QVariant();
    }
}

QVariant ZBDownloadTreeModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return QVariant();
    static const char *const keys[ColumnCount] = {"columnResourceTitle", "columnResourceType", "columnTitleDownload",
                                                  "columnTitleProgress", "columnEstimated"};
    if (section < 0 || section >= ColumnCount)
        return QVariant();
    return ZBLocalizer::localizedStringForKey(QString::fromLatin1(keys[section]));
}

void ZBDownloadTreeModel::childrenAppended(ZBDownloadItem *owner)
{
    // Rows nobody has asked for are counted when they are.
    if (!m_announced.contains(owner))
        return;
    if (!m_pendingOwners.contains(owner))
        m_pendingOwners.append(owner);
    if (!m_flushTimer.isActive())
        m_flushTimer.start();
}

void ZBDownloadTreeModel::flushPendingRows()
{
    m_flushTimer.stop();
    QList<ZBDownloadItem *> owners = std::exchange(m_pendingOwners, {});
    // Outer rows first, so an owner's own row is known when its children come.
    std::stable_sort(owners.begin(), owners.end(),
                     [](const ZBDownloadItem *a, const ZBDownloadItem *b) { return depthOf(a) < depthOf(b); });
    for (ZBDownloadItem *owner : std::as_const(owners))
    {
        const auto announced = m_announced.constFind(owner);
        if (announced == m_announced.cend())
            continue;
        const int before = *announced;
        const int now = actualCount(owner);
        if (now <= before)
            continue;
        const QModelIndex parentIndex = indexForItem(owner);
        if (owner && !parentIndex.isValid())
            continue;
        beginInsertRows(parentIndex, before, now - 1);
        m_announced.insert(owner, now);
        endInsertRows();
        // A page's action turns live with its first visible child.
        if (owner)
            Q_EMIT dataChanged(parentIndex.siblingAtColumn(ActionColumn), parentIndex.siblingAtColumn(ActionColumn));
    }
}

void ZBDownloadTreeModel::itemChanged(ZBDownloadItem *item)
{
    const QModelIndex first = indexForItem(item, TitleColumn);
    if (first.isValid())
        Q_EMIT dataChanged(first, first.siblingAtColumn(ColumnCount - 1));
}

void ZBDownloadTreeModel::expandItem(ZBDownloadItem *owner)
{
    flushPendingRows();
    const QModelIndex index = indexForItem(owner);
    if (index.isValid())
        Q_EMIT expandRequested(index);
}

void ZBDownloadTreeModel::filterChanged(int filter)
{
    beginResetModel();
    m_filter = filter;
    m_announced.clear();
    m_pendingOwners.clear();
    m_flushTimer.stop();
    endResetModel();
}

void ZBDownloadTreeModel::pageAboutToBeRemoved(int index)
{
    // Announce what is there before taking a row away.
    flushPendingRows();
    m_removingPage = m_tree.pages().value(index, nullptr);
    const auto announced = m_announced.constFind(nullptr);
    if (announced != m_announced.cend() && index < *announced)
        beginRemoveRows(QModelIndex(), index, index);
}

void ZBDownloadTreeModel::pageRemoved(int index)
{
    // Still alive: the tree deletes the page after this.
    if (const ZBDownloadItem *page = std::exchange(m_removingPage, nullptr))
        forgetAnnounced(page);
    const auto announced = m_announced.find(nullptr);
    if (announced == m_announced.end() || index >= *announced)
        return;
    --*announced;
    endRemoveRows();
}

void ZBDownloadTreeModel::forgetAnnounced(const ZBDownloadItem *page)
{
    for (auto it = m_announced.begin(); it != m_announced.end();)
    {
        if (it.key() && it.key()->isInSubtreeOf(page))
            it = m_announced.erase(it);
        else
            ++it;
    }
    m_pendingOwners.removeIf([page](const ZBDownloadItem *owner) { return owner && owner->isInSubtreeOf(page); });
}

void ZBDownloadTreeModel::pagesAboutToBeCleared()
{
    beginResetModel();
}

void ZBDownloadTreeModel::pagesCleared()
{
    m_announced.clear();
    m_pendingOwners.clear();
    m_flushTimer.stop();
    endResetModel();
}
