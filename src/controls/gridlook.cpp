#include "controls/gridlook.h"

#include "base/themecolors.h"

#include <cstring>
#include <type_traits>

int GridLook::ThemeIndexOf(const ThemeColors &colors)
{
    static_assert(std::has_unique_object_representations_v<ThemeColors>, "compared byte by byte");
    const auto same = [&colors](const ThemeColors &theme) {
        return std::memcmp(&colors, &theme, sizeof colors) == 0;
    };
    if (same(Themes::paleBlue()))
        return Themes::PaleBlue;
    if (same(Themes::blackNight()))
        return Themes::BlackNight;
    return -1;
}

void GridLook::setTheme(const ThemeColors &colors)
{
    const auto color = [](quint32 argb) { return QColor::fromRgba(argb); };
    back = color(colors.Back);
    backAlt = color(colors.BackAlt);
    backBkg = color(colors.BackBkg);
    backFixed = color(colors.BackFixed);
    backSel = color(colors.BackSel);
    backEdit = color(colors.BackEdit);
    fore = color(colors.Fore);
    foreFixed = color(colors.ForeFixed);
    foreSel = color(colors.ForeSel);
    foreHdr = color(colors.ForeHdr);
    foreEdit = color(colors.ForeEdit);
    grid = color(colors.Grid);
    progress = color(colors.ProgressBar);
    focusRect = color(colors.FocusRect);
}
