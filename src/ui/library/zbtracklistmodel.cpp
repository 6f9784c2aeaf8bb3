#include "ui/library/zbtracklistmodel.h"

#include <QFont>

#include "localization/zblocalizer.h"
#include "playback/zbtimedisplay.h"

namespace
{
struct Column
{
    const char *key;
    const char *titleKey;
};

const Column Columns[] = {
    {"Name", "columnTitleName"},
    {"Type", "columnTitleType"},
    {"Length", "columnTitleTime"},
    {"PlayCount", "columnTitlePlayCount"},
    {"Path", "columnTitlePath"},
};
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
    if (role == Qt::FontRole && item == m_playing)
    {
        QFont font;
        font.setBold(true);
        return font;
    }
    if (role != Qt::DisplayRole && role != Qt::ToolTipRole)
        return QVariant();
    const QString key = QLatin1String(Columns[index.column()].key);
    if (key == u"Type")
        return item->Type().toLower();
    if (key == u"Length")
    {
        const QString type = item->Type().toLower();
        const qint32 length = item->Length().value_or(0);
        // Flash content counts frames, not seconds.
        if (type == u"swf" || type == u"exe")
            return QString::number(length);
        if (type == u"xap")
            return ZBLocalizer::localizedStringForKey(QStringLiteral("NA"));
        return ZBTimeDisplay::clockText(length);
    }
    return item->getUntypedValueByName(key);
}

QVariant ZBTrackListModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole || section < 0 || section >= columnCount())
        return QVariant();
    return ZBLocalizer::localizedStringForKey(QLatin1String(Columns[section].titleKey));
}
