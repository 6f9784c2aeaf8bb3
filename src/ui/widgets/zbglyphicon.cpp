#include "ui/widgets/zbglyphicon.h"

#include <QGuiApplication>
#include <QIconEngine>
#include <QPainter>
#include <QPainterPath>
#include <QPalette>
#include <QPixmap>

namespace
{
using ZBGlyphIcon::Glyph;

QPolygonF triangle(QPointF a, QPointF b, QPointF c)
{
    return QPolygonF({a, b, c});
}

// Every glyph is drawn facing one way in a 16 x 16 box; the mirrored ones
// (Next, Forward) are drawn flipped, so the pairs cannot drift apart.
void drawGlyph(QPainter &painter, Glyph glyph, const QColor &colour)
{
    painter.setPen(Qt::NoPen);
    painter.setBrush(colour);
    QPen line(colour, 1.6, Qt::SolidLine, Qt::RoundCap, Qt::RoundJoin);
    switch (glyph)
    {
        case ZBGlyphIcon::Play:
            painter.drawPolygon(triangle({4, 2.5}, {13.5, 8}, {4, 13.5}));
            break;
        case ZBGlyphIcon::Pause:
            painter.drawRect(QRectF(3.5, 2.5, 3.2, 11));
            painter.drawRect(QRectF(9.3, 2.5, 3.2, 11));
            break;
        case ZBGlyphIcon::Previous:
        case ZBGlyphIcon::Next:
            painter.drawRect(QRectF(2, 3, 2, 10));
            painter.drawPolygon(triangle({9, 3}, {4, 8}, {9, 13}));
            painter.drawPolygon(triangle({14, 3}, {9, 8}, {14, 13}));
            break;
        case ZBGlyphIcon::Volume:
            painter.drawPolygon(QPolygonF({{2, 6}, {5, 6}, {9, 2.5}, {9, 13.5}, {5, 10}, {2, 10}}));
            painter.setPen(line);
            painter.setBrush(Qt::NoBrush);
            painter.drawArc(QRectF(7, 5, 5, 6), -60 * 16, 120 * 16);
            painter.drawArc(QRectF(6, 2.5, 8.5, 11), -60 * 16, 120 * 16);
            break;
        case ZBGlyphIcon::Back:
        case ZBGlyphIcon::Forward:
            painter.setPen(line);
            painter.drawLine(QPointF(3, 8), QPointF(13.5, 8));
            painter.drawPolyline(QPolygonF({{7.5, 3.5}, {3, 8}, {7.5, 12.5}}));
            break;
        case ZBGlyphIcon::Stop:
            painter.setPen(QPen(colour, 2, Qt::SolidLine, Qt::RoundCap));
            painter.drawLine(QPointF(4, 4), QPointF(12, 12));
            painter.drawLine(QPointF(12, 4), QPointF(4, 12));
            break;
        case ZBGlyphIcon::Detach:
            // A window lifted off another.
            painter.setPen(QPen(colour, 1.3));
            painter.setBrush(Qt::NoBrush);
            painter.drawRect(QRectF(1.5, 5.5, 9, 8));
            painter.setBrush(colour);
            painter.drawRect(QRectF(5.5, 2.5, 9, 7.5));
            break;
        case ZBGlyphIcon::Extension:
            // More of a bar than fits: two chevrons.
            painter.setPen(line);
            painter.setBrush(Qt::NoBrush);
            painter.drawPolyline(QPolygonF({{4, 4}, {8, 8}, {4, 12}}));
            painter.drawPolyline(QPolygonF({{9, 4}, {13, 8}, {9, 12}}));
            break;
        case ZBGlyphIcon::Fullscreen:
        case ZBGlyphIcon::ExitFullscreen:
        {
            // Four corners pointing out, or in to leave fullscreen.
            const bool out = glyph == ZBGlyphIcon::Fullscreen;
            painter.setPen(line);
            painter.setBrush(Qt::NoBrush);
            for (int quarter = 0; quarter < 4; ++quarter)
            {
                painter.save();
                painter.translate(8, 8);
                painter.rotate(90 * quarter);
                const QPointF corner = out ? QPointF(-6, -6) : QPointF(-2, -2);
                const qreal arm = out ? 3.5 : -3.5;
                painter.drawPolyline(QPolygonF({corner + QPointF(0, arm), corner, corner + QPointF(arm, 0)}));
                painter.restore();
            }
            break;
        }
    }
}

class GlyphEngine : public QIconEngine
{
public:
    explicit GlyphEngine(Glyph glyph)
        : m_glyph(glyph)
    {
    }

    void paint(QPainter *painter, const QRect &rect, QIcon::Mode mode, QIcon::State) override
    {
        const QPalette palette = QGuiApplication::palette();
        QColor colour = palette.color(mode == QIcon::Disabled ? QPalette::Disabled : QPalette::Active,
                                      mode == QIcon::Selected ? QPalette::HighlightedText : QPalette::ButtonText);
        const int side = std::min(rect.width(), rect.height());
        painter->save();
        painter->setRenderHint(QPainter::Antialiasing);
        painter->translate(rect.x() + (rect.width() - side) / 2.0, rect.y() + (rect.height() - side) / 2.0);
        painter->scale(side / 16.0, side / 16.0);
        if (m_glyph == ZBGlyphIcon::Next || m_glyph == ZBGlyphIcon::Forward)
        {
            painter->translate(16, 0);
            painter->scale(-1, 1);
        }
        drawGlyph(*painter, m_glyph, colour);
        painter->restore();
    }

    QPixmap pixmap(const QSize &size, QIcon::Mode mode, QIcon::State state) override
    {
        return scaledPixmap(size, mode, state, 1.0);
    }

    QPixmap scaledPixmap(const QSize &size, QIcon::Mode mode, QIcon::State state, qreal scale) override
    {
        QPixmap pixmap(size * scale);
        pixmap.setDevicePixelRatio(scale);
        pixmap.fill(Qt::transparent);
        QPainter painter(&pixmap);
        paint(&painter, QRect(QPoint(), size), mode, state);
        return pixmap;
    }

    QIconEngine *clone() const override { return new GlyphEngine(m_glyph); }
    QString key() const override { return QStringLiteral("ZBGlyphIcon"); }

private:
    Glyph m_glyph;
};
} // namespace

QIcon ZBGlyphIcon::icon(Glyph glyph)
{
    return QIcon(new GlyphEngine(glyph));
}
