#include "ui/widgets/zbstyle.h"

#include "ui/widgets/zbglyphicon.h"

ZBStyle::ZBStyle() = default;

QIcon ZBStyle::standardIcon(StandardPixmap standardIcon, const QStyleOption *option, const QWidget *widget) const
{
    // The player's own buttons ask ZBGlyphIcon directly; these are the
    // pictures Qt's widgets in the main window ask the style for.
    if (standardIcon == SP_LineEditClearButton)
        return ZBGlyphIcon::icon(ZBGlyphIcon::Stop);
    if (standardIcon == SP_ToolBarHorizontalExtensionButton)
        return ZBGlyphIcon::icon(ZBGlyphIcon::Extension);
    return QProxyStyle::standardIcon(standardIcon, option, widget);
}
