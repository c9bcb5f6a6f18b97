#include "recorder/streamaddress.h"

#include "app/apperror.h"
#include "app/conversions.h"

#include <limits>

namespace {

qint16 portNumber(QStringView text)
{
    const qint32 port = Convert::ToInt32(text);
    if (port < std::numeric_limits<qint16>::min() || port > std::numeric_limits<qint16>::max())
        throw AppError::overflow();
    return static_cast<qint16>(port);
}

} // namespace

StreamAddress ParseAddress(const QString &address)
{
    QString work = address;
    if (address.contains(u"icyx://", Qt::CaseInsensitive))
        work.remove(QStringLiteral("icyx://"), Qt::CaseInsensitive);
    else
        work.remove(QStringLiteral("http://"), Qt::CaseInsensitive);

    StreamAddress result;
    qsizetype slash = 0;
    const qsizetype colon = work.indexOf(u':');
    if (colon >= 0) {
        slash = work.indexOf(u'/', colon);
        if (slash < 0) {
            work += u'/';
            slash = work.size() - 1;
        }
        result.Port = portNumber(QStringView(work).mid(colon + 1, slash - colon - 1));
        result.Host = work.left(colon);
    } else {
        result.Port = 80;
        slash = work.indexOf(u'/');
        // No port and no "/": there is no end of the host to take.
        if (slash < 0)
            throw AppError::invalidArgument();
        result.Host = work.left(slash);
    }
    result.Path = work.mid(slash);
    return result;
}

QByteArray BuildRequest(const StreamAddress &address)
{
    return "GET " + address.Path.toLocal8Bit() + " HTTP/1.0\r\n"
           "Host: " + address.Host.toLocal8Bit() + "\r\n"
           "User-Agent: WinampMPEG/2.7\r\n"
           "Accept: */*\r\n"
           "Icy-MetaData: 1\r\n"
           "Connection: Close\r\n"
           "\r\n";
}
