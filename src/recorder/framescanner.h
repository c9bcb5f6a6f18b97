#pragma once

#include "recorder/streamformat.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QList>

#include <memory>

// One stretch of a stream as a frame scanner sees it. The pieces a scanner
// hands out follow each other without gap or overlap.
struct StreamPiece
{
    enum class Kind
    {
        Frame,  // a whole audio frame (an Ogg page of audio)
        Header, // a page of an Ogg stream's header packets
        Other,  // bytes that are not a frame of the stream's codec
    };

    Kind kind = Kind::Other;
    qint64 offset = 0; // stream position of the first byte
    QByteArray bytes;
    qint64 durationNs = 0; // audio time of a frame, 0 where unknown
    // A file may begin with this frame: false for an Ogg page that continues a
    // packet begun on the page before it.
    bool canBegin = false;
    // What a file must hold before this frame to be played on its own: the
    // header pages of an Ogg stream; empty for MP3 and ADTS.
    QByteArray headers;

    qint64 end() const { return offset + bytes.size(); }
};

// Finds where whole frames begin and end in a stream that arrives in chunks of
// any size. A frame counts once its header is valid and the next frame's header
// is found where its length says (an Ogg page once its checksum is right);
// to find the stream first, two such confirmations are needed, so a chance
// sync pattern in other bytes is not taken for audio. Bytes that are no frame
// come out as Other as soon as that is known, so nothing is lost and nothing
// waits longer than a few frames: what is held back is at most the frames
// still awaiting confirmation.
class FrameScanner
{
public:
    FrameScanner(const FrameScanner &) = delete;
    FrameScanner &operator=(const FrameScanner &) = delete;
    virtual ~FrameScanner();

    static std::unique_ptr<FrameScanner> create(StreamFormat format);

    // The next bytes of the stream. Returns the pieces now decided, in order.
    QList<StreamPiece> push(QByteArrayView data);
    // A file ends here: the frames held back that are whole, without waiting
    // for the next header to confirm them. The rest stays held.
    QList<StreamPiece> takeComplete();
    // The stream ended: whole frames as by takeComplete, then everything else
    // that was held back, as Other.
    QList<StreamPiece> finish();

    // Frames are being found (the last piece decided was a frame).
    bool inSync() const { return m_inSync; }
    // Stream bytes pushed so far, and how many of them are still held back.
    qint64 position() const { return m_offset + m_held.size(); }
    qsizetype heldBytes() const { return m_held.size(); }
    // The bytes held back, not yet decided.
    QByteArrayView held() const { return m_held; }
    // Audio time of all frames handed out so far.
    qint64 durationNs() const { return m_durationNs; }

protected:
    enum class Verdict
    {
        Frame,
        NotFrame,
        NeedMore,
    };

    // What a codec reads from a frame header.
    struct Header
    {
        qsizetype length = 0;
        // Fields every frame of one stream shares (version, rate, ...).
        quint32 key = 0;
        qint64 durationNs = 0;
    };

    FrameScanner() = default;

    // Reads the frame header at the start of bytes.
    virtual Verdict readHeader(QByteArrayView bytes, Header &header) const = 0;
    // Where, at or after from, a frame could begin (bytes.size() when nowhere).
    virtual qsizetype findSync(QByteArrayView bytes, qsizetype from) const = 0;
    // Next headers that must confirm a frame: more while the stream is sought.
    virtual int confirmationsNeeded(bool inSync) const = 0;
    // Fills in a piece for a frame that was found (kind, duration, ...).
    virtual void describe(const Header &header, StreamPiece &piece);

private:
    enum class Ending
    {
        None,     // frames wait for the next header
        Complete, // whole frames go out unconfirmed
    };

    void scan(QList<StreamPiece> &pieces, Ending ending);
    Verdict confirm(qsizetype pos, const Header &first) const;
    void emitPiece(QList<StreamPiece> &pieces, StreamPiece::Kind kind, qsizetype from, qsizetype to);

    QByteArray m_held;
    qint64 m_offset = 0; // stream position of m_held's first byte
    bool m_inSync = false;
    quint32 m_key = 0;
    qint64 m_durationNs = 0;
};
