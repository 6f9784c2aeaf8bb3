#pragma once

#include <QHash>
#include <QList>
#include <QSet>
#include <QString>

#include <array>
#include <memory>
#include <vector>

#include "library/zbbaseentity.h"
#include "library/zbfoldedindex.h"
#include "library/zbitem.h"
#include "library/zbplaylist.h"
#include "library/zbresources.h"
#include "library/zbtype.h"
#include "util/zbsqlitedatabase.h"

// The library graph held in memory and the file that keeps it. Records are
// created, changed and deleted here; save() writes every change since the last
// save in one transaction. Every record is loaded at open, so queries never
// touch the disk.
//
// Deleted records stay allocated until the context goes away, so a pointer
// held by a list on screen never dangles; isDeleted() tells them apart.
class ZBObjectContext
{
public:
    struct OpenResult
    {
        bool ok = false;
        // The file could not be read and was moved aside to quarantinedPath;
        // the library now starts empty.
        bool recoveredFromDamage = false;
        QString quarantinedPath;
        QString error;
    };

    ZBObjectContext();
    ~ZBObjectContext();
    ZBObjectContext(const ZBObjectContext &) = delete;
    ZBObjectContext &operator=(const ZBObjectContext &) = delete;

    OpenResult open(const QString &filePath);
    bool isOpen() const { return m_db.isOpen(); }
    QString filePath() const { return m_db.path(); }
    ZBSqliteDatabase &database() { return m_db; }

    ZBItem *insertItem();
    ZBPlaylist *insertPlaylist();
    ZBType *insertType();
    ZBResources *insertResource(ZBItem *owner);
    ZBBaseEntity *insertBaseEntity();

    // Deleting a track takes it out of every playlist and drops its resources;
    // deleting a playlist leaves its tracks alone.
    void deleteItem(ZBItem *item);
    void deleteItems(const QList<ZBItem *> &items);
    void deletePlaylist(ZBPlaylist *playlist);

    void addMember(ZBPlaylist *playlist, ZBItem *item);
    void removeMember(ZBPlaylist *playlist, ZBItem *item);

    const QList<ZBItem *> &items() const { return m_items; }
    const QList<ZBPlaylist *> &playlists() const { return m_playlists; }
    const QList<ZBType *> &types() const { return m_types; }
    const QList<ZBBaseEntity *> &baseEntities() const { return m_baseEntities; }

    // Exact lookups on case- and diacritic-folded values; the controller
    // answers wildcard patterns by scanning instead.
    QList<ZBItem *> itemsWithFoldedUUID(const QString &folded);
    QList<ZBItem *> itemsWithFoldedPath(const QString &folded);
    QList<ZBItem *> itemsWithFoldedURL(const QString &folded);

    // Moves on with every change to any record or membership; values are
    // unique across contexts and opens, so a result kept under one is never
    // mistaken for another library's.
    quint64 generation() const { return m_generation; }
    // The last change that can alter what a filter or a sort reading the
    // track values in `valueBits` (ZBItem::ValueBit) gives: one of those
    // values changed, a track was added, or (withRemovals) one was deleted.
    quint64 itemGeneration(quint32 valueBits, bool withRemovals) const;

    // Each track's place in the collation of one text key, by ZBItem::serial(),
    // for ZBTrackSorter; kept here so that it goes away with the library.
    struct SortRanks
    {
        quint64 generation = 0;
        QString locale;
        std::vector<quint32> bySerial;
    };
    SortRanks &sortRanks(const QString &key) { return m_sortRanks[key]; }
    quint32 serialCount() const { return m_nextSerial; }

    // The playlists of the store at `filePath`, read on their own and
    // belonging to no context: what the source list shows while the whole
    // store is still being read. Empty when the file is missing or unreadable.
    static std::vector<std::unique_ptr<ZBPlaylist>> readPlaylists(const QString &filePath);

    bool hasChanges() const;
    bool save();
    QString lastError() const { return m_lastError; }

    // Called by the records' setters.
    void objectDidChange(ZBManagedObject *object, quint32 valueBits = ~0u);
    // The lookup indexes follow a track whose UUID, path or URL changes.
    void itemKeyWillChange(ZBItem *item, const QString &key, const QString &oldValue, const QString &newValue);

private:
    static std::unique_ptr<ZBPlaylist> readPlaylist(const ZBSqliteStatement *stmt);
    bool prepare(ZBSqliteDatabase &db);
    bool createSchema(ZBSqliteDatabase &db);
    bool load(ZBSqliteDatabase &db);
    void clear();
    template <typename T>
    T *adopt(std::unique_ptr<T> record, QList<T *> &list, qint64 rowId);
    // The tracks' hashes by UUID, path and URL, in the order of m_items.
    using IndexHashes = std::array<std::vector<quint64>, 3>;
    // With `hashes`, the tracks' hashes as read; otherwise worked out here.
    void rebuildIndexes(const IndexHashes *hashes = nullptr);
    void changed(quint32 valueBits, bool added, bool removed);
    ZBFoldedIndex *indexForKey(const QString &key);
    bool writeChanges();
    bool writeItem(ZBItem *item);
    bool writePlaylist(ZBPlaylist *playlist);
    bool writeType(ZBType *type);
    bool writeResource(ZBResources *resource);
    bool writeBaseEntity(ZBBaseEntity *entity);
    bool writeDeletion(ZBManagedObject *object);

    ZBSqliteDatabase m_db;
    std::vector<std::unique_ptr<ZBManagedObject>> m_owned;
    QList<ZBItem *> m_items;
    QList<ZBPlaylist *> m_playlists;
    QList<ZBType *> m_types;
    QList<ZBResources *> m_resources;
    QList<ZBBaseEntity *> m_baseEntities;
    qint64 m_nextRowId = 1;

    ZBFoldedIndex m_byUUID{0, &ZBItem::m_ItemUUID};
    ZBFoldedIndex m_byPath{1, &ZBItem::m_Path};
    ZBFoldedIndex m_byURL{2, &ZBItem::m_URL};
    bool m_indexesStale = false;
    quint64 m_generation = 0;
    std::array<quint64, ZBItem::ValueBitCount> m_valueGeneration{};
    quint64 m_additionGeneration = 0;
    quint64 m_removalGeneration = 0;
    quint32 m_nextSerial = 0;
    QHash<QString, SortRanks> m_sortRanks;

    // What the next save writes. Sets, since a record changed twice is written
    // once; memberships as (playlist row, item row) pairs.
    QSet<ZBManagedObject *> m_changed;
    QList<ZBManagedObject *> m_changeOrder;
    QList<ZBManagedObject *> m_deleted;
    QSet<QPair<qint64, qint64>> m_membersAdded;
    QSet<QPair<qint64, qint64>> m_membersRemoved;
    QString m_lastError;
};
