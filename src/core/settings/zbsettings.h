#pragma once

#include <memory>

#include <QByteArray>
#include <QSettings>
#include <QString>
#include <QStringList>

// Every user setting of the program. Read once at launch (loadUserDefaults)
// and written once at quit (saveUserDefaults); the rest of the program reads
// and changes the fields, never the store.
//
// The fields keep the names the settings have always had in the code
// (_option_autoplayAddedFiles becomes option_autoplayAddedFiles), so that a
// field can be found from its store key and back. The in-class initialisers
// are the defaults a fresh user gets.
class ZBSettings
{
public:
    static QString organizationName(); // "Quillon Software"
    static QString applicationName();  // "Norvik Player"
    // Autosave names of the two window frames.
    static QString mainWindowFrameName();     // "MainWindowFrame"
    static QString detachedWindowFrameName(); // "DetachedWindowFrame"

    // The user's own store. Tests must not use it: they open a file-based
    // QSettings of their own.
    static std::unique_ptr<QSettings> openStore();

    // Writes "LastApplicationPath", then reads every key in the store's
    // documented order. An absent key gives the default; a present one is
    // converted to the field's type with no range check (a stored 0 quality
    // stays 0). A value that cannot be converted at all (text for a number,
    // a list for a path) gives the default and a warning; the store keeps it
    // until the next save.
    void loadUserDefaults(QSettings &store);
    // Writes every key, the recent folders, the volume, the application path,
    // the FLV colour, the on-top mode and both window frames, and flushes the
    // store. False, with a warning, when the store could not be written.
    bool saveUserDefaults(QSettings &store) const;

    // Clears every don't-ask-again flag. The remembered answer to the
    // trash-or-keep question (option_alwaysMoveFileToTrash) stays, so that the
    // question simply comes back with the last answer preselected.
    void resetDialogWarnings();

    // Window geometry as saved by QWidget::saveGeometry(); empty when none was
    // saved yet. Only the two autosave names above are kept.
    QByteArray windowFrame(const QString &autosaveName) const;
    void setWindowFrame(const QString &autosaveName, const QByteArray &geometry);

    static QString defaultDownloadsFolder();

    // "DriverOnOff": offer to install the integration helper.
    bool option_driverOnOff = true;
    // "AutoplayAddedFiles"
    bool option_autoplayAddedFiles = true;
    // "GotoIfLastFrameIsMet", "GotoIfFrameNumberWasDecreased",
    // "GotoIfStayOnTheSameFrameMore", "GotoStayingTimeValue" (seconds): when an
    // SWF movie counts as finished.
    bool option_gotoIfLastFrameIsMet = true;
    bool option_gotoIfFrameNumberWasDecreased = true;
    bool option_gotoIfStayOnTheSameFrameMore = true;
    double option_gotoStayingTimeValue = 10.0;
    // "PlayFLVwithMPK": FLV/F4V through the Flash host rather than the movie
    // engine.
    bool option_playFLVwithMPK = true;
    // "FormatOfScreenshot": image format index.
    int option_formatOfScreenshot = 0;
    // "PathForDownloads", "PathForScreenshot"
    QString option_pathForDownloads = defaultDownloadsFolder();
    QString option_pathForScreenshot = defaultDownloadsFolder();
    // "AllowToSendDataOverNetwork"
    bool option_allowSendDataOverNetwork = true;
    // "FlashDefaultQuality"
    int option_flashDefaultQuality = 2;
    // "FlashLocalSecurity"
    bool option_enableFlashLocalSecurity = false;
    // "ProgramVolume": 0..1; the volume slider shows it × 100.
    double programVolume = 1.0;
    // "ShuffleOption": 0 off, 1 on. "RepeatOption": 0 none, 1 all, 2 one.
    int shuffle = 0;
    int repeat = 0;
    // "MustShowUrlPaneInPlaylistMode"
    bool option_mustShowUrlPaneInPlaylistMode = true;
    // "DontAllowScreensaverInFullscreen"
    bool option_dontAllowScreensaver = true;
    // "ScreenShotInterval" (seconds between the shots of a series)
    double option_screenShotInterval = 1.0;
    // "AlwaysStartCapturingFromFirstFrame", "KeepCapturingToNextTrackInPlaylist"
    bool option_alwaysStartCapturingFromFirstFrame = false;
    bool option_keepCapturingToNextTrackInPlaylist = false;
    // "DontAskMeAgain..." flags of the confirmation alerts.
    bool option_DontAskMeAgainRemovePlaylist = false;
    bool option_DontAskMeAgainClearDownloadsList = false;
    bool option_DontAskMeAgainRemoveItemFromLibrary = false;
    bool option_DontAskMeAgainRemoveItemFromPlaylist = false;
    bool option_DontAskMeAgainCancelDownload = false;
    bool option_DontAskMeAgainRealNotFound = false;
    bool option_DontAskMeAgainWarningBeforeExit = false;
    bool option_DontAskMeAgainMoveToTrashOrKeepFile = false;
    // "AlwaysMoveFileToTrash": the remembered answer to the trash-or-keep
    // question.
    bool option_alwaysMoveFileToTrash = false;
    // "MustShowFilterHint"
    bool mustShowFilterHint = true;
    // "WindowOnTopMode": 0 off, 1 main window on top, 2 detached window on top.
    int onTopMode = 1;
    // "FlvBackgroundColor" as "#rrggbb", so that the core needs no QtGui.
    QString flvBgColor = QStringLiteral("#000000");
    // "showTutorial": "show" or "hide", whether the start screen shows its
    // hints. Kept as text, the values the tutorial itself reports.
    QString showTutorial = QStringLiteral("show");
    // "RecentFolders": last folders chosen in the folder pop-ups, newest first.
    QStringList recentFolders;
    // "DriverVersion", "DaemonVersion": versions of the installed integration
    // helper, -1 when none is recorded. Read here, but written only by the
    // helper's installer straight into the store: saving the values read at
    // launch would undo an install made while the program ran.
    double driverVersion = -1;
    double daemonVersion = -1;

    bool operator==(const ZBSettings &other) const = default;

private:
    QByteArray m_mainWindowFrame;
    QByteArray m_detachedWindowFrame;
};
