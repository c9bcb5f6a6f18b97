#pragma once

#include <QByteArray>
#include <QString>

// Where a station stream lives, as the recorder splits its address.
struct StreamAddress
{
    QString Host;
    quint16 Port = 0;
    QString Path;
    // "https://": the connection is made over TLS.
    bool Secure = false;

    // The address as a URL again, for resolving a redirect against it.
    QString url() const;
};

// Splits a station address into host, port and path:
// - every "http://" is removed (any letter case); an address holding "icyx://"
//   (any case) has every "icyx://" removed instead and keeps its "http://";
//   one that begins with "https://" (any case) loses it, is Secure and has
//   the port 443 unless it names one;
// - "host:port[/path]" takes the port between the first ":" and the first "/"
//   after it (a "/" is appended when there is none); a port that is not a
//   number from 1 to 65535 throws AppError::TypeMismatch (not a number) or
//   AppError::Overflow (out of range), both saying which ports are valid;
// - without ":" the port is 80 and the host ends before the first "/"; an
//   address with neither port nor "/" throws AppError::InvalidArgument, which
//   ends the start attempt (the address is not mended);
// - the path is "/" or everything from that "/" to the end;
// - an address that cannot be a stream at all (Playlist::streamAddressProblem:
//   file://, ftp://, a control character) throws AppError::InvalidArgument
//   saying why, before any of the above.
StreamAddress ParseAddress(const QString &address);

// The one request the recorder sends, CR LF line ends and an empty line last.
// The Host line never carries the port. Host and path are sent in the local
// 8-bit encoding.
QByteArray BuildRequest(const StreamAddress &address);
