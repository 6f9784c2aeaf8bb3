#include "ui/playback/zblogoview.h"

#include <algorithm>

#include <QLabel>
#include <QLinearGradient>
#include <QPainter>
#include <QPushButton>
#include <QRadialGradient>

namespace
{
const QString kHide = QStringLiteral("hide");
const QString kShow = QStringLiteral("show");

const QColor kTopColour(36, 39, 46);
const QColor kBottomColour(15, 16, 20);
const QColor kTitleColour(236, 238, 242);
const QColor kHintColour(140, 146, 158);
const QColor kAccentColour(94, 160, 255);

// Below this the hints would crowd the name and the button.
constexpr int kMinimumHintWidth = 140;

void setPixelSize(QWidget *widget, int pixels, QFont::Weight weight)
{
    QFont font = widget->font();
    font.setPixelSize(pixels);
    font.setWeight(weight);
    widget->setFont(font);
}

void setTextColour(QWidget *widget, const QColor &colour)
{
    QPalette palette = widget->palette();
    palette.setColor(QPalette::WindowText, colour);
    widget->setPalette(palette);
}
} // namespace

ZBLogoView::ZBLogoView(QWidget *parent)
    : QWidget(parent)
    , m_mode(kShow)
    , m_primary(new QLabel(this))
    , m_upHint(new QLabel(this))
    , m_bottomHint(new QLabel(this))
    , m_button(new QPushButton(this))
{
    m_primary->setObjectName(QStringLiteral("primaryText"));
    m_upHint->setObjectName(QStringLiteral("upHint"));
    m_bottomHint->setObjectName(QStringLiteral("bottomHint"));
    m_button->setObjectName(QStringLiteral("tutorialButton"));

    for (QLabel *label : {m_primary, m_upHint, m_bottomHint})
    {
        label->setAlignment(Qt::AlignCenter);
        label->setTextFormat(Qt::PlainText);
    }
    setTextColour(m_primary, kTitleColour);
    setTextColour(m_upHint, kHintColour);
    setTextColour(m_bottomHint, kHintColour);

    m_button->setFlat(true);
    m_button->setCursor(Qt::PointingHandCursor);
    m_button->setFocusPolicy(Qt::TabFocus);

    connect(m_button, &QPushButton::clicked, this,
            [this]() { Q_EMIT tutorialToggled(m_mode == kHide ? kShow : kHide); });
    updateView();
}

void ZBLogoView::setPrimaryText(const QString &text)
{
    m_primaryText = text;
    updateView();
}

void ZBLogoView::setUpHitnText(const QString &text)
{
    m_upHintText = text;
    updateView();
}

void ZBLogoView::setBottomHitnText(const QString &text)
{
    m_bottomHintText = text;
    updateView();
}

void ZBLogoView::setButtonsText(const QString &hideText, const QString &showText)
{
    m_hideText = hideText;
    m_showText = showText;
    updateView();
}

void ZBLogoView::setPlayerMode(const QString &mode)
{
    m_mode = mode == kHide ? kHide : kShow;
    updateView();
}

void ZBLogoView::updateView()
{
    m_primary->setText(m_primaryText);
    m_button->setText(m_mode == kHide ? m_showText : m_hideText);
    m_button->setHidden(m_button->text().isEmpty());
    // While hidden (as when the window is being built) the size is not yet
    // known: laying out then would pick fonts for a size that is never shown.
    if (isVisible())
        relayout();
    else
        m_layoutPending = true;
    update();
}

bool ZBLogoView::hintsShown() const
{
    return !m_upHint->isHidden() || !m_bottomHint->isHidden();
}

QSize ZBLogoView::sizeHint() const
{
    return {640, 360};
}

QSize ZBLogoView::minimumSizeHint() const
{
    return {320, 200};
}

void ZBLogoView::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    relayout();
}

void ZBLogoView::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    if (m_layoutPending)
        relayout();
}

bool ZBLogoView::placeHint(QLabel *label, const QString &text, int top, int width)
{
    if (text.isEmpty() || width < kMinimumHintWidth)
        return false;
    const QFontMetrics metrics(label->font());
    const QString shown = metrics.elidedText(text, Qt::ElideRight, width);
    // An ellipsis alone, or a couple of letters, would only be noise.
    if (shown.size() < std::min<qsizetype>(text.size(), 8))
        return false;
    label->setText(shown);
    label->setToolTip(shown == text ? QString() : text);
    label->setGeometry((this->width() - width) / 2, top, width, metrics.height());
    return true;
}

void ZBLogoView::relayout()
{
    m_layoutPending = false;
    const int w = width();
    const int h = height();
    // Everything is sized from one factor, 1.0 at 640x360, so the screen keeps
    // its proportions from a small pane to full screen.
    const qreal scale = std::clamp(std::min(w / 640.0, h / 360.0), 0.5, 2.0);
    const int margin = qRound(18 * scale);

    setPixelSize(m_primary, std::clamp(qRound(46 * scale), 22, 92), QFont::Light);
    setPixelSize(m_upHint, std::clamp(qRound(14 * scale), 11, 22), QFont::Normal);
    setPixelSize(m_bottomHint, std::clamp(qRound(14 * scale), 11, 22), QFont::Normal);
    setPixelSize(m_button, std::clamp(qRound(12 * scale), 11, 19), QFont::Medium);

    // The name: centred, a little above the middle so the eye finds it first.
    const QFontMetrics titleMetrics(m_primary->font());
    const int titleHeight = titleMetrics.height();
    const int titleTop = (h - titleHeight) / 2 - qRound(h * 0.05);
    m_primary->setGeometry(margin, titleTop, std::max(0, w - 2 * margin), titleHeight);
    const int accentWidth = std::max(24, qRound(44 * scale));
    m_accent = QRect((w - accentWidth) / 2, titleTop + titleHeight + std::max(6, qRound(8 * scale)), accentWidth,
                     std::max(2, qRound(2 * scale)));

    // The button: a pill at the bottom, as wide as its text.
    const QFontMetrics buttonMetrics(m_button->font());
    const int buttonHeight = std::max(24, buttonMetrics.height() + qRound(14 * scale));
    const int buttonWidth =
        std::min(w - 2 * margin, buttonMetrics.horizontalAdvance(m_button->text()) + 2 * qRound(18 * scale));
    const int buttonTop = h - margin - buttonHeight;
    m_button->setGeometry((w - buttonWidth) / 2, buttonTop, buttonWidth, buttonHeight);
    const QString style = QStringLiteral("QPushButton { color: #d7dbe2; background: rgba(255, 255, 255, 18);"
                                         " border: 1px solid rgba(255, 255, 255, 40); border-radius: %1px;"
                                         " padding: 0px; }"
                                         "QPushButton:hover { background: rgba(255, 255, 255, 34);"
                                         " border-color: rgba(255, 255, 255, 70); }"
                                         "QPushButton:pressed { background: rgba(255, 255, 255, 12); }"
                                         "QPushButton:focus { border-color: %2; }")
                              .arg(buttonHeight / 2)
                              .arg(kAccentColour.name());
    // Restyling re-polishes the button; skip it when only the position moved.
    if (m_button->styleSheet() != style)
        m_button->setStyleSheet(style);

    // The hints: one above the name, one under the accent. Both go when either
    // lacks room, so the screen never shows half a tutorial.
    bool hints = m_mode != kHide;
    const int hintWidth = std::min(w - 2 * margin, qRound(560 * scale));
    const int hintHeight = QFontMetrics(m_upHint->font()).height();
    const int gap = qRound(22 * scale);
    const int upTop = std::max(margin, titleTop - gap - hintHeight);
    const int bottomTop = m_accent.bottom() + gap;
    if (upTop + hintHeight > titleTop || bottomTop + hintHeight > buttonTop - qRound(8 * scale))
        hints = false;
    hints = hints && placeHint(m_upHint, m_upHintText, upTop, hintWidth);
    hints = hints && placeHint(m_bottomHint, m_bottomHintText, bottomTop, hintWidth);
    m_upHint->setVisible(hints);
    m_bottomHint->setVisible(hints);
}

void ZBLogoView::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);

    QLinearGradient background(0, 0, 0, height());
    background.setColorAt(0.0, kTopColour);
    background.setColorAt(1.0, kBottomColour);
    painter.fillRect(rect(), background);

    // A soft glow behind the name lifts it off the background.
    const QPointF centre = m_primary->geometry().center();
    const qreal radius = std::max(width(), height()) * 0.45;
    QRadialGradient glow(centre, radius);
    glow.setColorAt(0.0, QColor(255, 255, 255, 16));
    glow.setColorAt(1.0, QColor(255, 255, 255, 0));
    painter.fillRect(rect(), glow);

    if (!m_primaryText.isEmpty() && m_accent.bottom() < m_button->y())
    {
        painter.setPen(Qt::NoPen);
        painter.setBrush(kAccentColour);
        painter.drawRoundedRect(m_accent, m_accent.height() / 2.0, m_accent.height() / 2.0);
    }
}
