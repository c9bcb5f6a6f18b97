#pragma once

#include <QString>

// Where the program keeps its files. The data folder is computed afresh at
// every call, so a changed environment is seen at once.
namespace AppPaths {

// "APPDATA" when set and not empty, else the user's data folder
// ($XDG_DATA_HOME, else ~/.local/share); then "/Tunecatch/".
QString dataFolder();

// The recordings folder the recorder uses: the data folder followed by "Rec/".
QString recordingsFolder();

// True when the path names an existing file (not a folder).
bool fileExists(const QString &path);

} // namespace AppPaths
