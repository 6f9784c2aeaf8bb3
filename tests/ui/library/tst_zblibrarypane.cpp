#include <QDir>
#include <QFile>
#include <QHeaderView>
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
// Answers the library's questions from a script and notes each one.
class ScriptedLibraryUi : public ZBLibraryUi
{
public:
    Confirmation confirm(const QString &key, const QString &) override { return note(asked, key, confirmation); }
    FilesAnswer askAboutFiles() override { return note(asked, QStringLiteral("files"), files); }
    std::optional<SmartList> editSmartList(const QString &name, const QString &request) override
    {
        return note(editorOpened, name + u'|' + request, smartList);
    }
    void showInfo(ZBItem *item, const QString &summary) override { info << item->Name() + u'|' + summary; }
    void revealInFileManager(const QString &path) override { revealed << path; }

    Confirmation confirmation{true, false};
    FilesAnswer files;
    std::optional<SmartList> smartList;
    QStringList asked, editorOpened, info, revealed;

private:
    template <typename Answer>
    static Answer note(QStringList &log, const QString &question, const Answer &answer)
    {
        log << question;
        return answer;
    }
};
} // namespace

// The library pane's flows as a user drives them: lists made, filled,
// reordered, renamed and removed; tracks searched, rated and removed, with
// each answer to each question.
class TestZBLibraryPane : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void init();

    void newListsTakeTheSelectionAndDropsFillThem();
    void removingAsksUnlessToldNotTo_data();
    void removingAsksUnlessToldNotTo();
    void removingFromTheLibraryAsksAboutFiles_data();
    void removingFromTheLibraryAsksAboutFiles();
    void listsAreRenamedAndSmartListsEdited();
    void trackCommandsFollowTheSelection();
    void searchAndSortChooseWhatIsShown();

private:
    void selectRows(const QList<int> &rows);
    QStringList shownNames() const;
    int listCount() const { return m_pane->treeModel()->rowCount(m_pane->treeModel()->rootIndex(1)); }
    QString allTracks() const { return m_library->allTracksUUID(); }

    QTemporaryDir m_home;
    std::unique_ptr<nvktest::DataDir> m_dir;
    std::unique_ptr<ZBLibraryController> m_library;
    ZBSettings m_settings;
    std::unique_ptr<ZBPlaybackController> m_playback;
    ScriptedLibraryUi m_ui;
    std::unique_ptr<ZBLibraryPane> m_pane;
};

void TestZBLibraryPane::init()
{
    // Files moved to the Trash land in this test's own data folder.
    QVERIFY(m_home.isValid());
    qputenv("XDG_DATA_HOME", QFile::encodeName(m_home.path()));
    m_pane.reset();
    m_playback.reset();
    m_library.reset();
    m_dir = std::make_unique<nvktest::DataDir>();
    m_library = std::make_unique<ZBLibraryController>();
    QVERIFY(m_library->openStore(m_dir->path()).ok);
    m_library->initLibrary();
    m_settings = ZBSettings();
    m_ui = ScriptedLibraryUi();
    m_playback = std::make_unique<ZBPlaybackController>(m_library.get(), &m_settings, nullptr);
    for (const QString &name : QStringList{"delta", "alpha", "charlie", "bravo", "echo"})
    {
        const QString type = name == u"echo" ? QStringLiteral("mkv") : QStringLiteral("mp4");
        QFile file(m_dir->filePath(name + u'.' + type));
        QVERIFY(file.open(QIODevice::WriteOnly) && file.write("movie") > 0);
        m_library->addItemToLibrarybyName(name, file.fileName(), QStringLiteral(""), type, 0, 60, 0,
                                          QDateTime::currentDateTimeUtc(), QDateTime(), QString());
    }
    m_pane = std::make_unique<ZBLibraryPane>(*m_library, m_settings, *m_playback, m_ui);
    m_pane->waitForResult();
}

void TestZBLibraryPane::selectRows(const QList<int> &rows)
{
    m_pane->waitForResult();
    m_pane->trackTable()->clearSelection();
    for (const int row : rows)
        m_pane->trackTable()->selectionModel()->select(m_pane->trackModel()->index(row, 0),
                                                       QItemSelectionModel::Select | QItemSelectionModel::Rows);
}

QStringList TestZBLibraryPane::shownNames() const
{
    m_pane->waitForResult();
    QStringList names;
    for (const ZBItem *item : m_pane->trackModel()->tracks())
        names << item->Name();
    return names;
}

void TestZBLibraryPane::newListsTakeTheSelectionAndDropsFillThem()
{
    QCOMPARE(shownNames(), (QStringList{"alpha", "bravo", "charlie", "delta", "echo"}));
    // The play list follows what is shown.
    QCOMPARE(m_playback->currentList(), m_pane->trackModel()->tracks());
    ZBLibraryTreeModel *tree = m_pane->treeModel();

    const QString first = m_pane->addPlaylistWithItems({});
    QCOMPARE(m_pane->selectedListUUID(), first);
    m_pane->selectList(allTracks());
    selectRows({1, 3});
    m_pane->createPlaylistFromSelection();
    const QString untitled = ZBLocalizer::localizedStringForKey(QStringLiteral("untitledPlaylist"));
    QCOMPARE(m_library->getPlaylistsFromLibraryByUUID(m_pane->selectedListUUID())->Name(), untitled + " 2");
    QCOMPARE(shownNames(), (QStringList{"bravo", "delta"}));

    // Rows dragged from the table onto a list join it; smart lists choose their own.
    m_pane->selectList(allTracks());
    selectRows({0, 2});
    std::unique_ptr<QMimeData> rows(
        m_pane->trackModel()->mimeData(m_pane->trackTable()->selectionModel()->selectedIndexes()));
    QVERIFY(!tree->canDropMimeData(rows.get(), Qt::CopyAction, -1, -1, tree->indexForPlaylist(allTracks())));
    QVERIFY(tree->dropMimeData(rows.get(), Qt::CopyAction, -1, -1, tree->indexForPlaylist(first)));
    m_pane->selectList(first);
    QCOMPARE(shownNames(), (QStringList{"alpha", "charlie"}));
    // "charlie" dragged above the first row stays there, whatever the table's sort.
    std::unique_ptr<QMimeData> moved(m_pane->trackModel()->mimeData({m_pane->trackModel()->index(1, 0)}));
    QVERIFY(!m_pane->trackModel()->dropMimeData(moved.get(), Qt::MoveAction, 0, 0, QModelIndex()));
    m_pane->selectList(allTracks());
    m_pane->selectList(first);
    QCOMPARE(shownNames(), (QStringList{"charlie", "alpha"}));

    // Files dropped on a list are for the window to import into it.
    QSignalSpy imports(m_pane.get(), &ZBLibraryPane::importRequested);
    QMimeData files;
    files.setUrls({QUrl::fromLocalFile(QStringLiteral("/tmp/new.mp4"))});
    QVERIFY(tree->dropMimeData(&files, Qt::CopyAction, -1, -1, tree->indexForPlaylist(first)));
    QCOMPARE(imports.size(), 1);
    QCOMPARE(imports.first().at(1).toString(), first);
}

void TestZBLibraryPane::removingAsksUnlessToldNotTo_data()
{
    QTest::addColumn<bool>("wholeList");
    QTest::addColumn<QString>("question");
    QTest::newRow("tracks from a playlist") << false << "alertDeletefromPlaylistMessage";
    QTest::newRow("playlists") << true << "alertDeletePlaylistFromLibraryMessage";
}

void TestZBLibraryPane::removingAsksUnlessToldNotTo()
{
    QFETCH(bool, wholeList);
    QFETCH(QString, question);
    // An empty list goes without a question.
    m_pane->addPlaylistWithItems({});
    m_pane->removeSelectedList();
    m_pane->waitForResult();
    QVERIFY(m_ui.asked.isEmpty());
    const ZBItemList two = m_pane->trackModel()->tracks().mid(0, 2);
    m_pane->addPlaylistWithItems(two);
    m_pane->addPlaylistWithItems(two);
    const bool &remembered = wholeList ? m_settings.option_DontAskMeAgainRemovePlaylist
                                       : m_settings.option_DontAskMeAgainRemoveItemFromPlaylist;
    const auto removeOne = [&]()
    {
        selectRows({0});
        wholeList ? m_pane->removeSelectedList() : m_pane->removeSelectedTracks();
        return wholeList ? listCount() : shownNames().size();
    };
    // "No" with the box ticked removes and remembers nothing.
    m_ui.confirmation = {false, true};
    QCOMPARE(removeOne(), 2);
    QCOMPARE(m_ui.asked, QStringList{question});
    QVERIFY(!remembered);
    m_ui.confirmation = {true, true};
    QCOMPARE(removeOne(), 1);
    QVERIFY(remembered);
    // Told never to ask: the next removal goes without a question.
    QCOMPARE(removeOne(), 0);
    QCOMPARE(m_ui.asked.size(), 2);
    // The tracks stay in the library, and so do the standard lists.
    m_pane->selectList(allTracks());
    m_pane->removeSelectedList();
    QCOMPARE(m_pane->selectedListUUID(), allTracks());
    QCOMPARE(shownNames().size(), 5);
}

void TestZBLibraryPane::removingFromTheLibraryAsksAboutFiles_data()
{
    QTest::addColumn<bool>("trash");
    QTest::addColumn<bool>("remember");
    QTest::newRow("keep") << false << false;
    QTest::newRow("trash, remembered") << true << true;
}

void TestZBLibraryPane::removingFromTheLibraryAsksAboutFiles()
{
    QFETCH(bool, trash);
    QFETCH(bool, remember);
    const QString path = m_pane->trackModel()->trackAt(1)->Path();
    selectRows({1});
    m_ui.files = {trash, remember};
    m_pane->removeSelectedTracks();
    QCOMPARE(m_ui.asked, (QStringList{"alertDeletefromLibraryMessage", "files"}));
    QCOMPARE(shownNames(), (QStringList{"alpha", "charlie", "delta", "echo"}));
    QCOMPARE(QFile::exists(path), !trash);
    QCOMPARE(m_settings.option_DontAskMeAgainMoveToTrashOrKeepFile, remember);
    QCOMPARE(m_settings.option_alwaysMoveFileToTrash, remember && trash);

    // Cancelled at the first question: nothing happens at all.
    m_ui.confirmation = {false, false};
    m_pane->removeSelectedTracks();
    QCOMPARE(m_ui.asked.size(), 3);
    QCOMPARE(shownNames().size(), 4);
}

void TestZBLibraryPane::listsAreRenamedAndSmartListsEdited()
{
    const QString uuid = m_pane->addPlaylistWithItems({});
    ZBLibraryTreeModel *model = m_pane->treeModel();
    QVERIFY(model->setData(model->indexForPlaylist(uuid), QStringLiteral("Road trip")));
    QCOMPARE(m_library->getPlaylistsFromLibraryByUUID(uuid)->Name(), QStringLiteral("Road trip"));
    QVERIFY(!model->setData(model->indexForPlaylist(allTracks()), QStringLiteral("Everything")));

    m_ui.smartList = ZBLibraryUi::SmartList{QStringLiteral("A names"), QStringLiteral("Name BEGINSWITH[cd] 'a'")};
    m_pane->addSmartList();
    const QString untitled = ZBLocalizer::localizedStringForKey(QStringLiteral("untitledPlaylist"));
    QCOMPARE(m_ui.editorOpened, QStringList{untitled + u'|'});
    QCOMPARE(shownNames(), QStringList{"alpha"});
    // Edited: the same list with the new rules; Edit on a smart list opens the editor.
    m_ui.smartList = ZBLibraryUi::SmartList{QStringLiteral("B or C"),
                                            QStringLiteral("(Name BEGINSWITH 'b') OR (Name BEGINSWITH 'c')")};
    m_pane->editSelectedList();
    QCOMPARE(m_ui.editorOpened.last(), QStringLiteral("A names|Name BEGINSWITH[cd] 'a'"));
    QCOMPARE(shownNames(), (QStringList{"bravo", "charlie"}));
    // An empty rule changes nothing.
    m_ui.smartList = ZBLibraryUi::SmartList{QStringLiteral("x"), QString()};
    m_pane->editSmartList();
    QCOMPARE(m_library->getPlaylistsFromLibraryByUUID(m_pane->selectedListUUID())->Name(), QStringLiteral("B or C"));
    // A standard list is not the editor's.
    m_pane->selectList(allTracks());
    m_pane->editSmartList();
    QCOMPARE(m_ui.editorOpened.size(), 3);
}

void TestZBLibraryPane::trackCommandsFollowTheSelection()
{
    selectRows({2});
    m_pane->getInfo();
    m_pane->showInFileManager();
    QVERIFY(m_ui.info.first().startsWith(QStringLiteral("charlie|")));
    QCOMPARE(m_ui.revealed, QStringList{m_dir->filePath(QStringLiteral("charlie.mp4"))});
    // A track whose file was found missing is not shown.
    m_pane->trackModel()->trackAt(2)->setIsValid(false);
    m_pane->showInFileManager();
    QCOMPARE(m_ui.revealed.size(), 1);
    ZBTrackListModel *model = m_pane->trackModel();
    const QModelIndex first = model->index(0, ZBTrackListModel::columnOf(QStringLiteral("Rating")));
    QVERIFY(model->setData(first, 9));
    QCOMPARE(model->trackAt(0)->Rating(), std::optional<qint32>(5));
    selectRows({1, 2});
    m_pane->setRating(2);
    QCOMPARE(model->trackAt(1)->Rating(), std::optional<qint32>(2));
    // Saved: another reader of the store sees it.
    ZBLibraryController other;
    QVERIFY(other.openStore(m_dir->path()).ok);
    QCOMPARE(other.itemByUUID(model->trackAt(2)->ItemUUID())->Rating(), std::optional<qint32>(2));

    // Clicks on a 100-pixel row of five stars; the one lit star of a
    // one-star track clicked again is none.
    QCOMPARE(ZBRatingDelegate::ratingForClick(5, 100, 5, 1), 0);
    QCOMPARE(ZBRatingDelegate::ratingForClick(150, 100, 5, 1), 5);
}

void TestZBLibraryPane::searchAndSortChooseWhatIsShown()
{
    m_pane->searchField()->setText(QStringLiteral("MKV"));
    QCOMPARE(shownNames(), QStringList{"echo"});
    QCOMPARE(m_playback->currentList(), m_pane->trackModel()->tracks());
    m_pane->searchField()->clear();
    m_pane->waitForResult();
    QCOMPARE(m_pane->mode(), int(ZBLibraryPane::ListMode));

    m_pane->trackModel()->trackAt(0)->setPlayCountValue(3);
    m_pane->trackModel()->trackAt(2)->setPlayCountValue(7);
    Q_EMIT m_pane->trackTable()->horizontalHeader()->sectionClicked(
        ZBTrackListModel::columnOf(QStringLiteral("PlayCount")));
    // "Ascending" on a count puts the most first, and so do new lists.
    QCOMPARE(shownNames().mid(0, 2), (QStringList{"charlie", "alpha"}));
    selectRows({0, 1, 2, 3, 4});
    m_pane->createPlaylistFromSelection();
    QCOMPARE(shownNames().mid(0, 2), (QStringList{"charlie", "alpha"}));
}

QTEST_MAIN(TestZBLibraryPane)
#include "tst_zblibrarypane.moc"
