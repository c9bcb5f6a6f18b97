#include "recorder/streamaddress.h"

#include "app/apperror.h"

#include <gtest/gtest.h>

TEST(StreamAddress, SplitsHostPortAndPath)
{
    const struct {
        const char *address;
        const char *host;
        qint16 port;
        const char *path;
    } rows[] = {
        {"http://a.example:8000/stream", "a.example", 8000, "/stream"},
        {"http://a.example:8000", "a.example", 8000, "/"},
        {"a.example/live", "a.example", 80, "/live"},
        {"host:8000/a/b", "host", 8000, "/a/b"},
        {"HTTP://Host/x", "Host", 80, "/x"},
        {"icyx://host:9000/", "host", 9000, "/"},
        {"host/a:1/b", "host/a", 1, "/b"},
    };
    for (const auto &row : rows) {
        SCOPED_TRACE(row.address);
        try {
            const StreamAddress a = ParseAddress(QString::fromLatin1(row.address));
            EXPECT_EQ(a.Host, QString::fromLatin1(row.host));
            EXPECT_EQ(a.Port, row.port);
            EXPECT_EQ(a.Path, QString::fromLatin1(row.path));
        } catch (const AppError &e) {
            ADD_FAILURE() << e.what();
        }
    }
}

TEST(StreamAddress, RefusesWhatItCannotSplit)
{
    const std::pair<const char *, int> rows[] = {
        {"http://a.example", AppError::InvalidArgument},
        {"host:80x/", AppError::TypeMismatch},
        {"host:/", AppError::TypeMismatch},
        {"ICYX://http://host:9000/", AppError::TypeMismatch}, // "http://" stays: its ":" starts the port
        {"host:40000/", AppError::Overflow},
    };
    for (const auto &[address, number] : rows) {
        try {
            ParseAddress(QString::fromLatin1(address));
            ADD_FAILURE() << address << " was accepted";
        } catch (const AppError &e) {
            EXPECT_EQ(e.number(), number) << address;
        }
    }
}

TEST(StreamAddress, RequestBytes)
{
    EXPECT_EQ(BuildRequest(ParseAddress(QStringLiteral("http://radio.example:8000/live"))),
              QByteArray("GET /live HTTP/1.0\r\n"
                         "Host: radio.example\r\n"
                         "User-Agent: WinampMPEG/2.7\r\n"
                         "Accept: */*\r\n"
                         "Icy-MetaData: 1\r\n"
                         "Connection: Close\r\n"
                         "\r\n"));
}
