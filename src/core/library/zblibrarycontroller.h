#pragma once

#include <QDateTime>
#include <QHash>
#include <QString>
#include <QVariantMap>

#include <optional>
#include <utility>

#include "library/zbobjectcontext.h"
#include "predicate/zbpredicate.h"

// Every operation the program performs on tracks and playlists. Each call that
// changes the library saves before it returns, as one transaction.
//
// Lookups by name, path, URL and UUID are LIKE patterns, case- and
// diacritic-insensitive: "*" and "?" in the argument are wildcards.
class ZBLibraryController
{
public:
    static const QString LibraryFileName;

    ZBLibraryController();

    // The per-user folder of the program's data; empty when the system has
    // none to give.
    static QString applicationSupportFolder();

    // Opens NVKLibrary.sqlite in `folder`, or in applicationSupportFolder()
    // when empty. A damaged file is moved aside and an empty library started;
    // the result says so, and the caller must tell the user.
    ZBObjectContext::OpenResult openStore(const QString &folder = QString());
    ZBObjectContext *managedObjectContext() { return &m_context; }
    // The playlists alone, read quickly from the store openStore() would open
    // (see ZBObjectContext::readPlaylists()).
    static std::vector<std::unique_ptr<ZBPlaylist>> peekPlaylists(const QString &folder = QString());
    bool save();

    // Standard lists.
    void initLibrary(const QDateTime &now = QDateTime::currentDateTimeUtc());
    QString initUUIDForStandartSmartListWithName(const QString &name, const QString &request, const QString &group,
                                                 const QString &sortBy, bool ascend, qint32 sortOrder);
    QString UUIDForStandartSmartListWithName(const QString &name) const;
    void refreshDownloadSmartList(const QDateTime &now = QDateTime::currentDateTimeUtc());
    // " (!(URL == '') AND (Added >= CAST(<seconds since 2001>, 'NSDate')))"
    static QString downloadFilterRequest(const QDateTime &cutOff);
    QString allTracksUUID() const { return m_allTracksUUID; }
    QString nowBrowsingUUID() const { return m_nowBrowsingUUID; }
    // Never assigned: the Today list is always reached by its name.
    QString TodayUUID() const { return QString(); }

    // Playlists.
    QString addSmartListWithName(const QString &name, const QString &request, const QString &group,
                                 const QString &sortBy, bool ascend, qint32 sortOrder);
    QString addPlaylistToLibraryByName(const QString &name, const QString &sortBy, bool ascend, qint32 sortOrder);
    // A substring match on the UUID, first match wins.
    ZBPlaylist *playlistByUUID(const QString &uuid) const;
    ZBPlaylist *getPlaylistsFromLibraryByUUID(const QString &uuid) const;
    QList<ZBPlaylist *> getAllPlaylistsFromLibraryByName(const QString &name) const;
    QList<ZBPlaylist *> getPlaylistsFromLibraryByName(const QString &name, bool isSmart, const QString &group) const;
    bool removePlaylistFromLibraryByUUID(const QString &uuid);
    bool removePlaylistFromLibrary(const QString &name);

    // Tracks.
    QString addItemToLibrarybyName(const QString &name, const QString &path, const QString &url, const QString &type,
                                   qint32 rating, qint32 length, qint32 playCount, const QDateTime &added,
                                   const QDateTime &lastPlayed, const QString &sourcePage,
                                   const QString &proposedItemUUID = QString());
    // Absent (not an empty list) when nothing matches.
    std::optional<ZBItemList> getItemsFromLibraryByUUID(const QString &uuid) const;
    std::optional<ZBItemList> getItemsFromLibraryByURL(const QString &url) const;
    ZBItem *itemByUUID(const QString &uuid) const;
    bool removeItemFromLibraryByUUID(const QString &uuid);
    // The same for many, saved once: how many of the UUIDs matched a track.
    int removeItemsFromLibraryByUUIDs(const QStringList &uuids);
    // Members of a plain playlist, or the tracks a smart list's request
    // selects; in no defined order.
    ZBItemList getItemsFromPlaylist(const ZBPlaylist *playlist) const;
    // The tracks a filter text selects; a text that does not parse selects
    // nothing, and why is logged.
    ZBItemList itemsMatching(const QString &request) const;
    static ZBItemList filterItems(const ZBItemList &items, const ZBPredicate &predicate);
    bool addItemWithUUID(const QString &uuid, ZBPlaylist *playlist);
    bool removeItemWithUUID(const QString &uuid, ZBPlaylist *playlist);

    // Types and resources.
    void addType(const QString &name, const QString &typeID, const QString &url, bool isSupported);
    void addResourceWithPath(const QString &path, bool baseResource, ZBItem *item);
    QList<QVariantMap> getResourcesFromBundle(const ZBItem *item) const;

    // Ordering.
    void saveItemsOrderForPlaylist(ZBPlaylist *playlist, const ZBItemList &tracks);
    // Consumes `tracks`: what the order record places is moved to the result
    // in record order, then (appendRest) what is left in its given order.
    ZBItemList getItemsOrderForPlaylist(const ZBPlaylist *playlist, ZBItemList &tracks, bool appendRest) const;
    static QByteArray encodeItemsOrder(const QStringList &uuids);
    static std::optional<QStringList> decodeItemsOrder(const QByteArray &record);
    // Dates and counts sort inverted: ascend puts the newest and the most
    // first, the way the table's arrow reads for them. Text sorts A to Z.
    static ZBItemList sortList(const ZBItemList &tracks, const QString &key, bool ascend);

private:
    ZBPlaylist *insertPlaylist(const QString &name, const QString &sortBy, bool ascend, qint32 sortOrder);
    QList<ZBItem *> itemsLike(const QString &pattern, QList<ZBItem *> (ZBObjectContext::*indexed)(const QString &),
                              const QString &key) const;
    const ZBPredicate &cachedPredicate(const QString &request) const;

    mutable ZBObjectContext m_context;
    QString m_allTracksUUID;
    QString m_nowBrowsingUUID;
    mutable QHash<QString, ZBPredicate> m_predicates;
    // What each request selected, under the context's generation then.
    mutable QHash<QString, std::pair<quint64, ZBItemList>> m_lists;
};
