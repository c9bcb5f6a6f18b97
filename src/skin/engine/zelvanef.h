#pragma once

// The skin engine's exported operations, as the program looks them up with
// QLibrary. Text arguments are 8-bit: paths in the file system's encoding.
namespace Zelvanef {

// SkinStart(skinFile, options): skins the whole application with the style
// sheet of a ".urf" file. Returns 0, NoApplication, or the UrfSkin::Status of
// a file it refused. Starting again while skinned switches the skin; the look
// from before the first start is what SkinRemove brings back.
using SkinStartFn = int (*)(const char *skinFile, int options);
// SkinRemove(): restores the application's style sheet from before the first
// start, and that of the windows given a skin of their own.
using SkinRemoveFn = void (*)();
// SkinWindowSet(windowName, skinFile): gives the top-level windows of that
// object name a skin of their own; an empty file takes it away again.
using SkinWindowSetFn = int (*)(const char *windowName, const char *skinFile);
// SkinWindowSetEx(windowName, skinFile, options): the same, with MatchClass
// choosing the windows by their class (or a base class) instead.
using SkinWindowSetExFn = int (*)(const char *windowName, const char *skinFile, int options);

// The program starts skins with these options: there are none yet.
constexpr int StartOptions = 0;
constexpr int MatchClass = 1;

constexpr int NoApplication = 1; // no widget application runs in this process
constexpr int NoSuchWindow = 8;

} // namespace Zelvanef
