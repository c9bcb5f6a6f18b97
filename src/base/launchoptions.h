#pragma once

#include <QString>

// How the program was started: with a command argument of two characters or
// more it records at once (launch mode) and the recorder reads its switches.
struct LaunchOptions
{
    QString commandArg;
    bool launchMode = false;
};
