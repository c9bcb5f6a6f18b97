#pragma once

#include <QString>

// The desktop shell: opening a document or address in the program the user
// chose for it, and starting another program. Tests stand in for the browser.
class Shell
{
public:
    virtual ~Shell() = default;

    // Opens an address or a file; false when nothing could open it.
    virtual bool openDocument(const QString &address) = 0;
    // Starts a command line (split the way a shell splits it) as a program of
    // its own, without waiting for it; false when it could not be started.
    virtual bool startCommand(const QString &commandLine) = 0;
};
