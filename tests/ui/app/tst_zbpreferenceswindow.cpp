#include <QCheckBox>
#include <QComboBox>
#include <QMenu>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QSlider>
#include <QtTest>

#include "localization/zblocalizer.h"
#include "settings/zbsettings.h"
#include "ui/app/zbpreferenceswindow.h"

namespace
{
template<typename T>
T *control(const ZBPreferencesWindow &window, const char *name)
{
    T *found = window.findChild<T *>(QLatin1String(name));
    if (!found)
        qWarning("no control %s", name);
    return found;
}

ZBSettings openingSettings()
{
    ZBSettings s;
    s.option_autoplayAddedFiles = true;
    s.option_flashDefaultQuality = 2;
    s.option_screenShotInterval = 0.5;
    s.option_pathForDownloads = QStringLiteral("/media/downloads");
    s.recentFolders = {QStringLiteral("/media/downloads"), QStringLiteral("/srv/a"), QStringLiteral("/srv/b")};
    s.option_DontAskMeAgainRemovePlaylist = true;
    s.option_DontAskMeAgainMoveToTrashOrKeepFile = true;
    s.option_alwaysMoveFileToTrash = true;
    return s;
}
} // namespace

class TestZBPreferencesWindow : public QObject
{
    Q_OBJECT

private Q_SLOTS:
    void initTestCase() { ZBLocalizer::setLanguage(QStringLiteral("English")); }

    void everyWayOfClosingTakesOverTheValues_data()
    {
        QTest::addColumn<QString>("how");
        for (const char *how : {"Close button", "Escape", "Ctrl+W", "window close"})
            QTest::newRow(how) << how;
    }
    void everyWayOfClosingTakesOverTheValues()
    {
        QFETCH(QString, how);
        ZBPreferencesWindow window;
        QSignalSpy closed(&window, &ZBPreferencesWindow::preferencesWindowClose);
        const ZBSettings before = openingSettings();
        window.initWithOptions(before);
        window.showPreferencesWindow();
        QVERIFY(QTest::qWaitForWindowActive(&window));
        QCOMPARE(control<QSlider>(window, "ScreenShotInterval")->value(), 5);

        control<QCheckBox>(window, "AutoplayAddedFiles")->click();
        auto *quality = control<QComboBox>(window, "FlashDefaultQuality");
        quality->setCurrentIndex(quality->findData(0));
        control<QSlider>(window, "ScreenShotInterval")->setValue(11);
        control<QPushButton>(window, "prefGeneralResetButton")->click();
        // The last recent folder is chosen from the rebuilt pop-up.
        QMetaObject::invokeMethod(window.downloadsFolderMenu(), "aboutToShow");
        QAction *recent = nullptr;
        for (QAction *action : window.downloadsFolderMenu()->actions())
            if (action->data() == QStringLiteral("/srv/b"))
                recent = action;
        QVERIFY(recent);
        recent->trigger();

        if (how == "Close button")
            window.closeButton()->click();
        else if (how == "Escape")
            QTest::keyClick(&window, Qt::Key_Escape);
        else if (how == "Ctrl+W")
            QTest::keyClick(&window, Qt::Key_W, Qt::ControlModifier);
        else
            window.close();
        QCOMPARE(closed.count(), 1);
        QVERIFY(!window.isVisible());
        window.reject();
        QCOMPARE(closed.count(), 1);

        ZBSettings after = before;
        window.applyTo(after);
        QCOMPARE(after.option_autoplayAddedFiles, false);
        QCOMPARE(after.option_flashDefaultQuality, 0);
        QCOMPARE(after.option_screenShotInterval, 2.0);
        QCOMPARE(after.option_pathForDownloads, QStringLiteral("/srv/b"));
        QCOMPARE(after.recentFolders, (QStringList{"/srv/b", "/media/downloads", "/srv/a"}));
        QVERIFY(window.mustResetWarnings());
        after.resetDialogWarnings();
        QVERIFY(!after.option_DontAskMeAgainRemovePlaylist && !after.option_DontAskMeAgainMoveToTrashOrKeepFile);
        QVERIFY(after.option_alwaysMoveFileToTrash);

        // A new opening starts without the earlier request.
        window.initWithOptions(after);
        QVERIFY(!window.mustResetWarnings());
    }

    void valuesTheControlsCannotShowComeBackUnchanged()
    {
        ZBSettings before;
        before.option_screenShotInterval = 2.5;
        before.option_gotoStayingTimeValue = 0.25;
        before.option_flashDefaultQuality = 7;
        before.option_formatOfScreenshot = 5;
        before.flvBgColor = QStringLiteral("banana");
        ZBPreferencesWindow window;
        window.initWithOptions(before);
        ZBSettings after;
        window.applyTo(after);
        QCOMPARE(after, before);
    }

    void colourWellFollowsTheFlvPlayer_data()
    {
        QTest::addColumn<bool>("flashHost");
        QTest::newRow("Flash host") << true;
        QTest::newRow("movie engine") << false;
    }
    void colourWellFollowsTheFlvPlayer()
    {
        QFETCH(bool, flashHost);
        ZBSettings settings;
        settings.option_playFLVwithMPK = flashHost;
        ZBPreferencesWindow window;
        window.initWithOptions(settings);
        auto *well = control<QPushButton>(window, "FlvBackgroundColor");
        QCOMPARE(well->isEnabled(), flashHost);
        control<QRadioButton>(window, flashHost ? "PlayFLVwithMovieEngine" : "PlayFLVwithMPK")->click();
        QCOMPARE(well->isEnabled(), !flashHost);
        ZBSettings after;
        window.applyTo(after);
        QCOMPARE(after.option_playFLVwithMPK, !flashHost);
    }
};

QTEST_MAIN(TestZBPreferencesWindow)
#include "tst_zbpreferenceswindow.moc"
