#pragma once

#include <QByteArray>
#include <QString>

// Skin files and engines for the skin tests: the engine as built, engines
// that must be refused, and ".urf" files written on the spot.
namespace SkinFiles {

enum class Engine
{
    Built,
    WrongArchitecture,
    NoExports,
    None
};

// The engine library as the build made it.
QString builtEngine();
// Places an engine of the given kind in folder under the name the program loads.
void installEngine(const QString &folder, Engine kind);

// A skin file's bytes: the header, then the sheet.
QByteArray skin(const QString &name, const QByteArray &sheet, const char *theme = "Black Night");
// A skin shipped in data/, by file name.
QString shipped(const char *fileName);

} // namespace SkinFiles
