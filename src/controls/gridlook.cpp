#include "controls/gridlook.h"

#include "base/themecolors.h"

#include <cstring>
#include <type_traits>

int GridLook::themeIndexOf(const ThemeColors &colors)
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
    back = color(colors.back);
    backAlt = color(colors.backAlt);
    backBkg = color(colors.backBkg);
    backFixed = color(colors.backFixed);
    backSel = color(colors.backSel);
    backEdit = color(colors.backEdit);
    fore = color(colors.fore);
    foreFixed = color(colors.foreFixed);
    foreSel = color(colors.foreSel);
    foreHdr = color(colors.foreHdr);
    foreEdit = color(colors.foreEdit);
    grid = color(colors.grid);
    progress = color(colors.progressBar);
    focusRect = color(colors.focusRect);
}
