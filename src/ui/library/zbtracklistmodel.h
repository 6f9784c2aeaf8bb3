#pragma once

#include <QAbstractTableModel>

#include "library/zbitem.h"

class ZBLibraryController;

// The tracks of the shown list as table rows. A column's identity is the
// track attribute it shows ("Name", "Length", "Rating"...), so sorting,
// hiding and saving all speak in attribute keys.
//
// Rows can be dragged (to a playlist in the source list, or to a new place
// when the list may be reordered) and files dropped; the window decides what
// a drop means and is told by signals.
class ZBTrackListModel : public QAbstractTableModel
{
    Q_OBJECT

public:
    static constexpr int MaxRating = 5;

    explicit ZBTrackListModel(QObject *parent = nullptr);

    // Where ratings are saved; without one ratings cannot be changed.
    void setLibrary(ZBLibraryController *library) { m_library = library; }

    void setTracks(const ZBItemList &tracks);
    const ZBItemList &tracks() const { return m_tracks; }
    ZBItem *trackAt(int row) const;
    int rowOf(const ZBItem *item) const;
    // Redraws the row of a track whose values changed.
    void trackChanged(const ZBItem *item);
    void setPlayingItem(const ZBItem *item);
    // Only a plain playlist's order is the user's to change.
    void setReorderable(bool reorderable) { m_reorderable = reorderable; }
    bool isReorderable() const { return m_reorderable; }

    static QStringList columnKeys();
    static int columnOf(const QString &key);
    QString columnKey(int column) const;
    // Columns the table starts with hidden.
    static QStringList hiddenByDefault();

    QString sortKey() const { return m_sortKey; }
    // The sort the next list is shown in; the rows stay as they are.
    void setSortOrder(const QString &key, bool ascend);
    bool sortAscending() const { return m_ascend; }
    // The header arrow for a key and direction: dates and counts read
    // "ascending" as newest or most first.
    static Qt::SortOrder indicatorOrder(bool ascend) { return ascend ? Qt::AscendingOrder : Qt::DescendingOrder; }

    bool setRating(const QModelIndex &index, int stars);

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    int columnCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    bool setData(const QModelIndex &index, const QVariant &value, int role = Qt::EditRole) override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    void sort(int column, Qt::SortOrder order = Qt::AscendingOrder) override;

    QStringList mimeTypes() const override;
    QMimeData *mimeData(const QModelIndexList &indexes) const override;
    Qt::DropActions supportedDropActions() const override;
    Qt::DropActions supportedDragActions() const override;
    bool canDropMimeData(const QMimeData *data, Qt::DropAction action, int row, int column,
                         const QModelIndex &parent) const override;
    bool dropMimeData(const QMimeData *data, Qt::DropAction action, int row, int column,
                      const QModelIndex &parent) override;

    // Moves `moving` (rows of this list) to stand before `row`; the new
    // order. Public for the window's keyboard moves and for tests.
    ZBItemList moveTracks(const ZBItemList &moving, int row);

Q_SIGNALS:
    void sortChanged(const QString &key, bool ascend);
    void orderChanged(const ZBItemList &tracks);
    void filesDropped(const QStringList &paths);
    void ratingChanged(ZBItem *item);

private:
    ZBLibraryController *m_library = nullptr;
    ZBItemList m_tracks;
    const ZBItem *m_playing = nullptr;
    bool m_reorderable = false;
    QString m_sortKey = QStringLiteral("Name");
    bool m_ascend = true;
};
