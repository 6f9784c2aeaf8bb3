#include "ui/playback/zbhudwindow.h"

#include <QCloseEvent>
#include <QHBoxLayout>
#include <QIcon>
#include <QLabel>
#include <QSignalBlocker>
#include <QSlider>
#include <QToolButton>
#include <QVBoxLayout>
#include <QWindow>

#include "localization/zblocalizer.h"

namespace
{
QString tr_(const char *key)
{
    return ZBLocalizer::localizedStringForKey(QLatin1String(key));
}
} // namespace

ZBHUDWindow::ZBHUDWindow(QWidget *parent)
    : QWidget(parent, Qt::Tool)
    , m_fit(addButton("zoom-fit-best", "hudButtonFit", "tooltipButtonHUDFit"))
    , m_stretch(addButton("transform-scale", "hudButtonStretch", "tooltipButtonHUDStretch"))
    , m_oneToOne(addButton("zoom-original", "hudButtonOneToOne", "tooltipButtonHUDOneToOne"))
    , m_drag(addButton("transform-move", "hudButtonDrag", "tooltipButtonHUDDrag"))
    , m_screenshot(addButton("camera-photo", "hudButtonScreenshot", "tooltipButtonHUDScreenshot"))
    , m_series(addButton("media-record", "hudButtonSeries", "tooltipButtonHUDSeries"))
    , m_zoomSlider(new QSlider(Qt::Horizontal, this))
    , m_zoomValue(new QLabel(this))
{
    setWindowTitle(tr_("hudWindowTitle"));

    m_zoomSlider->setRange(ZBVideoSizing::ZoomMinimum, ZBVideoSizing::ZoomMaximum);
    m_zoomSlider->setPageStep(10);
    m_zoomSlider->setValue(ZBVideoSizing::ZoomInitial);
    m_zoomSlider->setToolTip(tr_("tooltipButtonHUDZoom"));
    m_zoomValue->setText(ZBVideoSizing::zoomLabel(ZBVideoSizing::ZoomInitial));
    // Wide enough for "500%" so the slider does not jump while it moves.
    m_zoomValue->setMinimumWidth(m_zoomValue->fontMetrics().horizontalAdvance(QStringLiteral("500%")) + 4);
    m_zoomValue->setAlignment(Qt::AlignRight | Qt::AlignVCenter);

    auto *buttons = new QHBoxLayout;
    for (QToolButton *button : {m_fit, m_stretch, m_oneToOne, m_drag, m_screenshot, m_series})
        buttons->addWidget(button);
    auto *zoom = new QHBoxLayout;
    zoom->addWidget(m_zoomSlider, 1);
    zoom->addWidget(m_zoomValue);
    auto *layout = new QVBoxLayout(this);
    layout->setSizeConstraint(QLayout::SetFixedSize);
    layout->addLayout(buttons);
    layout->addLayout(zoom);

    m_drag->setCheckable(true);
    m_series->setCheckable(true);
    connect(m_fit, &QToolButton::clicked, this, &ZBHUDWindow::fitClicked);
    connect(m_stretch, &QToolButton::clicked, this, &ZBHUDWindow::stretchClicked);
    connect(m_oneToOne, &QToolButton::clicked, this, &ZBHUDWindow::oneToOneClicked);
    connect(m_screenshot, &QToolButton::clicked, this, &ZBHUDWindow::screenshotClicked);
    // The pressed look follows the mode, not the click: whoever runs the
    // mode says whether it is on.
    connect(m_drag, &QToolButton::clicked, this, [this]() {
        Q_EMIT dragClicked();
        m_drag->setChecked(m_dragging);
    });
    connect(m_series, &QToolButton::clicked, this, [this]() {
        Q_EMIT seriesClicked();
        m_series->setChecked(m_seriesRunning);
    });
    connect(m_zoomSlider, &QSlider::valueChanged, this, [this](int value) {
        m_zoomValue->setText(ZBVideoSizing::zoomLabel(value));
        Q_EMIT zoomSliderMoved(value);
    });

    setEnabledHUDButtons(ZBHudButtons());
}

QToolButton *ZBHUDWindow::addButton(const char *iconName, const char *textKey, const char *toolTipKey)
{
    auto *button = new QToolButton(this);
    button->setText(tr_(textKey));
    button->setProperty("themeIcon", QByteArray(iconName));
    button->setToolTip(tr_(toolTipKey));
    button->setAutoRaise(true);
    return button;
}

void ZBHUDWindow::setEnabledHUDButtons(const ZBHudButtons &buttons)
{
    m_fit->setEnabled(buttons.fit);
    m_stretch->setEnabled(buttons.stretch);
    m_oneToOne->setEnabled(buttons.oneToOne);
    m_drag->setEnabled(buttons.drag);
    m_screenshot->setEnabled(buttons.screenshot);
    m_series->setEnabled(buttons.series);
    m_zoomSlider->setEnabled(buttons.zoomSlider);
    m_zoomValue->setEnabled(buttons.zoomSlider);
}

ZBHudButtons ZBHUDWindow::enabledHUDButtons() const
{
    ZBHudButtons buttons;
    buttons.fit = m_fit->isEnabled();
    buttons.stretch = m_stretch->isEnabled();
    buttons.oneToOne = m_oneToOne->isEnabled();
    buttons.drag = m_drag->isEnabled();
    buttons.screenshot = m_screenshot->isEnabled();
    buttons.series = m_series->isEnabled();
    buttons.zoomSlider = m_zoomSlider->isEnabled();
    return buttons;
}

int ZBHUDWindow::zoomValue() const
{
    return m_zoomSlider->value();
}

QString ZBHUDWindow::zoomValueText() const
{
    return m_zoomValue->text();
}

void ZBHUDWindow::setZoomValue(int percent, const QString &label)
{
    const QSignalBlocker blocker(m_zoomSlider);
    // A fitted zoom can lie outside the slider's range; the label still
    // tells the truth.
    m_zoomSlider->setValue(percent);
    m_zoomValue->setText(label);
}

void ZBHUDWindow::setDragging(bool dragging)
{
    m_dragging = dragging;
    m_drag->setChecked(dragging);
}

void ZBHUDWindow::setSeriesRunning(bool running)
{
    m_seriesRunning = running;
    m_series->setChecked(running);
}

void ZBHUDWindow::setLevelAbove(QWidget *window, bool onTop)
{
    // Changing window flags hides a window; a visible panel is shown again.
    const bool wasVisible = isVisible();
    if (onTop != bool(windowFlags() & Qt::WindowStaysOnTopHint))
        setWindowFlag(Qt::WindowStaysOnTopHint, onTop);
    // Transient for the picture's window: X11 window managers and Wayland
    // compositors keep a transient tool window above its parent. Wayland
    // has no way to keep a window above others, so there the on-top hint
    // does nothing and the transient parent is all that holds.
    winId();
    if (QWindow *handle = windowHandle())
    {
        QWidget *top = window ? window->window() : nullptr;
        if (top)
            top->winId();
        QWindow *parentHandle = top ? top->windowHandle() : nullptr;
        handle->setTransientParent(parentHandle);
    }
    if (wasVisible && !isVisible())
        show();
}

void ZBHUDWindow::closeEvent(QCloseEvent *event)
{
    // Only the user's close is news; the program hides the panel itself.
    if (event->spontaneous())
        Q_EMIT closed();
    QWidget::closeEvent(event);
}

void ZBHUDWindow::showEvent(QShowEvent *event)
{
    // The theme's pictures are looked up when the panel is first shown, not
    // when the main window is built: the first lookup loads the theme and the
    // image plug-ins, which would hold up the window's first frame.
    if (!m_themeIconsLoaded)
    {
        m_themeIconsLoaded = true;
        for (QToolButton *button : {m_fit, m_stretch, m_oneToOne, m_drag, m_screenshot, m_series})
        {
            const QIcon icon = QIcon::fromTheme(QString::fromLatin1(button->property("themeIcon").toByteArray()));
            if (!icon.isNull())
                button->setIcon(icon);
        }
    }
    QWidget::showEvent(event);
}
