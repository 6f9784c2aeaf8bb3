#pragma once

#include <QLineEdit>
#include <QObject>
#include <QPointer>
#include <QTableView>
#include <QTreeView>

#include <functional>

#include "library/zbitem.h"
#include "library/zbtracklistquery.h"

class ZBLibraryController;
class ZBLibraryTreeModel;
class ZBLibraryUi;
class ZBNode;
class ZBPlaybackController;
class ZBSettings;
class ZBTrackListModel;

// The library half of the main window: the source list, the search field
// and the track table, and the commands that work on them (lists made,
// renamed and removed; tracks rated, searched, reordered and removed). The
// rules live in the library tree and the removal plan; this class wires them
// to the widgets and asks its questions through ZBLibraryUi.
class ZBLibraryPane : public QObject
{
    Q_OBJECT

public:
    // Content modes the track table can be in.
    enum Mode
    {
        ListMode = 1,
        SearchMode = 2
    };

    ZBLibraryPane(ZBLibraryController &library, ZBSettings &settings, ZBPlaybackController &playback,
                  ZBLibraryUi &ui, QObject *parent = nullptr);
    ~ZBLibraryPane() override;

    QTreeView *sourceList() const { return m_sourceList; }
    QTableView *trackTable() const { return m_trackTable; }
    QLineEdit *searchField() const { return m_searchField; }
    ZBLibraryTreeModel *treeModel() const { return m_treeModel; }
    ZBTrackListModel *trackModel() const { return m_trackModel; }

    int mode() const { return m_mode; }
    QString selectedListUUID() const { return m_selectedListUUID; }
    ZBItemList selectedTracks() const;
    // What the table shows: the list, or the search results.
    const ZBItemList &currentTracks() const;

    // Selects a list in the source list and shows its tracks.
    void selectList(const QString &playlistUUID);
    // Shows the selected list again from the store (after imports,
    // removals, edits). The table follows once the list is worked out, off
    // this thread; so do selectList() and search().
    void reloadNode();
    // Whether the table still waits for the answer to the last change of
    // list, search or sort.
    bool isLoading() const { return m_query->isPending(); }
    // Runs the event loop until the table shows the answer; for tests and
    // tools that drive the pane step by step.
    void waitForResult();
    // Runs `action` once the table shows the answer to the last request (at
    // once when it already does).
    void whenShown(std::function<void()> action);
    // Plays `track` from the table, showing "All Tracks" first when what is
    // shown does not hold it.
    void playTrack(ZBItem *track);
    void reloadTree();
    // Closed while the store is read on another thread: the source list
    // shows the lists of `preview` and the table nothing. Opening shows the
    // list selected meanwhile, or All Tracks.
    void setLibraryOpen(bool open, std::vector<std::unique_ptr<ZBPlaylist>> preview = {});

    QString addPlaylistWithItems(const ZBItemList &tracks);
    void createPlaylistFromSelection();
    void addSmartList();
    void editSmartList();
    void renameSelectedList();
    // A smart list opens the rule editor; a plain one is renamed in place.
    void editSelectedList();
    // Selects the playing track's row, showing its list first if needed.
    void showPlayingTrack();
    void removeSelectedList();
    void removeSelectedTracks();
    void setRating(int stars);
    void getInfo();
    void showInFileManager();
    void search(const QString &text);
    void focusSearch();
    // Tracks already in the library joined to a plain playlist.
    void addTracksToPlaylist(const QStringList &trackUUIDs, const QString &playlistUUID);

Q_SIGNALS:
    // The user asked to play a row of the table.
    void playRequested(int row);
    // Files dropped on the table or a list: the window imports them, and
    // adds them to the plain playlist named (empty for none).
    void importRequested(const QStringList &paths, const QString &playlistUUID);
    void selectedListChanged(const QString &playlistUUID);

private:
    void buildWidgets();
    void showTracks(const ZBItemList &tracks);
    void requestTracks();
    void showResult(const ZBTrackListQuery::Result &result);
    void expandHeadings();
    void selectRowNear(int row);
    bool isPlainPlaylist(const QString &playlistUUID) const;

    ZBLibraryController &m_library;
    ZBSettings &m_settings;
    ZBPlaybackController &m_playback;
    ZBLibraryUi &m_ui;

    ZBLibraryTreeModel *m_treeModel;
    ZBTrackListModel *m_trackModel;
    QPointer<QTreeView> m_sourceList;
    QPointer<QTableView> m_trackTable;
    QPointer<QLineEdit> m_searchField;

    QString m_selectedListUUID;
    ZBItemList m_currentList;
    ZBItemList m_searchList;
    int m_mode = ListMode;
    ZBTrackListQuery *m_query;
    // The table's sort applies even to a list's own order until another
    // list is chosen.
    bool m_sortShown = false;
    std::vector<std::function<void()>> m_whenShown;
};
