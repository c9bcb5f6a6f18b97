#include "base/themecolors.h"

namespace Themes {

ThemeColors paleBlue()
{
    return {
        .back = 0xFFFFFFFF,
        .backAlt = 0xFFF1F6FC,
        .backBkg = 0xFFE8F0F8,
        .backFixed = 0xFFD5E3F2,
        .backSel = 0xFF3D7DC9,
        .backEdit = 0xFFFFFFE8,
        .fore = 0xFF1B2733,
        .foreFixed = 0xFF1B2733,
        .foreSel = 0xFFFFFFFF,
        .foreHdr = 0xFF14385E,
        .foreEdit = 0xFF000000,
        .grid = 0xFFC9D8E8,
        .progressBar = 0xFF4A90D9,
        .focusRect = 0xFF1F5FAF,
        .window = 0xFFE4EEF8,
        .windowText = 0xFF1B2733,
    };
}

ThemeColors blackNight()
{
    return {
        .back = 0xFF1F2124,
        .backAlt = 0xFF26292D,
        .backBkg = 0xFF17181A,
        .backFixed = 0xFF2E3237,
        .backSel = 0xFF2F6DB5,
        .backEdit = 0xFF33373C,
        .fore = 0xFFE3E6EA,
        .foreFixed = 0xFFE3E6EA,
        .foreSel = 0xFFFFFFFF,
        .foreHdr = 0xFF9CC8F5,
        .foreEdit = 0xFFFFFFFF,
        .grid = 0xFF393D43,
        .progressBar = 0xFF3E8EDE,
        .focusRect = 0xFF7FB6F0,
        .window = 0xFF232528,
        .windowText = 0xFFE3E6EA,
    };
}

} // namespace Themes
