#pragma once

#include <QDialog>
#include <QString>
#include <QStringList>

class QAction;
class QActionGroup;
class QCheckBox;
class QComboBox;
class QLabel;
class QMenu;
class QPushButton;
class QRadioButton;
class QSlider;
class QStackedWidget;
class QToolBar;
class ZBSettings;

// The preferences: five panes chosen from a toolbar, editing a copy of the
// settings. There is no Apply: whatever the window shows when it closes is
// what the caller takes over.
//
// Use: initWithOptions(settings) fills every control, showPreferencesWindow()
// shows the window modal to the whole application (the main window takes no
// input meanwhile). Every way of closing (the window's close button, Escape,
// Ctrl+W, the Close button) ends in done() and emits preferencesWindowClose()
// exactly once per showing; the caller then reads the values back with
// applyTo() and carries out mustResetWarnings().
//
// Every control that edits a setting is named (objectName) after the setting's
// store key: "DriverOnOff", "PlayFLVwithMPK" (the Flash-host radio; the other
// one is "PlayFLVwithMovieEngine"), "FlvBackgroundColor", "PathForDownloads",
// "ScreenShotInterval", ...; the reset button is "prefGeneralResetButton".
class ZBPreferencesWindow : public QDialog
{
    Q_OBJECT

public:
    enum Pane
    {
        GeneralPane,
        SwfAndFlvPane,
        PlaylistPane,
        CapturePane,
        PluginsPane
    };
    Q_ENUM(Pane)

    explicit ZBPreferencesWindow(QWidget *parent = nullptr);
    ~ZBPreferencesWindow() override;

    // Fills the controls and forgets an earlier reset request. Values the
    // controls cannot show exactly (an interval of 2.5 s, an FLV colour that
    // is not a colour, a quality or format the pop-ups do not list) are kept
    // as they are unless the user changes that control.
    void initWithOptions(const ZBSettings &settings);
    // Writes every value the window edits, and the recent folders, into
    // `settings`; everything else is left alone. The don't-ask flags are not
    // touched: see mustResetWarnings().
    void applyTo(ZBSettings &settings) const;
    // The reset button was pressed since the window was filled: the caller
    // runs ZBSettings::resetDialogWarnings().
    bool mustResetWarnings() const { return m_mustResetWarnings; }

    double screenshotInterval() const { return m_screenshotInterval; }
    double gotoStayingTimeValue() const { return m_stayingTime; }
    QString pathForDownloads() const;
    QString pathForScreenshots() const;
    QStringList recentFolders() const { return m_recentFolders; }
    // "#rrggbb" as the settings keep it.
    QString flvColor() const { return m_flvColor; }

    Pane currentPane() const;
    void showPane(Pane pane);

    QPushButton *closeButton() const { return m_closeButton; }
    QMenu *downloadsFolderMenu() const;
    QMenu *screenshotsFolderMenu() const;

public Q_SLOTS:
    // Shows the window, or brings it to the front when it is already shown.
    void showPreferencesWindow();
    void done(int result) override;

Q_SIGNALS:
    void preferencesWindowClose();

protected:
    void showEvent(QShowEvent *event) override;

private:
    // A pop-up of folders: the menu is built afresh each time it opens.
    struct FolderPopup
    {
        QPushButton *button = nullptr;
        QMenu *menu = nullptr;
        QString folder;
        QString title;
    };

    QWidget *makeGeneralPane();
    QWidget *makeSwfAndFlvPane();
    QWidget *makePlaylistPane();
    QWidget *makeCapturePane();
    QWidget *makePluginsPane();
    QCheckBox *addCheckBox(const char *labelKey, const QString &settingKey);
    QWidget *makeFolderPopup(FolderPopup &popup, const QString &settingKey, const char *titleKey);
    void rebuildFolderMenu(FolderPopup &popup);
    void chooseFolder(FolderPopup &popup, const QString &folder);
    void chooseOtherFolder(FolderPopup &popup);
    void showFolder(FolderPopup &popup, const QString &folder);
    void showFlvColor(const QString &color);
    void pickFlvColor();
    void updateFlvColorWell();
    void updateIntervalText();
    void updateStayingTimeText();
    void fillPluginsPane();

    bool m_open = false;
    bool m_mustResetWarnings = false;
    bool m_pluginsFilled = false;
    double m_screenshotInterval = 1.0;
    double m_stayingTime = 10.0;
    QString m_flvColor;
    QStringList m_recentFolders;

    QToolBar *m_toolBar;
    QActionGroup *m_paneActions;
    QStackedWidget *m_panes;
    QPushButton *m_closeButton;

    QCheckBox *m_driver = nullptr;
    QCheckBox *m_autoplay = nullptr;
    QCheckBox *m_allowNetwork = nullptr;
    QCheckBox *m_noScreensaver = nullptr;
    QCheckBox *m_localSecurity = nullptr;
    QRadioButton *m_flashHost = nullptr;
    QRadioButton *m_movieEngine = nullptr;
    QLabel *m_flvColorLabel = nullptr;
    QPushButton *m_flvColorWell = nullptr;
    QComboBox *m_quality = nullptr;
    QPushButton *m_resetButton = nullptr;
    QLabel *m_resetMarked = nullptr;
    QCheckBox *m_lastFrame = nullptr;
    QCheckBox *m_decreased = nullptr;
    QCheckBox *m_staySame = nullptr;
    QSlider *m_stayingSlider = nullptr;
    QLabel *m_stayingText = nullptr;
    QSlider *m_intervalSlider = nullptr;
    QLabel *m_intervalText = nullptr;
    QCheckBox *m_firstFrame = nullptr;
    QCheckBox *m_keepCapturing = nullptr;
    QComboBox *m_format = nullptr;
    QWidget *m_pluginsPane = nullptr;

    FolderPopup m_downloads;
    FolderPopup m_screenshots;
};
