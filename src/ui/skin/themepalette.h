#pragma once

#include <QPalette>

struct ThemeColors;

// The window palette of a colour theme, so that standard controls (buttons,
// drop-downs, edit boxes) match the program's own drawn controls.
QPalette themePalette(const ThemeColors &colors);
