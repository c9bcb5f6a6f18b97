#pragma once

#include "base/shell.h"

// The shell of the desktop the program runs on.
class DesktopShell : public Shell
{
public:
    bool openDocument(const QString &address) override;
    bool startCommand(const QString &commandLine) override;
};
