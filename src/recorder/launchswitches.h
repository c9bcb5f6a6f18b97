#pragma once

#include <QString>
#include <QStringList>

#include <optional>

// The output path template a recorder window starts with when txtSave is empty.
inline const QString DefaultSaveTemplate = QStringLiteral(".\\%STATION%_%DATE%_%TIME%.mp3");

// What a launch command line asks of the recorder window. A field that is
// empty (nullopt) was not given; the window applies the rest to its controls.
struct LaunchSwitches
{
    std::optional<QString> Stream;  // "-a": txtStream, tokens joined with no separator
    std::optional<QString> Save;    // "-s": txtSave, tokens joined with no separator
    std::optional<QString> Station; // "-w": LblStation, tokens joined with single spaces
    std::optional<QString> Minutes;   // "-t": txtBreak0 (the next token)
    std::optional<QString> Megabytes; // "-b": txtBreak1 (the next token)
    // The stop limit to select: 0 for optBreak0, 1 for optBreak1; the later of
    // "-t" and "-b" wins.
    std::optional<int> SelectedBreak;
    bool SingleSong = false; // "-n"
    bool Hibernate = false;  // "-xh"
    bool ShutDown = false;   // "-xs"
    // "-m" acts as a click on cmdMonitor, once per occurrence.
    int MonitorClicks = 0;
    bool Minimised = false; // "-v"
};

// Splits the command line at single spaces and walks the tokens. Value-taking
// "-a", "-s", "-w" collect the following tokens up to the next one beginning
// with "-"; "-t" and "-b" take the next token. Switches are case-sensitive,
// unknown tokens are ignored, and a line shorter than 2 characters gives nothing.
LaunchSwitches ParseLaunchSwitches(const QString &commandLine);

// What the command line asks of the program before anything else: "--help"
// or "--version" anywhere among the arguments (the first that comes wins).
enum class CommandLineInfo
{
    None,
    Help,
    Version,
};
CommandLineInfo commandLineInfo(const QStringList &arguments);

// The switches, their meanings and the exit statuses, as "--help" prints them.
QString launchHelpText();
