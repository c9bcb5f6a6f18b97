#include "base/themecolors.h"

namespace Themes {

ThemeColors paleBlue()
{
    return {
        .Back = 0xFFFFFFFF,
        .BackAlt = 0xFFF1F6FC,
        .BackBkg = 0xFFE8F0F8,
        .BackFixed = 0xFFD5E3F2,
        .BackSel = 0xFF3D7DC9,
        .BackEdit = 0xFFFFFFE8,
        .Fore = 0xFF1B2733,
        .ForeFixed = 0xFF1B2733,
        .ForeSel = 0xFFFFFFFF,
        .ForeHdr = 0xFF14385E,
        .ForeEdit = 0xFF000000,
        .Grid = 0xFFC9D8E8,
        .ProgressBar = 0xFF4A90D9,
        .FocusRect = 0xFF1F5FAF,
        .Window = 0xFFE4EEF8,
        .WindowText = 0xFF1B2733,
    };
}

ThemeColors blackNight()
{
    return {
        .Back = 0xFF1F2124,
        .BackAlt = 0xFF26292D,
        .BackBkg = 0xFF17181A,
        .BackFixed = 0xFF2E3237,
        .BackSel = 0xFF2F6DB5,
        .BackEdit = 0xFF33373C,
        .Fore = 0xFFE3E6EA,
        .ForeFixed = 0xFFE3E6EA,
        .ForeSel = 0xFFFFFFFF,
        .ForeHdr = 0xFF9CC8F5,
        .ForeEdit = 0xFFFFFFFF,
        .Grid = 0xFF393D43,
        .ProgressBar = 0xFF3E8EDE,
        .FocusRect = 0xFF7FB6F0,
        .Window = 0xFF232528,
        .WindowText = 0xFFE3E6EA,
    };
}

} // namespace Themes
