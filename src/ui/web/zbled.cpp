#include "ui/web/zbled.h"

#include <QBoxLayout>
#include <QLinearGradient>
#include <QPainter>
#include <QProgressBar>
#include <QPushButton>
#include <QStackedWidget>
#include <QStyle>
#include <QToolButton>

#include "localization/zblocalizer.h"
#include "ui/app/zbfilemanager.h"
#include "ui/web/zbledtext.h"
#include "ui/widgets/zbglyphicon.h"

namespace
{
QString ledText(const char *key)
{
    return ZBLocalizer::localizedStringForKey(QLatin1String(key));
}

// Status lines are 12 points, the smaller second lines 10.
constexpr int LargeText = 12;
constexpr int SmallText = 10;

// A page: its text lines stacked on the left, its buttons on the right.
QWidget *page(std::initializer_list<QWidget *> lines, std::initializer_list<QWidget *> buttons)
{
    auto *widget = new QWidget;
    auto *row = new QHBoxLayout(widget);
    row->setContentsMargins(0, 0, 0, 0);
    row->setSpacing(4);
    auto *column = new QVBoxLayout;
    column->setContentsMargins(0, 0, 0, 0);
    column->setSpacing(1);
    column->addStretch();
    for (QWidget *line : lines)
        column->addWidget(line);
    column->addStretch();
    row->addLayout(column, 1);
    for (QWidget *button : buttons)
        row->addWidget(button, 0, Qt::AlignVCenter);
    return widget;
}

QHBoxLayout *line(std::initializer_list<QWidget *> widgets)
{
    auto *layout = new QHBoxLayout;
    layout->setContentsMargins(0, 0, 0, 0);
    layout->setSpacing(6);
    for (QWidget *widget : widgets)
        layout->addWidget(widget);
    return layout;
}

QWidget *lineWidget(std::initializer_list<QWidget *> widgets)
{
    auto *widget = new QWidget;
    widget->setLayout(line(widgets));
    return widget;
}
} // namespace

ZBLed::ZBLed(QWidget *parent)
    : QWidget(parent)
    , m_contentMode(1)
    , m_seriesRunning(false)
    , m_downloadsRunning(false)
    , m_pages(new QStackedWidget)
    , m_pageStatus(new ZBLedText(LargeText))
    , m_downloadsCounter(new ZBLedText(SmallText))
    , m_back(makeButton("tooltipButtonLEDBack", ZBGlyphIcon::Back))
    , m_trackName(new ZBLedText(LargeText))
    , m_time(new ZBLedText(SmallText))
    , m_playbackChangePage(makeButton("tooltipButtonLEDChangeView", ZBGlyphIcon::Forward))
    , m_screenshotCaption(new ZBLedText(LargeText))
    , m_screenshotInfo(new ZBLedText(SmallText))
    , m_openFolder(new QPushButton)
    , m_screenshotChangePage(makeButton("tooltipButtonLEDChangeView", ZBGlyphIcon::Forward))
    , m_screenshotCancel(makeButton("tooltipButtonLEDCancel", ZBGlyphIcon::Stop))
    , m_downloadCaption(new ZBLedText(SmallText))
    , m_downloadInfo(new ZBLedText(SmallText))
    , m_downloadProgress(new QProgressBar)
    , m_downloadChangePage(makeButton("tooltipButtonLEDChangeView", ZBGlyphIcon::Forward))
    , m_downloadCancel(makeButton("tooltipButtonLEDCancel", ZBGlyphIcon::Stop))
{
    // The panel draws its own background and has round corners.
    setAttribute(Qt::WA_TranslucentBackground);
    setFixedHeight(54);
    setMinimumWidth(180);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);

    m_pageStatus->setText(ledText("ledStatusReady"));
    m_downloadsCounter->setText(ledText("ledNoFilesForDownload"));
    m_back->hide();
    m_trackName->setText(ledText("ledNoFile"));
    m_time->setText(ledText("ledZeroTime"));
    m_screenshotCaption->setText(ledText("ledTabScreenshotProgressCaption"));
    m_downloadCaption->setText(ledText("ledTabDownloadProgressCaption"));
    m_downloadInfo->setText(ledText("ledTabDownloadProgressInfo"));

    // The folder button reads like a link in the display's ink.
    m_openFolder->setFlat(true);
    m_openFolder->setCursor(Qt::PointingHandCursor);
    QFont linkFont = ZBLedText::ledFont(SmallText);
    linkFont.setUnderline(true);
    m_openFolder->setFont(linkFont);
    m_openFolder->setStyleSheet(
        QStringLiteral("QPushButton { border: none; padding: 0; color: %1; }").arg(ZBLedText::ink().name()));
    m_openFolder->hide();
    m_downloadProgress->setTextVisible(false);
    m_downloadProgress->setFixedHeight(6);
    m_downloadProgress->setRange(0, 100);
    m_downloadProgress->setValue(0);

    auto *shotLine = new QWidget;
    QHBoxLayout *shotLayout = line({m_screenshotInfo, m_openFolder});
    shotLayout->setStretch(0, 1);
    shotLine->setLayout(shotLayout);
    m_pages->addWidget(page({m_pageStatus, lineWidget({m_downloadsCounter})}, {m_back}));
    m_pages->addWidget(page({m_trackName, m_time}, {m_playbackChangePage}));
    m_pages->addWidget(page({m_screenshotCaption, shotLine}, {m_screenshotChangePage, m_screenshotCancel}));
    m_pages->addWidget(
        page({m_downloadCaption, m_downloadInfo, m_downloadProgress}, {m_downloadChangePage, m_downloadCancel}));

    auto *layout = new QVBoxLayout(this);
    layout->setContentsMargins(10, 3, 6, 3);
    layout->addWidget(m_pages);

    for (QToolButton *button : {m_playbackChangePage, m_screenshotChangePage, m_downloadChangePage})
        connect(button, &QToolButton::clicked, this, &ZBLed::changeLedViewMode);
    for (QToolButton *button : {m_screenshotCancel, m_downloadCancel})
        connect(button, &QToolButton::clicked, this, &ZBLed::cancelCurrentOperation);
    connect(m_back, &QToolButton::clicked, this, &ZBLed::backFromPreviewRequested);
    connect(m_openFolder, &QPushButton::clicked, this, [this]() { ZBFileManager::openFolder(m_lastShotFolder); });
    refresh();
}

int ZBLed::currentPage() const
{
    return m_pages->currentIndex();
}

void ZBLed::setPageStatus(const QString &text)
{
    m_pageStatus->setText(text);
}

void ZBLed::setDownloadsCounter(const QString &text)
{
    m_downloadsCounter->setText(text);
}

void ZBLed::setTrackName(const QString &name)
{
    m_trackName->setText(name.isEmpty() ? ledText("ledNoFile") : name);
}

void ZBLed::setTime(const QString &text)
{
    m_time->setText(text);
}

void ZBLed::setScreenshotCaption(const QString &text)
{
    m_screenshotCaption->setText(text);
}

void ZBLed::setScreenshotInfo(const QString &text)
{
    m_screenshotInfo->setText(text);
}

void ZBLed::setLastShotFolder(const QString &folder)
{
    m_lastShotFolder = folder;
    m_openFolder->setText(ledText("ledOpenFolderText"));
    m_openFolder->setToolTip(folder);
    m_openFolder->setVisible(!folder.isEmpty());
}

void ZBLed::setDownloadCaption(const QString &text)
{
    m_downloadCaption->setText(text);
}

void ZBLed::setDownloadInfo(const QString &text)
{
    m_downloadInfo->setText(text);
}

void ZBLed::setDownloadProgress(int value, int maximum)
{
    m_downloadProgress->setRange(0, qMax(0, maximum));
    m_downloadProgress->setValue(maximum > 0 ? qBound(0, value, maximum) : 0);
}

void ZBLed::setBackFromPreviewVisible(bool visible)
{
    m_back->setVisible(visible);
}

void ZBLed::setContentMode(int mode)
{
    m_contentMode = mode;
    refresh();
}

void ZBLed::setSeriesRunning(bool running)
{
    if (running == m_seriesRunning)
        return;
    m_seriesRunning = running;
    if (running)
        m_state.switchToScreenshotLedMode();
    else
        m_state.operationEnded(ZBLedState::Operation::Series);
    refresh();
}

void ZBLed::setDownloadsRunning(bool running)
{
    if (running == m_downloadsRunning)
        return;
    m_downloadsRunning = running;
    if (!running)
        m_state.operationEnded(ZBLedState::Operation::Downloads);
    refresh();
}

void ZBLed::switchToPlaybackLedMode()
{
    m_state.switchToPlaybackLedMode();
    refresh();
}

void ZBLed::switchToScreenshotLedMode()
{
    m_state.switchToScreenshotLedMode();
    refresh();
}

void ZBLed::switchToDownloadLedMode()
{
    m_state.switchToDownloadLedMode();
    refresh();
}

void ZBLed::changeLedViewMode()
{
    m_state.changeLedViewMode(m_seriesRunning, m_downloadsRunning);
    refresh();
}

void ZBLed::cancelCurrentOperation()
{
    const ZBLedState::Operation cancelled = m_state.cancelCurrentOperation(m_seriesRunning, m_downloadsRunning);
    refresh();
    // Last: the owner's answer may come back into this panel.
    if (cancelled == ZBLedState::Operation::Series)
        Q_EMIT cancelSeriesRequested();
    else if (cancelled == ZBLedState::Operation::Downloads)
        Q_EMIT cancelDownloadsRequested();
}

void ZBLed::paintEvent(QPaintEvent *)
{
    // A pale, slightly green glass with a dark rim, lighter at the top like
    // the lit display it stands for.
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QRectF panel = QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5);
    QLinearGradient glass(panel.topLeft(), panel.bottomLeft());
    glass.setColorAt(0.0, QColor(236, 241, 226));
    glass.setColorAt(0.5, QColor(220, 228, 205));
    glass.setColorAt(1.0, QColor(205, 214, 188));
    painter.setPen(QPen(QColor(128, 134, 112), 1.0));
    painter.setBrush(glass);
    painter.drawRoundedRect(panel, 6, 6);
    painter.setPen(QPen(QColor(255, 255, 255, 110), 1.0));
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(panel.adjusted(1, 1, -1, -1), 5, 5);
}

QToolButton *ZBLed::makeButton(const QString &toolTipKey, int glyph)
{
    auto *button = new QToolButton;
    button->setAutoRaise(true);
    button->setIcon(ZBGlyphIcon::icon(ZBGlyphIcon::Glyph(glyph)));
    button->setIconSize(QSize(14, 14));
    button->setFixedSize(22, 22);
    button->setToolTip(ZBLocalizer::localizedStringForKey(toolTipKey));
    return button;
}

void ZBLed::refresh()
{
    m_pages->setCurrentIndex(m_state.visiblePage(m_contentMode));
    m_playbackChangePage->setEnabled(ZBLedState::isChangePageEnabled(m_seriesRunning, m_downloadsRunning));
    m_screenshotCancel->setEnabled(m_seriesRunning);
    m_downloadCancel->setEnabled(m_downloadsRunning);
}
