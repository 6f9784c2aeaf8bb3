#include "library/zblibrarycontroller.h"

#include <QDir>
#include <QJsonArray>
#include <QJsonDocument>
#include <QLoggingCategory>
#include <QStandardPaths>
#include <QThread>

#include <algorithm>
#include <thread>

#include "library/zbitemfilter.h"
#include "library/zblibraryguard.h"
#include "library/zbtracksorter.h"
#include "predicate/zbtextfold.h"
#include "util/zbadditionalmethods.h"

Q_LOGGING_CATEGORY(lcLibrary, "norvik.library")

const QString ZBLibraryController::LibraryFileName = QStringLiteral("NVKLibrary.sqlite");

namespace
{
// The track values a filter reads, as ZBItem::ValueBit; false when it reads
// anything else (a playlist's or resource's key path, an unknown key), whose
// changes the bits cannot tell.
bool valueBitsRead(const ZBPredicateNode *node, quint32 *bits)
{
    if (!node)
        return true;
    if (node->type() == ZBPredicateNode::Type::Comparison)
    {
        for (const ZBPredicateExpression *side : {&node->left(), &node->right()})
        {
            if (!side->isKeyPath())
                continue;
            const quint32 bit = ZBItem::valueBit(side->keyPath());
            if (bit == 0)
                return false;
            *bits |= bit;
        }
        return true;
    }
    for (qsizetype c = 0; c < node->childCount(); ++c)
    {
        if (!valueBitsRead(node->child(c), bits))
            return false;
    }
    return true;
}

const QString GroupPredefined = QStringLiteral("Predefined");
const QString GroupDownloads = QStringLiteral("Downloads");
const QString GroupUser = QStringLiteral("User");

struct StandardList
{
    const char *name;
    const char *request;
    const QString &group;
    qint32 sortOrder;
};

struct DownloadList
{
    const char *name;
    qint64 secondsBack;
    qint32 sortOrder;
};

const DownloadList DownloadLists[] = {
    {"Today", 86400, 301},
    {"Last week", 604800, 302},
    {"Last month", 2678400, 303},
};

bool like(const QString &value, const QString &pattern)
{
    return ZBTextFold::likeMatch(value, pattern, true, true);
}

} // namespace

ZBLibraryController::ZBLibraryController() = default;

QString ZBLibraryController::applicationSupportFolder()
{
    return QStandardPaths::writableLocation(QStandardPaths::AppDataLocation);
}

std::vector<std::unique_ptr<ZBPlaylist>> ZBLibraryController::peekPlaylists(const QString &folder)
{
    const QString dir = folder.isEmpty() ? applicationSupportFolder() : folder;
    if (dir.isEmpty())
        return {};
    return ZBObjectContext::readPlaylists(QDir(dir).filePath(LibraryFileName));
}

ZBObjectContext::OpenResult ZBLibraryController::openStore(const QString &folder)
{
    ZBLibraryGuard::willWrite();
    m_predicates.clear();
    m_lists.clear();
    m_allTracksUUID.clear();
    m_nowBrowsingUUID.clear();
    const QString dir = folder.isEmpty() ? applicationSupportFolder() : folder;
    if (dir.isEmpty())
    {
        ZBObjectContext::OpenResult result;
        result.error = QStringLiteral("Can't find application support folder");
        return result;
    }
    return m_context.open(QDir(dir).filePath(LibraryFileName));
}

bool ZBLibraryController::save()
{
    if (m_context.save())
        return true;
    qCWarning(lcLibrary) << "Saving the library failed:" << m_context.lastError();
    return false;
}

void ZBLibraryController::initLibrary(const QDateTime &now)
{
    static const StandardList lists[] = {
        {"All Tracks", "Name like[cd] '*'", GroupPredefined, 101},
        {"NowBrowsing", "", GroupDownloads, 300},
        {"Video",
         "!(Type contains[cd] 'SWF') AND !(Type contains[cd] 'EXE') AND !(Type contains[cd] 'rm') AND !(Type "
         "contains[cd] 'rv') AND !(Type contains[cd] 'XAP')",
         GroupPredefined, 107},
        {"SWF", "(Type contains[cd] 'SWF') OR (Type contains[cd] 'EXE')", GroupPredefined, 105},
        {"Real video", "(Type contains[cd] 'rm') OR (Type contains[cd] 'rv')", GroupPredefined, 109},
        {"Silverlight", "Type contains[cd] 'XAP'", GroupPredefined, 110},
    };
    QStringList uuids;
    for (const StandardList &list : lists)
    {
        uuids << initUUIDForStandartSmartListWithName(QString::fromUtf8(list.name), QString::fromUtf8(list.request),
                                                      list.group, QStringLiteral("Name"), true, list.sortOrder);
    }
    m_allTracksUUID = uuids.value(0);
    m_nowBrowsingUUID = uuids.value(1);
    refreshDownloadSmartList(now);
}

QString ZBLibraryController::UUIDForStandartSmartListWithName(const QString &name) const
{
    for (const ZBBaseEntity *entity : m_context.baseEntities())
    {
        if (like(entity->Name(), name))
            return entity->Value();
    }
    return QString();
}

QString ZBLibraryController::initUUIDForStandartSmartListWithName(const QString &name, const QString &request,
                                                                  const QString &group, const QString &sortBy,
                                                                  bool ascend, qint32 sortOrder)
{
    const QString existing = UUIDForStandartSmartListWithName(name);
    if (!existing.isNull())
        return existing;
    const QString uuid = addSmartListWithName(name, request, group, sortBy, ascend, sortOrder);
    ZBBaseEntity *record = m_context.insertBaseEntity();
    record->setName(name);
    record->setValue(uuid);
    save();
    return uuid;
}

QString ZBLibraryController::downloadFilterRequest(const QDateTime &cutOff)
{
    return QStringLiteral(" (!(URL == '') AND (Added >= %1))").arg(ZBPredicate::dateLiteral(cutOff));
}

void ZBLibraryController::refreshDownloadSmartList(const QDateTime &now)
{
    for (const DownloadList &list : DownloadLists)
    {
        const QString name = QString::fromUtf8(list.name);
        const QString request = downloadFilterRequest(now.addSecs(-list.secondsBack));
        ZBPlaylist *playlist = playlistByUUID(UUIDForStandartSmartListWithName(name));
        // The new cut-off rides along with the next save; the lists move on
        // once per start, not continuously.
        if (playlist)
            playlist->setRequest(request);
        else
            initUUIDForStandartSmartListWithName(name, request, GroupDownloads, QStringLiteral("Added"), false,
                                                 list.sortOrder);
    }
}

QString ZBLibraryController::addSmartListWithName(const QString &name, const QString &request, const QString &group,
                                                  const QString &sortBy, bool ascend, qint32 sortOrder)
{
    ZBPlaylist *playlist = insertPlaylist(name, sortBy, ascend, sortOrder);
    playlist->setIsSmart(true);
    playlist->setRequest(request);
    playlist->setGroup(group);
    save();
    return playlist->PlaylistUUID();
}

QString ZBLibraryController::addPlaylistToLibraryByName(const QString &name, const QString &sortBy, bool ascend,
                                                        qint32 sortOrder)
{
    // isSmart, Group and Request stay unset: the record's defaults make it a
    // plain list of the user's.
    const ZBPlaylist *playlist = insertPlaylist(name, sortBy, ascend, sortOrder);
    save();
    return playlist->PlaylistUUID();
}

ZBPlaylist *ZBLibraryController::insertPlaylist(const QString &name, const QString &sortBy, bool ascend,
                                                qint32 sortOrder)
{
    ZBPlaylist *playlist = m_context.insertPlaylist();
    playlist->setName(name);
    playlist->setSortField(sortBy);
    playlist->setAscend(ascend);
    playlist->setSortOrder(sortOrder);
    playlist->setPlaylistUUID(ZBAdditionalMethods::generateUUID());
    return playlist;
}

ZBPlaylist *ZBLibraryController::playlistByUUID(const QString &uuid) const
{
    if (uuid.isNull())
        return nullptr;
    const QString needle = ZBTextFold::fold(uuid, true, true);
    for (ZBPlaylist *playlist : m_context.playlists())
    {
        if (ZBTextFold::fold(playlist->PlaylistUUID(), true, true).contains(needle))
            return playlist;
    }
    return nullptr;
}

ZBPlaylist *ZBLibraryController::getPlaylistsFromLibraryByUUID(const QString &uuid) const
{
    if (uuid.isNull())
        return nullptr;
    for (ZBPlaylist *playlist : m_context.playlists())
    {
        if (like(playlist->PlaylistUUID(), uuid))
            return playlist;
    }
    return nullptr;
}

QList<ZBPlaylist *> ZBLibraryController::getAllPlaylistsFromLibraryByName(const QString &name) const
{
    QList<ZBPlaylist *> result;
    for (ZBPlaylist *playlist : m_context.playlists())
    {
        if (like(playlist->Name(), name) && like(playlist->Group(), GroupUser))
            result.append(playlist);
    }
    return result;
}

QList<ZBPlaylist *> ZBLibraryController::getPlaylistsFromLibraryByName(const QString &name, bool isSmart,
                                                                       const QString &group) const
{
    QList<ZBPlaylist *> result;
    for (ZBPlaylist *playlist : m_context.playlists())
    {
        if (!like(playlist->Name(), name) || playlist->isSmart() != isSmart)
            continue;
        // Plain playlists all live under the user's heading; the group is
        // only asked of smart lists.
        if (isSmart && !like(playlist->Group(), group))
            continue;
        result.append(playlist);
    }
    return result;
}

bool ZBLibraryController::removePlaylistFromLibraryByUUID(const QString &uuid)
{
    if (uuid.isNull())
        return false;
    ZBPlaylist *playlist = getPlaylistsFromLibraryByUUID(uuid);
    if (!playlist)
        return false;
    const ZBItemList members = playlist->Item();
    for (ZBItem *item : members)
        m_context.removeMember(playlist, item);
    m_context.deletePlaylist(playlist);
    return save();
}

bool ZBLibraryController::removePlaylistFromLibrary(const QString &name)
{
    QList<ZBPlaylist *> doomed;
    for (ZBPlaylist *playlist : m_context.playlists())
    {
        if (like(playlist->Name(), name))
            doomed.append(playlist);
    }
    if (doomed.isEmpty())
        return false;
    for (ZBPlaylist *playlist : std::as_const(doomed))
        m_context.deletePlaylist(playlist);
    save();
    return true;
}

QList<ZBItem *> ZBLibraryController::itemsLike(const QString &pattern,
                                               QList<ZBItem *> (ZBObjectContext::*indexed)(const QString &),
                                               const QString &key) const
{
    if (pattern.isNull())
        return {};
    if (!ZBTextFold::hasWildcards(pattern))
        return (m_context.*indexed)(ZBTextFold::fold(pattern, true, true));
    QList<ZBItem *> result;
    for (ZBItem *item : m_context.items())
    {
        if (like(item->getUntypedValueByName(key).toString(), pattern))
            result.append(item);
    }
    return result;
}

QString ZBLibraryController::addItemToLibrarybyName(const QString &name, const QString &path, const QString &url,
                                                    const QString &type, qint32 rating, qint32 length,
                                                    qint32 playCount, const QDateTime &added,
                                                    const QDateTime &lastPlayed, const QString &sourcePage,
                                                    const QString &proposedItemUUID)
{
    const QList<ZBItem *> existing = itemsLike(path, &ZBObjectContext::itemsWithFoldedPath, QStringLiteral("Path"));
    if (!existing.isEmpty())
        return existing.first()->ItemUUID();

    ZBItem *item = m_context.insertItem();
    const QString uuid = proposedItemUUID.isEmpty() ? ZBAdditionalMethods::generateUUID() : proposedItemUUID;
    item->setItemUUID(uuid);
    item->setName(name);
    item->setPath(path);
    item->setURL(url);
    item->setType(type);
    item->setRatingValue(rating);
    item->setLengthValue(length);
    item->setPlayCountValue(playCount);
    item->setAdded(added);
    item->setLastPlayed(lastPlayed);
    item->setSourcePageTitle(sourcePage);
    save();
    return uuid;
}

std::optional<ZBItemList> ZBLibraryController::getItemsFromLibraryByUUID(const QString &uuid) const
{
    ZBItemList items = itemsLike(uuid, &ZBObjectContext::itemsWithFoldedUUID, QStringLiteral("ItemUUID"));
    if (items.isEmpty())
        return std::nullopt;
    return items;
}

std::optional<ZBItemList> ZBLibraryController::getItemsFromLibraryByURL(const QString &url) const
{
    ZBItemList items = itemsLike(url, &ZBObjectContext::itemsWithFoldedURL, QStringLiteral("URL"));
    if (items.isEmpty())
        return std::nullopt;
    return items;
}

ZBItem *ZBLibraryController::itemByUUID(const QString &uuid) const
{
    const auto items = getItemsFromLibraryByUUID(uuid);
    return items ? items->first() : nullptr;
}

bool ZBLibraryController::removeItemFromLibraryByUUID(const QString &uuid)
{
    return removeItemsFromLibraryByUUIDs({uuid}) > 0;
}

int ZBLibraryController::removeItemsFromLibraryByUUIDs(const QStringList &uuids)
{
    ZBItemList items;
    int matched = 0;
    for (const QString &uuid : uuids)
    {
        if (const auto found = getItemsFromLibraryByUUID(uuid))
        {
            items += *found;
            ++matched;
        }
    }
    if (matched == 0)
        return 0;
    m_context.deleteItems(items);
    save();
    return matched;
}

const ZBPredicate &ZBLibraryController::cachedPredicate(const QString &request) const
{
    auto it = m_predicates.find(request);
    if (it == m_predicates.end())
    {
        // Requests change rarely (the download filters once per start), so a
        // small cache keyed by text never needs evicting in practice; cap it
        // anyway against a caller that builds a new text per keystroke.
        if (m_predicates.size() > 256)
            m_predicates.clear();
        it = m_predicates.insert(request, ZBPredicate::parse(request));
        if (!it->isValid())
            qCWarning(lcLibrary).noquote() << "Filter" << request << "selects nothing:" << it->errorString();
    }
    return *it;
}

ZBItemList ZBLibraryController::filterItems(const ZBItemList &items, const ZBPredicate &predicate)
{
    // Fills the tracks' folded texts.
    ZBLibraryGuard::willWrite();
    const ZBItemFilter filter(predicate);
    ZBItemList matches;
    // Filtering a whole library waits on memory more than it computes; two
    // halves on two cores finish in about half the time. Each track is read by
    // one thread only, so its lazily filled text cache needs no lock.
    constexpr qsizetype ParallelFrom = 20000;
    if (items.size() < ParallelFrom || QThread::idealThreadCount() < 2)
    {
        filter.filter(items.constData(), items.constData() + items.size(), matches);
        return ZBLibraryGuard::cancelled() ? ZBItemList() : matches;
    }
    ZBItem *const *begin = items.constData();
    ZBItem *const *middle = begin + items.size() / 2;
    ZBItemList secondMatches;
    const std::atomic<bool> *cancel = ZBLibraryGuard::currentFlag();
    std::thread worker([&]() {
        const ZBLibraryGuard::ReadScope scope(cancel);
        if (cancel)
            ZBLibraryGuard::lowerThreadPriority();
        filter.filter(middle, begin + items.size(), secondMatches);
    });
    filter.filter(begin, middle, matches);
    worker.join();
    if (ZBLibraryGuard::cancelled())
        return {};
    matches.append(secondMatches);
    return matches;
}

ZBItemList ZBLibraryController::itemsMatching(const QString &request) const
{
    // The tree asks for the same lists (and their counts) over and over while
    // nothing changes; a kept answer stands until a track is added or deleted
    // or one of the values the request reads changes (so a play, which moves
    // counts and dates, leaves "Video" alone). A request reading through a
    // relationship is dropped by any change.
    ZBLibraryGuard::willWrite();
    const ZBPredicate &predicate = cachedPredicate(request);
    quint32 bits = 0;
    const quint64 generation = valueBitsRead(predicate.root(), &bits) ? m_context.itemGeneration(bits, true)
                                                                       : m_context.generation();
    auto kept = m_lists.constFind(request);
    if (kept != m_lists.cend() && kept->first == generation)
        return kept->second;
    ZBItemList matches = filterItems(m_context.items(), predicate);
    // Part of an answer is never kept.
    if (ZBLibraryGuard::cancelled())
        return {};
    if (m_lists.size() > 64)
        m_lists.clear();
    m_lists.insert(request, {generation, matches});
    return matches;
}

ZBItemList ZBLibraryController::getItemsFromPlaylist(const ZBPlaylist *playlist) const
{
    if (!playlist)
        return {};
    if (!playlist->isSmart())
        return playlist->Item();
    // The browsing list has no request: the tree fills it with what the page
    // loads, never from the library.
    if (playlist->Request().trimmed().isEmpty())
        return {};
    return itemsMatching(playlist->Request());
}

bool ZBLibraryController::addItemWithUUID(const QString &uuid, ZBPlaylist *playlist)
{
    if (!playlist || playlist->isSmart())
        return false;
    ZBItem *item = itemByUUID(uuid);
    if (!item)
        return false;
    for (const ZBItem *member : playlist->Item())
    {
        if (member->ItemUUID().compare(item->ItemUUID()) == 0)
            return false;
    }
    m_context.addMember(playlist, item);
    return save();
}

bool ZBLibraryController::removeItemWithUUID(const QString &uuid, ZBPlaylist *playlist)
{
    if (uuid.isNull() || !playlist)
        return false;
    ZBItem *item = itemByUUID(uuid);
    if (!item)
        return false;
    m_context.removeMember(playlist, item);
    save();
    return true;
}

void ZBLibraryController::addType(const QString &name, const QString &typeID, const QString &url, bool isSupported)
{
    ZBType *type = m_context.insertType();
    type->setName(name);
    type->setID(typeID);
    type->setURL(url);
    type->setIsSupported(isSupported);
    save();
}

void ZBLibraryController::addResourceWithPath(const QString &path, bool baseResource, ZBItem *item)
{
    if (!item || item->isDeleted())
        return;
    ZBResources *resource = m_context.insertResource(item);
    resource->setPath(path);
    resource->setMainFile(baseResource);
    save();
}

QList<QVariantMap> ZBLibraryController::getResourcesFromBundle(const ZBItem *item) const
{
    QList<QVariantMap> result;
    if (!item)
        return result;
    for (const ZBResources *resource : item->Resource())
    {
        result.append({{QStringLiteral("Base"), resource->mainFile().value_or(false) ? QStringLiteral("1")
                                                                                     : QStringLiteral("0")},
                       {QStringLiteral("Path"), resource->Path()}});
    }
    return result;
}

QByteArray ZBLibraryController::encodeItemsOrder(const QStringList &uuids)
{
    return QJsonDocument(QJsonArray::fromStringList(uuids)).toJson(QJsonDocument::Compact);
}

std::optional<QStringList> ZBLibraryController::decodeItemsOrder(const QByteArray &record)
{
    QJsonParseError error;
    const QJsonDocument document = QJsonDocument::fromJson(record, &error);
    if (error.error != QJsonParseError::NoError || !document.isArray())
        return std::nullopt;
    QStringList uuids;
    for (const QJsonValue &value : document.array())
    {
        if (!value.isString())
            return std::nullopt;
        uuids.append(value.toString());
    }
    return uuids;
}

void ZBLibraryController::saveItemsOrderForPlaylist(ZBPlaylist *playlist, const ZBItemList &tracks)
{
    if (!playlist)
        return;
    QStringList uuids;
    uuids.reserve(tracks.size());
    for (const ZBItem *item : tracks)
        uuids.append(item->ItemUUID());
    playlist->setInternalItemsOrder(encodeItemsOrder(uuids));
    save();
}

ZBItemList ZBLibraryController::getItemsOrderForPlaylist(const ZBPlaylist *playlist, ZBItemList &tracks,
                                                         bool appendRest) const
{
    if (!playlist || playlist->InternalItemsOrder().isEmpty())
        return tracks;
    // The lookups below may rebuild the context's indexes.
    ZBLibraryGuard::willWrite();
    const std::optional<QStringList> uuids = decodeItemsOrder(playlist->InternalItemsOrder());
    if (!uuids)
        return {};

    ZBItemList result;
    result.reserve(tracks.size());
    QSet<ZBItem *> remaining(tracks.cbegin(), tracks.cend());
    for (qsizetype i = 0; i < uuids->size(); ++i)
    {
        if ((i & 1023) == 0 && ZBLibraryGuard::cancelled())
            return {};
        ZBItem *item = itemByUUID(uuids->at(i));
        if (item && remaining.remove(item))
            result.append(item);
    }
    ZBItemList rest;
    for (ZBItem *item : std::as_const(tracks))
    {
        if (remaining.contains(item))
            rest.append(item);
    }
    if (appendRest)
    {
        result.append(rest);
        rest.clear();
    }
    tracks = rest;
    return result;
}

ZBItemList ZBLibraryController::sortList(const ZBItemList &tracks, const QString &key, bool ascend)
{
    return ZBTrackSorter::sort(tracks, key, ascend);
}
