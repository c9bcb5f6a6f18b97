#include "base/apppaths.h"

#include <QFileInfo>
#include <QStandardPaths>

namespace AppPaths {

QString DataFolder()
{
    QString base = qEnvironmentVariable("APPDATA");
    if (base.isEmpty())
        base = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    return base + QStringLiteral("/Tunecatch/");
}

QString RecordingsFolder()
{
    return DataFolder() + QStringLiteral("Rec/");
}

bool FileExists(const QString &path)
{
    const QFileInfo info(path);
    return info.exists() && !info.isDir();
}

} // namespace AppPaths
