#pragma once

#include "base/shell.h"

// The shell of the desktop the program runs on.
class DesktopShell : public Shell
{
public:
    bool OpenDocument(const QString &address) override;
    bool StartCommand(const QString &commandLine) override;
};
