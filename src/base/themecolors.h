#pragma once

#include <QtGlobal>

// The colours the program's own controls draw with, as 0xAARRGGBB values so
// that the theme can be chosen without a display.
struct ThemeColors
{
    quint32 back;      // cell background
    quint32 backAlt;   // every second row
    quint32 backBkg;   // area below the last row
    quint32 backFixed; // header
    quint32 backSel;   // selected rows
    quint32 backEdit;  // the edit box
    quint32 fore;
    quint32 foreFixed;
    quint32 foreSel;
    quint32 foreHdr;
    quint32 foreEdit;
    quint32 grid;
    quint32 progressBar;
    quint32 focusRect;
    quint32 window; // window and panel background
    quint32 windowText;
};

// Whoever carries a theme to the windows: told each time the colours change.
class ThemeListener
{
public:
    virtual ~ThemeListener() = default;
    virtual void themeColorsChanged(const ThemeColors &colors) = 0;
};

// The two colour sets a theme index selects.
namespace Themes {

enum Index
{
    PaleBlue = 0,
    BlackNight = 1
};

ThemeColors paleBlue();
ThemeColors blackNight();

} // namespace Themes
