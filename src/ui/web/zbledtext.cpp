#include "ui/web/zbledtext.h"

#include <QFontDatabase>
#include <QPainter>

QColor ZBLedText::ink()
{
    return QColor(63, 63, 97);
}

QFont ZBLedText::ledFont(int pointSize)
{
    static const QString family = []()
    {
        const QStringList installed = QFontDatabase::families();
        for (const QString &wanted : {QStringLiteral("Verdana"), QStringLiteral("DejaVu Sans")})
            if (installed.contains(wanted, Qt::CaseInsensitive))
                return wanted;
        return QFontDatabase::systemFont(QFontDatabase::GeneralFont).family();
    }();
    QFont font(family);
    font.setPointSize(pointSize);
    return font;
}

ZBLedText::ZBLedText(int pointSize, QWidget *parent)
    : QWidget(parent)
    , m_alignment(Qt::AlignLeft | Qt::AlignVCenter)
{
    setFont(ledFont(pointSize));
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
}

void ZBLedText::setText(const QString &text)
{
    if (text == m_text)
        return;
    m_text = text;
    updateToolTip();
    updateGeometry();
    update();
}

void ZBLedText::setAlignment(Qt::Alignment alignment)
{
    m_alignment = alignment;
    update();
}

QSize ZBLedText::sizeHint() const
{
    return QSize(fontMetrics().horizontalAdvance(m_text), fontMetrics().height());
}

QSize ZBLedText::minimumSizeHint() const
{
    // Narrow panels show the start of the text and the ellipsis.
    return QSize(fontMetrics().horizontalAdvance(QStringLiteral("M…")), fontMetrics().height());
}

void ZBLedText::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setPen(ink());
    painter.drawText(rect(), int(m_alignment), fontMetrics().elidedText(m_text, Qt::ElideRight, width()));
}

void ZBLedText::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    updateToolTip();
}

void ZBLedText::updateToolTip()
{
    setToolTip(fontMetrics().horizontalAdvance(m_text) > width() ? m_text : QString());
}
