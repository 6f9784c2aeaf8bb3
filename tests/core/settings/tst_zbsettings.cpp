#include <QCoreApplication>
#include <QDir>
#include <QRegularExpression>
#include <QSettings>
#include <QTemporaryDir>
#include <QtTest>

#include "settings/zbsettings.h"

namespace
{
using S = ZBSettings;

const QList<bool S::*> Warnings{
    &S::option_DontAskMeAgainRemovePlaylist,        &S::option_DontAskMeAgainClearDownloadsList,
    &S::option_DontAskMeAgainRemoveItemFromLibrary, &S::option_DontAskMeAgainRemoveItemFromPlaylist,
    &S::option_DontAskMeAgainCancelDownload,        &S::option_DontAskMeAgainRealNotFound,
    &S::option_DontAskMeAgainWarningBeforeExit,     &S::option_DontAskMeAgainMoveToTrashOrKeepFile};

// A value different from the default for every field, so that a round trip
// shows each field's own save and load.
ZBSettings changedSettings()
{
    ZBSettings s;
    QList<bool S::*> flags = Warnings;
    flags << &S::option_driverOnOff << &S::option_autoplayAddedFiles << &S::option_gotoIfLastFrameIsMet
          << &S::option_gotoIfFrameNumberWasDecreased << &S::option_gotoIfStayOnTheSameFrameMore
          << &S::option_playFLVwithMPK << &S::option_allowSendDataOverNetwork << &S::option_enableFlashLocalSecurity
          << &S::option_mustShowUrlPaneInPlaylistMode << &S::option_dontAllowScreensaver
          << &S::option_alwaysStartCapturingFromFirstFrame << &S::option_keepCapturingToNextTrackInPlaylist
          << &S::option_alwaysMoveFileToTrash << &S::mustShowFilterHint;
    for (bool S::*flag : flags)
        s.*flag = !(s.*flag);
    s.option_gotoStayingTimeValue = 3.25;
    s.option_formatOfScreenshot = 4;
    s.option_pathForDownloads = QStringLiteral("/media/films/from the web");
    s.option_pathForScreenshot = QStringLiteral("/tmp/shots, stills");
    s.option_flashDefaultQuality = 0;
    s.programVolume = 0.35;
    s.shuffle = 1;
    s.repeat = 2;
    s.option_screenShotInterval = 0.1;
    s.onTopMode = 2;
    s.flvBgColor = QStringLiteral("#12ab9f");
    s.showTutorial = QStringLiteral("hide");
    s.recentFolders = {QStringLiteral("/home/a/Videos"), QStringLiteral("/srv/media, shared"), QStringLiteral("/x")};
    s.setWindowFrame(ZBSettings::mainWindowFrameName(), QByteArray("\x01\xd9\xd0\xcb\x00main", 10));
    s.setWindowFrame(ZBSettings::detachedWindowFrameName(), QByteArray("detached\x00\xff", 10));
    return s;
}

} // namespace

class TestZBSettings : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase();
    void init();
    void roundTripKeepsEveryField();
    void storedValues_data();
    void storedValues();
    void whatSaveLeavesAlone();
    void warningsWindowFramesAndTheUserStore();

private:
    QTemporaryDir m_configHome;
    std::unique_ptr<QTemporaryDir> m_dir;
    // A store in a file of its own, never the user's settings.
    std::unique_ptr<QSettings> store() const
    {
        return std::make_unique<QSettings>(m_dir->filePath(QStringLiteral("settings.ini")), QSettings::IniFormat);
    }
};

void TestZBSettings::initTestCase()
{
    // openStore() opens the user's store; pointed here, the test cannot touch
    // the real one even by mistake.
    QVERIFY(m_configHome.isValid());
    qputenv("XDG_CONFIG_HOME", m_configHome.path().toLocal8Bit());
}

void TestZBSettings::init()
{
    m_dir = std::make_unique<QTemporaryDir>();
}

void TestZBSettings::roundTripKeepsEveryField()
{
    // An empty store gives exactly what a fresh object holds, whatever the
    // object held before.
    store()->setValue(QStringLiteral("LastApplicationPath"), QStringLiteral("/old/place/norvikplayer"));
    ZBSettings loaded = changedSettings();
    loaded.loadUserDefaults(*store());
    QVERIFY(loaded == ZBSettings());
    QCOMPARE(store()->value(QStringLiteral("LastApplicationPath")).toString(), QCoreApplication::applicationFilePath());

    const ZBSettings original = changedSettings();
    QVERIFY(original.saveUserDefaults(*store()));
    loaded.loadUserDefaults(*store());
    QVERIFY(loaded == original);

    // A single folder with a comma is not taken for two.
    ZBSettings one;
    one.recentFolders = QStringList{"/home/u/a, b"};
    QVERIFY(one.saveUserDefaults(*store()));
    loaded.loadUserDefaults(*store());
    QCOMPARE(loaded.recentFolders, one.recentFolders);
}

void TestZBSettings::storedValues_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QVariant>("stored");  // invalid: nothing stored
    QTest::addColumn<QString>("expected"); // as the loaded settings save it
    QTest::addColumn<bool>("warns");
    const auto row =
        [](const char *name, const char *key, const QVariant &stored, const QString &expected, bool warns = false)
    {
        QTest::newRow(name) << key << stored << expected << warns;
    };

    // Defaults whose being wrong a user would notice at once.
    row("Flash quality high", "FlashDefaultQuality", QVariant(), "2");
    row("downloads folder", "PathForScreenshot", QVariant(), QDir::homePath() + QStringLiteral("/Downloads"));
    // Stores written by earlier versions and by hand.
    row("colour in capitals", "FlvBackgroundColor", "#FF8000", "#ff8000");
    row("repeat 7, no range check", "RepeatOption", 7, "7");
    row("text 0 for a boolean", "AutoplayAddedFiles", "0", "false");
    row("NO for a boolean", "AutoplayAddedFiles", " NO ", "false");
    row("text real for a whole number", "FlashDefaultQuality", "-1.5", "-1");
    row("huge number for a whole number", "FlashDefaultQuality", 1e30,
        QString::number(std::numeric_limits<int>::max()));
    // Unusable values give each field its own default, never a blanket one.
    row("text for a false boolean", "FlashLocalSecurity", "abc", "false", true);
    row("empty text for a true boolean", "AutoplayAddedFiles", "", "true", true);
    row("text for a real", "ScreenShotInterval", "fast", "1", true);
    row("list for a path", "PathForDownloads", QStringList{"/a", "/b"}, QDir::homePath() + "/Downloads", true);
    row("colour with bad digits", "FlvBackgroundColor", "#12345g", "#000000", true);
}

void TestZBSettings::storedValues()
{
    QFETCH(QString, key);
    QFETCH(QVariant, stored);
    QFETCH(QString, expected);
    QFETCH(bool, warns);

    if (stored.isValid())
        store()->setValue(key, stored);
    if (warns)
        QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("of \"%1\" is not").arg(key)));
    ZBSettings settings = changedSettings();
    settings.loadUserDefaults(*store());
    QSettings saved(m_dir->filePath(QStringLiteral("saved.ini")), QSettings::IniFormat);
    QVERIFY(settings.saveUserDefaults(saved));
    QCOMPARE(saved.value(key).toString(), expected);
    // Nothing is written back at launch: whoever put an unusable value there
    // can still find it until the settings are saved at quit.
    QCOMPARE(store()->value(key).toString(), stored.toString());
}

void TestZBSettings::whatSaveLeavesAlone()
{
    ZBSettings atLaunch;
    atLaunch.loadUserDefaults(*store());
    // The installer records new helper versions while the program runs, and
    // saving at quit must not take them back.
    store()->setValue(QStringLiteral("DriverVersion"), 1.2);
    atLaunch.setWindowFrame(ZBSettings::mainWindowFrameName(), QByteArray("main"));
    QVERIFY(atLaunch.saveUserDefaults(*store()));

    QCOMPARE(store()->value(QStringLiteral("DriverVersion")).toDouble(), 1.2);
    // The detached window is placed over the main window only while no frame
    // of its own was ever saved; saving an empty one would hide that.
    QVERIFY(store()->contains(ZBSettings::mainWindowFrameName()));
    QVERIFY(!store()->contains(ZBSettings::detachedWindowFrameName()));
}

void TestZBSettings::warningsWindowFramesAndTheUserStore()
{
    // Resetting the warnings leaves the remembered trash answer alone.
    ZBSettings settings = changedSettings();
    settings.resetDialogWarnings();
    ZBSettings expected = changedSettings();
    for (bool S::*warning : Warnings)
        expected.*warning = false;
    QVERIFY(settings == expected);

    ZBSettings fresh;
    QTest::ignoreMessage(QtWarningMsg, QRegularExpression(QStringLiteral("\"HUDWindowFrame\" is not kept")));
    fresh.setWindowFrame(QStringLiteral("HUDWindowFrame"), QByteArray("hud"));
    QVERIFY(fresh == ZBSettings());

    const std::unique_ptr<QSettings> store = ZBSettings::openStore();
    QCOMPARE(store->organizationName(), QStringLiteral("Quillon Software"));
    QCOMPARE(store->applicationName(), QStringLiteral("Norvik Player"));
    QVERIFY2(store->fileName().startsWith(m_configHome.path()), qPrintable(store->fileName()));
}

QTEST_GUILESS_MAIN(TestZBSettings)
#include "tst_zbsettings.moc"
