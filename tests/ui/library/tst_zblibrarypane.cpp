#include <QDir>
#include <QHeaderView>
#include <QLineEdit>
#include <QFile>
#include <QMimeData>
#include <QSignalSpy>
#include <QTemporaryDir>
#include <QTest>

#include "library/zblibrarycontroller.h"
#include "library/zbplaylist.h"
#include "localization/zblocalizer.h"
#include "settings/zbsettings.h"
#include "support/testsupport.h"
#include "ui/library/zblibrarypane.h"
#include "ui/library/zblibrarytreemodel.h"
#include "ui/library/zblibraryui.h"
#include "ui/library/zbratingdelegate.h"
#include "ui/library/zbtracklistmodel.h"
#include "ui/playback/zbplaybackcontroller.h"

namespace
{
// Answers the library's questions from a script and counts them.
class ScriptedLibraryUi : public ZBLibraryUi
{
public:
    Confirmation confirm(const QString &messageKey, const QString &) override
    {
        asked << messageKey;
        return confirmation;
    }
    FilesAnswer askAboutFiles() override
    {
        asked << QStringLiteral("files");
        return files;
    }
    std::optional<SmartList> editSmartList(const QString &name, const QString &request) override
    {
        editorOpened << name + u'|' + request;
        return smartList;
    }
    void showInfo(ZBItem *item, const QString &summary) override { info << item->Name() + u'|' + summary; }
    void revealInFileManager(const QString &path) override { revealed << path; }

    Confirmation confirmation{true, false};
    FilesAnswer files;
    std::optional<SmartList> smartList;
    QStringList asked;
    QStringList editorOpened;
    QStringList info;
    QStringList revealed;
};
} // namespace

// The library pane's flows as a user drives them: lists made, filled,
// reordered, renamed and removed; tracks searched, rated and removed, with
// each answer to each question.
class TestZBLibraryPane : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void cleanup();

    void startsOnAllTracksAndNewListsTakeTheSelection();
    void tracksDroppedOnAListJoinIt();
    void reorderingAPlaylistIsKept();
    void removingFromAPlaylistKeepsTheTracks();
    void removingFromTheLibraryAsksAboutFiles_data();
    void removingFromTheLibraryAsksAboutFiles();
    void removingAListAsksWhenItHoldsTracks();
    void smartListsThroughTheEditor();
    void editingRenamesUserListsAndOpensTheEditorForSmartOnes();
    void searchFiltersAndClears();
    void ratingsBySetDataAndByClick();
    void infoAndFileManagerFollowTheSelection();
    void sortingFollowsTheHeaderRule();

private:
    ZBItem *addTrack(const QString &name, const QString &type = QStringLiteral("mp4"));
    void selectRows(const QList<int> &rows);
    QStringList shownNames() const;
    QStringList listNames(int root) const;

    QTemporaryDir m_home;
    std::unique_ptr<nvktest::DataDir> m_dir;
    std::unique_ptr<ZBLibraryController> m_library;
    std::unique_ptr<ZBSettings> m_settings;
    std::unique_ptr<ZBPlaybackController> m_playback;
    std::unique_ptr<ScriptedLibraryUi> m_ui;
    std::unique_ptr<ZBLibraryPane> m_pane;
};

void TestZBLibraryPane::initTestCase()
{
    // Files moved to the Trash land in this test's own data folder.
    QVERIFY(m_home.isValid());
    qputenv("XDG_DATA_HOME", QFile::encodeName(m_home.path()));
}

void TestZBLibraryPane::init()
{
    m_dir = std::make_unique<nvktest::DataDir>();
    m_library = std::make_unique<ZBLibraryController>();
    QVERIFY(m_library->openStore(m_dir->path()).ok);
    m_library->initLibrary();
    m_settings = std::make_unique<ZBSettings>();
    m_playback = std::make_unique<ZBPlaybackController>(m_library.get(), m_settings.get(), nullptr);
    m_ui = std::make_unique<ScriptedLibraryUi>();
    for (const QString &name : {"delta", "alpha", "charlie", "bravo"})
        addTrack(name);
    m_pane = std::make_unique<ZBLibraryPane>(*m_library, *m_settings, *m_playback, *m_ui);
    m_pane->sourceList()->resize(200, 400);
    m_pane->trackTable()->resize(600, 400);
}

void TestZBLibraryPane::cleanup()
{
    m_pane.reset();
    m_playback.reset();
    m_library.reset();
}

ZBItem *TestZBLibraryPane::addTrack(const QString &name, const QString &type)
{
    const QString path = m_dir->filePath(name + u'.' + type);
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly))
        return nullptr;
    file.write("movie");
    file.close();
    return m_library->itemByUUID(m_library->addItemToLibrarybyName(
        name, path, QStringLiteral(""), type, 0, 60, 0, QDateTime::currentDateTimeUtc(), QDateTime(), QString()));
}

void TestZBLibraryPane::selectRows(const QList<int> &rows)
{
    QTableView *table = m_pane->trackTable();
    table->clearSelection();
    for (const int row : rows)
        table->selectionModel()->select(m_pane->trackModel()->index(row, 0),
                                        QItemSelectionModel::Select | QItemSelectionModel::Rows);
}

QStringList TestZBLibraryPane::shownNames() const
{
    QStringList names;
    for (const ZBItem *item : m_pane->trackModel()->tracks())
        names << item->Name();
    return names;
}

QStringList TestZBLibraryPane::listNames(int root) const
{
    QStringList names;
    ZBLibraryTreeModel *model = m_pane->treeModel();
    const QModelIndex heading = model->rootIndex(root);
    for (int row = 0; row < model->rowCount(heading); ++row)
        names << model->index(row, 0, heading).data(Qt::EditRole).toString();
    return names;
}

void TestZBLibraryPane::startsOnAllTracksAndNewListsTakeTheSelection()
{
    QCOMPARE(m_pane->selectedListUUID(), m_library->allTracksUUID());
    QCOMPARE(shownNames(), (QStringList{"alpha", "bravo", "charlie", "delta"}));
    // The play list follows what is shown.
    QCOMPARE(m_playback->currentList(), m_pane->trackModel()->tracks());
    // Headings are not selectable; lists are.
    ZBLibraryTreeModel *model = m_pane->treeModel();
    QVERIFY(!(model->flags(model->rootIndex(0)) & Qt::ItemIsSelectable));
    QVERIFY(model->flags(model->index(0, 0, model->rootIndex(0))) & Qt::ItemIsSelectable);
    QVERIFY(m_pane->sourceList()->isExpanded(model->rootIndex(0)));
    QVERIFY(m_pane->sourceList()->isExpanded(model->rootIndex(2)));

    const QString first = m_pane->addPlaylistWithItems({});
    QCOMPARE(m_pane->selectedListUUID(), first);
    QVERIFY(shownNames().isEmpty());
    m_pane->selectList(m_library->allTracksUUID());
    selectRows({1, 3});
    m_pane->createPlaylistFromSelection();
    const QString untitled = ZBLocalizer::localizedStringForKey(QStringLiteral("untitledPlaylist"));
    QCOMPARE(listNames(1), (QStringList{untitled, untitled + QStringLiteral(" 2")}));
    QCOMPARE(shownNames(), (QStringList{"bravo", "delta"}));
    QVERIFY(m_pane->selectedListUUID() != first);
}

void TestZBLibraryPane::tracksDroppedOnAListJoinIt()
{
    const QString uuid = m_pane->addPlaylistWithItems({});
    m_pane->selectList(m_library->allTracksUUID());
    selectRows({0, 2});
    // Dragged from the table onto the list in the source list.
    std::unique_ptr<QMimeData> data(
        m_pane->trackModel()->mimeData(m_pane->trackTable()->selectionModel()->selectedIndexes()));
    ZBLibraryTreeModel *tree = m_pane->treeModel();
    const QModelIndex target = tree->indexForPlaylist(uuid);
    QVERIFY(tree->canDropMimeData(data.get(), Qt::CopyAction, -1, -1, target));
    // Smart lists choose their own tracks.
    QVERIFY(!tree->canDropMimeData(data.get(), Qt::CopyAction, -1, -1,
                                   tree->indexForPlaylist(m_library->allTracksUUID())));
    QVERIFY(tree->dropMimeData(data.get(), Qt::CopyAction, -1, -1, target));
    m_pane->selectList(uuid);
    QCOMPARE(shownNames(), (QStringList{"alpha", "charlie"}));

    // Files dropped on a list are for the window to import into it.
    QSignalSpy imports(m_pane.get(), &ZBLibraryPane::importRequested);
    QMimeData files;
    files.setUrls({QUrl::fromLocalFile(QStringLiteral("/tmp/new.mp4"))});
    QVERIFY(tree->dropMimeData(&files, Qt::CopyAction, -1, -1, tree->indexForPlaylist(uuid)));
    QCOMPARE(imports.size(), 1);
    QCOMPARE(imports.first().at(1).toString(), uuid);
    // On a smart list they only join the library.
    QVERIFY(tree->dropMimeData(&files, Qt::CopyAction, -1, -1, tree->indexForPlaylist(m_library->allTracksUUID())));
    QCOMPARE(imports.last().at(1).toString(), QString());
}

void TestZBLibraryPane::reorderingAPlaylistIsKept()
{
    m_pane->selectList(m_library->allTracksUUID());
    selectRows({0, 1, 2, 3});
    m_pane->createPlaylistFromSelection();
    const QString uuid = m_pane->selectedListUUID();
    ZBTrackListModel *model = m_pane->trackModel();
    QVERIFY(model->isReorderable());
    selectRows({3});
    std::unique_ptr<QMimeData> data(model->mimeData({model->index(3, 0)}));
    // "delta" dragged above the first row.
    QVERIFY(!model->dropMimeData(data.get(), Qt::MoveAction, 0, 0, QModelIndex()));
    QCOMPARE(shownNames(), (QStringList{"delta", "alpha", "bravo", "charlie"}));
    // Shown again from the store, whatever the table's sort.
    m_pane->selectList(m_library->allTracksUUID());
    QVERIFY(!model->isReorderable());
    m_pane->selectList(uuid);
    QCOMPARE(shownNames(), (QStringList{"delta", "alpha", "bravo", "charlie"}));
    QCOMPARE(m_playback->currentList(), model->tracks());
}

void TestZBLibraryPane::removingFromAPlaylistKeepsTheTracks()
{
    selectRows({0, 1});
    m_pane->createPlaylistFromSelection();
    const QString uuid = m_pane->selectedListUUID();
    selectRows({0});
    m_ui->confirmation = {false, true};
    m_pane->removeSelectedTracks();
    QCOMPARE(m_ui->asked, QStringList{"alertDeletefromPlaylistMessage"});
    QCOMPARE(shownNames(), (QStringList{"alpha", "bravo"}));
    // "No" with the box ticked remembers nothing.
    QVERIFY(!m_settings->option_DontAskMeAgainRemoveItemFromPlaylist);

    m_ui->confirmation = {true, true};
    m_pane->removeSelectedTracks();
    QCOMPARE(shownNames(), QStringList{"bravo"});
    QVERIFY(m_settings->option_DontAskMeAgainRemoveItemFromPlaylist);
    QCOMPARE(m_library->getItemsFromPlaylist(m_library->getPlaylistsFromLibraryByUUID(m_library->allTracksUUID())).size(),
             4);
    // Told never to ask: the next removal goes without a question.
    m_ui->asked.clear();
    selectRows({0});
    m_pane->removeSelectedTracks();
    QVERIFY(m_ui->asked.isEmpty());
    QVERIFY(shownNames().isEmpty());
    QCOMPARE(m_pane->selectedListUUID(), uuid);
}

void TestZBLibraryPane::removingFromTheLibraryAsksAboutFiles_data()
{
    QTest::addColumn<bool>("trash");
    QTest::addColumn<bool>("remember");
    QTest::newRow("keep") << false << false;
    QTest::newRow("trash") << true << false;
    QTest::newRow("trash, remembered") << true << true;
}

void TestZBLibraryPane::removingFromTheLibraryAsksAboutFiles()
{
    QFETCH(bool, trash);
    QFETCH(bool, remember);
    const QString path = m_pane->trackModel()->trackAt(1)->Path();
    selectRows({1});
    m_ui->files = {trash, remember};
    m_pane->removeSelectedTracks();
    QCOMPARE(m_ui->asked, (QStringList{"alertDeletefromLibraryMessage", "files"}));
    QCOMPARE(shownNames(), (QStringList{"alpha", "charlie", "delta"}));
    QCOMPARE(QFile::exists(path), !trash);
    if (trash)
        QVERIFY(!QDir(m_home.filePath(QStringLiteral("Trash/files"))).entryList(QDir::Files).isEmpty());
    QCOMPARE(m_settings->option_DontAskMeAgainMoveToTrashOrKeepFile, remember);
    QCOMPARE(m_settings->option_alwaysMoveFileToTrash, remember && trash);
    // A row near the removed one is selected for the next Delete.
    QCOMPARE(m_pane->selectedTracks().size(), 1);

    // Cancelled at the first question: nothing happens at all.
    m_ui->asked.clear();
    m_ui->confirmation = {false, false};
    m_pane->removeSelectedTracks();
    QCOMPARE(m_ui->asked, QStringList{"alertDeletefromLibraryMessage"});
    QCOMPARE(shownNames().size(), 3);
}

void TestZBLibraryPane::removingAListAsksWhenItHoldsTracks()
{
    const QString empty = m_pane->addPlaylistWithItems({});
    m_pane->removeSelectedList();
    QVERIFY(m_ui->asked.isEmpty());
    QVERIFY(!m_library->getPlaylistsFromLibraryByUUID(empty));

    m_pane->selectList(m_library->allTracksUUID());
    selectRows({0});
    m_pane->createPlaylistFromSelection();
    const QString full = m_pane->selectedListUUID();
    m_ui->confirmation = {false, false};
    m_pane->removeSelectedList();
    QCOMPARE(m_ui->asked, QStringList{"alertDeletePlaylistFromLibraryMessage"});
    QVERIFY(m_library->getPlaylistsFromLibraryByUUID(full));
    m_ui->confirmation = {true, true};
    m_pane->removeSelectedList();
    QVERIFY(!m_library->getPlaylistsFromLibraryByUUID(full));
    QVERIFY(m_settings->option_DontAskMeAgainRemovePlaylist);
    // Nothing left under "Playlists": the first list is shown.
    QCOMPARE(m_pane->selectedListUUID(), m_library->allTracksUUID());
    // Standard lists stay.
    m_pane->removeSelectedList();
    QVERIFY(m_library->getPlaylistsFromLibraryByUUID(m_library->allTracksUUID()));
}

void TestZBLibraryPane::smartListsThroughTheEditor()
{
    m_ui->smartList = ZBLibraryUi::SmartList{QStringLiteral("A names"), QStringLiteral("Name BEGINSWITH[cd] 'a'")};
    m_pane->addSmartList();
    const QString untitled = ZBLocalizer::localizedStringForKey(QStringLiteral("untitledPlaylist"));
    QCOMPARE(m_ui->editorOpened, QStringList{untitled + u'|'});
    QCOMPARE(listNames(1), QStringList{"A names"});
    QCOMPARE(shownNames(), QStringList{"alpha"});
    // Edited: the same list with the new rules.
    const QString uuid = m_pane->selectedListUUID();
    m_ui->smartList = ZBLibraryUi::SmartList{QStringLiteral("B or C"),
                                             QStringLiteral("(Name BEGINSWITH 'b') OR (Name BEGINSWITH 'c')")};
    m_pane->editSmartList();
    QCOMPARE(m_ui->editorOpened.last(), QStringLiteral("A names|Name BEGINSWITH[cd] 'a'"));
    QCOMPARE(m_pane->selectedListUUID(), uuid);
    QCOMPARE(shownNames(), (QStringList{"bravo", "charlie"}));
    // Cancelled, or an empty rule: nothing changes.
    m_ui->smartList.reset();
    m_pane->addSmartList();
    m_ui->smartList = ZBLibraryUi::SmartList{QStringLiteral("x"), QString()};
    m_pane->editSmartList();
    QCOMPARE(listNames(1), QStringList{"B or C"});
    // A standard list is not the editor's.
    m_pane->selectList(m_library->allTracksUUID());
    const int opened = int(m_ui->editorOpened.size());
    m_pane->editSmartList();
    QCOMPARE(m_ui->editorOpened.size(), opened);
}

void TestZBLibraryPane::editingRenamesUserListsAndOpensTheEditorForSmartOnes()
{
    m_pane->sourceList()->show();
    const QString uuid = m_pane->addPlaylistWithItems({});
    // A new playlist's name is open for typing at once.
    const auto nameField = [this]()
    {
        auto *field = m_pane->sourceList()->findChild<QLineEdit *>();
        return field && field->isVisible() ? field : nullptr;
    };
    QTRY_VERIFY(nameField());
    QTest::keyClick(nameField(), Qt::Key_Escape);
    QTRY_VERIFY(!nameField());
    m_pane->editSelectedList();
    QTRY_VERIFY(nameField());
    QVERIFY(m_ui->editorOpened.isEmpty());

    ZBLibraryTreeModel *model = m_pane->treeModel();
    QVERIFY(!(model->flags(model->indexForPlaylist(m_library->allTracksUUID())) & Qt::ItemIsEditable));
    QVERIFY(model->setData(model->indexForPlaylist(uuid), QStringLiteral("Road trip")));
    QCOMPARE(m_library->getPlaylistsFromLibraryByUUID(uuid)->Name(), QStringLiteral("Road trip"));
    QCOMPARE(m_pane->selectedListUUID(), uuid);
    QVERIFY(!model->setData(model->indexForPlaylist(uuid), QString()));
    QVERIFY(!model->setData(model->indexForPlaylist(m_library->allTracksUUID()), QStringLiteral("Everything")));
    QCOMPARE(listNames(1), QStringList{"Road trip"});

    m_ui->smartList = ZBLibraryUi::SmartList{QStringLiteral("Short"), QStringLiteral("Length < 100")};
    m_pane->addSmartList();
    m_pane->editSelectedList();
    QCOMPARE(m_ui->editorOpened.size(), 2);
    QCOMPARE(m_ui->editorOpened.last(), QStringLiteral("Short|Length < 100"));
}

void TestZBLibraryPane::searchFiltersAndClears()
{
    addTrack(QStringLiteral("echo"), QStringLiteral("mkv"));
    m_pane->reloadNode();
    m_pane->searchField()->setText(QStringLiteral("MKV"));
    QCOMPARE(m_pane->mode(), int(ZBLibraryPane::SearchMode));
    QCOMPARE(shownNames(), QStringList{"echo"});
    QCOMPARE(m_playback->currentList().size(), 1);
    m_pane->searchField()->setText(QStringLiteral("h"));
    QCOMPARE(shownNames(), (QStringList{"alpha", "charlie", "echo"}));
    m_pane->searchField()->clear();
    QCOMPARE(m_pane->mode(), int(ZBLibraryPane::ListMode));
    QCOMPARE(shownNames().size(), 5);
}

void TestZBLibraryPane::ratingsBySetDataAndByClick()
{
    ZBTrackListModel *model = m_pane->trackModel();
    const int column = ZBTrackListModel::columnOf(QStringLiteral("Rating"));
    QVERIFY(model->setData(model->index(0, column), 4));
    QCOMPARE(model->trackAt(0)->Rating(), std::optional<qint32>(4));
    QCOMPARE(model->index(0, column).data().toString(), QStringLiteral("★★★★☆"));
    QVERIFY(model->setData(model->index(0, column), 9));
    QCOMPARE(model->trackAt(0)->Rating(), std::optional<qint32>(5));
    selectRows({1, 2});
    m_pane->setRating(2);
    QCOMPARE(model->trackAt(1)->Rating(), std::optional<qint32>(2));
    QCOMPARE(model->trackAt(2)->Rating(), std::optional<qint32>(2));
    // Saved: another reader of the store sees it.
    ZBLibraryController other;
    QVERIFY(other.openStore(m_dir->path()).ok);
    QCOMPARE(other.itemByUUID(model->trackAt(2)->ItemUUID())->Rating(), std::optional<qint32>(2));

    // Clicks on a 100-pixel row of five stars.
    QCOMPARE(ZBRatingDelegate::ratingForClick(5, 100, 5, 0), 1);
    QCOMPARE(ZBRatingDelegate::ratingForClick(50, 100, 5, 0), 3);
    QCOMPARE(ZBRatingDelegate::ratingForClick(99, 100, 5, 2), 5);
    QCOMPARE(ZBRatingDelegate::ratingForClick(5, 100, 5, 1), 0);
    QCOMPARE(ZBRatingDelegate::ratingForClick(150, 100, 5, 1), 5);
}

void TestZBLibraryPane::infoAndFileManagerFollowTheSelection()
{
    m_pane->getInfo();
    m_pane->showInFileManager();
    QVERIFY(m_ui->info.isEmpty());
    QVERIFY(m_ui->revealed.isEmpty());
    selectRows({2});
    m_pane->getInfo();
    QCOMPARE(m_ui->info.size(), 1);
    QVERIFY(m_ui->info.first().startsWith(QStringLiteral("charlie|")));
    m_pane->showInFileManager();
    QCOMPARE(m_ui->revealed, QStringList{m_dir->filePath(QStringLiteral("charlie.mp4"))});
    // A track whose file was found missing is not shown.
    m_pane->trackModel()->trackAt(2)->setIsValid(false);
    m_pane->showInFileManager();
    QCOMPARE(m_ui->revealed.size(), 1);
}

void TestZBLibraryPane::sortingFollowsTheHeaderRule()
{
    ZBTrackListModel *model = m_pane->trackModel();
    model->trackAt(0)->setPlayCountValue(3);
    model->trackAt(2)->setPlayCountValue(7);
    QHeaderView *header = m_pane->trackTable()->horizontalHeader();
    const int plays = ZBTrackListModel::columnOf(QStringLiteral("PlayCount"));
    Q_EMIT header->sectionClicked(plays);
    // "Ascending" on a count puts the most first.
    QCOMPARE(shownNames().mid(0, 2), (QStringList{"charlie", "alpha"}));
    QCOMPARE(header->sortIndicatorSection(), plays);
    QCOMPARE(header->sortIndicatorOrder(), Qt::AscendingOrder);
    Q_EMIT header->sectionClicked(plays);
    QCOMPARE(shownNames().mid(2, 2), (QStringList{"alpha", "charlie"}));
    QCOMPARE(header->sortIndicatorOrder(), Qt::DescendingOrder);
    QCOMPARE(m_playback->currentList(), model->tracks());
    // New lists are ordered by the table's sort.
    const QString uuid = m_pane->addPlaylistWithItems(m_library->getItemsFromPlaylist(
        m_library->getPlaylistsFromLibraryByUUID(m_library->allTracksUUID())));
    QCOMPARE(m_pane->selectedListUUID(), uuid);
    QCOMPARE(shownNames().mid(2, 2), (QStringList{"alpha", "charlie"}));
}

QTEST_MAIN(TestZBLibraryPane)
#include "tst_zblibrarypane.moc"
