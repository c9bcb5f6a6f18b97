#pragma once

#include <QString>
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

// The colour theme: 0 "Pale Blue", 1 "Black Night". Any other index is kept
// but leaves the colours as they were.
class cSkinParam
{
public:
    enum Theme
    {
        PaleBlue = 0,
        BlackNight = 1
    };

    cSkinParam();

    // The listener hears every later change of the colours; none by default.
    void SetListener(ThemeListener *listener) { m_listener = listener; }

    // Reads the stored theme (default 1) and applies it.
    void Init();
    void SetTheme(qint32 index);
    qint32 ThemeIndex() const { return m_theme; }
    const ThemeColors &Colors() const { return m_colors; }

    static ThemeColors PaleBlueColors();
    static ThemeColors BlackNightColors();

private:
    qint32 m_theme = BlackNight;
    ThemeColors m_colors;
    ThemeListener *m_listener = nullptr;
};
