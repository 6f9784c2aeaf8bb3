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

template <typename T>
Reader of(T ZBSettings::*field)
{
    return [field](const ZBSettings &s)
    {
        return QVariant::fromValue(s.*field);
    };
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
    void freshUserGetsTheDefaults_data();
    void freshUserGetsTheDefaults();
    void roundTripKeepsEveryField();
    void storedValues_data();
    void storedValues();
    void whatSaveLeavesAlone();
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

void TestZBSettings::freshUserGetsTheDefaults_data()
{
    QTest::addColumn<Reader>("read");
    QTest::addColumn<QVariant>("expected");

    // Values whose being wrong a user would notice at once.
    QTest::newRow("Flash quality high") << of(&ZBSettings::option_flashDefaultQuality) << QVariant(2);
    QTest::newRow("downloads folder") << of(&ZBSettings::option_pathForDownloads) << QVariant(downloadsFolder());
    QTest::newRow("screenshot folder") << of(&ZBSettings::option_pathForScreenshot) << QVariant(downloadsFolder());
    QTest::newRow("a shot a second") << of(&ZBSettings::option_screenShotInterval) << QVariant(1.0);
    QTest::newRow("finished after 10 s on a frame") << of(&ZBSettings::option_gotoStayingTimeValue) << QVariant(10.0);
    QTest::newRow("full volume") << of(&ZBSettings::programVolume) << QVariant(1.0);
    QTest::newRow("autoplay") << of(&ZBSettings::option_autoplayAddedFiles) << QVariant(true);
    QTest::newRow("no local Flash access") << of(&ZBSettings::option_enableFlashLocalSecurity) << QVariant(false);
    QTest::newRow("no repeat") << of(&ZBSettings::repeat) << QVariant(0);
    QTest::newRow("main window on top") << of(&ZBSettings::onTopMode) << QVariant(1);
    QTest::newRow("black FLV background") << of(&ZBSettings::flvBgColor) << QVariant("#000000");
    QTest::newRow("no helper installed") << of(&ZBSettings::driverVersion) << QVariant(-1.0);
}

void TestZBSettings::freshUserGetsTheDefaults()
{
    QFETCH(Reader, read);
    QFETCH(QVariant, expected);

    TemporaryStore file;
    file.open()->setValue(QStringLiteral("LastApplicationPath"), QStringLiteral("/old/place/norvikplayer"));
    ZBSettings settings = changedSettings(); // the load must overwrite every field
    settings.loadUserDefaults(*file.open());
    QCOMPARE(read(settings), expected);
    // An empty store gives exactly what a fresh object holds.
    QVERIFY(settings == ZBSettings());
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
    QVERIFY(loaded == original);

    for (const QStringList &folders : {QStringList(), QStringList{"/home/u/a, b"}})
    {
        ZBSettings one;
        one.recentFolders = folders;
        QVERIFY(one.saveUserDefaults(*file.open()));
        loaded.loadUserDefaults(*file.open());
        QCOMPARE(loaded.recentFolders, folders);
    }
}

void TestZBSettings::storedValues_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QVariant>("stored");
    QTest::addColumn<Reader>("read");
    QTest::addColumn<QVariant>("expected");
    QTest::addColumn<bool>("warns");

    const Reader autoplay = of(&ZBSettings::option_autoplayAddedFiles);
    const Reader security = of(&ZBSettings::option_enableFlashLocalSecurity);
    const Reader quality = of(&ZBSettings::option_flashDefaultQuality);
    const Reader colour = of(&ZBSettings::flvBgColor);
    const Reader interval = of(&ZBSettings::option_screenShotInterval);

    // Stores written by earlier versions and by the integration helper.
    QTest::newRow("helper version") << "DriverVersion" << QVariant(1.2) << of(&ZBSettings::driverVersion)
                                    << QVariant(1.2) << false;
    QTest::newRow("colour in capitals") << "FlvBackgroundColor" << QVariant("#FF8000") << colour << QVariant("#ff8000")
                                        << false;
    // No range check: what was stored is what the user chose.
    QTest::newRow("quality 0") << "FlashDefaultQuality" << QVariant(0) << quality << QVariant(0) << false;
    QTest::newRow("interval 0") << "ScreenShotInterval" << QVariant(0.0) << interval << QVariant(0.0) << false;
    QTest::newRow("repeat 7") << "RepeatOption" << QVariant(7) << of(&ZBSettings::repeat) << QVariant(7) << false;
    // Booleans were stored as numbers, and hand-edited files say yes and no.
    QTest::newRow("number 0 for a boolean")
        << "AutoplayAddedFiles" << QVariant(0) << autoplay << QVariant(false) << false;
    QTest::newRow("text 0 for a boolean")
        << "AutoplayAddedFiles" << QVariant("0") << autoplay << QVariant(false) << false;
    QTest::newRow("number 5 for a boolean")
        << "FlashLocalSecurity" << QVariant(5) << security << QVariant(true) << false;
    QTest::newRow("NO for a boolean") << "AutoplayAddedFiles" << QVariant(" NO ") << autoplay << QVariant(false)
                                      << false;
    QTest::newRow("Yes for a boolean") << "FlashLocalSecurity" << QVariant("Yes") << security << QVariant(true)
                                       << false;
    QTest::newRow("real for a whole number")
        << "FlashDefaultQuality" << QVariant(1.9) << quality << QVariant(1) << false;
    QTest::newRow("text real for a whole number")
        << "FlashDefaultQuality" << QVariant("-1.5") << quality << QVariant(-1) << false;
    QTest::newRow("boolean for a whole number")
        << "FlashDefaultQuality" << QVariant(true) << quality << QVariant(1) << false;
    QTest::newRow("huge number for a whole number")
        << "FlashDefaultQuality" << QVariant(1e30) << quality << QVariant(std::numeric_limits<int>::max()) << false;
    QTest::newRow("number for a path") << "PathForScreenshot" << QVariant(42)
                                       << of(&ZBSettings::option_pathForScreenshot) << QVariant("42") << false;
    // Unusable values give each field its own default, never a blanket one.
    QTest::newRow("text for a true boolean")
        << "AutoplayAddedFiles" << QVariant("abc") << autoplay << QVariant(true) << true;
    QTest::newRow("text for a false boolean")
        << "FlashLocalSecurity" << QVariant("abc") << security << QVariant(false) << true;
    QTest::newRow("empty text for a boolean")
        << "DriverOnOff" << QVariant("") << of(&ZBSettings::option_driverOnOff) << QVariant(true) << true;
    QTest::newRow("text for a whole number")
        << "FlashDefaultQuality" << QVariant("high") << quality << QVariant(2) << true;
    QTest::newRow("text for a real") << "ScreenShotInterval" << QVariant("fast") << interval << QVariant(1.0) << true;
    QTest::newRow("list for a path") << "PathForDownloads" << QVariant(QStringList{"/a", "/b"})
                                     << of(&ZBSettings::option_pathForDownloads) << QVariant(downloadsFolder()) << true;
    QTest::newRow("colour name without #")
        << "FlvBackgroundColor" << QVariant("red") << colour << QVariant("#000000") << true;
    QTest::newRow("colour with bad digits")
        << "FlvBackgroundColor" << QVariant("#12345g") << colour << QVariant("#000000") << true;
    QTest::newRow("list for the tutorial state") << "showTutorial" << QVariant(QStringList{"hide", "show"})
                                                 << of(&ZBSettings::showTutorial) << QVariant("show") << true;
}

void TestZBSettings::storedValues()
{
    QFETCH(QString, key);
    QFETCH(QVariant, stored);
    QFETCH(Reader, read);
    QFETCH(QVariant, expected);
    QFETCH(bool, warns);

    TemporaryStore file;
    file.open()->setValue(key, stored);
    if (warns)
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("of \"%1\" is not").arg(key)));
    ZBSettings settings;
    settings.loadUserDefaults(*file.open());
    QCOMPARE(read(settings), expected);
    // Nothing is written back at launch: whoever put an unusable value there
    // can still find it until the settings are saved at quit.
    if (warns)
        QCOMPARE(file.open()->value(key).toString(), stored.toString());
}

void TestZBSettings::whatSaveLeavesAlone()
{
    TemporaryStore file;
    ZBSettings atLaunch;
    atLaunch.loadUserDefaults(*file.open());
    // The installer records new helper versions while the program runs, and
    // saving at quit must not take them back.
    file.open()->setValue(QStringLiteral("DriverVersion"), 1.2);
    file.open()->setValue(QStringLiteral("DaemonVersion"), 1.4);
    atLaunch.setWindowFrame(ZBSettings::mainWindowFrameName(), QByteArray("main"));
    QVERIFY(atLaunch.saveUserDefaults(*file.open()));

    auto store = file.open();
    QCOMPARE(store->value(QStringLiteral("DriverVersion")).toDouble(), 1.2);
    QCOMPARE(store->value(QStringLiteral("DaemonVersion")).toDouble(), 1.4);
    // The detached window is placed over the main window only while no frame
    // of its own was ever saved; saving an empty one would hide that.
    QVERIFY(store->contains(ZBSettings::mainWindowFrameName()));
    QVERIFY(!store->contains(ZBSettings::detachedWindowFrameName()));
}

void TestZBSettings::resetOfWarningsKeepsTheTrashAnswer()
{
    ZBSettings settings = changedSettings();
    settings.resetDialogWarnings();

    ZBSettings expected = changedSettings();
    expected.option_DontAskMeAgainRemovePlaylist = false;
    expected.option_DontAskMeAgainClearDownloadsList = false;
    expected.option_DontAskMeAgainRemoveItemFromLibrary = false;
    expected.option_DontAskMeAgainRemoveItemFromPlaylist = false;
    expected.option_DontAskMeAgainCancelDownload = false;
    expected.option_DontAskMeAgainRealNotFound = false;
    expected.option_DontAskMeAgainWarningBeforeExit = false;
    expected.option_DontAskMeAgainMoveToTrashOrKeepFile = false;
    QVERIFY(settings == expected);
    QVERIFY(settings.option_alwaysMoveFileToTrash);
}

void TestZBSettings::unknownWindowFrameNameIsRefused()
{
    ZBSettings settings;
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("\"HUDWindowFrame\" is not kept")));
    settings.setWindowFrame(QStringLiteral("HUDWindowFrame"), QByteArray("hud"));
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("no window frame is kept under")));
    QVERIFY(settings.windowFrame(QStringLiteral("HUDWindowFrame")).isEmpty());
    QVERIFY(settings == ZBSettings());
}

void TestZBSettings::userStoreUsesTheProgramsNames()
{
    const std::unique_ptr<QSettings> store = ZBSettings::openStore();
    QCOMPARE(store->organizationName(), QStringLiteral("Quillon Software"));
    QCOMPARE(store->applicationName(), QStringLiteral("Norvik Player"));
    QVERIFY2(store->fileName().startsWith(m_configHome.path()), qPrintable(store->fileName()));
}

QTEST_GUILESS_MAIN(TestZBSettings)
#include "tst_zbsettings.moc"
