#pragma once

#include <QByteArray>
#include <QString>

// Where a station stream lives, as the recorder splits its address.
struct StreamAddress
{
    QString Host;
    // Signed 16 bits as the recorder has always kept it: a port above 32767
    // does not fit and the address is refused (AppError::Overflow).
    qint16 Port = 0;
    QString Path;
};

// Splits a station address into host, port and path:
// - every "http://" is removed (any letter case); an address holding "icyx://"
//   (any case) has every "icyx://" removed instead and keeps its "http://";
// - "host:port[/path]" takes the port between the first ":" and the first "/"
//   after it (a "/" is appended when there is none); a port that is not a
//   number throws AppError::TypeMismatch, one out of 16-bit range AppError::Overflow;
// - without ":" the port is 80 and the host ends before the first "/"; an
//   address with neither port nor "/" throws AppError::InvalidArgument, which
//   ends the start attempt (the address is not mended);
// - the path is "/" or everything from that "/" to the end.
StreamAddress ParseAddress(const QString &address);

// The one request the recorder sends, CR LF line ends and an empty line last.
// The Host line never carries the port. Host and path are sent in the local
// 8-bit encoding.
QByteArray BuildRequest(const StreamAddress &address);
