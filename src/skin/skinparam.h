#pragma once

#include "base/themecolors.h"

#include <QtGlobal>

// The colour theme: 0 "Pale Blue", 1 "Black Night". Any other index is kept
// but leaves the colours as they were.
class cSkinParam
{
public:
    enum Theme
    {
        PaleBlue = Themes::PaleBlue,
        BlackNight = Themes::BlackNight
    };

    cSkinParam();

    // The listener hears every later change of the colours; none by default.
    void setListener(ThemeListener *listener) { m_listener = listener; }

    // Reads the stored theme (default 1) and applies it.
    void init();
    void setTheme(qint32 index);
    qint32 themeIndex() const { return m_theme; }
    const ThemeColors &colors() const { return m_colors; }

private:
    qint32 m_theme = BlackNight;
    ThemeColors m_colors;
    ThemeListener *m_listener = nullptr;
};
