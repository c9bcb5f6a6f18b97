#include "recorder/streamaddress.h"

#include "base/apperror.h"

#include <gtest/gtest.h>

// The request bytes are checked where the recorder sends them (test_frmtc).
TEST(StreamAddress, SplitsHostPortAndPathOrSaysWhyNot)
{
    const struct
    {
        const char *address, *host;
        quint16 port;
        const char *path;
        int error;
        bool secure = false;
    } rows[] = {{"http://a.example:8000/stream", "a.example", 8000, "/stream", 0},
                {"http://a.example:8000", "a.example", 8000, "/", 0},
                {"a.example/live", "a.example", 80, "/live", 0},
                {"host:8000/a/b", "host", 8000, "/a/b", 0},
                {"HTTP://Host/x", "Host", 80, "/x", 0},
                {"icyx://host:9000/", "host", 9000, "/", 0},
                {"host/a:1/b", "host/a", 1, "/b", 0},
                {"http://a.example", "", 0, "", AppError::InvalidArgument},
                {"host:80x/", "", 0, "", AppError::TypeMismatch},
                {"host:/", "", 0, "", AppError::TypeMismatch},
                {"ICYX://http://host:9000/", "", 0, "",
                 AppError::TypeMismatch}, // "http://" stays: its ":" starts the port
                {"host:40000/", "host", 40000, "/", 0},
                {"host:65535/live", "host", 65535, "/live", 0},
                {"host:0/", "", 0, "", AppError::Overflow},
                {"host:65536/", "", 0, "", AppError::Overflow},
                {"host:-1/", "", 0, "", AppError::Overflow},
                {"HTTPS://secure.example/live", "secure.example", 443, "/live", 0, true},
                {"https://secure.example:8443/a?b=c", "secure.example", 8443, "/a?b=c", 0, true},
                // Not "the port must be a number": the scheme is what is wrong.
                {"file:///etc/passwd", "", 0, "", AppError::InvalidArgument}};
    for (const auto &row : rows) {
        SCOPED_TRACE(row.address);
        try {
            const StreamAddress a = ParseAddress(QString::fromLatin1(row.address));
            EXPECT_EQ(row.error, 0) << "accepted";
            EXPECT_EQ(a.Host, QString::fromLatin1(row.host));
            EXPECT_EQ(a.Port, row.port);
            EXPECT_EQ(a.Path, QString::fromLatin1(row.path));
            EXPECT_EQ(a.Secure, row.secure);
        } catch (const AppError &e) {
            EXPECT_EQ(e.number(), row.error) << e.what();
            if (row.error != AppError::InvalidArgument) {
                EXPECT_TRUE(e.description().contains(u"from 1 to 65535")) << e.what();
            } else if (QByteArrayView(row.address).startsWith("file:")) {
                EXPECT_TRUE(e.description().contains(u"is not a stream address")) << e.what();
            }
        }
    }
}
