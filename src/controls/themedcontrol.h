#pragma once

struct ThemeColors;

// A control the program draws itself, in the colours of the current theme.
// A theme change reaches every such control at once, so it repaints without
// a restart.
class ThemedControl
{
public:
    virtual ~ThemedControl() = default;

    virtual void setThemeColors(const ThemeColors &colors) = 0;
};
