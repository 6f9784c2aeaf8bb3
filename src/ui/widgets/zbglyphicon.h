#pragma once

#include <QIcon>

// The player's own button pictures, drawn as shapes at whatever size and
// scale a button asks for, in the palette's text colour (dimmed when the
// button is disabled), so they follow light and dark themes.
//
// Why not the icon theme: the first themed icon makes Qt read the theme's
// index and load every image-format plug-in (WebP, TIFF, JPEG and MNG with
// their libraries), about a third of the time it takes to show the main
// window, and a desktop without a theme still gets the same pictures.
namespace ZBGlyphIcon
{
enum Glyph
{
    Previous,
    Play,
    Pause,
    Next,
    Volume,
    Back,
    Forward,
    Stop,
    Detach,
    Fullscreen,
    ExitFullscreen,
    Extension,
};

QIcon icon(Glyph glyph);
} // namespace ZBGlyphIcon
