#pragma once

#include <QString>
#include <QStringList>

#include <array>
#include <memory>

#include "library/zbitem.h"
#include "library/zbnode.h"

class ZBLibraryController;
class ZBPlaylist;

// The source list's contents and rules: three headings with their lists,
// which lists may be renamed or removed, how new lists are named, and the
// tracks a list shows. The window shows it through a model and asks the user
// the questions; every decision is made here.
class ZBLibraryTree
{
public:
    enum Root
    {
        TracksRoot = 0,
        PlaylistsRoot = 1,
        DownloadsRoot = 2
    };
    static constexpr int RootCount = 3;
    static const QStringList RootNames;
    // The sort order new user lists get, after every standard list.
    static constexpr qint32 UserSortOrder = 200;

    explicit ZBLibraryTree(ZBLibraryController &library);
    ~ZBLibraryTree();

    // A heading, built on first request together with its lists.
    ZBNode *rootItem(int index);
    // Forgets the headings and their lists: the next rootItem() reads the
    // store afresh. Nodes handed out before are gone.
    void rootItemReload();
    // While the store is still being read (on another thread) nothing asks
    // the library for lists or tracks: the headings show `preview` (see
    // ZBLibraryController::peekPlaylists()), or stand alone.
    void setLibraryOpen(bool open, std::vector<std::unique_ptr<ZBPlaylist>> preview = {});
    bool isLibraryOpen() const { return m_libraryOpen; }
    // The list node showing `playlistUUID`, or null.
    ZBNode *nodeForPlaylist(const QString &playlistUUID);
    ZBNode *nodeNamed(const QString &name);

    ZBPlaylist *playlistOf(const ZBNode *node) const;
    // Lists the user made (group "User"): only those are renamed and removed.
    bool isUserList(const ZBNode *node) const;
    bool isSmartList(const ZBNode *node) const;

    // `base`, or "<base> 2", "<base> 3"... : the first no list has. Plain
    // playlists are checked against user lists, smart lists against every
    // list.
    QString untitledName(const QString &base, bool forSmartList) const;

    // A new plain playlist named from `base`, holding `tracks`; its UUID.
    QString addPlaylistWithItems(const QString &base, const ZBItemList &tracks, const QString &sortKey, bool ascend);
    // A new user smart list; its UUID. Nothing for an empty request.
    QString addSmartList(const QString &name, const QString &request);
    // Replaces the request and name of a user smart list.
    bool editSmartList(const QString &playlistUUID, const QString &name, const QString &request);
    // In-place rename: user lists only, and never to an empty name. The name
    // is kept as typed, blanks included.
    bool renameList(const QString &playlistUUID, const QString &newName);

    // Whether removing the list must be confirmed first: only a user list
    // that holds tracks, unless the user asked never to be asked.
    bool removalNeedsConfirmation(const QString &playlistUUID, bool dontAskAgain) const;
    bool removeList(const QString &playlistUUID);

    // What a list shows: its tracks in its own saved order when it has one
    // (tracks not in the order follow), else sorted by the table's sort.
    ZBItemList tracksForList(const QString &playlistUUID, const QString &sortKey, bool ascend) const;

    // Counts the tracks of "Today", "Last week" and "Last month" into their
    // nodes; the other nodes keep 0.
    void reloadLastDownloadsCounters();
    // The lists reloadLastDownloadsCounters() counts, for a count made
    // elsewhere and handed back through setListCount().
    QStringList countedLists();
    void setListCount(const QString &playlistUUID, int count);

private:
    void buildChildren(ZBNode *heading);

    ZBLibraryController &m_library;
    std::array<std::unique_ptr<ZBNode>, RootCount> m_roots;
    bool m_libraryOpen = true;
    std::vector<std::unique_ptr<ZBPlaylist>> m_preview;
};
