#include "skin/skinparam.h"

#include "base/settingsstore.h"

cSkinParam::cSkinParam() : m_colors(Themes::blackNight()) {}

void cSkinParam::init()
{
    setTheme(SettingsStore::getNumber(SettingsStore::Theme, BlackNight));
}

void cSkinParam::setTheme(qint32 index)
{
    m_theme = index;
    if (index == PaleBlue)
        m_colors = Themes::paleBlue();
    else if (index == BlackNight)
        m_colors = Themes::blackNight();
    else
        return;
    if (m_listener)
        m_listener->themeColorsChanged(m_colors);
}
