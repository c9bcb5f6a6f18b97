#pragma once

#include <QtGlobal>

// The colours the program's own controls draw with, as 0xAARRGGBB values so
// that the theme can be chosen without a display.
struct ThemeColors
{
    quint32 Back;      // cell background
    quint32 BackAlt;   // every second row
    quint32 BackBkg;   // area below the last row
    quint32 BackFixed; // header
    quint32 BackSel;   // selected rows
    quint32 BackEdit;  // the edit box
    quint32 Fore;
    quint32 ForeFixed;
    quint32 ForeSel;
    quint32 ForeHdr;
    quint32 ForeEdit;
    quint32 Grid;
    quint32 ProgressBar;
    quint32 FocusRect;
    quint32 Window; // window and panel background
    quint32 WindowText;
};

// Whoever carries a theme to the windows: told each time the colours change.
class ThemeListener
{
public:
    virtual ~ThemeListener() = default;
    virtual void ThemeColorsChanged(const ThemeColors &colors) = 0;
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
