#pragma once

#include <QString>

// The user guide is the README that comes with the program, shown in the
// browser: rendered to a web page whose pictures come from the installation
// folder, where the README's pictures lie beside it.
namespace UserGuide {

inline const QString readmeFile = QStringLiteral("README.md");
inline const QString pageFile = QStringLiteral("UserGuide.html");

// Renders installFolder's README into pageFile in outputFolder and gives that
// page's path; empty when there is no README or the page cannot be written.
QString page(const QString &installFolder, const QString &outputFolder);

} // namespace UserGuide
