#include "library/zbobjectcontext.h"

#include "library/zblibraryguard.h"

#include <QDir>
#include <QFileInfo>
#include <QThread>
#include <QTimeZone>

#include <algorithm>
#include <atomic>
#include <thread>

#include "predicate/zbtextfold.h"
#include "util/zbsqliterows.h"

namespace
{
constexpr int SchemaVersion = 1;

const char *const SchemaSql = R"SQL(
CREATE TABLE IF NOT EXISTS ZBType(
    Z_PK INTEGER PRIMARY KEY, Name TEXT, ID TEXT, URL TEXT, IsSupported INTEGER);
CREATE TABLE IF NOT EXISTS ZBItem(
    Z_PK INTEGER PRIMARY KEY, ItemUUID TEXT, Name TEXT, Path TEXT, URL TEXT, Type TEXT,
    Rating INTEGER, Length INTEGER, PlayCount INTEGER, Added INTEGER, LastPlayed INTEGER,
    SourcePageTitle TEXT, isValid INTEGER, isAvailable INTEGER,
    rel_Type INTEGER REFERENCES ZBType(Z_PK) ON DELETE SET NULL);
CREATE TABLE IF NOT EXISTS ZBPlaylist(
    Z_PK INTEGER PRIMARY KEY, PlaylistUUID TEXT, Name TEXT, isSmart INTEGER NOT NULL DEFAULT 0,
    Request TEXT, "Group" TEXT NOT NULL DEFAULT 'User', SortField TEXT, Ascend INTEGER,
    SortOrder INTEGER, InternalItemsOrder BLOB);
CREATE TABLE IF NOT EXISTS ZBPlaylistItem(
    playlist INTEGER NOT NULL REFERENCES ZBPlaylist(Z_PK) ON DELETE CASCADE,
    item INTEGER NOT NULL REFERENCES ZBItem(Z_PK) ON DELETE CASCADE,
    position INTEGER NOT NULL,
    PRIMARY KEY(playlist, item)) WITHOUT ROWID;
CREATE INDEX IF NOT EXISTS ZBPlaylistItem_item ON ZBPlaylistItem(item);
CREATE TABLE IF NOT EXISTS ZBResources(
    Z_PK INTEGER PRIMARY KEY, item INTEGER REFERENCES ZBItem(Z_PK) ON DELETE CASCADE,
    Path TEXT, mainFile INTEGER);
CREATE INDEX IF NOT EXISTS ZBResources_item ON ZBResources(item);
CREATE TABLE IF NOT EXISTS ZBBaseEntity(Z_PK INTEGER PRIMARY KEY, Name TEXT, Value TEXT);
)SQL";

void bindOptional(ZBSqliteStatement *stmt, int index, const std::optional<qint32> &value)
{
    if (value)
        stmt->bind(index, qint64(*value));
    else
        stmt->bindNull(index);
}

void bindOptional(ZBSqliteStatement *stmt, int index, const std::optional<bool> &value)
{
    if (value)
        stmt->bind(index, qint64(*value ? 1 : 0));
    else
        stmt->bindNull(index);
}

void bindDate(ZBSqliteStatement *stmt, int index, const QDateTime &value)
{
    if (value.isValid())
        stmt->bind(index, value.toMSecsSinceEpoch());
    else
        stmt->bindNull(index);
}

std::optional<qint32> readInt(const ZBSqliteStatement *stmt, int column)
{
    if (stmt->isNull(column))
        return std::nullopt;
    return qint32(stmt->int64(column));
}

std::optional<bool> readBool(const ZBSqliteStatement *stmt, int column)
{
    if (stmt->isNull(column))
        return std::nullopt;
    return stmt->int64(column) != 0;
}

const char *const PlaylistsSql = "SELECT Z_PK, PlaylistUUID, Name, isSmart, Request, \"Group\", SortField, Ascend, "
                                 "SortOrder, InternalItemsOrder FROM ZBPlaylist";

quint64 nextGeneration()
{
    static std::atomic<quint64> last{0};
    return ++last;
}
} // namespace

void ZBObjectContext::changed(quint32 valueBits, bool added, bool removed)
{
    m_generation = nextGeneration();
    for (int bit = 0; bit < ZBItem::ValueBitCount; ++bit)
    {
        if (valueBits & (1u << bit))
            m_valueGeneration[size_t(bit)] = m_generation;
    }
    if (added)
        m_additionGeneration = m_generation;
    if (removed)
        m_removalGeneration = m_generation;
}

quint64 ZBObjectContext::itemGeneration(quint32 valueBits, bool withRemovals) const
{
    quint64 latest = withRemovals ? std::max(m_additionGeneration, m_removalGeneration) : m_additionGeneration;
    for (int bit = 0; bit < ZBItem::ValueBitCount; ++bit)
    {
        if (valueBits & (1u << bit))
            latest = std::max(latest, m_valueGeneration[size_t(bit)]);
    }
    return latest;
}

void ZBManagedObject::didChange(quint32 valueBits)
{
    if (m_context)
        m_context->objectDidChange(this, valueBits);
}

ZBObjectContext::ZBObjectContext() = default;

ZBObjectContext::~ZBObjectContext() = default;

std::unique_ptr<ZBPlaylist> ZBObjectContext::readPlaylist(const ZBSqliteStatement *stmt)
{
    auto playlist = std::make_unique<ZBPlaylist>();
    playlist->m_PlaylistUUID = stmt->text(1);
    playlist->m_Name = stmt->text(2);
    playlist->m_isSmart = stmt->int64(3) != 0;
    playlist->m_Request = stmt->text(4);
    playlist->m_Group = stmt->text(5);
    playlist->m_SortField = stmt->text(6);
    playlist->m_Ascend = readBool(stmt, 7);
    playlist->m_SortOrder = readInt(stmt, 8);
    playlist->m_InternalItemsOrder = stmt->blob(9);
    return playlist;
}

std::vector<std::unique_ptr<ZBPlaylist>> ZBObjectContext::readPlaylists(const QString &filePath)
{
    std::vector<std::unique_ptr<ZBPlaylist>> playlists;
    ZBSqliteDatabase db;
    if (!QFileInfo::exists(filePath) || !db.openForReading(filePath))
        return playlists;
    ZBSqliteStatement *stmt = db.statement(PlaylistsSql);
    while (stmt && stmt->step())
        playlists.push_back(readPlaylist(stmt));
    // Half a list is worse than none: the full read tells what went wrong.
    if (!stmt || !stmt->ok())
        playlists.clear();
    return playlists;
}

ZBObjectContext::OpenResult ZBObjectContext::open(const QString &filePath)
{
    ZBLibraryGuard::willWrite();
    clear();
    OpenResult result;
    const QFileInfo info(filePath);
    if (!QDir().mkpath(info.absolutePath()))
    {
        result.error = QStringLiteral("Cannot create the folder %1").arg(info.absolutePath());
        return result;
    }

    const auto status = m_db.open(filePath, [this](ZBSqliteDatabase &db) { return prepare(db); });
    switch (status)
    {
        case ZBSqliteDatabase::OpenStatus::Opened:
            result.ok = true;
            break;
        case ZBSqliteDatabase::OpenStatus::RecoveredFromDamage:
            result.ok = true;
            result.recoveredFromDamage = true;
            result.quarantinedPath = m_db.quarantinedPath();
            result.error = m_db.lastError();
            break;
        case ZBSqliteDatabase::OpenStatus::Failed:
            result.error = m_db.lastError();
            clear();
            break;
    }
    return result;
}

bool ZBObjectContext::prepare(ZBSqliteDatabase &db)
{
    clear();
    const int version = db.userVersion();
    if (version < 0)
        return false;
    if (version > SchemaVersion)
    {
        // Written by a newer program: reading it could lose what we don't
        // understand, and it is not damaged, so it must not be moved aside.
        db.noteResult(1);
        return false;
    }
    if (version < SchemaVersion && !createSchema(db))
        return false;
    return load(db);
}

bool ZBObjectContext::createSchema(ZBSqliteDatabase &db)
{
    if (!db.begin())
        return false;
    if (!db.exec(QString::fromUtf8(SchemaSql))
        || !db.exec(QStringLiteral("PRAGMA user_version = %1").arg(SchemaVersion)) || !db.commit())
    {
        db.rollback();
        return false;
    }
    return true;
}

template <typename T>
T *ZBObjectContext::adopt(std::unique_ptr<T> record, QList<T *> &list, qint64 rowId)
{
    T *raw = record.get();
    raw->m_context = this;
    raw->m_rowId = rowId;
    if constexpr (std::is_same_v<T, ZBItem>)
        raw->m_serial = m_nextSerial++;
    m_nextRowId = std::max(m_nextRowId, rowId + 1);
    list.append(raw);
    m_owned.push_back(std::move(record));
    return raw;
}

bool ZBObjectContext::load(ZBSqliteDatabase &db)
{
    // One read transaction, so the graph comes from a single consistent moment
    // even while the command-line tool writes.
    if (!db.exec(QStringLiteral("BEGIN")))
        return false;
    auto fail = [&db]() {
        db.rollback();
        return false;
    };

    QHash<qint64, ZBType *> typesById;
    ZBSqliteStatement *stmt = db.statement("SELECT Z_PK, Name, ID, URL, IsSupported FROM ZBType");
    if (!stmt)
        return fail();
    while (stmt->step())
    {
        auto type = std::make_unique<ZBType>();
        type->m_Name = stmt->text(1);
        type->m_ID = stmt->text(2);
        type->m_URL = stmt->text(3);
        type->m_IsSupported = readBool(stmt, 4);
        ZBType *raw = adopt(std::move(type), m_types, stmt->int64(0));
        typesById.insert(raw->rowId(), raw);
    }
    if (!stmt->ok())
        return fail();

    // Rows come in key order from the table's own b-tree, so the tracks by
    // key are a sorted vector: half the memory of a hash, no hashing.
    std::vector<std::pair<qint64, ZBItem *>> itemsById;
    // A library holds a handful of types over all its tracks; one copy each.
    QHash<QString, QString> typeTexts;
    stmt = db.statement("SELECT count(*) FROM ZBItem");
    if (!stmt || !stmt->step())
        return fail();
    const qint64 itemCount = stmt->int64(0);
    stmt->step(); // finished, so that it holds nothing open
    itemsById.reserve(size_t(itemCount));
    m_items.reserve(itemCount);
    m_owned.reserve(size_t(itemCount) + 1024);
    stmt = db.statement("SELECT Z_PK, ItemUUID, Name, Path, URL, Type, Rating, Length, PlayCount, Added, LastPlayed, "
                        "SourcePageTitle, isValid, isAvailable, rel_Type FROM ZBItem");
    if (!stmt)
        return fail();
    ZBSqliteRows::Layout itemLayout;
    itemLayout.columnCount = 15;
    // UUID, Name, Path, URL, Type and SourcePageTitle.
    itemLayout.textColumns = (1 << 1) | (1 << 2) | (1 << 3) | (1 << 4) | (1 << 5) | (1 << 11);
    // The lookup indexes' hashes, worked out by the thread that steps the
    // statement, which has less to do than the one that makes the tracks.
    itemLayout.digestColumns = (1 << 1) | (1 << 3) | (1 << 4);
    itemLayout.digest = &ZBFoldedIndex::foldedHashUtf8;
    IndexHashes indexHashes;
    for (std::vector<quint64> &hashes : indexHashes)
        hashes.reserve(size_t(itemCount));
    const auto makeItems = [&](const ZBSqliteRows &rows) {
        const auto optionalInt = [&rows](qsizetype row, int column) {
            return rows.isNull(row, column) ? std::nullopt : std::optional<qint32>(qint32(rows.int64(row, column)));
        };
        const auto optionalBool = [&rows](qsizetype row, int column) {
            return rows.isNull(row, column) ? std::nullopt : std::optional<bool>(rows.int64(row, column) != 0);
        };
        const auto date = [&rows](qsizetype row, int column) {
            return rows.isNull(row, column) ? QDateTime()
                                            : QDateTime::fromMSecsSinceEpoch(rows.int64(row, column), Qt::UTC);
        };
        for (qsizetype row = 0; row < rows.size(); ++row)
        {
            auto item = std::make_unique<ZBItem>();
            item->m_ItemUUID = rows.text(row, 1);
            item->m_Name = rows.text(row, 2);
            item->m_Path = rows.text(row, 3);
            item->m_URL = rows.text(row, 4);
            const QString typeText = rows.text(row, 5);
            auto pooled = typeTexts.constFind(typeText);
            if (pooled == typeTexts.cend() || pooled->isNull() != typeText.isNull())
                pooled = typeTexts.insert(typeText, typeText);
            item->m_Type = *pooled;
            item->m_Rating = optionalInt(row, 6);
            item->m_Length = optionalInt(row, 7);
            item->m_PlayCount = optionalInt(row, 8);
            item->m_Added = date(row, 9);
            item->m_LastPlayed = date(row, 10);
            item->m_SourcePageTitle = rows.text(row, 11);
            item->m_isValid = optionalBool(row, 12);
            item->m_isAvailable = optionalBool(row, 13);
            if (!rows.isNull(row, 14))
            {
                if (ZBType *type = typesById.value(rows.int64(row, 14)))
                {
                    item->m_relType = type;
                    type->m_items.append(item.get());
                }
            }
            ZBItem *raw = adopt(std::move(item), m_items, rows.int64(row, 0));
            itemsById.emplace_back(raw->rowId(), raw);
            indexHashes[0].push_back(rows.digest(row, 1));
            indexHashes[1].push_back(rows.digest(row, 3));
            indexHashes[2].push_back(rows.digest(row, 4));
        }
    };
    // A large library's statement is stepped on a second thread while this
    // one makes the tracks; a small one reads in a few milliseconds anyway.
    constexpr qint64 ParallelFrom = 20000;
    if (!ZBSqliteRows::readAll(*stmt, itemLayout,
                               itemCount >= ParallelFrom && QThread::idealThreadCount() > 1, makeItems))
        return fail();
    if (!std::is_sorted(itemsById.begin(), itemsById.end()))
        std::sort(itemsById.begin(), itemsById.end());
    const auto itemById = [&itemsById](qint64 id) -> ZBItem * {
        const auto it = std::lower_bound(itemsById.begin(), itemsById.end(), std::pair<qint64, ZBItem *>(id, nullptr));
        return it != itemsById.end() && it->first == id ? it->second : nullptr;
    };
    m_items.squeeze();

    QHash<qint64, ZBPlaylist *> playlistsById;
    stmt = db.statement(PlaylistsSql);
    if (!stmt)
        return fail();
    while (stmt->step())
    {
        ZBPlaylist *raw = adopt(readPlaylist(stmt), m_playlists, stmt->int64(0));
        playlistsById.insert(raw->rowId(), raw);
    }
    if (!stmt->ok())
        return fail();

    stmt = db.statement("SELECT playlist, item, position FROM ZBPlaylistItem ORDER BY playlist, position");
    if (!stmt)
        return fail();
    while (stmt->step())
    {
        ZBPlaylist *playlist = playlistsById.value(stmt->int64(0));
        ZBItem *item = itemById(stmt->int64(1));
        m_nextRowId = std::max(m_nextRowId, stmt->int64(2) + 1);
        if (!playlist || !item)
            continue;
        playlist->m_items.append(item);
        item->relations().playlists.append(playlist);
    }
    if (!stmt->ok())
        return fail();

    stmt = db.statement("SELECT Z_PK, item, Path, mainFile FROM ZBResources");
    if (!stmt)
        return fail();
    while (stmt->step())
    {
        auto resource = std::make_unique<ZBResources>();
        resource->m_Path = stmt->text(2);
        resource->m_mainFile = readBool(stmt, 3);
        ZBItem *owner = itemById(stmt->int64(1));
        resource->m_item = owner;
        ZBResources *raw = adopt(std::move(resource), m_resources, stmt->int64(0));
        if (owner)
            owner->relations().resources.append(raw);
    }
    if (!stmt->ok())
        return fail();

    stmt = db.statement("SELECT Z_PK, Name, Value FROM ZBBaseEntity");
    if (!stmt)
        return fail();
    while (stmt->step())
    {
        auto entity = std::make_unique<ZBBaseEntity>();
        entity->m_Name = stmt->text(1);
        entity->m_Value = stmt->text(2);
        adopt(std::move(entity), m_baseEntities, stmt->int64(0));
    }
    if (!stmt->ok())
        return fail();

    db.exec(QStringLiteral("COMMIT"));
    // Built now rather than at the first lookup: the first track the user
    // adds or plays would otherwise wait for them.
    rebuildIndexes(&indexHashes);
    changed(ZBItem::AllValues, true, true);
    return true;
}

void ZBObjectContext::clear()
{
    m_items.clear();
    m_playlists.clear();
    m_types.clear();
    m_resources.clear();
    m_baseEntities.clear();
    m_byUUID.clear();
    m_byPath.clear();
    m_byURL.clear();
    m_changed.clear();
    m_changeOrder.clear();
    m_deleted.clear();
    m_membersAdded.clear();
    m_membersRemoved.clear();
    m_owned.clear();
    m_nextRowId = 1;
    m_nextSerial = 0;
    m_sortRanks.clear();
    m_indexesStale = false;
    changed(ZBItem::AllValues, true, true);
}

void ZBObjectContext::rebuildIndexes(const IndexHashes *hashes)
{
    const auto build = [this, hashes](ZBFoldedIndex &index, size_t which) {
        if (hashes && (*hashes)[which].size() == size_t(m_items.size()))
            index.build(m_items, (*hashes)[which]);
        else
            index.build(m_items);
    };
    // The three indexes share nothing but the tracks they read (each writes
    // its own link in a track), so a large library builds them on two cores.
    constexpr qsizetype ParallelFrom = 20000;
    if (m_items.size() >= ParallelFrom && QThread::idealThreadCount() > 1)
    {
        std::thread worker([&build, this]() {
            build(m_byUUID, 0);
            build(m_byURL, 2);
        });
        build(m_byPath, 1);
        worker.join();
    }
    else
    {
        build(m_byUUID, 0);
        build(m_byPath, 1);
        build(m_byURL, 2);
    }
    m_indexesStale = false;
}

ZBFoldedIndex *ZBObjectContext::indexForKey(const QString &key)
{
    if (key == u"ItemUUID")
        return &m_byUUID;
    if (key == u"Path")
        return &m_byPath;
    if (key == u"URL")
        return &m_byURL;
    return nullptr;
}

void ZBObjectContext::itemKeyWillChange(ZBItem *item, const QString &key, const QString &oldValue,
                                        const QString &newValue)
{
    if (m_indexesStale || item->m_deleted)
        return;
    // Absent values are never indexed: nothing looks them up, and a fresh
    // record would otherwise pile every new track under one key.
    if (ZBFoldedIndex *index = indexForKey(key))
    {
        index->remove(oldValue, item);
        index->insert(newValue, item);
    }
}

QList<ZBItem *> ZBObjectContext::itemsWithFoldedUUID(const QString &folded)
{
    if (m_indexesStale)
    {
        ZBLibraryGuard::willWrite();
        rebuildIndexes();
    }
    return m_byUUID.values(folded);
}

QList<ZBItem *> ZBObjectContext::itemsWithFoldedPath(const QString &folded)
{
    if (m_indexesStale)
    {
        ZBLibraryGuard::willWrite();
        rebuildIndexes();
    }
    return m_byPath.values(folded);
}

QList<ZBItem *> ZBObjectContext::itemsWithFoldedURL(const QString &folded)
{
    if (m_indexesStale)
    {
        ZBLibraryGuard::willWrite();
        rebuildIndexes();
    }
    return m_byURL.values(folded);
}

ZBItem *ZBObjectContext::insertItem()
{
    ZBLibraryGuard::willWrite();
    ZBItem *item = adopt(std::make_unique<ZBItem>(), m_items, m_nextRowId);
    objectDidChange(item, 0);
    changed(ZBItem::AllValues, true, false);
    return item;
}

ZBPlaylist *ZBObjectContext::insertPlaylist()
{
    ZBLibraryGuard::willWrite();
    ZBPlaylist *playlist = adopt(std::make_unique<ZBPlaylist>(), m_playlists, m_nextRowId);
    objectDidChange(playlist);
    return playlist;
}

ZBType *ZBObjectContext::insertType()
{
    ZBLibraryGuard::willWrite();
    ZBType *type = adopt(std::make_unique<ZBType>(), m_types, m_nextRowId);
    objectDidChange(type);
    return type;
}

ZBResources *ZBObjectContext::insertResource(ZBItem *owner)
{
    ZBLibraryGuard::willWrite();
    ZBResources *resource = adopt(std::make_unique<ZBResources>(), m_resources, m_nextRowId);
    resource->m_item = owner;
    if (owner)
        owner->relations().resources.append(resource);
    objectDidChange(resource);
    return resource;
}

ZBBaseEntity *ZBObjectContext::insertBaseEntity()
{
    ZBLibraryGuard::willWrite();
    ZBBaseEntity *entity = adopt(std::make_unique<ZBBaseEntity>(), m_baseEntities, m_nextRowId);
    objectDidChange(entity);
    return entity;
}

void ZBObjectContext::deleteItem(ZBItem *item)
{
    deleteItems({item});
}

void ZBObjectContext::deleteItems(const QList<ZBItem *> &items)
{
    ZBLibraryGuard::willWrite();
    // Marked first and taken out of each list in one pass after: removing
    // them one by one costs a scan of the library each, minutes for a
    // selection of thousands in a library of a million.
    QSet<ZBPlaylist *> playlists;
    QSet<ZBType *> types;
    bool anyResource = false;
    bool any = false;
    for (ZBItem *item : items)
    {
        if (!item || item->m_deleted)
            continue;
        any = true;
        for (ZBPlaylist *playlist : item->Playlist())
        {
            playlists.insert(playlist);
            m_membersAdded.remove({playlist->rowId(), item->rowId()});
        }
        if (item->m_relations)
            item->m_relations->playlists.clear();
        for (ZBResources *resource : item->Resource())
        {
            resource->m_deleted = true;
            anyResource = true;
        }
        if (item->m_relType)
            types.insert(item->m_relType);
        if (!m_indexesStale)
        {
            itemKeyWillChange(item, QStringLiteral("ItemUUID"), item->m_ItemUUID, QString());
            itemKeyWillChange(item, QStringLiteral("Path"), item->m_Path, QString());
            itemKeyWillChange(item, QStringLiteral("URL"), item->m_URL, QString());
        }
        item->m_deleted = true;
        m_deleted.append(item);
    }
    if (!any)
        return;
    // A few tracks (a delete key pressed on one) are looked for by address:
    // reading every track's flag instead is a cache miss per track, 10 ms at
    // a million.
    constexpr qsizetype FewItems = 16;
    const bool few = items.size() <= FewItems;
    const auto deletedItem = [few, &items](ZBItem *item) { return few ? items.contains(item) : item->isDeleted(); };
    for (ZBPlaylist *playlist : std::as_const(playlists))
        playlist->m_items.removeIf(deletedItem);
    for (ZBType *type : std::as_const(types))
        type->m_items.removeIf(deletedItem);
    if (anyResource)
        m_resources.removeIf([](const ZBResources *resource) { return resource->isDeleted(); });
    m_items.removeIf(deletedItem);
    changed(0, false, true);
}

void ZBObjectContext::deletePlaylist(ZBPlaylist *playlist)
{
    ZBLibraryGuard::willWrite();
    if (!playlist || playlist->m_deleted)
        return;
    for (ZBItem *item : std::as_const(playlist->m_items))
    {
        if (item->m_relations)
            item->m_relations->playlists.removeOne(playlist);
        m_membersAdded.remove({playlist->rowId(), item->rowId()});
    }
    playlist->m_items.clear();
    playlist->m_deleted = true;
    m_playlists.removeOne(playlist);
    changed(0, false, false);
    m_deleted.append(playlist);
}

void ZBObjectContext::addMember(ZBPlaylist *playlist, ZBItem *item)
{
    ZBLibraryGuard::willWrite();
    if (playlist->m_items.contains(item))
        return;
    playlist->m_items.append(item);
    item->relations().playlists.append(playlist);
    changed(0, false, false);
    const QPair<qint64, qint64> key{playlist->rowId(), item->rowId()};
    if (!m_membersRemoved.remove(key))
        m_membersAdded.insert(key);
}

void ZBObjectContext::removeMember(ZBPlaylist *playlist, ZBItem *item)
{
    ZBLibraryGuard::willWrite();
    if (!playlist->m_items.removeOne(item))
        return;
    if (item->m_relations)
        item->m_relations->playlists.removeOne(playlist);
    changed(0, false, false);
    const QPair<qint64, qint64> key{playlist->rowId(), item->rowId()};
    if (!m_membersAdded.remove(key))
        m_membersRemoved.insert(key);
}

void ZBObjectContext::objectDidChange(ZBManagedObject *object, quint32 valueBits)
{
    changed(dynamic_cast<ZBItem *>(object) ? (valueBits & ZBItem::AllValues) : 0, false, false);
    if (m_changed.contains(object))
        return;
    m_changed.insert(object);
    m_changeOrder.append(object);
}

bool ZBObjectContext::hasChanges() const
{
    return !m_changeOrder.isEmpty() || !m_deleted.isEmpty() || !m_membersAdded.isEmpty()
           || !m_membersRemoved.isEmpty();
}

bool ZBObjectContext::save()
{
    if (!m_db.isOpen())
    {
        m_lastError = QStringLiteral("the library is not open");
        return false;
    }
    if (!hasChanges())
        return true;
    if (!m_db.begin())
    {
        m_lastError = m_db.lastError();
        return false;
    }
    if (!writeChanges() || !m_db.commit())
    {
        // Nothing of this save reached the file; the changes stay pending and
        // the next save tries them again.
        m_lastError = m_db.lastError();
        m_db.rollback();
        return false;
    }
    m_changed.clear();
    m_changeOrder.clear();
    m_deleted.clear();
    m_membersAdded.clear();
    m_membersRemoved.clear();
    return true;
}

bool ZBObjectContext::writeChanges()
{
    for (ZBManagedObject *object : std::as_const(m_changeOrder))
    {
        if (object->m_deleted)
            continue;
        bool ok = true;
        if (auto *item = dynamic_cast<ZBItem *>(object))
            ok = writeItem(item);
        else if (auto *playlist = dynamic_cast<ZBPlaylist *>(object))
            ok = writePlaylist(playlist);
        else if (auto *type = dynamic_cast<ZBType *>(object))
            ok = writeType(type);
        else if (auto *resource = dynamic_cast<ZBResources *>(object))
            ok = writeResource(resource);
        else if (auto *entity = dynamic_cast<ZBBaseEntity *>(object))
            ok = writeBaseEntity(entity);
        if (!ok)
            return false;
    }
    for (ZBManagedObject *object : std::as_const(m_deleted))
    {
        if (!writeDeletion(object))
            return false;
    }
    ZBSqliteStatement *stmt = m_db.statement("DELETE FROM ZBPlaylistItem WHERE playlist = ?1 AND item = ?2");
    if (!stmt)
        return false;
    for (const auto &pair : std::as_const(m_membersRemoved))
    {
        stmt->bind(1, pair.first);
        stmt->bind(2, pair.second);
        if (!stmt->run())
            return false;
    }
    stmt = m_db.statement("INSERT OR IGNORE INTO ZBPlaylistItem(playlist, item, position) VALUES(?1, ?2, ?3)");
    if (!stmt)
        return false;
    for (const auto &pair : std::as_const(m_membersAdded))
    {
        stmt->bind(1, pair.first);
        stmt->bind(2, pair.second);
        stmt->bind(3, m_nextRowId++);
        if (!stmt->run())
            return false;
    }
    return true;
}

bool ZBObjectContext::writeItem(ZBItem *item)
{
    ZBSqliteStatement *stmt = m_db.statement(
        "INSERT INTO ZBItem(Z_PK, ItemUUID, Name, Path, URL, Type, Rating, Length, PlayCount, Added, LastPlayed, "
        "SourcePageTitle, isValid, isAvailable, rel_Type) VALUES(?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10, ?11, ?12, "
        "?13, ?14, ?15) ON CONFLICT(Z_PK) DO UPDATE SET ItemUUID = excluded.ItemUUID, Name = excluded.Name, "
        "Path = excluded.Path, URL = excluded.URL, Type = excluded.Type, Rating = excluded.Rating, "
        "Length = excluded.Length, PlayCount = excluded.PlayCount, Added = excluded.Added, "
        "LastPlayed = excluded.LastPlayed, SourcePageTitle = excluded.SourcePageTitle, isValid = excluded.isValid, "
        "isAvailable = excluded.isAvailable, rel_Type = excluded.rel_Type");
    if (!stmt)
        return false;
    stmt->bind(1, item->rowId());
    stmt->bind(2, item->m_ItemUUID);
    stmt->bind(3, item->m_Name);
    stmt->bind(4, item->m_Path);
    stmt->bind(5, item->m_URL);
    stmt->bind(6, item->m_Type);
    bindOptional(stmt, 7, item->m_Rating);
    bindOptional(stmt, 8, item->m_Length);
    bindOptional(stmt, 9, item->m_PlayCount);
    bindDate(stmt, 10, item->m_Added);
    bindDate(stmt, 11, item->m_LastPlayed);
    stmt->bind(12, item->m_SourcePageTitle);
    bindOptional(stmt, 13, item->m_isValid);
    bindOptional(stmt, 14, item->m_isAvailable);
    if (item->m_relType && !item->m_relType->m_deleted)
        stmt->bind(15, item->m_relType->rowId());
    else
        stmt->bindNull(15);
    return stmt->run();
}

bool ZBObjectContext::writePlaylist(ZBPlaylist *playlist)
{
    ZBSqliteStatement *stmt = m_db.statement(
        "INSERT INTO ZBPlaylist(Z_PK, PlaylistUUID, Name, isSmart, Request, \"Group\", SortField, Ascend, SortOrder, "
        "InternalItemsOrder) VALUES(?1, ?2, ?3, ?4, ?5, ?6, ?7, ?8, ?9, ?10) ON CONFLICT(Z_PK) DO UPDATE SET "
        "PlaylistUUID = excluded.PlaylistUUID, Name = excluded.Name, isSmart = excluded.isSmart, "
        "Request = excluded.Request, \"Group\" = excluded.\"Group\", SortField = excluded.SortField, "
        "Ascend = excluded.Ascend, SortOrder = excluded.SortOrder, InternalItemsOrder = excluded.InternalItemsOrder");
    if (!stmt)
        return false;
    stmt->bind(1, playlist->rowId());
    stmt->bind(2, playlist->m_PlaylistUUID);
    stmt->bind(3, playlist->m_Name);
    stmt->bind(4, qint64(playlist->m_isSmart ? 1 : 0));
    stmt->bind(5, playlist->m_Request);
    stmt->bind(6, playlist->m_Group.isNull() ? QStringLiteral("User") : playlist->m_Group);
    stmt->bind(7, playlist->m_SortField);
    bindOptional(stmt, 8, playlist->m_Ascend);
    bindOptional(stmt, 9, playlist->m_SortOrder);
    stmt->bind(10, playlist->m_InternalItemsOrder);
    return stmt->run();
}

bool ZBObjectContext::writeType(ZBType *type)
{
    ZBSqliteStatement *stmt = m_db.statement(
        "INSERT INTO ZBType(Z_PK, Name, ID, URL, IsSupported) VALUES(?1, ?2, ?3, ?4, ?5) ON CONFLICT(Z_PK) DO UPDATE SET "
        "Name = excluded.Name, ID = excluded.ID, URL = excluded.URL, IsSupported = excluded.IsSupported");
    if (!stmt)
        return false;
    stmt->bind(1, type->rowId());
    stmt->bind(2, type->m_Name);
    stmt->bind(3, type->m_ID);
    stmt->bind(4, type->m_URL);
    bindOptional(stmt, 5, type->m_IsSupported);
    return stmt->run();
}

bool ZBObjectContext::writeResource(ZBResources *resource)
{
    ZBSqliteStatement *stmt =
        m_db.statement("INSERT INTO ZBResources(Z_PK, item, Path, mainFile) VALUES(?1, ?2, ?3, ?4) ON CONFLICT(Z_PK) DO "
                       "UPDATE SET item = excluded.item, Path = excluded.Path, mainFile = excluded.mainFile");
    if (!stmt)
        return false;
    stmt->bind(1, resource->rowId());
    if (resource->m_item)
        stmt->bind(2, resource->m_item->rowId());
    else
        stmt->bindNull(2);
    stmt->bind(3, resource->m_Path);
    bindOptional(stmt, 4, resource->m_mainFile);
    return stmt->run();
}

bool ZBObjectContext::writeBaseEntity(ZBBaseEntity *entity)
{
    ZBSqliteStatement *stmt = m_db.statement("INSERT INTO ZBBaseEntity(Z_PK, Name, Value) VALUES(?1, ?2, ?3) ON "
                                             "CONFLICT(Z_PK) DO UPDATE SET Name = excluded.Name, Value = excluded.Value");
    if (!stmt)
        return false;
    stmt->bind(1, entity->rowId());
    stmt->bind(2, entity->Name());
    stmt->bind(3, entity->Value());
    return stmt->run();
}

bool ZBObjectContext::writeDeletion(ZBManagedObject *object)
{
    const char *sql = nullptr;
    if (dynamic_cast<ZBItem *>(object))
        sql = "DELETE FROM ZBItem WHERE Z_PK = ?1";
    else if (dynamic_cast<ZBPlaylist *>(object))
        sql = "DELETE FROM ZBPlaylist WHERE Z_PK = ?1";
    else
        return true;
    ZBSqliteStatement *stmt = m_db.statement(sql);
    if (!stmt)
        return false;
    stmt->bind(1, object->rowId());
    return stmt->run();
}
