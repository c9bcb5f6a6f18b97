#include "base/apppaths.h"

#include <QFileInfo>
#include <QStandardPaths>

namespace AppPaths {

QString dataFolder()
{
    QString base = qEnvironmentVariable("APPDATA");
    if (base.isEmpty())
        base = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    return base + QStringLiteral("/Tunecatch/");
}

QString recordingsFolder()
{
    return dataFolder() + QStringLiteral("Rec/");
}

bool fileExists(const QString &path)
{
    const QFileInfo info(path);
    return info.exists() && !info.isDir();
}

} // namespace AppPaths
