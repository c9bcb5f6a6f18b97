#pragma once

// What screen readers are told about the program's windows and standard
// controls beyond Qt's own answers: a plain top-level widget is a window (a
// frame), not a filler, and a drop-down is known by its name, not by the
// entry it shows. Install once, before the first window shows.
namespace Accessibility {

void install();

} // namespace Accessibility
