#include "recorder/streamaddress.h"

#include "base/apperror.h"
#include "base/conversions.h"
#include "catalogue/playlist.h"

namespace {

constexpr QStringView SecureScheme = u"https://";

quint16 portNumber(QStringView text)
{
    const QString why = QStringLiteral("the port must be a number from 1 to 65535, not \"%1\"").arg(text);
    qint32 port = 0;
    try {
        port = Convert::toInt32(text);
    } catch (const AppError &error) {
        throw AppError(error.number(), why);
    }
    if (port < 1 || port > 65535)
        throw AppError(AppError::Overflow, why);
    return static_cast<quint16>(port);
}

} // namespace

QString StreamAddress::url() const
{
    return (Secure ? QStringLiteral("https://") : QStringLiteral("http://")) + Host + u':' +
           QString::number(Port) + Path;
}

StreamAddress ParseAddress(const QString &address)
{
    if (const QString problem = Playlist::streamAddressProblem(address); !problem.isEmpty())
        throw AppError(AppError::InvalidArgument, problem);
    StreamAddress result;
    QString work = address;
    if (address.contains(u"icyx://", Qt::CaseInsensitive)) {
        work.remove(QStringLiteral("icyx://"), Qt::CaseInsensitive);
    } else if (address.startsWith(SecureScheme, Qt::CaseInsensitive)) {
        work.remove(0, SecureScheme.size());
        result.Secure = true;
    } else {
        work.remove(QStringLiteral("http://"), Qt::CaseInsensitive);
    }

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
        result.Port = result.Secure ? 443 : 80;
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
