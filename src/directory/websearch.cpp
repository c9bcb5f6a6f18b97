#include "directory/websearch.h"

#include <QtGlobal>

namespace WebSearch {

QString directoryHost()
{
    const QString host = qEnvironmentVariable(hostVariable);
    return host.isEmpty() ? defaultDirectoryHost : host;
}

QString searchAddress(const QString &host, const QString &text, const QString &genre)
{
    if (text.isEmpty())
        return {};
    QString address =
        host + QStringLiteral("/directory/index.phtml?sgenre=AAAAA&maxbitrate=999&numresult=25&s=");
    address.replace(QStringLiteral("AAAAA"), genre);
    return address + QString(text).replace(u' ', u'+');
}

} // namespace WebSearch
