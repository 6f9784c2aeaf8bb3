#pragma once

#include <QAbstractTableModel>

#include "library/zbitem.h"

// The tracks of one list as table rows. Columns are attribute keys of the
// track, so a column's identity is the key it shows.
class ZBTrackListModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    explicit ZBTrackListModel(QObject *parent = nullptr);

    void setTracks(const ZBItemList &tracks);
    const ZBItemList &tracks() const { return m_tracks; }
    ZBItem *trackAt(int row) const;
    int rowOf(const ZBItem *item) const;
    // Redraws the row of a track whose values changed.
    void trackChanged(const ZBItem *item);
    void setPlayingItem(const ZBItem *item);

    static QStringList columnKeys();

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    int columnCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

private:
    ZBItemList m_tracks;
    const ZBItem *m_playing = nullptr;
};
