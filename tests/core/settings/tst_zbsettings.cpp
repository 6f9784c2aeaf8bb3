#include <functional>

#include <QCoreApplication>
#include <QDir>
#include <QRegularExpression>
#include <QSettings>
#include <QTemporaryDir>
#include <QtTest>

#include "settings/zbsettings.h"

namespace
{
using Reader = std::function<QVariant(const ZBSettings &)>;

// A store in a file of its own, never the user's settings.
class TemporaryStore
{
public:
    TemporaryStore()
        : m_path(m_dir.filePath(QStringLiteral("settings.ini")))
    {
    }

    std::unique_ptr<QSettings> open() const { return std::make_unique<QSettings>(m_path, QSettings::IniFormat); }

private:
    QTemporaryDir m_dir;
    QString m_path;
};

// A value different from the default for every field, so that a round trip
// shows each field's own save and load.
ZBSettings changedSettings()
{
    ZBSettings s;
    s.option_driverOnOff = false;
    s.option_autoplayAddedFiles = false;
    s.option_gotoIfLastFrameIsMet = false;
    s.option_gotoIfFrameNumberWasDecreased = false;
    s.option_gotoIfStayOnTheSameFrameMore = false;
    s.option_gotoStayingTimeValue = 3.25;
    s.option_playFLVwithMPK = false;
    s.option_formatOfScreenshot = 4;
    s.option_pathForDownloads = QStringLiteral("/media/films/from the web");
    s.option_pathForScreenshot = QStringLiteral("/tmp/shots, stills");
    s.option_allowSendDataOverNetwork = false;
    s.option_flashDefaultQuality = 0;
    s.option_enableFlashLocalSecurity = true;
    s.programVolume = 0.35;
    s.shuffle = 1;
    s.repeat = 2;
    s.option_mustShowUrlPaneInPlaylistMode = false;
    s.option_dontAllowScreensaver = false;
    s.option_screenShotInterval = 0.1;
    s.option_alwaysStartCapturingFromFirstFrame = true;
    s.option_keepCapturingToNextTrackInPlaylist = true;
    s.option_DontAskMeAgainRemovePlaylist = true;
    s.option_DontAskMeAgainClearDownloadsList = true;
    s.option_DontAskMeAgainRemoveItemFromLibrary = true;
    s.option_DontAskMeAgainRemoveItemFromPlaylist = true;
    s.option_DontAskMeAgainCancelDownload = true;
    s.option_DontAskMeAgainRealNotFound = true;
    s.option_DontAskMeAgainWarningBeforeExit = true;
    s.option_DontAskMeAgainMoveToTrashOrKeepFile = true;
    s.option_alwaysMoveFileToTrash = true;
    s.mustShowFilterHint = false;
    s.onTopMode = 2;
    s.flvBgColor = QStringLiteral("#12ab9f");
    s.showTutorial = QStringLiteral("hide");
    s.recentFolders = {QStringLiteral("/home/a/Videos"), QStringLiteral("/srv/media, shared"), QStringLiteral("/x")};
    s.setWindowFrame(ZBSettings::mainWindowFrameName(), QByteArray("\x01\xd9\xd0\xcb\x00main", 10));
    s.setWindowFrame(ZBSettings::detachedWindowFrameName(), QByteArray("detached\x00\xff", 10));
    return s;
}

QString downloadsFolder()
{
    return QDir::homePath() + QStringLiteral("/Downloads");
}
} // namespace

class TestZBSettings : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();

    // Fresh user.
    void freshUserGetsTheDefaults();
    void loadRecordsTheApplicationPath();

    // Stored values and their keys.
    void storedValuesAreReadFromTheirKeys_data();
    void storedValuesAreReadFromTheirKeys();
    void storedValuesAreNotClamped();
    void saveWritesEveryKey();
    void roundTripKeepsEveryField();
    void roundTripOfRecentFolders_data();
    void roundTripOfRecentFolders();
    void absentWindowFramesStayAbsent();
    void helperVersionsAreReadButNotWritten();

    // Unusable stored values.
    void textForBooleanGivesDefault();
    void wrongKindsGiveDefaults_data();
    void wrongKindsGiveDefaults();
    void acceptedSpellingsOfStoredValues_data();
    void acceptedSpellingsOfStoredValues();
    void unusableValueStaysInTheStore();

    // Other operations.
    void resetOfWarningsKeepsTheTrashAnswer();
    void unknownWindowFrameNameIsRefused();
    void userStoreUsesTheProgramsNames();

private:
    QTemporaryDir m_configHome;
};

void TestZBSettings::initTestCase()
{
    // openStore() opens the user's store; pointed here, the test cannot touch
    // the real one even by mistake.
    QVERIFY(m_configHome.isValid());
    qputenv("XDG_CONFIG_HOME", m_configHome.path().toLocal8Bit());
}

void TestZBSettings::freshUserGetsTheDefaults()
{
    TemporaryStore file;
    auto store = file.open();
    ZBSettings settings;
    settings.option_autoplayAddedFiles = false; // must be overwritten by the load
    settings.loadUserDefaults(*store);

    QCOMPARE(settings.option_driverOnOff, true);
    QCOMPARE(settings.option_autoplayAddedFiles, true);
    QCOMPARE(settings.option_gotoIfLastFrameIsMet, true);
    QCOMPARE(settings.option_gotoIfFrameNumberWasDecreased, true);
    QCOMPARE(settings.option_gotoIfStayOnTheSameFrameMore, true);
    QCOMPARE(settings.option_gotoStayingTimeValue, 10.0);
    QCOMPARE(settings.option_playFLVwithMPK, true);
    QCOMPARE(settings.option_formatOfScreenshot, 0);
    QCOMPARE(settings.option_pathForDownloads, downloadsFolder());
    QCOMPARE(settings.option_pathForScreenshot, downloadsFolder());
    QCOMPARE(settings.option_allowSendDataOverNetwork, true);
    QCOMPARE(settings.option_flashDefaultQuality, 2);
    QCOMPARE(settings.option_enableFlashLocalSecurity, false);
    QCOMPARE(settings.programVolume * 100, 100.0);
    QCOMPARE(settings.shuffle, 0);
    QCOMPARE(settings.repeat, 0);
    QCOMPARE(settings.option_mustShowUrlPaneInPlaylistMode, true);
    QCOMPARE(settings.option_dontAllowScreensaver, true);
    QCOMPARE(settings.option_screenShotInterval, 1.0);
    QCOMPARE(settings.option_alwaysStartCapturingFromFirstFrame, false);
    QCOMPARE(settings.option_keepCapturingToNextTrackInPlaylist, false);
    QCOMPARE(settings.option_DontAskMeAgainRemovePlaylist, false);
    QCOMPARE(settings.option_DontAskMeAgainClearDownloadsList, false);
    QCOMPARE(settings.option_DontAskMeAgainRemoveItemFromLibrary, false);
    QCOMPARE(settings.option_DontAskMeAgainRemoveItemFromPlaylist, false);
    QCOMPARE(settings.option_DontAskMeAgainCancelDownload, false);
    QCOMPARE(settings.option_DontAskMeAgainRealNotFound, false);
    QCOMPARE(settings.option_DontAskMeAgainWarningBeforeExit, false);
    QCOMPARE(settings.option_DontAskMeAgainMoveToTrashOrKeepFile, false);
    QCOMPARE(settings.option_alwaysMoveFileToTrash, false);
    QCOMPARE(settings.mustShowFilterHint, true);
    QCOMPARE(settings.onTopMode, 1);
    QCOMPARE(settings.flvBgColor, QStringLiteral("#000000"));
    QCOMPARE(settings.showTutorial, QStringLiteral("show"));
    QVERIFY(settings.recentFolders.isEmpty());
    QCOMPARE(settings.driverVersion, -1.0);
    QCOMPARE(settings.daemonVersion, -1.0);
    QVERIFY(settings.windowFrame(ZBSettings::mainWindowFrameName()).isEmpty());
    QVERIFY(settings.windowFrame(ZBSettings::detachedWindowFrameName()).isEmpty());
}

void TestZBSettings::loadRecordsTheApplicationPath()
{
    TemporaryStore file;
    auto store = file.open();
    store->setValue(QStringLiteral("LastApplicationPath"), QStringLiteral("/old/place/norvikplayer"));
    ZBSettings settings;
    settings.loadUserDefaults(*store);
    QCOMPARE(store->value(QStringLiteral("LastApplicationPath")).toString(), QCoreApplication::applicationFilePath());
}

void TestZBSettings::storedValuesAreReadFromTheirKeys_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QVariant>("stored");
    QTest::addColumn<Reader>("read");
    QTest::addColumn<QVariant>("expected");

    auto row = [](const char *key, const QVariant &stored, Reader read, const QVariant &expected)
    {
        QTest::newRow(key) << QString::fromLatin1(key) << stored << read << expected;
    };

    // The keys are shared with stores written by earlier versions and with
    // the integration helper, so their spelling is checked here one by one.
    row(
        "DriverOnOff", false, [](auto &s) { return s.option_driverOnOff; }, false);
    row(
        "AutoplayAddedFiles", false, [](auto &s) { return s.option_autoplayAddedFiles; }, false);
    row(
        "GotoIfLastFrameIsMet", false, [](auto &s) { return s.option_gotoIfLastFrameIsMet; }, false);
    row(
        "GotoIfFrameNumberWasDecreased", false, [](auto &s) { return s.option_gotoIfFrameNumberWasDecreased; }, false);
    row(
        "GotoIfStayOnTheSameFrameMore", false, [](auto &s) { return s.option_gotoIfStayOnTheSameFrameMore; }, false);
    row(
        "GotoStayingTimeValue", 2.5, [](auto &s) { return s.option_gotoStayingTimeValue; }, 2.5);
    row(
        "PlayFLVwithMPK", false, [](auto &s) { return s.option_playFLVwithMPK; }, false);
    row(
        "FormatOfScreenshot", 3, [](auto &s) { return s.option_formatOfScreenshot; }, 3);
    row(
        "PathForDownloads", "/data/dl", [](auto &s) { return s.option_pathForDownloads; }, "/data/dl");
    row(
        "PathForScreenshot", "/data/shots", [](auto &s) { return s.option_pathForScreenshot; }, "/data/shots");
    row(
        "AllowToSendDataOverNetwork", false, [](auto &s) { return s.option_allowSendDataOverNetwork; }, false);
    row(
        "FlashDefaultQuality", 1, [](auto &s) { return s.option_flashDefaultQuality; }, 1);
    row(
        "FlashLocalSecurity", true, [](auto &s) { return s.option_enableFlashLocalSecurity; }, true);
    row(
        "ProgramVolume", 0.5, [](auto &s) { return s.programVolume; }, 0.5);
    row(
        "ShuffleOption", 1, [](auto &s) { return s.shuffle; }, 1);
    row(
        "RepeatOption", 2, [](auto &s) { return s.repeat; }, 2);
    row(
        "MustShowUrlPaneInPlaylistMode", false, [](auto &s) { return s.option_mustShowUrlPaneInPlaylistMode; }, false);
    row(
        "DontAllowScreensaverInFullscreen", false, [](auto &s) { return s.option_dontAllowScreensaver; }, false);
    row(
        "ScreenShotInterval", 0.3, [](auto &s) { return s.option_screenShotInterval; }, 0.3);
    row(
        "AlwaysStartCapturingFromFirstFrame", true, [](auto &s) { return s.option_alwaysStartCapturingFromFirstFrame; },
        true);
    row(
        "KeepCapturingToNextTrackInPlaylist", true, [](auto &s) { return s.option_keepCapturingToNextTrackInPlaylist; },
        true);
    row(
        "DontAskMeAgainRemovePlaylist", true, [](auto &s) { return s.option_DontAskMeAgainRemovePlaylist; }, true);
    row(
        "DontAskMeAgainClearDownloadsList", true, [](auto &s) { return s.option_DontAskMeAgainClearDownloadsList; },
        true);
    row(
        "DontAskMeAgainRemoveItemFromLibrary", true,
        [](auto &s) { return s.option_DontAskMeAgainRemoveItemFromLibrary; }, true);
    row(
        "DontAskMeAgainRemoveItemFromPlaylist", true,
        [](auto &s) { return s.option_DontAskMeAgainRemoveItemFromPlaylist; }, true);
    row(
        "DontAskMeAgainCancelDownload", true, [](auto &s) { return s.option_DontAskMeAgainCancelDownload; }, true);
    row(
        "DontAskMeAgainRealNotFound", true, [](auto &s) { return s.option_DontAskMeAgainRealNotFound; }, true);
    row(
        "DontAskMeAgainWarningBeforeExit", true, [](auto &s) { return s.option_DontAskMeAgainWarningBeforeExit; },
        true);
    row(
        "DontAskMeAgainMoveToTrashOrKeepFile", true,
        [](auto &s) { return s.option_DontAskMeAgainMoveToTrashOrKeepFile; }, true);
    row(
        "AlwaysMoveFileToTrash", true, [](auto &s) { return s.option_alwaysMoveFileToTrash; }, true);
    row(
        "MustShowFilterHint", false, [](auto &s) { return s.mustShowFilterHint; }, false);
    row(
        "WindowOnTopMode", 0, [](auto &s) { return s.onTopMode; }, 0);
    row(
        "FlvBackgroundColor", "#FF8000", [](auto &s) { return s.flvBgColor; }, "#ff8000");
    row(
        "showTutorial", "hide", [](auto &s) { return s.showTutorial; }, "hide");
    row(
        "RecentFolders", QStringList({"/a", "/b"}), [](auto &s) { return s.recentFolders; }, QStringList({"/a", "/b"}));
    row(
        "DriverVersion", 1.2, [](auto &s) { return s.driverVersion; }, 1.2);
    row(
        "DaemonVersion", 1.4, [](auto &s) { return s.daemonVersion; }, 1.4);
    row(
        "MainWindowFrame", QByteArray("geometry"),
        [](auto &s) { return s.windowFrame(ZBSettings::mainWindowFrameName()); }, QByteArray("geometry"));
    row(
        "DetachedWindowFrame", QByteArray("detached"),
        [](auto &s) { return s.windowFrame(ZBSettings::detachedWindowFrameName()); }, QByteArray("detached"));
}

void TestZBSettings::storedValuesAreReadFromTheirKeys()
{
    QFETCH(QString, key);
    QFETCH(QVariant, stored);
    QFETCH(Reader, read);
    QFETCH(QVariant, expected);

    TemporaryStore file;
    {
        auto writer = file.open();
        writer->setValue(key, stored);
    }
    // A second QSettings reads the file back, as the next launch would.
    auto store = file.open();
    ZBSettings settings;
    settings.loadUserDefaults(*store);
    QCOMPARE(read(settings), expected);
}

void TestZBSettings::storedValuesAreNotClamped()
{
    TemporaryStore file;
    auto store = file.open();
    store->setValue(QStringLiteral("FlashDefaultQuality"), 0);
    store->setValue(QStringLiteral("RepeatOption"), 7);
    store->setValue(QStringLiteral("WindowOnTopMode"), -3);
    store->setValue(QStringLiteral("ProgramVolume"), 2.5);
    store->setValue(QStringLiteral("ScreenShotInterval"), 0.0);

    ZBSettings settings;
    settings.loadUserDefaults(*store);
    QCOMPARE(settings.option_flashDefaultQuality, 0);
    QCOMPARE(settings.repeat, 7);
    QCOMPARE(settings.onTopMode, -3);
    QCOMPARE(settings.programVolume, 2.5);
    QCOMPARE(settings.option_screenShotInterval, 0.0);
}

void TestZBSettings::saveWritesEveryKey()
{
    TemporaryStore file;
    auto store = file.open();
    const ZBSettings settings = changedSettings();
    QVERIFY(settings.saveUserDefaults(*store));

    const QStringList expectedKeys = {"LastApplicationPath",
                                      "DriverOnOff",
                                      "AutoplayAddedFiles",
                                      "GotoIfLastFrameIsMet",
                                      "GotoIfFrameNumberWasDecreased",
                                      "GotoIfStayOnTheSameFrameMore",
                                      "GotoStayingTimeValue",
                                      "PlayFLVwithMPK",
                                      "FormatOfScreenshot",
                                      "PathForDownloads",
                                      "PathForScreenshot",
                                      "AllowToSendDataOverNetwork",
                                      "FlashDefaultQuality",
                                      "FlashLocalSecurity",
                                      "ProgramVolume",
                                      "ShuffleOption",
                                      "RepeatOption",
                                      "MustShowUrlPaneInPlaylistMode",
                                      "DontAllowScreensaverInFullscreen",
                                      "ScreenShotInterval",
                                      "AlwaysStartCapturingFromFirstFrame",
                                      "KeepCapturingToNextTrackInPlaylist",
                                      "DontAskMeAgainRemovePlaylist",
                                      "DontAskMeAgainClearDownloadsList",
                                      "DontAskMeAgainRemoveItemFromLibrary",
                                      "DontAskMeAgainRemoveItemFromPlaylist",
                                      "DontAskMeAgainCancelDownload",
                                      "DontAskMeAgainRealNotFound",
                                      "DontAskMeAgainWarningBeforeExit",
                                      "DontAskMeAgainMoveToTrashOrKeepFile",
                                      "AlwaysMoveFileToTrash",
                                      "MustShowFilterHint",
                                      "WindowOnTopMode",
                                      "FlvBackgroundColor",
                                      "showTutorial",
                                      "RecentFolders",
                                      "MainWindowFrame",
                                      "DetachedWindowFrame"};
    const QStringList written = file.open()->allKeys();
    for (const QString &key : expectedKeys)
        QVERIFY2(written.contains(key), qPrintable(key));
    QCOMPARE(file.open()->value(QStringLiteral("LastApplicationPath")).toString(),
             QCoreApplication::applicationFilePath());
}

void TestZBSettings::roundTripKeepsEveryField()
{
    TemporaryStore file;
    const ZBSettings original = changedSettings();
    QVERIFY(original.saveUserDefaults(*file.open()));

    ZBSettings loaded;
    loaded.loadUserDefaults(*file.open());

    // Field by field first, so that a failure names the field.
    QCOMPARE(loaded.option_gotoStayingTimeValue, original.option_gotoStayingTimeValue);
    QCOMPARE(loaded.option_pathForDownloads, original.option_pathForDownloads);
    QCOMPARE(loaded.option_pathForScreenshot, original.option_pathForScreenshot);
    QCOMPARE(loaded.option_flashDefaultQuality, original.option_flashDefaultQuality);
    QCOMPARE(loaded.programVolume, original.programVolume);
    QCOMPARE(loaded.option_screenShotInterval, original.option_screenShotInterval);
    QCOMPARE(loaded.flvBgColor, original.flvBgColor);
    QCOMPARE(loaded.showTutorial, original.showTutorial);
    QCOMPARE(loaded.recentFolders, original.recentFolders);
    QCOMPARE(loaded.windowFrame(ZBSettings::mainWindowFrameName()),
             original.windowFrame(ZBSettings::mainWindowFrameName()));
    QCOMPARE(loaded.windowFrame(ZBSettings::detachedWindowFrameName()),
             original.windowFrame(ZBSettings::detachedWindowFrameName()));
    QVERIFY(loaded == original);
}

void TestZBSettings::roundTripOfRecentFolders_data()
{
    QTest::addColumn<QStringList>("folders");
    QTest::newRow("none") << QStringList();
    QTest::newRow("one") << QStringList{QStringLiteral("/home/u/Videos")};
    QTest::newRow("one with a comma") << QStringList{QStringLiteral("/home/u/a, b")};
    QTest::newRow("several") << QStringList{QStringLiteral("/a"), QStringLiteral("/b c"), QStringLiteral("/d")};
}

void TestZBSettings::roundTripOfRecentFolders()
{
    QFETCH(QStringList, folders);
    TemporaryStore file;
    ZBSettings original;
    original.recentFolders = folders;
    QVERIFY(original.saveUserDefaults(*file.open()));

    ZBSettings loaded;
    loaded.recentFolders = {QStringLiteral("stale")};
    loaded.loadUserDefaults(*file.open());
    QCOMPARE(loaded.recentFolders, folders);
}

void TestZBSettings::absentWindowFramesStayAbsent()
{
    // The detached window is placed over the main window only while no frame
    // of its own was ever saved; saving an empty one would hide that.
    TemporaryStore file;
    ZBSettings settings;
    settings.setWindowFrame(ZBSettings::mainWindowFrameName(), QByteArray("main"));
    QVERIFY(settings.saveUserDefaults(*file.open()));

    auto store = file.open();
    QVERIFY(store->contains(ZBSettings::mainWindowFrameName()));
    QVERIFY(!store->contains(ZBSettings::detachedWindowFrameName()));
}

void TestZBSettings::helperVersionsAreReadButNotWritten()
{
    TemporaryStore file;
    {
        ZBSettings atLaunch;
        atLaunch.loadUserDefaults(*file.open());
        QCOMPARE(atLaunch.driverVersion, -1.0);

        // The installer records the new versions while the program runs...
        auto installer = file.open();
        installer->setValue(QStringLiteral("DriverVersion"), 1.2);
        installer->setValue(QStringLiteral("DaemonVersion"), 1.4);
        installer->sync();

        // ...and saving at quit must not take them back.
        QVERIFY(atLaunch.saveUserDefaults(*file.open()));
    }
    auto store = file.open();
    QCOMPARE(store->value(QStringLiteral("DriverVersion")).toDouble(), 1.2);
    QCOMPARE(store->value(QStringLiteral("DaemonVersion")).toDouble(), 1.4);
}

void TestZBSettings::textForBooleanGivesDefault()
{
    TemporaryStore file;
    auto store = file.open();
    store->setValue(QStringLiteral("AutoplayAddedFiles"), QStringLiteral("abc"));
    store->setValue(QStringLiteral("FlashLocalSecurity"), QStringLiteral("abc"));

    QTest::ignoreMessage(QtWarningMsg,
                         QRegularExpression(QStringLiteral("\"abc\" of \"AutoplayAddedFiles\" is not a yes/no value")));
    QTest::ignoreMessage(QtWarningMsg,
                         QRegularExpression(QStringLiteral("\"abc\" of \"FlashLocalSecurity\" is not a yes/no value")));
    ZBSettings settings;
    settings.option_autoplayAddedFiles = false;
    settings.option_enableFlashLocalSecurity = true;
    settings.loadUserDefaults(*store);
    // Each gets its own default, not a blanket true or false.
    QCOMPARE(settings.option_autoplayAddedFiles, true);
    QCOMPARE(settings.option_enableFlashLocalSecurity, false);
}

void TestZBSettings::wrongKindsGiveDefaults_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QVariant>("stored");
    QTest::addColumn<Reader>("read");
    QTest::addColumn<QVariant>("expected");

    QTest::newRow("text for a whole number")
        << "FlashDefaultQuality" << QVariant("high") << Reader([](auto &s) { return s.option_flashDefaultQuality; })
        << QVariant(2);
    QTest::newRow("text for a real") << "ScreenShotInterval" << QVariant("fast")
                                     << Reader([](auto &s) { return s.option_screenShotInterval; }) << QVariant(1.0);
    QTest::newRow("list for a path") << "PathForDownloads" << QVariant(QStringList{"/a", "/b"})
                                     << Reader([](auto &s) { return s.option_pathForDownloads; })
                                     << QVariant(downloadsFolder());
    QTest::newRow("colour name without #") << "FlvBackgroundColor" << QVariant("red")
                                           << Reader([](auto &s) { return s.flvBgColor; }) << QVariant("#000000");
    QTest::newRow("colour with bad digits") << "FlvBackgroundColor" << QVariant("#12345g")
                                            << Reader([](auto &s) { return s.flvBgColor; }) << QVariant("#000000");
    QTest::newRow("list for the tutorial state") << "showTutorial" << QVariant(QStringList{"hide", "show"})
                                                 << Reader([](auto &s) { return s.showTutorial; }) << QVariant("show");
    QTest::newRow("empty text for a boolean")
        << "DriverOnOff" << QVariant("") << Reader([](auto &s) { return s.option_driverOnOff; }) << QVariant(true);
}

void TestZBSettings::wrongKindsGiveDefaults()
{
    QFETCH(QString, key);
    QFETCH(QVariant, stored);
    QFETCH(Reader, read);
    QFETCH(QVariant, expected);

    TemporaryStore file;
    file.open()->setValue(key, stored);
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("of \"%1\" is not").arg(key)));
    ZBSettings settings;
    settings.loadUserDefaults(*file.open());
    QCOMPARE(read(settings), expected);
}

void TestZBSettings::acceptedSpellingsOfStoredValues_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QVariant>("stored");
    QTest::addColumn<Reader>("read");
    QTest::addColumn<QVariant>("expected");

    const Reader autoplay = [](auto &s)
    {
        return s.option_autoplayAddedFiles;
    };
    const Reader security = [](auto &s)
    {
        return s.option_enableFlashLocalSecurity;
    };
    const Reader quality = [](auto &s)
    {
        return s.option_flashDefaultQuality;
    };
    // Booleans were stored as numbers, and hand-edited files say yes and no.
    QTest::newRow("number 0 for a boolean") << "AutoplayAddedFiles" << QVariant(0) << autoplay << QVariant(false);
    QTest::newRow("text 0 for a boolean") << "AutoplayAddedFiles" << QVariant("0") << autoplay << QVariant(false);
    QTest::newRow("number 5 for a boolean") << "FlashLocalSecurity" << QVariant(5) << security << QVariant(true);
    QTest::newRow("NO for a boolean") << "AutoplayAddedFiles" << QVariant(" NO ") << autoplay << QVariant(false);
    QTest::newRow("Yes for a boolean") << "FlashLocalSecurity" << QVariant("Yes") << security << QVariant(true);
    QTest::newRow("real for a whole number") << "FlashDefaultQuality" << QVariant(1.9) << quality << QVariant(1);
    QTest::newRow("text real for a whole number")
        << "FlashDefaultQuality" << QVariant("-1.5") << quality << QVariant(-1);
    QTest::newRow("boolean for a whole number") << "FlashDefaultQuality" << QVariant(true) << quality << QVariant(1);
    QTest::newRow("huge number for a whole number")
        << "FlashDefaultQuality" << QVariant(1e30) << quality << QVariant(std::numeric_limits<int>::max());
    QTest::newRow("number for a path") << "PathForScreenshot" << QVariant(42)
                                       << Reader([](auto &s) { return s.option_pathForScreenshot; }) << QVariant("42");
}

void TestZBSettings::acceptedSpellingsOfStoredValues()
{
    storedValuesAreReadFromTheirKeys();
}

void TestZBSettings::unusableValueStaysInTheStore()
{
    TemporaryStore file;
    file.open()->setValue(QStringLiteral("DriverOnOff"), QStringLiteral("maybe"));
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("\"DriverOnOff\" is not")));
    ZBSettings settings;
    settings.loadUserDefaults(*file.open());
    // Nothing is written back at launch: whoever put the value there can
    // still find it until the settings are saved at quit.
    QCOMPARE(file.open()->value(QStringLiteral("DriverOnOff")).toString(), QStringLiteral("maybe"));
}

void TestZBSettings::resetOfWarningsKeepsTheTrashAnswer()
{
    ZBSettings settings = changedSettings();
    settings.resetDialogWarnings();

    QCOMPARE(settings.option_DontAskMeAgainRemovePlaylist, false);
    QCOMPARE(settings.option_DontAskMeAgainClearDownloadsList, false);
    QCOMPARE(settings.option_DontAskMeAgainRemoveItemFromLibrary, false);
    QCOMPARE(settings.option_DontAskMeAgainRemoveItemFromPlaylist, false);
    QCOMPARE(settings.option_DontAskMeAgainCancelDownload, false);
    QCOMPARE(settings.option_DontAskMeAgainRealNotFound, false);
    QCOMPARE(settings.option_DontAskMeAgainWarningBeforeExit, false);
    QCOMPARE(settings.option_DontAskMeAgainMoveToTrashOrKeepFile, false);
    QCOMPARE(settings.option_alwaysMoveFileToTrash, true);
    // Settings that are not warnings are untouched.
    QCOMPARE(settings.option_driverOnOff, false);
    QCOMPARE(settings.onTopMode, 2);
}

void TestZBSettings::unknownWindowFrameNameIsRefused()
{
    ZBSettings settings;
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("\"HUDWindowFrame\" is not kept")));
    settings.setWindowFrame(QStringLiteral("HUDWindowFrame"), QByteArray("hud"));
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("no window frame is kept under")));
    QVERIFY(settings.windowFrame(QStringLiteral("HUDWindowFrame")).isEmpty());
    QVERIFY(settings.windowFrame(ZBSettings::mainWindowFrameName()).isEmpty());
}

void TestZBSettings::userStoreUsesTheProgramsNames()
{
    const std::unique_ptr<QSettings> store = ZBSettings::openStore();
    QCOMPARE(store->organizationName(), QStringLiteral("Quillon Software"));
    QCOMPARE(store->applicationName(), QStringLiteral("Norvik Player"));
    QCOMPARE(store->scope(), QSettings::UserScope);
    QVERIFY2(store->fileName().startsWith(m_configHome.path()), qPrintable(store->fileName()));
}

QTEST_GUILESS_MAIN(TestZBSettings)
#include "tst_zbsettings.moc"
