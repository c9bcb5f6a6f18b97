#pragma once

#include <QColor>

struct ThemeColors;

// The grid's colours, and how the program's themes map onto them.
struct GridLook
{
    // Which of the program's themes a set of colours is; -1 for colours of no theme.
    static int themeIndexOf(const ThemeColors &colors);

    // Takes every colour a theme has; foreTotals, which no theme has, stays.
    void setTheme(const ThemeColors &colors);

    QColor back, backAlt, backBkg, backFixed, backSel, backEdit;
    QColor fore, foreFixed, foreSel, foreHdr, foreEdit, foreTotals;
    QColor grid, progress, focusRect;
};
