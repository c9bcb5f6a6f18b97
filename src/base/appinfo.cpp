#include "base/appinfo.h"

QString AppInfo::version()
{
    return QStringLiteral(TUNECATCH_VERSION);
}
