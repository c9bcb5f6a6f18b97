// Arbitrary socket reads through the stream parser. The first byte picks the
// metadata interval of a ready-made header (255: the input brings its own
// header); the rest is a series of packets, each a size byte and its bytes,
// so packet boundaries fall everywhere. Size 0 is an event without data.
// Titles never carry control characters, and nothing is held beyond what was
// received or past the backlog bound.
#include "recorder/icystream.h"
#include "recorder/icystreamhost.h"

#include <algorithm>
#include <cstdint>
#include <cstdlib>

namespace {

class NullHost : public IcyStreamHost
{
public:
    QString shownTitle() const override { return m_title; }
    void showTitle(const QString &title) override
    {
        if (std::any_of(title.begin(), title.end(),
                        [](QChar c) { return c.category() == QChar::Other_Control; }))
            std::abort();
        m_title = title;
    }
    void showStreamText(const QString &) override {}
    void showGenre(const QString &) override {}
    void setHyperlinkA(const QString &) override {}
    void setHyperlinkB(const QString &) override {}
    QString scanSongText() const override { return QStringLiteral("a"); }
    void showWaitScan(bool) override {}
    void setWriteEnabled(bool) override {}
    void WriteToDisk(QByteArrayView data, bool) override { written += data.size(); }
    void NewSong(const QString &) override { m_fileOpen = true; }
    bool isFileOpen() const override { return m_fileOpen; }
    void switchToContinuous() override { m_fileOpen = true; }

    qsizetype written = 0;

private:
    QString m_title;
    bool m_fileOpen = false;
};

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size == 0)
        return 0;
    NullHost host;
    IcyStream icy(host);
    qsizetype fed = 0;
    if (data[0] != 255) {
        const QByteArray header = "ICY 200 OK\r\nicy-br:128\r\nicy-metaint:" + QByteArray::number(data[0]) + "\r\n\r\n";
        icy.onData(header);
        fed += header.size();
    }
    const auto *bytes = reinterpret_cast<const char *>(data);
    size_t at = 1;
    while (at < size) {
        const size_t length = std::min<size_t>(data[at], size - at - 1);
        icy.onData(QByteArrayView(bytes + at + 1, qsizetype(length)));
        fed += qsizetype(length);
        at += 1 + length;
        // Nothing is held beyond what was received.
        if (icy.receiveBufferLength() > fed || icy.receiveBufferLength() > IcyStream::BacklogLimit + 256)
            std::abort();
        if (!icy.failure().isEmpty() && icy.receiveBufferLength() != 0)
            std::abort();
    }
    icy.flushRest();
    if (icy.receiveBufferLength() != 0 || icy.BytesTotal() > double(fed))
        std::abort();
    return 0;
}
