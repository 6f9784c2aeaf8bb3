#include "ui/widgets/zbstyle.h"

#include <optional>

#include "ui/widgets/zbglyphicon.h"

namespace
{
std::optional<ZBGlyphIcon::Glyph> glyphFor(QStyle::StandardPixmap standardIcon)
{
    switch (standardIcon)
    {
        case QStyle::SP_MediaSkipBackward:
            return ZBGlyphIcon::Previous;
        case QStyle::SP_MediaPlay:
            return ZBGlyphIcon::Play;
        case QStyle::SP_MediaPause:
            return ZBGlyphIcon::Pause;
        case QStyle::SP_MediaSkipForward:
            return ZBGlyphIcon::Next;
        case QStyle::SP_MediaVolume:
            return ZBGlyphIcon::Volume;
        case QStyle::SP_ArrowBack:
        case QStyle::SP_ArrowLeft:
            return ZBGlyphIcon::Back;
        case QStyle::SP_ArrowForward:
        case QStyle::SP_ArrowRight:
            return ZBGlyphIcon::Forward;
        case QStyle::SP_BrowserStop:
        case QStyle::SP_LineEditClearButton:
            return ZBGlyphIcon::Stop;
        case QStyle::SP_TitleBarMaxButton:
            return ZBGlyphIcon::Fullscreen;
        case QStyle::SP_ToolBarHorizontalExtensionButton:
            return ZBGlyphIcon::Extension;
        default:
            return std::nullopt;
    }
}
} // namespace

ZBStyle::ZBStyle() = default;

QIcon ZBStyle::standardIcon(StandardPixmap standardIcon, const QStyleOption *option, const QWidget *widget) const
{
    if (const std::optional<ZBGlyphIcon::Glyph> glyph = glyphFor(standardIcon))
        return ZBGlyphIcon::icon(*glyph);
    return QProxyStyle::standardIcon(standardIcon, option, widget);
}
