#include "library/zblibrarytree.h"

#include <algorithm>
#include <iterator>

#include "library/zblibrarycontroller.h"
#include "library/zbplaylist.h"
#include "predicate/zbtextfold.h"

namespace
{
const QString GroupUser = QStringLiteral("User");
const QString GroupPredefined = QStringLiteral("Predefined");
const QString GroupDownloads = QStringLiteral("Downloads");

qint32 orderOf(const ZBPlaylist *playlist)
{
    return playlist->SortOrder().value_or(0);
}
} // namespace

const QStringList ZBLibraryTree::RootNames = {QStringLiteral("Tracks"), QStringLiteral("Playlists"),
                                              QStringLiteral("Downloads")};

ZBLibraryTree::ZBLibraryTree(ZBLibraryController &library)
    : m_library(library)
{
}

ZBLibraryTree::~ZBLibraryTree() = default;

ZBNode *ZBLibraryTree::rootItem(int index)
{
    if (index < 0 || index >= RootCount)
        return nullptr;
    std::unique_ptr<ZBNode> &root = m_roots[size_t(index)];
    if (!root)
        root = std::make_unique<ZBNode>(QString(), nullptr, RootNames.at(index), ZBNode::Heading);
    if (!root->childrenBuilt())
        buildChildren(root.get());
    return root.get();
}

void ZBLibraryTree::setLibraryOpen(bool open, std::vector<std::unique_ptr<ZBPlaylist>> preview)
{
    m_libraryOpen = open;
    m_preview = open ? std::vector<std::unique_ptr<ZBPlaylist>>() : std::move(preview);
    rootItemReload();
}

void ZBLibraryTree::rootItemReload()
{
    for (std::unique_ptr<ZBNode> &root : m_roots)
        root.reset();
}

void ZBLibraryTree::buildChildren(ZBNode *heading)
{
    QList<ZBPlaylist *> lists;
    QList<ZBPlaylist *> all;
    if (m_libraryOpen)
        all = m_library.managedObjectContext()->playlists();
    else
        std::transform(m_preview.begin(), m_preview.end(), std::back_inserter(all), [](const auto &p) { return p.get(); });
    const int index = RootNames.indexOf(heading->Name());
    for (ZBPlaylist *playlist : all)
    {
        if (playlist->isDeleted())
            continue;
        const bool smart = playlist->isSmart();
        const QString group = playlist->Group();
        if ((index == TracksRoot && smart && group == GroupPredefined)
            || (index == PlaylistsRoot && (!smart || group == GroupUser))
            || (index == DownloadsRoot && smart && group == GroupDownloads))
            lists << playlist;
    }
    std::stable_sort(lists.begin(), lists.end(), [index](const ZBPlaylist *a, const ZBPlaylist *b) {
        // Plain playlists come first among the user's lists.
        if (index == PlaylistsRoot && a->isSmart() != b->isSmart())
            return !a->isSmart();
        if (orderOf(a) != orderOf(b))
            return orderOf(a) < orderOf(b);
        return index == PlaylistsRoot && a->Name().localeAwareCompare(b->Name()) < 0;
    });
    std::vector<std::unique_ptr<ZBNode>> children;
    for (const ZBPlaylist *playlist : std::as_const(lists))
        children.push_back(std::make_unique<ZBNode>(playlist->PlaylistUUID(), heading, playlist->Name(), ZBNode::List));
    heading->setChildren(std::move(children));
}

ZBNode *ZBLibraryTree::nodeForPlaylist(const QString &playlistUUID)
{
    for (int i = 0; i < RootCount; ++i)
    {
        ZBNode *root = rootItem(i);
        for (int c = 0; c < root->numberOfChildren(); ++c)
        {
            if (root->childAtIndex(c)->playlistUUID().compare(playlistUUID, Qt::CaseInsensitive) == 0)
                return root->childAtIndex(c);
        }
    }
    return nullptr;
}

ZBNode *ZBLibraryTree::nodeNamed(const QString &name)
{
    for (int i = 0; i < RootCount; ++i)
    {
        ZBNode *root = rootItem(i);
        for (int c = 0; c < root->numberOfChildren(); ++c)
        {
            if (root->childAtIndex(c)->Name() == name)
                return root->childAtIndex(c);
        }
    }
    return nullptr;
}

ZBPlaylist *ZBLibraryTree::playlistOf(const ZBNode *node) const
{
    if (!node || node->isHeading())
        return nullptr;
    if (!m_libraryOpen)
    {
        for (const std::unique_ptr<ZBPlaylist> &playlist : m_preview)
        {
            if (playlist->PlaylistUUID() == node->playlistUUID())
                return playlist.get();
        }
        return nullptr;
    }
    return m_library.getPlaylistsFromLibraryByUUID(node->playlistUUID());
}

bool ZBLibraryTree::isUserList(const ZBNode *node) const
{
    const ZBPlaylist *playlist = playlistOf(node);
    return playlist && playlist->Group().compare(GroupUser, Qt::CaseInsensitive) == 0;
}

bool ZBLibraryTree::isSmartList(const ZBNode *node) const
{
    const ZBPlaylist *playlist = playlistOf(node);
    return playlist && playlist->isSmart();
}

QString ZBLibraryTree::untitledName(const QString &base, bool forSmartList) const
{
    const auto taken = [this, forSmartList](const QString &name) {
        // Plain playlists only meet the user's lists; a smart list must not
        // share its name with any list at all.
        const QList<ZBPlaylist *> lists = forSmartList ? m_library.managedObjectContext()->playlists()
                                                       : m_library.getAllPlaylistsFromLibraryByName(name);
        // Names are told apart as the store's lookups tell them, ignoring case
        // and accents; only its wildcards are taken as plain characters.
        const QString folded = ZBTextFold::fold(name, true, true);
        return std::any_of(lists.cbegin(), lists.cend(), [&folded](const ZBPlaylist *playlist) {
            return !playlist->isDeleted() && ZBTextFold::fold(playlist->Name(), true, true) == folded;
        });
    };
    QString name = base;
    for (uint suffix = 2; taken(name); ++suffix)
        name = QStringLiteral("%1 %2").arg(base).arg(suffix);
    return name;
}

QString ZBLibraryTree::addPlaylistWithItems(const QString &base, const ZBItemList &tracks, const QString &sortKey,
                                            bool ascend)
{
    const QString uuid =
        m_library.addPlaylistToLibraryByName(untitledName(base, false), sortKey, ascend, UserSortOrder);
    ZBPlaylist *playlist = m_library.getPlaylistsFromLibraryByUUID(uuid);
    for (const ZBItem *track : tracks)
    {
        if (playlist && track && !track->isDeleted())
            m_library.addItemWithUUID(track->ItemUUID(), playlist);
    }
    rootItemReload();
    return uuid;
}

QString ZBLibraryTree::addSmartList(const QString &name, const QString &request)
{
    if (request.trimmed().isEmpty() || name.trimmed().isEmpty())
        return QString();
    const QString uuid =
        m_library.addSmartListWithName(name, request, GroupUser, QStringLiteral("Name"), false, UserSortOrder);
    rootItemReload();
    return uuid;
}

bool ZBLibraryTree::editSmartList(const QString &playlistUUID, const QString &name, const QString &request)
{
    ZBPlaylist *playlist = m_library.getPlaylistsFromLibraryByUUID(playlistUUID);
    if (!playlist || !playlist->isSmart() || playlist->Group().compare(GroupUser, Qt::CaseInsensitive) != 0
        || request.trimmed().isEmpty())
        return false;
    playlist->setRequest(request);
    if (!name.trimmed().isEmpty())
        playlist->setName(name);
    m_library.save();
    rootItemReload();
    return true;
}

bool ZBLibraryTree::renameList(const QString &playlistUUID, const QString &newName)
{
    if (!m_libraryOpen)
        return false;
    ZBPlaylist *playlist = m_library.getPlaylistsFromLibraryByUUID(playlistUUID);
    if (!playlist || playlist->Group().compare(GroupUser, Qt::CaseInsensitive) != 0 || newName.isEmpty())
        return false;
    playlist->setName(newName);
    m_library.save();
    rootItemReload();
    return true;
}

bool ZBLibraryTree::removalNeedsConfirmation(const QString &playlistUUID, bool dontAskAgain) const
{
    const ZBPlaylist *playlist = m_library.getPlaylistsFromLibraryByUUID(playlistUUID);
    if (!playlist || dontAskAgain)
        return false;
    return !m_library.getItemsFromPlaylist(playlist).isEmpty();
}

bool ZBLibraryTree::removeList(const QString &playlistUUID)
{
    const ZBPlaylist *playlist = m_library.getPlaylistsFromLibraryByUUID(playlistUUID);
    if (!playlist || playlist->Group().compare(GroupUser, Qt::CaseInsensitive) != 0)
        return false;
    const bool removed = m_library.removePlaylistFromLibraryByUUID(playlistUUID);
    rootItemReload();
    return removed;
}

ZBItemList ZBLibraryTree::tracksForList(const QString &playlistUUID, const QString &sortKey, bool ascend) const
{
    if (!m_libraryOpen)
        return {};
    const ZBPlaylist *playlist = m_library.getPlaylistsFromLibraryByUUID(playlistUUID);
    if (!playlist)
        return {};
    ZBItemList tracks = m_library.getItemsFromPlaylist(playlist);
    if (!playlist->InternalItemsOrder().isEmpty())
        return m_library.getItemsOrderForPlaylist(playlist, tracks, true);
    return ZBLibraryController::sortList(tracks, sortKey, ascend);
}

QStringList ZBLibraryTree::countedLists()
{
    QStringList uuids;
    ZBNode *downloads = rootItem(DownloadsRoot);
    for (int c = 0; c < downloads->numberOfChildren(); ++c)
    {
        const ZBNode *node = downloads->childAtIndex(c);
        if (node->Name() == u"Today" || node->Name() == u"Last week" || node->Name() == u"Last month")
            uuids << node->playlistUUID();
    }
    return uuids;
}

void ZBLibraryTree::setListCount(const QString &playlistUUID, int count)
{
    if (ZBNode *node = nodeForPlaylist(playlistUUID))
        node->setItemsCount(count);
}

void ZBLibraryTree::reloadLastDownloadsCounters()
{
    if (!m_libraryOpen)
        return;
    ZBNode *downloads = rootItem(DownloadsRoot);
    for (int c = 0; c < downloads->numberOfChildren(); ++c)
    {
        ZBNode *node = downloads->childAtIndex(c);
        if (node->Name() == u"Today" || node->Name() == u"Last week" || node->Name() == u"Last month")
        {
            const ZBPlaylist *playlist = playlistOf(node);
            node->setItemsCount(playlist ? int(m_library.getItemsFromPlaylist(playlist).size()) : 0);
        }
    }
}
