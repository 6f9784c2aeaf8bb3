#pragma once

#include <QAbstractItemModel>
#include <QHash>

#include "library/zblibrarytree.h"

class ZBLibraryController;

// The source list: the library tree's headings and lists for a tree view.
// Headings cannot be selected; user lists can be renamed in place; lists
// take dropped files and tracks, which the window handles.
class ZBLibraryTreeModel : public QAbstractItemModel
{
    Q_OBJECT

public:
    enum Roles
    {
        // The number shown beside a download list, 0 for none.
        CountRole = Qt::UserRole + 1,
        PlaylistUUIDRole,
        IsHeadingRole,
    };
    // Track rows dragged from the track table: their UUIDs, one per line.
    static const QString TracksMimeType;

    explicit ZBLibraryTreeModel(ZBLibraryController &library, QObject *parent = nullptr);

    // What a drag carries: the local files among its URLs, and the tracks
    // dragged from the track table. Every drop target reads them here.
    static QStringList localFiles(const QMimeData *data);
    static QStringList trackUUIDs(const QMimeData *data);

    ZBLibraryTree &tree() { return m_tree; }
    // Saves the store and reads the tree again from it.
    void reloadTree();
    void reloadLastDownloadsCounters();
    // The lists of `preview` only until the store is read (see ZBLibraryTree).
    void setLibraryOpen(bool open, std::vector<std::unique_ptr<ZBPlaylist>> preview = {});
    // Counts of lists made elsewhere (by the track list query).
    void setListCounts(const QStringList &playlistUUIDs, const QList<int> &counts);

    ZBNode *nodeAt(const QModelIndex &index) const;
    QModelIndex indexForPlaylist(const QString &playlistUUID);
    QModelIndex rootIndex(int root) const;

    QModelIndex index(int row, int column, const QModelIndex &parent = QModelIndex()) const override;
    QModelIndex parent(const QModelIndex &child) const override;
    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    int columnCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    bool setData(const QModelIndex &index, const QVariant &value, int role = Qt::EditRole) override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;

    QStringList mimeTypes() const override;
    Qt::DropActions supportedDropActions() const override;
    bool canDropMimeData(const QMimeData *data, Qt::DropAction action, int row, int column,
                         const QModelIndex &parent) const override;
    bool dropMimeData(const QMimeData *data, Qt::DropAction action, int row, int column,
                      const QModelIndex &parent) override;

Q_SIGNALS:
    void listRenamed(const QString &playlistUUID);
    // Files dropped on a list: they join the library, and a plain playlist.
    void filesDropped(const QStringList &paths, const QString &playlistUUID);
    void tracksDropped(const QStringList &trackUUIDs, const QString &playlistUUID);

private:
    // The download lists' badges across a rebuild of the tree.
    QHash<QString, int> listCounts();
    void restoreListCounts(const QHash<QString, int> &counts);

    ZBLibraryController &m_library;
    // Mutable: headings and lists are read from the store on first request.
    mutable ZBLibraryTree m_tree;
};
