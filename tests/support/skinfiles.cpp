#include "support/skinfiles.h"

#include "support/tempprofile.h"

#include <QFile>
#include <QFileInfo>

namespace SkinFiles {

QString builtEngine()
{
    return QStringLiteral(ZELVANEF_FILE);
}

void installEngine(const QString &folder, Engine kind)
{
    const QString target = folder + u'/' + QFileInfo(builtEngine()).fileName();
    switch (kind) {
    case Engine::Built:
        QFile::copy(builtEngine(), target);
        break;
    case Engine::WrongArchitecture: {
        // The engine itself, marked as built for another processor (ELF e_machine).
        QByteArray bytes = TempProfile::readFile(builtEngine());
        bytes[18] = char(0xB7);
        bytes[19] = 0;
        TempProfile::writeFile(target, bytes);
        break;
    }
    case Engine::NoExports:
        QFile::copy(QStringLiteral(NOEXPORTS_FILE), target);
        break;
    case Engine::None:
        break;
    }
}

QByteArray skin(const QString &name, const QByteArray &sheet, const char *theme)
{
    return "URF 1\nName: " + name.toUtf8() + "\nAuthor: Tests\nTheme: " + theme + "\n---\n" + sheet;
}

QString shipped(const char *fileName)
{
    return qEnvironmentVariable("TUNECATCH_SOURCE_DIR") + QStringLiteral("/data/") +
           QLatin1StringView(fileName);
}

} // namespace SkinFiles
