#include "ui/library/zblibrarypane.h"

#include <QCoreApplication>
#include <QFile>
#include <QHeaderView>
#include <QLineEdit>
#include <QMenu>
#include <QPainter>
#include <QShortcut>
#include <QStyledItemDelegate>
#include <QTableView>
#include <QTreeView>

#include "library/zblibrarycontroller.h"
#include "library/zbplaylist.h"
#include "library/zbtrackremoval.h"
#include "localization/zblocalizer.h"
#include "playback/zbmediaprobe.h"
#include "settings/zbsettings.h"
#include "ui/library/zblibrarytreemodel.h"
#include "ui/library/zblibraryui.h"
#include "ui/library/zbratingdelegate.h"
#include "ui/library/zbtracklistmodel.h"
#include "ui/playback/zbplaybackcontroller.h"

namespace
{
QString localized(const char *key)
{
    return ZBLocalizer::localizedStringForKey(QLatin1String(key));
}

// Headings in small capitals above their lists, and the number of tracks
// beside a download list.
class SourceListDelegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;

    void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override
    {
        QStyleOptionViewItem opt = option;
        if (index.data(ZBLibraryTreeModel::IsHeadingRole).toBool())
        {
            opt.font.setBold(true);
            opt.font.setCapitalization(QFont::AllUppercase);
            opt.font.setPointSizeF(opt.font.pointSizeF() * 0.85);
            opt.palette.setColor(QPalette::Text, opt.palette.color(QPalette::PlaceholderText));
        }
        QStyledItemDelegate::paint(painter, opt, index);
        const int count = index.data(ZBLibraryTreeModel::CountRole).toInt();
        if (count <= 0)
            return;
        const QString text = QString::number(count);
        QFont font = opt.font;
        font.setBold(true);
        font.setPointSizeF(font.pointSizeF() * 0.85);
        const QFontMetrics metrics(font);
        // Sized by its text, not by the row: dense rows would clip the digits.
        const int height = std::min(opt.rect.height(), metrics.height() + 1);
        const int width = std::max(metrics.horizontalAdvance(text) + 10, height);
        const QRect badge(opt.rect.right() - width - 6, opt.rect.center().y() - height / 2, width, height);
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->setPen(Qt::NoPen);
        painter->setBrush(opt.palette.color(QPalette::Dark));
        painter->drawRoundedRect(badge, badge.height() / 2.0, badge.height() / 2.0);
        painter->setFont(font);
        painter->setPen(opt.palette.color(QPalette::BrightText).lightness() > 128 ? opt.palette.color(QPalette::BrightText)
                                                                               : QColor(Qt::white));
        painter->drawText(badge, Qt::AlignCenter, text);
        painter->restore();
    }
};
} // namespace

ZBLibraryPane::ZBLibraryPane(ZBLibraryController &library, ZBSettings &settings, ZBPlaybackController &playback,
                             ZBLibraryUi &ui, QObject *parent)
    : QObject(parent)
    , m_library(library)
    , m_settings(settings)
    , m_playback(playback)
    , m_ui(ui)
    , m_treeModel(new ZBLibraryTreeModel(library, this))
    , m_trackModel(new ZBTrackListModel(this))
    , m_query(new ZBTrackListQuery(library, this))
{
    m_trackModel->setLibrary(&library);
    connect(m_query, &ZBTrackListQuery::resultReady, this, &ZBLibraryPane::showResult);
    buildWidgets();
    expandHeadings();
    selectList(m_library.allTracksUUID());
}

ZBLibraryPane::~ZBLibraryPane()
{
    // No read of the library may outlive the pane that asked for it.
    delete m_query;
    // The widgets belong to the window, which may outlive or predecease the
    // pane; only what is still here is deleted.
    delete m_sourceList.data();
    delete m_trackTable.data();
    delete m_searchField.data();
}

void ZBLibraryPane::buildWidgets()
{
    m_sourceList = new QTreeView;
    m_sourceList->setObjectName(QStringLiteral("SourceList"));
    m_sourceList->setModel(m_treeModel);
    m_sourceList->setHeaderHidden(true);
    m_sourceList->setRootIsDecorated(false);
    m_sourceList->setIndentation(12);
    m_sourceList->setItemDelegate(new SourceListDelegate(m_sourceList));
    m_sourceList->setEditTriggers(QAbstractItemView::EditKeyPressed | QAbstractItemView::SelectedClicked);
    m_sourceList->setDragDropMode(QAbstractItemView::DropOnly);
    m_sourceList->setAcceptDrops(true);
    m_sourceList->setDropIndicatorShown(true);
    m_sourceList->setUniformRowHeights(true);
    m_sourceList->setMinimumWidth(170);
    // Only "Playlists" folds away; a click on its heading does it.
    connect(m_sourceList, &QTreeView::collapsed, this, [this](const QModelIndex &index) {
        if (index != m_treeModel->rootIndex(1))
            m_sourceList->expand(index);
    });
    connect(m_sourceList, &QTreeView::clicked, this, [this](const QModelIndex &index) {
        if (index == m_treeModel->rootIndex(1))
            m_sourceList->setExpanded(index, !m_sourceList->isExpanded(index));
    });
    connect(m_sourceList->selectionModel(), &QItemSelectionModel::currentChanged, this,
            [this](const QModelIndex &current) {
                ZBNode *node = m_treeModel->nodeAt(current);
                if (!node || node->isHeading() || node->playlistUUID() == m_selectedListUUID)
                    return;
                m_selectedListUUID = node->playlistUUID();
                m_sortShown = false;
                {
                    // One request for the new list, not one for the cleared
                    // search and another for the list.
                    const QSignalBlocker blocker(m_searchField);
                    m_searchField->clear();
                }
                reloadNode();
                m_trackTable->clearSelection();
                whenShown([this]() {
                    if (const int row = m_trackModel->rowOf(m_playback.playingItem()); row >= 0)
                        m_trackTable->scrollTo(m_trackModel->index(row, 0));
                });
                Q_EMIT selectedListChanged(m_selectedListUUID);
            });
    connect(m_treeModel, &ZBLibraryTreeModel::listRenamed, this, [this](const QString &uuid) {
        expandHeadings();
        m_selectedListUUID.clear();
        selectList(uuid);
    });
    connect(m_treeModel, &ZBLibraryTreeModel::filesDropped, this, [this](const QStringList &paths, const QString &uuid) {
        Q_EMIT importRequested(paths, isPlainPlaylist(uuid) ? uuid : QString());
    });
    connect(m_treeModel, &ZBLibraryTreeModel::tracksDropped, this, &ZBLibraryPane::addTracksToPlaylist);

    m_searchField = new QLineEdit;
    m_searchField->setObjectName(QStringLiteral("SearchField"));
    m_searchField->setClearButtonEnabled(true);
    m_searchField->setPlaceholderText(localized("searchFieldPlaceholder"));
    connect(m_searchField, &QLineEdit::textChanged, this, &ZBLibraryPane::search);

    m_trackTable = new QTableView;
    m_trackTable->setObjectName(QStringLiteral("TrackTable"));
    m_trackTable->setModel(m_trackModel);
    m_trackTable->setSelectionBehavior(QAbstractItemView::SelectRows);
    m_trackTable->setSelectionMode(QAbstractItemView::ExtendedSelection);
    m_trackTable->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_trackTable->setAlternatingRowColors(true);
    m_trackTable->setShowGrid(false);
    m_trackTable->setWordWrap(false);
    m_trackTable->verticalHeader()->hide();
    m_trackTable->verticalHeader()->setDefaultSectionSize(m_trackTable->fontMetrics().height() + 8);
    m_trackTable->setDragEnabled(true);
    m_trackTable->setAcceptDrops(true);
    m_trackTable->setDropIndicatorShown(true);
    m_trackTable->setDragDropMode(QAbstractItemView::DragDrop);
    m_trackTable->setDefaultDropAction(Qt::MoveAction);
    m_trackTable->setDragDropOverwriteMode(false);
    m_trackTable->setItemDelegateForColumn(ZBTrackListModel::columnOf(QStringLiteral("Rating")),
                                           new ZBRatingDelegate(m_trackTable));
    QHeaderView *header = m_trackTable->horizontalHeader();
    header->setStretchLastSection(true);
    header->setSectionsMovable(true);
    header->setSectionsClickable(true);
    header->setSortIndicatorShown(true);
    header->setSortIndicator(ZBTrackListModel::columnOf(m_trackModel->sortKey()),
                             ZBTrackListModel::indicatorOrder(m_trackModel->sortAscending()));
    m_trackTable->setColumnWidth(ZBTrackListModel::columnOf(QStringLiteral("Name")), 260);
    m_trackTable->setColumnWidth(ZBTrackListModel::columnOf(QStringLiteral("Type")), 60);
    m_trackTable->setColumnWidth(ZBTrackListModel::columnOf(QStringLiteral("Length")), 70);
    m_trackTable->setColumnWidth(ZBTrackListModel::columnOf(QStringLiteral("PlayCount")), 50);
    for (const QString &key : ZBTrackListModel::hiddenByDefault())
        m_trackTable->setColumnHidden(ZBTrackListModel::columnOf(key), true);
    connect(header, &QHeaderView::sectionClicked, this, [this](int column) {
        const QString key = m_trackModel->columnKey(column);
        // The same column again turns the direction; a new one starts
        // ascending (for dates and counts: newest and most first).
        const bool ascend = key == m_trackModel->sortKey() ? !m_trackModel->sortAscending() : true;
        m_trackModel->setSortOrder(key, ascend);
        m_trackTable->horizontalHeader()->setSortIndicator(
            ZBTrackListModel::columnOf(m_trackModel->sortKey()),
            ZBTrackListModel::indicatorOrder(m_trackModel->sortAscending()));
        m_sortShown = true;
        requestTracks();
    });
    // Columns are shown and hidden from the header's own menu.
    header->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(header, &QHeaderView::customContextMenuRequested, this, [this](const QPoint &at) {
        QMenu menu;
        for (int column = 0; column < m_trackModel->columnCount(); ++column)
        {
            if (m_trackModel->columnKey(column) == u"Name")
                continue;
            QAction *action = menu.addAction(m_trackModel->headerData(column, Qt::Horizontal).toString());
            action->setCheckable(true);
            action->setChecked(!m_trackTable->isColumnHidden(column));
            connect(action, &QAction::toggled, this,
                    [this, column](bool shown) { m_trackTable->setColumnHidden(column, !shown); });
        }
        menu.exec(m_trackTable->horizontalHeader()->mapToGlobal(at));
    });
    connect(m_trackTable, &QTableView::activated, this, [this](const QModelIndex &index) {
        m_playback.setSelectedRow(index.row());
        Q_EMIT playRequested(index.row());
    });
    connect(m_trackTable->selectionModel(), &QItemSelectionModel::currentRowChanged, this,
            [this](const QModelIndex &current) { m_playback.setSelectedRow(current.row()); });
    connect(m_trackModel, &ZBTrackListModel::orderChanged, this, [this](const ZBItemList &tracks) {
        ZBPlaylist *playlist = m_library.getPlaylistsFromLibraryByUUID(m_selectedListUUID);
        if (!playlist || playlist->isSmart() || m_mode != ListMode)
            return;
        m_library.saveItemsOrderForPlaylist(playlist, tracks);
        m_currentList = tracks;
        m_playback.setCurrentList(m_currentList, m_selectedListUUID);
    });
    connect(m_trackModel, &ZBTrackListModel::filesDropped, this, [this](const QStringList &paths) {
        Q_EMIT importRequested(paths, isPlainPlaylist(m_selectedListUUID) ? m_selectedListUUID : QString());
    });
    for (const QKeySequence &keys : {QKeySequence(QKeySequence::Delete), QKeySequence(Qt::Key_Backspace)})
    {
        auto *remove = new QShortcut(keys, m_trackTable, nullptr, nullptr, Qt::WidgetShortcut);
        connect(remove, &QShortcut::activated, this, &ZBLibraryPane::removeSelectedTracks);
    }
    auto *removeList = new QShortcut(QKeySequence(QKeySequence::Delete), m_sourceList, nullptr, nullptr,
                                     Qt::WidgetShortcut);
    connect(removeList, &QShortcut::activated, this, &ZBLibraryPane::removeSelectedList);
}

ZBItemList ZBLibraryPane::selectedTracks() const
{
    QList<int> rows;
    for (const QModelIndex &index : m_trackTable->selectionModel()->selectedRows())
        rows << index.row();
    std::sort(rows.begin(), rows.end());
    ZBItemList tracks;
    for (const int row : std::as_const(rows))
    {
        if (ZBItem *item = m_trackModel->trackAt(row))
            tracks << item;
    }
    return tracks;
}

const ZBItemList &ZBLibraryPane::currentTracks() const
{
    return m_mode == SearchMode ? m_searchList : m_currentList;
}

bool ZBLibraryPane::isPlainPlaylist(const QString &playlistUUID) const
{
    const ZBPlaylist *playlist =
        playlistUUID.isEmpty() ? nullptr : m_library.getPlaylistsFromLibraryByUUID(playlistUUID);
    return playlist && !playlist->isSmart();
}

void ZBLibraryPane::expandHeadings()
{
    for (int root = 0; root < 3; ++root)
        m_sourceList->expand(m_treeModel->rootIndex(root));
}

void ZBLibraryPane::selectList(const QString &playlistUUID)
{
    QModelIndex index = m_treeModel->indexForPlaylist(playlistUUID);
    if (!index.isValid())
        index = m_treeModel->indexForPlaylist(m_library.allTracksUUID());
    if (!index.isValid())
        return;
    m_sourceList->expand(index.parent());
    m_sourceList->setCurrentIndex(index);
}

void ZBLibraryPane::showTracks(const ZBItemList &tracks)
{
    m_trackModel->setReorderable(m_mode == ListMode && isPlainPlaylist(m_selectedListUUID));
    m_trackModel->setTracks(tracks);
    m_trackModel->setPlayingItem(m_playback.playingItem());
    m_playback.setCurrentList(tracks, m_mode == ListMode ? m_selectedListUUID : QString());
}

void ZBLibraryPane::reloadNode()
{
    requestTracks();
}

void ZBLibraryPane::requestTracks()
{
    // While the store is read on another thread nothing may read it here.
    if (!m_treeModel->tree().isLibraryOpen())
        return;
    ZBTrackListQuery::Request request;
    request.listUUID = m_selectedListUUID;
    request.sortKey = m_trackModel->sortKey();
    request.ascend = m_trackModel->sortAscending();
    request.search = m_searchField->text();
    request.sortAnyway = m_sortShown;
    // The download lists' badges are counted with the list: after a change
    // each count reads the whole library.
    request.countLists = m_treeModel->tree().countedLists();
    m_query->request(request);
}

void ZBLibraryPane::showResult(const ZBTrackListQuery::Result &result)
{
    m_currentList = result.list;
    if (result.request.search.isEmpty())
    {
        m_mode = ListMode;
        m_searchList.clear();
    }
    else
    {
        m_mode = SearchMode;
        m_searchList = result.shown;
    }
    showTracks(result.shown);
    m_treeModel->setListCounts(result.request.countLists, result.counts);
    for (const std::function<void()> &action : std::exchange(m_whenShown, {}))
        action();
}

void ZBLibraryPane::whenShown(std::function<void()> action)
{
    if (m_query->isPending())
        m_whenShown.push_back(std::move(action));
    else
        action();
}

void ZBLibraryPane::waitForResult()
{
    while (m_query->isPending())
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents, 50);
}

void ZBLibraryPane::playTrack(ZBItem *track)
{
    whenShown([this, track]() {
        if (m_trackModel->rowOf(track) < 0)
            selectList(m_library.allTracksUUID());
        whenShown([this, track]() {
            if (const int row = m_trackModel->rowOf(track); row >= 0)
                Q_EMIT playRequested(row);
        });
    });
}

void ZBLibraryPane::setLibraryOpen(bool open, std::vector<std::unique_ptr<ZBPlaylist>> preview)
{
    const QString selected = std::exchange(m_selectedListUUID, QString());
    m_treeModel->setLibraryOpen(open, std::move(preview));
    expandHeadings();
    if (!open)
    {
        m_query->drop();
        m_currentList.clear();
        m_searchList.clear();
        showTracks(m_currentList);
        return;
    }
    // The download badges are counted with the list.
    selectList(selected.isEmpty() ? m_library.allTracksUUID() : selected);
}

void ZBLibraryPane::reloadTree()
{
    const QString selected = m_selectedListUUID;
    m_treeModel->reloadTree();
    expandHeadings();
    m_selectedListUUID.clear();
    selectList(selected);
}

void ZBLibraryPane::search(const QString &)
{
    requestTracks();
}

void ZBLibraryPane::focusSearch()
{
    m_searchField->setFocus(Qt::ShortcutFocusReason);
    m_searchField->selectAll();
}

QString ZBLibraryPane::addPlaylistWithItems(const ZBItemList &tracks)
{
    // A name being typed is finished first, as leaving the field would.
    if (QWidget *editor = m_sourceList->indexWidget(m_sourceList->currentIndex()))
        editor->clearFocus();
    const QString uuid = m_treeModel->tree().addPlaylistWithItems(localized("untitledPlaylist"), tracks,
                                                                  m_trackModel->sortKey(), m_trackModel->sortAscending());
    m_treeModel->reloadTree();
    expandHeadings();
    m_selectedListUUID.clear();
    selectList(uuid);
    // The name is the user's to choose at once.
    m_sourceList->edit(m_sourceList->currentIndex());
    return uuid;
}

void ZBLibraryPane::createPlaylistFromSelection()
{
    const ZBItemList tracks = selectedTracks();
    if (!tracks.isEmpty())
        addPlaylistWithItems(tracks);
}

void ZBLibraryPane::addSmartList()
{
    const QString name = m_treeModel->tree().untitledName(localized("untitledPlaylist"), true);
    const std::optional<ZBLibraryUi::SmartList> edited = m_ui.editSmartList(name, QString());
    if (!edited || edited->request.trimmed().isEmpty())
        return;
    const QString uuid =
        m_treeModel->tree().addSmartList(edited->name.trimmed().isEmpty() ? name : edited->name, edited->request);
    m_treeModel->reloadTree();
    expandHeadings();
    m_selectedListUUID.clear();
    selectList(uuid);
}

void ZBLibraryPane::editSmartList()
{
    ZBNode *node = m_treeModel->tree().nodeForPlaylist(m_selectedListUUID);
    const ZBPlaylist *playlist = m_treeModel->tree().playlistOf(node);
    if (!playlist || !playlist->isSmart() || !m_treeModel->tree().isUserList(node))
        return;
    const std::optional<ZBLibraryUi::SmartList> edited = m_ui.editSmartList(playlist->Name(), playlist->Request());
    if (!edited || edited->request.trimmed().isEmpty())
        return;
    const QString uuid = m_selectedListUUID;
    m_treeModel->tree().editSmartList(uuid, edited->name, edited->request);
    m_treeModel->reloadTree();
    expandHeadings();
    m_selectedListUUID.clear();
    selectList(uuid);
}

void ZBLibraryPane::renameSelectedList()
{
    const QModelIndex index = m_sourceList->currentIndex();
    if (m_treeModel->flags(index) & Qt::ItemIsEditable)
        m_sourceList->edit(index);
}

void ZBLibraryPane::editSelectedList()
{
    if (m_treeModel->tree().isSmartList(m_treeModel->tree().nodeForPlaylist(m_selectedListUUID)))
        editSmartList();
    else
        renameSelectedList();
}

void ZBLibraryPane::showPlayingTrack()
{
    ZBItem *playing = m_playback.playingItem();
    if (!playing)
        return;
    if (m_trackModel->rowOf(playing) < 0)
    {
        m_searchField->clear();
        const QString source = m_playback.playbackSourceUUID();
        selectList(source.isEmpty() ? m_library.allTracksUUID() : source);
    }
    whenShown([this, playing]() {
        const int row = m_trackModel->rowOf(playing);
        if (row < 0)
            return;
        m_trackTable->selectRow(row);
        m_trackTable->scrollTo(m_trackModel->index(row, 0));
    });
}

void ZBLibraryPane::removeSelectedList()
{
    ZBLibraryTree &tree = m_treeModel->tree();
    ZBNode *node = tree.nodeForPlaylist(m_selectedListUUID);
    if (!node || !tree.isUserList(node))
        return;
    const QString uuid = node->playlistUUID();
    const int oldRow = node->parent()->indexOf(node);
    if (tree.removalNeedsConfirmation(uuid, m_settings.option_DontAskMeAgainRemovePlaylist))
    {
        const ZBLibraryUi::Confirmation answer = m_ui.confirm(QStringLiteral("alertDeletePlaylistFromLibraryMessage"),
                                                              QStringLiteral("alertDeletePlaylistFromLibraryInfo"));
        if (!answer.yes)
            return;
        if (answer.dontAskAgain)
            m_settings.option_DontAskMeAgainRemovePlaylist = true;
    }
    tree.removeList(uuid);
    m_treeModel->reloadTree();
    expandHeadings();
    m_selectedListUUID.clear();
    // The list now in its place, or the one above it, or the first list.
    ZBNode *playlists = tree.rootItem(ZBLibraryTree::PlaylistsRoot);
    ZBNode *next = playlists->childAtIndex(oldRow);
    if (!next)
        next = playlists->childAtIndex(oldRow - 1);
    selectList(next ? next->playlistUUID() : m_library.allTracksUUID());
}

void ZBLibraryPane::selectRowNear(int row)
{
    const int rows = m_trackModel->rowCount();
    if (rows == 0)
        return;
    m_trackTable->selectRow(std::clamp(row, 0, rows - 1));
}

void ZBLibraryPane::removeSelectedTracks()
{
    const ZBItemList selection = selectedTracks();
    if (selection.isEmpty())
        return;
    const int firstRow = m_trackModel->rowOf(selection.first());
    ZBPlaylist *playlist = m_library.getPlaylistsFromLibraryByUUID(m_selectedListUUID);
    const ZBTrackRemoval plan = ZBTrackRemoval::plan(isPlainPlaylist(m_selectedListUUID), m_mode, selection, m_settings);
    const bool fromPlaylist = plan.scope == ZBTrackRemoval::Scope::Playlist;
    if (plan.confirm)
    {
        const ZBLibraryUi::Confirmation answer =
            fromPlaylist ? m_ui.confirm(QStringLiteral("alertDeletefromPlaylistMessage"),
                                        QStringLiteral("alertDeletefromPlaylistInfo"))
                         : m_ui.confirm(QStringLiteral("alertDeletefromLibraryMessage"),
                                        QStringLiteral("alertDeletefromLibraryInfo"));
        if (!answer.yes)
            return;
        if (answer.dontAskAgain)
        {
            if (fromPlaylist)
                m_settings.option_DontAskMeAgainRemoveItemFromPlaylist = true;
            else
                m_settings.option_DontAskMeAgainRemoveItemFromLibrary = true;
        }
    }

    // The lists on screen lose the tracks in one pass each: one by one, a
    // selection of thousands in a large library took minutes.
    const QSet<const ZBItem *> removed(selection.cbegin(), selection.cend());
    const auto isRemoved = [&removed](const ZBItem *item) { return removed.contains(item); };
    if (fromPlaylist)
    {
        for (ZBItem *item : selection)
            m_library.removeItemWithUUID(item->ItemUUID(), playlist);
        m_currentList.removeIf(isRemoved);
    }
    else
    {
        bool toTrash = plan.files == ZBTrackRemoval::FileQuestion::Trash;
        if (plan.files == ZBTrackRemoval::FileQuestion::Ask)
        {
            const ZBLibraryUi::FilesAnswer answer = m_ui.askAboutFiles();
            toTrash = answer.moveToTrash;
            if (answer.remember)
            {
                m_settings.option_alwaysMoveFileToTrash = answer.moveToTrash;
                m_settings.option_DontAskMeAgainMoveToTrashOrKeepFile = true;
            }
        }
        QStringList uuids;
        for (auto it = selection.crbegin(); it != selection.crend(); ++it)
        {
            const ZBItem *item = *it;
            if (toTrash && QFile::exists(item->Path()) && !QFile::moveToTrash(item->Path()))
                qWarning("Cannot move %s to the Trash", qPrintable(item->Path()));
            uuids.append(item->ItemUUID());
        }
        m_playback.tracksWillBeRemoved(removed);
        m_currentList.removeIf(isRemoved);
        m_searchList.removeIf(isRemoved);
        m_library.removeItemsFromLibraryByUUIDs(uuids);
    }
    if (playlist && !playlist->isDeleted() && !playlist->InternalItemsOrder().isEmpty())
        m_library.saveItemsOrderForPlaylist(playlist, m_currentList);
    reloadNode();
    whenShown([this, firstRow]() { selectRowNear(firstRow); });
}

void ZBLibraryPane::setRating(int stars)
{
    for (const ZBItem *item : selectedTracks())
        m_trackModel->setRating(m_trackModel->index(m_trackModel->rowOf(item), 0), stars);
}

void ZBLibraryPane::getInfo()
{
    const ZBItemList selection = selectedTracks();
    if (selection.isEmpty())
        return;
    ZBItem *item = selection.first();
    m_ui.showInfo(item, ZBMediaProbe::formatSummary(item->Path()));
}

void ZBLibraryPane::showInFileManager()
{
    const ZBItemList selection = selectedTracks();
    // A track counts as valid until its file has been found missing.
    if (selection.isEmpty() || !selection.first()->isValid().value_or(true))
        return;
    m_ui.revealInFileManager(selection.first()->Path());
}

void ZBLibraryPane::addTracksToPlaylist(const QStringList &trackUUIDs, const QString &playlistUUID)
{
    ZBPlaylist *playlist = m_library.getPlaylistsFromLibraryByUUID(playlistUUID);
    if (!playlist || playlist->isSmart())
        return;
    for (const QString &uuid : trackUUIDs)
        m_library.addItemWithUUID(uuid, playlist);
    if (playlistUUID == m_selectedListUUID)
        reloadNode();
}
