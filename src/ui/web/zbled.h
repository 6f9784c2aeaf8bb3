#pragma once

#include <QWidget>

#include "web/zbledstate.h"

class QProgressBar;
class QPushButton;
class QStackedWidget;
class QToolButton;
class ZBLedText;

// The status panel of the main window's top bar, drawn as a small
// liquid-crystal display. Four pages, one at a time: the browser's status
// with the downloads counter (page 0), the playing track and its time (1), the
// progress of a screenshot series (2) and of the downloads (3). The owner
// feeds the texts and tells it what runs; the panel decides which page shows
// and asks the owner to cancel through its signals.
class ZBLed : public QWidget
{
    Q_OBJECT

public:
    explicit ZBLed(QWidget *parent = nullptr);

    int currentPage() const;
    int currentLedDisplayMode() const { return m_state.currentLedDisplayMode(); }

    void setPageStatus(const QString &text);
    void setDownloadsCounter(const QString &text);
    void setTrackName(const QString &name);
    void setTime(const QString &text);
    void setScreenshotCaption(const QString &text);
    void setScreenshotInfo(const QString &text);
    // The folder of the last screenshot; its button opens it. Empty hides
    // the button.
    void setLastShotFolder(const QString &folder);
    void setDownloadCaption(const QString &text);
    void setDownloadInfo(const QString &text);
    // A maximum of 0 shows a busy bar for a batch of unknown size.
    void setDownloadProgress(int value, int maximum = 100);
    void setBackFromPreviewVisible(bool visible);

    // The window's content mode: 0 browsing, 1 library, 2 search results,
    // 3 page preview.
    void setContentMode(int mode);
    // Starting a series shows its page; the end of a series or of the
    // downloads returns their page to playback.
    void setSeriesRunning(bool running);
    void setDownloadsRunning(bool running);

public Q_SLOTS:
    void switchToPlaybackLedMode();
    void switchToScreenshotLedMode();
    void switchToDownloadLedMode();
    // The change-page buttons.
    void changeLedViewMode();
    // The cancel buttons.
    void cancelCurrentOperation();

Q_SIGNALS:
    void cancelSeriesRequested();
    void cancelDownloadsRequested();
    void backFromPreviewRequested();

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QToolButton *makeButton(const QString &toolTipKey, int glyph);
    void refresh();

    ZBLedState m_state;
    int m_contentMode;
    bool m_seriesRunning;
    bool m_downloadsRunning;
    QString m_lastShotFolder;

    QStackedWidget *m_pages;
    ZBLedText *m_pageStatus;
    ZBLedText *m_downloadsCounter;
    QToolButton *m_back;
    ZBLedText *m_trackName;
    ZBLedText *m_time;
    QToolButton *m_playbackChangePage;
    ZBLedText *m_screenshotCaption;
    ZBLedText *m_screenshotInfo;
    QPushButton *m_openFolder;
    QToolButton *m_screenshotChangePage;
    QToolButton *m_screenshotCancel;
    ZBLedText *m_downloadCaption;
    ZBLedText *m_downloadInfo;
    QProgressBar *m_downloadProgress;
    QToolButton *m_downloadChangePage;
    QToolButton *m_downloadCancel;
};
