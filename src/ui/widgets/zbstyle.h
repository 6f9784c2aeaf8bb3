#pragma once

#include <QProxyStyle>

// The desktop's style, but for the pictures Qt's own widgets ask it for
// while the main window is built (the menu bar's overflow button, the
// search field's clear button): those are the player's glyphs
// (ZBGlyphIcon). The style's own would be looked up in the icon theme,
// whose first use loads the theme and every image-format plug-in before
// the window can show.
class ZBStyle : public QProxyStyle
{
    Q_OBJECT

public:
    ZBStyle();

    QIcon standardIcon(StandardPixmap standardIcon, const QStyleOption *option = nullptr,
                       const QWidget *widget = nullptr) const override;
};
