#include "ui/widgets/zbstarratingeditor.h"

#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <QPainterPath>
#include <QStyle>
#include <QtMath>

namespace
{
constexpr int Margin = 3;

QPainterPath starPath(const QRectF &box)
{
    // Inner radius 0.4 of the outer: close to the regular star's 0.382 and a
    // little plumper, which reads better at text size.
    const QPointF centre = box.center();
    const qreal outer = box.width() / 2.0;
    const qreal inner = outer * 0.4;
    QPainterPath path;
    for (int i = 0; i < 10; ++i)
    {
        const qreal radius = (i % 2 == 0) ? outer : inner;
        const qreal angle = qDegreesToRadians(-90.0 + i * 36.0);
        const QPointF point(centre.x() + radius * qCos(angle), centre.y() + radius * qSin(angle));
        if (i == 0)
            path.moveTo(point);
        else
            path.lineTo(point);
    }
    path.closeSubpath();
    return path;
}
} // namespace

ZBStarRatingEditor::ZBStarRatingEditor(QWidget *parent)
    : QWidget(parent)
{
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
    setAttribute(Qt::WA_Hover);
}

void ZBStarRatingEditor::setRating(int rating)
{
    rating = qBound(0, rating, MaximumRating);
    if (rating == m_rating)
        return;
    m_rating = rating;
    update();
    Q_EMIT ratingChanged(m_rating);
}

void ZBStarRatingEditor::editRating(int rating)
{
    const int before = m_rating;
    setRating(rating);
    if (m_rating != before)
        Q_EMIT ratingEdited(m_rating);
}

int ZBStarRatingEditor::starSize() const
{
    return qMax(12, fontMetrics().height());
}

int ZBStarRatingEditor::zeroStripWidth() const
{
    return Margin + starSize() / 2;
}

QRect ZBStarRatingEditor::starRect(int star) const
{
    const int size = starSize();
    const int step = size + size / 4;
    const QRect logical(zeroStripWidth() + (star - 1) * step, (height() - size) / 2, size, size);
    return QStyle::visualRect(layoutDirection(), rect(), logical);
}

int ZBStarRatingEditor::ratingAt(const QPoint &pos) const
{
    const int x = layoutDirection() == Qt::RightToLeft ? width() - 1 - pos.x() : pos.x();
    if (x < zeroStripWidth())
        return 0;
    const int size = starSize();
    const int step = size + size / 4;
    // The gap after a star belongs to it, so there is no dead spot between
    // stars.
    return qMin(MaximumRating, (x - zeroStripWidth()) / step + 1);
}

QSize ZBStarRatingEditor::sizeHint() const
{
    const int size = starSize();
    const int step = size + size / 4;
    return QSize(zeroStripWidth() + (MaximumRating - 1) * step + size + Margin, size + 2 * Margin);
}

QSize ZBStarRatingEditor::minimumSizeHint() const
{
    return sizeHint();
}

void ZBStarRatingEditor::paintEvent(QPaintEvent *)
{
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    const QPalette::ColorGroup group = isEnabled() ? QPalette::Active : QPalette::Disabled;
    const QColor filled = palette().color(group, QPalette::Text);
    QColor empty = palette().color(group, QPalette::PlaceholderText);
    if (!empty.isValid())
        empty = palette().color(group, QPalette::Mid);

    for (int star = 1; star <= MaximumRating; ++star)
    {
        const QPainterPath path = starPath(QRectF(starRect(star)).adjusted(0.5, 0.5, -0.5, -0.5));
        if (star <= m_rating)
        {
            painter.setPen(Qt::NoPen);
            painter.setBrush(filled);
        }
        else
        {
            painter.setPen(QPen(empty, 1.0));
            painter.setBrush(Qt::NoBrush);
        }
        painter.drawPath(path);
    }

    if (hasFocus())
    {
        // Drawn here rather than by the style: some styles show focus frames
        // only after Tab was pressed, and stars that took focus by a click
        // must still show where the arrow keys will go.
        QColor frame = palette().color(group, QPalette::Highlight);
        painter.setPen(QPen(frame, 1.0));
        painter.setBrush(Qt::NoBrush);
        painter.drawRoundedRect(QRectF(rect()).adjusted(0.5, 0.5, -0.5, -0.5), 3.0, 3.0);
    }
}

void ZBStarRatingEditor::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton)
    {
        QWidget::mousePressEvent(event);
        return;
    }
    int rating = ratingAt(event->position().toPoint());
    if (rating == 1 && m_rating == 1)
        rating = 0;
    editRating(rating);
    event->accept();
}

void ZBStarRatingEditor::mouseMoveEvent(QMouseEvent *event)
{
    if (!(event->buttons() & Qt::LeftButton))
    {
        QWidget::mouseMoveEvent(event);
        return;
    }
    editRating(ratingAt(event->position().toPoint()));
    event->accept();
}

void ZBStarRatingEditor::keyPressEvent(QKeyEvent *event)
{
    const bool mirrored = layoutDirection() == Qt::RightToLeft;
    const int key = event->key();
    switch (key)
    {
        case Qt::Key_Right:
            editRating(m_rating + (mirrored ? -1 : 1));
            break;
        case Qt::Key_Left:
            editRating(m_rating + (mirrored ? 1 : -1));
            break;
        case Qt::Key_Up:
        case Qt::Key_Plus:
            editRating(m_rating + 1);
            break;
        case Qt::Key_Down:
        case Qt::Key_Minus:
            editRating(m_rating - 1);
            break;
        case Qt::Key_Home:
            editRating(0);
            break;
        case Qt::Key_End:
            editRating(MaximumRating);
            break;
        default:
            if (key >= Qt::Key_0 && key <= Qt::Key_0 + MaximumRating &&
                !(event->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier)))
            {
                editRating(key - Qt::Key_0);
                break;
            }
            QWidget::keyPressEvent(event);
            return;
    }
    event->accept();
}
