#include "ui/app/zbpreferenceswindow.h"

#include <QAction>
#include <QActionGroup>
#include <QButtonGroup>
#include <QCheckBox>
#include <QColorDialog>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QDir>
#include <QFileDialog>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QImageWriter>
#include <QLabel>
#include <QMenu>
#include <QPainter>
#include <QPushButton>
#include <QRadioButton>
#include <QSlider>
#include <QStackedWidget>
#include <QStyle>
#include <QToolBar>
#include <QVBoxLayout>

#include "app/zbmediamodule.h"
#include "app/zbmediamoduleloader.h"
#include "localization/zblocalizer.h"
#include "settings/zbpreferencescales.h"
#include "settings/zbsettings.h"

namespace
{
using Scales = ZBPreferenceScales;

QString text(const char *key)
{
    return ZBLocalizer::localizedStringForKey(QLatin1String(key));
}

QString seconds(double value)
{
    // Shortest form: "0.5", "2", "2.5" (with the language's decimal sign).
    return ZBLocalizer::locale().toString(value, 'g', 6);
}

QLabel *noteLabel(const QString &note)
{
    auto *label = new QLabel(note);
    label->setWordWrap(true);
    QFont small = label->font();
    small.setPointSizeF(small.pointSizeF() * 0.9);
    label->setFont(small);
    return label;
}

// Selects the item whose data is `value`. A stored value no item stands for
// (the store takes values as they are) gets an item of its own, so that
// closing the window writes it back unchanged.
void selectValue(QComboBox *box, int value)
{
    int index = box->findData(value);
    if (index < 0)
    {
        box->addItem(ZBLocalizer::localizedStringForKey(QStringLiteral("prefUnknownValue")).arg(value), value);
        index = box->count() - 1;
    }
    box->setCurrentIndex(index);
}

QIcon paneIcon(const char *themeName, QStyle::StandardPixmap fallback, const QStyle *style)
{
    return QIcon::fromTheme(QLatin1String(themeName), style->standardIcon(fallback));
}
} // namespace

ZBPreferencesWindow::ZBPreferencesWindow(QWidget *parent)
    : QDialog(parent)
    , m_toolBar(new QToolBar(this))
    , m_paneActions(new QActionGroup(this))
    , m_panes(new QStackedWidget(this))
    , m_closeButton(new QPushButton(text("prefCloseButton"), this))
{
    // Modal to the whole program, yet shown with show(): the main window's
    // event loop keeps running and learns of the closing by the signal.
    setWindowModality(Qt::ApplicationModal);

    const struct
    {
        const char *labelKey;
        const char *icon;
        QStyle::StandardPixmap fallback;
        QWidget *(ZBPreferencesWindow::*make)();
    } panes[] = {
        {"prefGeneral", "preferences-system", QStyle::SP_ComputerIcon, &ZBPreferencesWindow::makeGeneralPane},
        {"prefSWFandFLV", "video-x-generic", QStyle::SP_MediaPlay, &ZBPreferencesWindow::makeSwfAndFlvPane},
        {"prefPlaylist", "view-media-playlist", QStyle::SP_FileDialogListView, &ZBPreferencesWindow::makePlaylistPane},
        {"prefCapture", "camera-photo", QStyle::SP_DialogSaveButton, &ZBPreferencesWindow::makeCapturePane},
        {"prefPlugins", "preferences-plugin", QStyle::SP_FileDialogInfoView, &ZBPreferencesWindow::makePluginsPane},
    };
    m_toolBar->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
    m_toolBar->setMovable(false);
    m_paneActions->setExclusive(true);
    for (const auto &pane : panes)
    {
        const int index = m_panes->addWidget((this->*pane.make)());
        // "SWF & FLV": a toolbar button would take the ampersand for a mnemonic.
        const QString title = text(pane.labelKey);
        QAction *action = m_toolBar->addAction(paneIcon(pane.icon, pane.fallback, style()),
                                               QString(title).replace(u'&', QLatin1String("&&")));
        action->setData(title);
        action->setCheckable(true);
        m_paneActions->addAction(action);
        connect(action, &QAction::triggered, this, [this, index] { showPane(Pane(index)); });
    }

    auto *buttons = new QDialogButtonBox(this);
    // Rejection is what Escape and the window's close button do as well: one
    // way out, which takes over every value shown.
    buttons->addButton(m_closeButton, QDialogButtonBox::RejectRole);
    m_closeButton->setAutoDefault(false);
    connect(m_closeButton, &QPushButton::clicked, this, &QDialog::reject);

    auto *closeAction = new QAction(this);
    QList<QKeySequence> closeKeys = QKeySequence::keyBindings(QKeySequence::Close);
    if (!closeKeys.contains(QKeySequence(Qt::CTRL | Qt::Key_W)))
        closeKeys.append(QKeySequence(Qt::CTRL | Qt::Key_W));
    closeAction->setShortcuts(closeKeys);
    closeAction->setShortcutContext(Qt::WindowShortcut);
    connect(closeAction, &QAction::triggered, this, &QDialog::reject);
    addAction(closeAction);

    auto *layout = new QVBoxLayout(this);
    layout->setMenuBar(m_toolBar);
    layout->addWidget(m_panes, 1);
    layout->addWidget(buttons);

    showPane(GeneralPane);
    initWithOptions(ZBSettings());
}

ZBPreferencesWindow::~ZBPreferencesWindow() = default;

QCheckBox *ZBPreferencesWindow::addCheckBox(const char *labelKey, const QString &settingKey)
{
    auto *box = new QCheckBox(text(labelKey));
    box->setObjectName(settingKey);
    return box;
}

QWidget *ZBPreferencesWindow::makeGeneralPane()
{
    auto *pane = new QWidget;
    m_autoplay = addCheckBox("prefGeneralAuto", QStringLiteral("AutoplayAddedFiles"));
    m_driver = addCheckBox("prefGeneralDriver", QStringLiteral("DriverOnOff"));
    m_noScreensaver = addCheckBox("prefGeneralDontAllowScreenSaver", QStringLiteral("DontAllowScreensaverInFullscreen"));

    auto *media = new QGroupBox(text("prefGeneralDataType"));
    auto *mediaLayout = new QFormLayout(media);
    mediaLayout->addRow(m_autoplay);
    mediaLayout->addRow(text("prefGeneralPathForDownloads"),
                        makeFolderPopup(m_downloads, QStringLiteral("PathForDownloads"), "prefGeneralPathForDownloads"));

    m_resetButton = new QPushButton(text("prefGeneralResetButton"));
    m_resetButton->setObjectName(QStringLiteral("prefGeneralResetButton"));
    m_resetMarked = new QLabel(text("prefGeneralResetMarked"));
    // Nothing is reset until the window closes; the button only records the
    // wish, and says so, so a second press has nothing left to do.
    connect(m_resetButton, &QPushButton::clicked, this, [this] {
        m_mustResetWarnings = true;
        m_resetButton->setEnabled(false);
        m_resetMarked->show();
    });
    auto *resetRow = new QHBoxLayout;
    resetRow->addWidget(m_resetButton);
    resetRow->addWidget(m_resetMarked, 1);

    auto *other = new QGroupBox(text("prefGeneralOther"));
    auto *otherLayout = new QVBoxLayout(other);
    otherLayout->addWidget(m_driver);
    otherLayout->addWidget(m_noScreensaver);
    otherLayout->addLayout(resetRow);

    auto *layout = new QVBoxLayout(pane);
    layout->addWidget(media);
    layout->addWidget(other);
    layout->addStretch(1);
    return pane;
}

QWidget *ZBPreferencesWindow::makeSwfAndFlvPane()
{
    auto *pane = new QWidget;
    m_flashHost = new QRadioButton(text("prefGeneralMPK"));
    m_flashHost->setObjectName(QStringLiteral("PlayFLVwithMPK"));
    m_movieEngine = new QRadioButton(text("prefGeneralQT"));
    m_movieEngine->setObjectName(QStringLiteral("PlayFLVwithMovieEngine"));
    auto *players = new QButtonGroup(pane);
    players->addButton(m_flashHost);
    players->addButton(m_movieEngine);
    // The colour is painted by the Flash host only; the movie engine shows
    // FLV on the video area's own background.
    connect(m_flashHost, &QRadioButton::toggled, this, &ZBPreferencesWindow::updateFlvColorWell);
    auto *playerLayout = new QVBoxLayout;
    playerLayout->addWidget(m_flashHost);
    playerLayout->addWidget(m_movieEngine);

    m_flvColorLabel = new QLabel(text("prefGeneralFLVBackgroundColor"));
    m_flvColorWell = new QPushButton;
    m_flvColorWell->setObjectName(QStringLiteral("FlvBackgroundColor"));
    m_flvColorWell->setIconSize(QSize(40, 14));
    connect(m_flvColorWell, &QPushButton::clicked, this, &ZBPreferencesWindow::pickFlvColor);
    auto *colorRow = new QHBoxLayout;
    colorRow->addWidget(m_flvColorWell);
    colorRow->addStretch(1);

    m_quality = new QComboBox;
    m_quality->setObjectName(QStringLiteral("FlashDefaultQuality"));
    m_quality->addItem(text("prefGeneralLowQuality"), 0);
    m_quality->addItem(text("prefGeneralMediumQuality"), 1);
    m_quality->addItem(text("prefGeneralHighQuality"), 2);

    m_allowNetwork = addCheckBox("prefGeneralAllowToSendReceiveDataOverNetwork", QStringLiteral("AllowToSendDataOverNetwork"));
    m_localSecurity = addCheckBox("prefGeneralEnableFlashLocalSecurity", QStringLiteral("FlashLocalSecurity"));

    auto *form = new QFormLayout;
    form->addRow(text("prefGeneralSelectPlayer"), playerLayout);
    form->addRow(m_flvColorLabel, colorRow);
    form->addRow(text("prefGeneralDefaultFlashQuality"), m_quality);

    auto *layout = new QVBoxLayout(pane);
    layout->addLayout(form);
    layout->addWidget(m_allowNetwork);
    layout->addWidget(m_localSecurity);
    layout->addStretch(1);
    return pane;
}

QWidget *ZBPreferencesWindow::makePlaylistPane()
{
    auto *pane = new QWidget;
    m_lastFrame = addCheckBox("prefPlaylistLastFrame", QStringLiteral("GotoIfLastFrameIsMet"));
    m_decreased = addCheckBox("prefPlaylistDecrease", QStringLiteral("GotoIfFrameNumberWasDecreased"));
    m_staySame = addCheckBox("prefPlaylistStaySameFrame", QStringLiteral("GotoIfStayOnTheSameFrameMore"));

    m_stayingSlider = new QSlider(Qt::Horizontal);
    m_stayingSlider->setObjectName(QStringLiteral("GotoStayingTimeValue"));
    m_stayingSlider->setRange(Scales::StayingTimeSliderMinimum, Scales::StayingTimeSliderMaximum);
    m_stayingSlider->setPageStep(5);
    m_stayingText = new QLabel;
    m_stayingText->setMinimumWidth(fontMetrics().horizontalAdvance(QStringLiteral("000.0 s")));
    connect(m_stayingSlider, &QSlider::valueChanged, this, [this](int value) {
        m_stayingTime = Scales::stayingTimeForSliderValue(value);
        updateStayingTimeText();
    });
    // The time only matters to its own rule.
    connect(m_staySame, &QCheckBox::toggled, m_stayingSlider, &QWidget::setEnabled);
    connect(m_staySame, &QCheckBox::toggled, m_stayingText, &QWidget::setEnabled);

    auto *sliderRow = new QHBoxLayout;
    sliderRow->addSpacing(24);
    sliderRow->addWidget(m_stayingSlider, 1);
    sliderRow->addWidget(m_stayingText);

    auto *rules = new QVBoxLayout;
    rules->setContentsMargins(16, 0, 0, 0);
    rules->addWidget(m_lastFrame);
    rules->addWidget(m_decreased);
    rules->addWidget(m_staySame);
    rules->addLayout(sliderRow);

    auto *layout = new QVBoxLayout(pane);
    layout->addWidget(new QLabel(text("prefPlaylistGotoNext")));
    layout->addLayout(rules);
    layout->addWidget(noteLabel(text("prefPlaylistNoteText")));
    layout->addStretch(1);
    return pane;
}

QWidget *ZBPreferencesWindow::makeCapturePane()
{
    auto *pane = new QWidget;
    m_format = new QComboBox;
    m_format->setObjectName(QStringLiteral("FormatOfScreenshot"));
    const QList<QByteArray> writable = QImageWriter::supportedImageFormats();
    const QList<Scales::ScreenshotFormat> formats = Scales::screenshotFormats();
    for (int index = 0; index < formats.size(); ++index)
    {
        const Scales::ScreenshotFormat &format = formats[index];
        // Offered even without a writer, so a setting made on another system
        // survives; the item says what this one does instead.
        const QString title = writable.contains(format.writerFormat)
                                  ? format.title
                                  : text("prefCaptureFormatFallback").arg(format.title);
        m_format->addItem(title, index);
    }

    auto *form = new QFormLayout;
    form->addRow(text("prefCapturePathForScreenshots"),
                 makeFolderPopup(m_screenshots, QStringLiteral("PathForScreenshot"), "prefCapturePathForScreenshots"));
    form->addRow(text("prefCaptureScreenshotFormat"), m_format);

    m_intervalSlider = new QSlider(Qt::Horizontal);
    m_intervalSlider->setObjectName(QStringLiteral("ScreenShotInterval"));
    m_intervalSlider->setRange(Scales::IntervalSliderMinimum, Scales::IntervalSliderMaximum);
    m_intervalSlider->setPageStep(5);
    m_intervalText = new QLabel;
    m_intervalText->setMinimumWidth(fontMetrics().horizontalAdvance(QStringLiteral("000.0 s")));
    connect(m_intervalSlider, &QSlider::valueChanged, this, [this](int value) {
        m_screenshotInterval = Scales::intervalForSliderValue(value);
        updateIntervalText();
    });
    auto *sliderRow = new QHBoxLayout;
    sliderRow->addWidget(m_intervalSlider, 1);
    sliderRow->addWidget(m_intervalText);

    m_firstFrame = addCheckBox("prefCaptureAlwaysStartCapturing", QStringLiteral("AlwaysStartCapturingFromFirstFrame"));
    m_keepCapturing = addCheckBox("prefCaptureKeepKapturing", QStringLiteral("KeepCapturingToNextTrackInPlaylist"));

    auto *series = new QGroupBox(text("prefCaptureSelectOption"));
    auto *seriesLayout = new QVBoxLayout(series);
    seriesLayout->addWidget(new QLabel(text("prefCaptureScreenshotIntervalText")));
    seriesLayout->addLayout(sliderRow);
    seriesLayout->addWidget(m_firstFrame);
    seriesLayout->addWidget(m_keepCapturing);

    auto *layout = new QVBoxLayout(pane);
    layout->addLayout(form);
    layout->addWidget(series);
    layout->addWidget(noteLabel(text("prefCaptureNoteText")));
    layout->addStretch(1);
    return pane;
}

QWidget *ZBPreferencesWindow::makePluginsPane()
{
    // Filled the first time it is shown: asking libmpv for its version starts
    // a player, which nobody needs to wait for who never looks here.
    m_pluginsPane = new QWidget;
    auto *layout = new QVBoxLayout(m_pluginsPane);
    auto *info = new QLabel(text("pluginWindowInfoText1"));
    info->setWordWrap(true);
    layout->addWidget(info);
    return m_pluginsPane;
}

void ZBPreferencesWindow::fillPluginsPane()
{
    if (m_pluginsFilled)
        return;
    m_pluginsFilled = true;
    auto *form = new QFormLayout;
    // Without the media module only Qt is known, and the reason follows.
    ZBMediaModule *module = ZBMediaModuleLoader::module();
    const QList<ZBMediaComponent> components =
        module ? module->componentVersions()
               : QList<ZBMediaComponent>{{QStringLiteral("Qt"), QString::fromLatin1(qVersion()), {}}};
    for (const ZBMediaComponent &component : components)
    {
        QString version = component.version.isEmpty() ? text("prefPluginsNotDetected") : component.version;
        if (!component.version.isEmpty() && !component.detail.isEmpty())
            version += QStringLiteral(" (%1)").arg(component.detail);
        auto *value = new QLabel(version);
        value->setObjectName(component.name);
        value->setTextInteractionFlags(Qt::TextSelectableByMouse);
        form->addRow(component.name + QLatin1Char(':'), value);
    }
    auto *layout = static_cast<QVBoxLayout *>(m_pluginsPane->layout());
    layout->addLayout(form);
    if (!module)
    {
        auto *missing = new QLabel(ZBMediaModuleLoader::loadError());
        missing->setWordWrap(true);
        missing->setTextInteractionFlags(Qt::TextSelectableByMouse);
        layout->addWidget(missing);
    }
    auto *silverlight = new QLabel(text("prefPluginsSilverlight"));
    silverlight->setWordWrap(true);
    layout->addWidget(silverlight);
    layout->addStretch(1);
}

QWidget *ZBPreferencesWindow::makeFolderPopup(FolderPopup &popup, const QString &settingKey, const char *titleKey)
{
    popup.button = new QPushButton;
    popup.button->setObjectName(settingKey);
    popup.menu = new QMenu(popup.button);
    popup.title = text(titleKey);
    popup.button->setMenu(popup.menu);
    connect(popup.menu, &QMenu::aboutToShow, this, [this, &popup] { rebuildFolderMenu(popup); });
    return popup.button;
}

void ZBPreferencesWindow::rebuildFolderMenu(FolderPopup &popup)
{
    const QIcon folderIcon = QIcon::fromTheme(QStringLiteral("folder"), style()->standardIcon(QStyle::SP_DirIcon));
    auto addFolder = [&](const QString &folder) {
        QAction *action = popup.menu->addAction(folderIcon, QDir::toNativeSeparators(folder));
        action->setData(folder);
        connect(action, &QAction::triggered, this, [this, &popup, folder] { chooseFolder(popup, folder); });
    };
    popup.menu->clear();
    addFolder(popup.folder);
    popup.menu->addSeparator();
    // The current folder is already on top; listing it again would only
    // push an older folder out of sight.
    bool anyRecent = false;
    for (const QString &folder : std::as_const(m_recentFolders))
    {
        if (QDir::cleanPath(folder) == QDir::cleanPath(popup.folder))
            continue;
        addFolder(folder);
        anyRecent = true;
    }
    if (anyRecent)
        popup.menu->addSeparator();
    QAction *other = popup.menu->addAction(text("menuPathOther"));
    connect(other, &QAction::triggered, this, [this, &popup] { chooseOtherFolder(popup); });
}

void ZBPreferencesWindow::chooseOtherFolder(FolderPopup &popup)
{
    const QString folder = QFileDialog::getExistingDirectory(this, popup.title, popup.folder);
    if (!folder.isEmpty())
        chooseFolder(popup, folder);
}

void ZBPreferencesWindow::chooseFolder(FolderPopup &popup, const QString &folder)
{
    m_recentFolders = Scales::recentFoldersAfterChoosing(m_recentFolders, folder);
    showFolder(popup, QDir::cleanPath(folder));
}

void ZBPreferencesWindow::showFolder(FolderPopup &popup, const QString &folder)
{
    popup.folder = folder;
    const QString shown = QDir::toNativeSeparators(folder);
    popup.button->setText(popup.button->fontMetrics().elidedText(shown, Qt::ElideMiddle, 360));
    popup.button->setToolTip(shown);
}

void ZBPreferencesWindow::showFlvColor(const QString &color)
{
    m_flvColor = color;
    // A stored text that names no colour is kept as it is and shown as the
    // default black, the colour the player falls back to.
    const QColor shown = QColor::isValidColorName(color) ? QColor(color) : QColor(Qt::black);
    QPixmap swatch(m_flvColorWell->iconSize());
    swatch.fill(shown);
    QPainter(&swatch).drawRect(swatch.rect().adjusted(0, 0, -1, -1));
    m_flvColorWell->setIcon(QIcon(swatch));
    m_flvColorWell->setToolTip(shown.name());
}

void ZBPreferencesWindow::pickFlvColor()
{
    const QColor current = QColor::isValidColorName(m_flvColor) ? QColor(m_flvColor) : QColor(Qt::black);
    const QColor chosen = QColorDialog::getColor(current, this, m_flvColorLabel->text());
    if (chosen.isValid())
        showFlvColor(chosen.name());
}

void ZBPreferencesWindow::updateFlvColorWell()
{
    const bool enabled = m_flashHost->isChecked();
    m_flvColorWell->setEnabled(enabled);
    m_flvColorLabel->setEnabled(enabled);
}

void ZBPreferencesWindow::updateIntervalText()
{
    m_intervalText->setText(text("prefCaptureScreenshotIntervalValue").arg(seconds(m_screenshotInterval)));
}

void ZBPreferencesWindow::updateStayingTimeText()
{
    m_stayingText->setText(text("prefPlaylistTimeValue").arg(seconds(m_stayingTime)));
}

void ZBPreferencesWindow::initWithOptions(const ZBSettings &settings)
{
    m_driver->setChecked(settings.option_driverOnOff);
    m_autoplay->setChecked(settings.option_autoplayAddedFiles);
    m_allowNetwork->setChecked(settings.option_allowSendDataOverNetwork);
    m_noScreensaver->setChecked(settings.option_dontAllowScreensaver);
    m_localSecurity->setChecked(settings.option_enableFlashLocalSecurity);
    (settings.option_playFLVwithMPK ? m_flashHost : m_movieEngine)->setChecked(true);
    updateFlvColorWell();
    showFlvColor(settings.flvBgColor);
    selectValue(m_quality, settings.option_flashDefaultQuality);
    selectValue(m_format, settings.option_formatOfScreenshot);

    m_lastFrame->setChecked(settings.option_gotoIfLastFrameIsMet);
    m_decreased->setChecked(settings.option_gotoIfFrameNumberWasDecreased);
    m_staySame->setChecked(settings.option_gotoIfStayOnTheSameFrameMore);
    m_stayingSlider->setEnabled(m_staySame->isChecked());
    m_stayingText->setEnabled(m_staySame->isChecked());
    m_firstFrame->setChecked(settings.option_alwaysStartCapturingFromFirstFrame);
    m_keepCapturing->setChecked(settings.option_keepCapturingToNextTrackInPlaylist);

    // The sliders have steps; the exact values stay until a slider moves.
    m_screenshotInterval = settings.option_screenShotInterval;
    m_stayingTime = settings.option_gotoStayingTimeValue;
    {
        const QSignalBlocker intervalBlocker(m_intervalSlider);
        const QSignalBlocker stayingBlocker(m_stayingSlider);
        m_intervalSlider->setValue(Scales::sliderValueForInterval(m_screenshotInterval));
        m_stayingSlider->setValue(Scales::sliderValueForStayingTime(m_stayingTime));
    }
    updateIntervalText();
    updateStayingTimeText();

    m_recentFolders = settings.recentFolders;
    showFolder(m_downloads, settings.option_pathForDownloads);
    showFolder(m_screenshots, settings.option_pathForScreenshot);

    m_mustResetWarnings = false;
    m_resetButton->setEnabled(true);
    m_resetMarked->hide();
}

void ZBPreferencesWindow::applyTo(ZBSettings &settings) const
{
    settings.option_driverOnOff = m_driver->isChecked();
    settings.option_autoplayAddedFiles = m_autoplay->isChecked();
    settings.option_allowSendDataOverNetwork = m_allowNetwork->isChecked();
    settings.option_dontAllowScreensaver = m_noScreensaver->isChecked();
    settings.option_enableFlashLocalSecurity = m_localSecurity->isChecked();
    settings.option_playFLVwithMPK = m_flashHost->isChecked();
    settings.flvBgColor = m_flvColor;
    settings.option_flashDefaultQuality = m_quality->currentData().toInt();
    settings.option_formatOfScreenshot = m_format->currentData().toInt();
    settings.option_gotoIfLastFrameIsMet = m_lastFrame->isChecked();
    settings.option_gotoIfFrameNumberWasDecreased = m_decreased->isChecked();
    settings.option_gotoIfStayOnTheSameFrameMore = m_staySame->isChecked();
    settings.option_gotoStayingTimeValue = m_stayingTime;
    settings.option_screenShotInterval = m_screenshotInterval;
    settings.option_alwaysStartCapturingFromFirstFrame = m_firstFrame->isChecked();
    settings.option_keepCapturingToNextTrackInPlaylist = m_keepCapturing->isChecked();
    settings.option_pathForDownloads = m_downloads.folder;
    settings.option_pathForScreenshot = m_screenshots.folder;
    settings.recentFolders = m_recentFolders;
}

QString ZBPreferencesWindow::pathForDownloads() const
{
    return m_downloads.folder;
}

QString ZBPreferencesWindow::pathForScreenshots() const
{
    return m_screenshots.folder;
}

QMenu *ZBPreferencesWindow::downloadsFolderMenu() const
{
    return m_downloads.menu;
}

QMenu *ZBPreferencesWindow::screenshotsFolderMenu() const
{
    return m_screenshots.menu;
}

ZBPreferencesWindow::Pane ZBPreferencesWindow::currentPane() const
{
    return Pane(m_panes->currentIndex());
}

void ZBPreferencesWindow::showPane(Pane pane)
{
    const QList<QAction *> actions = m_paneActions->actions();
    if (pane < 0 || pane >= actions.size())
        return;
    if (pane == PluginsPane)
        fillPluginsPane();
    m_panes->setCurrentIndex(pane);
    actions[pane]->setChecked(true);
    setWindowTitle(actions[pane]->data().toString());
}

void ZBPreferencesWindow::showPreferencesWindow()
{
    if (!isVisible())
        show();
    raise();
    activateWindow();
}

void ZBPreferencesWindow::showEvent(QShowEvent *event)
{
    m_open = true;
    QDialog::showEvent(event);
}

void ZBPreferencesWindow::done(int result)
{
    // Escape, the close button and Ctrl+W may all arrive while the window is
    // going away; only the first of them reports the closing.
    const bool wasOpen = m_open;
    m_open = false;
    QDialog::done(result);
    if (wasOpen)
        Q_EMIT preferencesWindowClose();
}
