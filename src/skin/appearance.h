#pragma once

#include "skin/appskin.h"
#include "skin/skinparam.h"

// The program's look: the skin layer and the colour theme, chosen apart.
struct Appearance
{
    explicit Appearance(const QString &installFolder) : skin(installFolder) {}

    ModAppSkin skin;
    cSkinParam theme;
};
