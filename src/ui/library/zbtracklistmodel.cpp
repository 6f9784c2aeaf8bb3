#include "ui/library/zbtracklistmodel.h"

#include <QColor>
#include <QFont>
#include <QMimeData>
#include <QUrl>

#include "library/zblibrarycontroller.h"
#include "library/zbtrackcell.h"
#include "localization/zblocalizer.h"
#include "strings/zbstringdateadditions.h"
#include "ui/library/zblibrarytreemodel.h"

namespace
{
struct Column
{
    const char *key;
    const char *titleKey;
    bool hidden;
};

const Column Columns[] = {
    {"No", "columnTitleNo", true},
    {"Name", "columnTitleName", false},
    {"Type", "columnTitleType", false},
    {"Length", "columnTitleTime", false},
    {"Rating", "columnTitleRating", false},
    {"PlayCount", "columnTitlePlayCount", false},
    {"Added", "columnTitleAdded", false},
    {"LastPlayed", "columnTitleLastPlayed", false},
    {"Path", "columnTitlePath", false},
    {"URL", "columnTitleURL", true},
    {"SourcePageTitle", "columnSourcePageTitle", true},
};

QString stars(int rating)
{
    rating = std::clamp(rating, 0, ZBTrackListModel::MaxRating);
    return QString(rating, QChar(0x2605)) + QString(ZBTrackListModel::MaxRating - rating, QChar(0x2606));
}
} // namespace

ZBTrackListModel::ZBTrackListModel(QObject *parent)
    : QAbstractTableModel(parent)
{
}

QStringList ZBTrackListModel::columnKeys()
{
    QStringList keys;
    for (const Column &column : Columns)
        keys << QLatin1String(column.key);
    return keys;
}

int ZBTrackListModel::columnOf(const QString &key)
{
    return int(columnKeys().indexOf(key));
}

QString ZBTrackListModel::columnKey(int column) const
{
    return column >= 0 && column < columnCount() ? QLatin1String(Columns[column].key) : QString();
}

QStringList ZBTrackListModel::hiddenByDefault()
{
    QStringList keys;
    for (const Column &column : Columns)
    {
        if (column.hidden)
            keys << QLatin1String(column.key);
    }
    return keys;
}

void ZBTrackListModel::setTracks(const ZBItemList &tracks)
{
    beginResetModel();
    m_tracks = tracks;
    endResetModel();
}

ZBItem *ZBTrackListModel::trackAt(int row) const
{
    return row >= 0 && row < m_tracks.size() ? m_tracks.at(row) : nullptr;
}

int ZBTrackListModel::rowOf(const ZBItem *item) const
{
    return int(m_tracks.indexOf(const_cast<ZBItem *>(item)));
}

void ZBTrackListModel::trackChanged(const ZBItem *item)
{
    const int row = rowOf(item);
    if (row >= 0)
        Q_EMIT dataChanged(index(row, 0), index(row, columnCount() - 1));
}

void ZBTrackListModel::setPlayingItem(const ZBItem *item)
{
    const ZBItem *previous = m_playing;
    m_playing = item;
    trackChanged(previous);
    trackChanged(item);
}

int ZBTrackListModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_tracks.size());
}

int ZBTrackListModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(std::size(Columns));
}

QVariant ZBTrackListModel::data(const QModelIndex &index, int role) const
{
    const ZBItem *item = trackAt(index.row());
    if (!item || index.column() < 0 || index.column() >= columnCount())
        return QVariant();
    const QString key = columnKey(index.column());
    if (role == Qt::FontRole && item == m_playing)
    {
        QFont font;
        font.setBold(true);
        return font;
    }
    if (role == Qt::ForegroundRole && !item->isValid().value_or(true))
        return QColor(Qt::gray);
    if (role == Qt::EditRole && key == u"Rating")
        return item->Rating().value_or(0);
    if (role == Qt::TextAlignmentRole && (key == u"Length" || key == u"PlayCount"))
        return int(Qt::AlignRight | Qt::AlignVCenter);
    if (role != Qt::DisplayRole && role != Qt::ToolTipRole)
        return QVariant();
    if (key == u"No")
        return QString();
    if (key == u"Type")
        return item->Type().toLower();
    if (key == u"Rating")
        return stars(item->Rating().value_or(0));
    if (key == u"Added" || key == u"LastPlayed")
    {
        const QDateTime date = item->getUntypedValueByName(key).toDateTime();
        return date.isValid() ? ZBStringDateAdditions::naturalStringFromDate(date) : QString();
    }
    if (key == u"Length")
        return ZBTrackCell::timeText(*item);
    return item->getUntypedValueByName(key);
}

bool ZBTrackListModel::setRating(const QModelIndex &index, int rating)
{
    ZBItem *item = trackAt(index.row());
    if (!item || !m_library)
        return false;
    rating = std::clamp(rating, 0, MaxRating);
    if (item->Rating().value_or(0) == rating)
        return true;
    item->setRatingValue(rating);
    m_library->save();
    trackChanged(item);
    Q_EMIT ratingChanged(item);
    return true;
}

bool ZBTrackListModel::setData(const QModelIndex &index, const QVariant &value, int role)
{
    if (role != Qt::EditRole || columnKey(index.column()) != u"Rating")
        return false;
    bool ok = false;
    const int rating = value.toInt(&ok);
    return ok && setRating(index, rating);
}

QVariant ZBTrackListModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole || section < 0 || section >= columnCount())
        return QVariant();
    return ZBLocalizer::localizedStringForKey(QLatin1String(Columns[section].titleKey));
}

Qt::ItemFlags ZBTrackListModel::flags(const QModelIndex &index) const
{
    if (!index.isValid())
        return Qt::ItemIsDropEnabled;
    Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsDragEnabled;
    if (columnKey(index.column()) == u"Rating" && m_library)
        flags |= Qt::ItemIsEditable;
    return flags;
}

void ZBTrackListModel::setSortOrder(const QString &key, bool ascend)
{
    if (key.isEmpty() || key == u"No")
        return;
    m_sortKey = key;
    m_ascend = ascend;
    Q_EMIT sortChanged(m_sortKey, m_ascend);
}

void ZBTrackListModel::sort(int column, Qt::SortOrder order)
{
    const QString key = columnKey(column);
    if (key.isEmpty() || key == u"No")
        return;
    m_sortKey = key;
    m_ascend = order == Qt::AscendingOrder;
    beginResetModel();
    m_tracks = ZBLibraryController::sortList(m_tracks, m_sortKey, m_ascend);
    endResetModel();
    Q_EMIT sortChanged(m_sortKey, m_ascend);
}

QStringList ZBTrackListModel::mimeTypes() const
{
    return {ZBLibraryTreeModel::TracksMimeType, QStringLiteral("text/uri-list")};
}

QMimeData *ZBTrackListModel::mimeData(const QModelIndexList &indexes) const
{
    QList<int> rows;
    for (const QModelIndex &index : indexes)
    {
        if (!rows.contains(index.row()))
            rows << index.row();
    }
    std::sort(rows.begin(), rows.end());
    QStringList uuids;
    QList<QUrl> urls;
    for (const int row : std::as_const(rows))
    {
        if (const ZBItem *item = trackAt(row))
        {
            uuids << item->ItemUUID();
            urls << QUrl::fromLocalFile(item->Path());
        }
    }
    auto *data = new QMimeData;
    data->setData(ZBLibraryTreeModel::TracksMimeType, uuids.join(u'\n').toUtf8());
    // Other programs (a file manager) get the files themselves.
    data->setUrls(urls);
    return data;
}

Qt::DropActions ZBTrackListModel::supportedDropActions() const
{
    return Qt::MoveAction | Qt::CopyAction;
}

Qt::DropActions ZBTrackListModel::supportedDragActions() const
{
    return Qt::MoveAction | Qt::CopyAction | Qt::LinkAction;
}

bool ZBTrackListModel::canDropMimeData(const QMimeData *data, Qt::DropAction, int, int, const QModelIndex &) const
{
    if (!data)
        return false;
    if (data->hasFormat(ZBLibraryTreeModel::TracksMimeType))
        return m_reorderable;
    return data->hasUrls();
}

bool ZBTrackListModel::dropMimeData(const QMimeData *data, Qt::DropAction action, int row, int column,
                                   const QModelIndex &parent)
{
    if (!canDropMimeData(data, action, row, column, parent))
        return false;
    if (data->hasFormat(ZBLibraryTreeModel::TracksMimeType))
    {
        ZBItemList moving;
        for (const QString &uuid : ZBLibraryTreeModel::trackUUIDs(data))
        {
            for (ZBItem *item : std::as_const(m_tracks))
            {
                if (item->ItemUUID() == uuid)
                    moving << item;
            }
        }
        // Dropped onto a row: before it; below the last row: at the end.
        const int target = row >= 0 ? row : parent.isValid() ? parent.row() : int(m_tracks.size());
        const ZBItemList order = moveTracks(moving, target);
        if (order.isEmpty())
            return false;
        Q_EMIT orderChanged(order);
        // The rows moved here; the view must not remove them as after a move
        // to elsewhere.
        return false;
    }
    const QStringList paths = ZBLibraryTreeModel::localFiles(data);
    if (paths.isEmpty())
        return false;
    Q_EMIT filesDropped(paths);
    return true;
}

ZBItemList ZBTrackListModel::moveTracks(const ZBItemList &moving, int row)
{
    if (moving.isEmpty())
        return {};
    row = std::clamp(row, 0, int(m_tracks.size()));
    ZBItemList order;
    for (int i = 0; i <= m_tracks.size(); ++i)
    {
        if (i == row)
            order << moving;
        if (i < m_tracks.size() && !moving.contains(m_tracks.at(i)))
            order << m_tracks.at(i);
    }
    beginResetModel();
    m_tracks = order;
    endResetModel();
    return order;
}
