#pragma once

#include "recorder/streamformat.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QList>

#include <memory>
#include <vector>

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

// A stretch of a stream as a StreamPiece says it, without a copy of its bytes:
// a caller that keeps the stream itself cuts them by offset.
struct FrameMark
{
    StreamPiece::Kind kind = StreamPiece::Kind::Other;
    qint64 offset = 0;
    qsizetype length = 0;
    qint64 durationNs = 0;
    bool canBegin = false;
    QByteArray headers; // shared with the scanner's copy, not copied
    qint64 end() const { return offset + length; }
};

// Finds where whole frames begin and end in a stream that arrives in chunks of
// any size. A frame counts once its header is valid and the next frame's header
// is found where its length says (an Ogg page once its checksum is right);
// to find the stream first, two such confirmations are needed, so a chance
// sync pattern in other bytes is not taken for audio. Bytes that are no frame
// come out as Other as soon as that is known, so nothing is lost and nothing
// waits longer than a few frames: what is held back is at most the frames
// still awaiting confirmation.
//
// Two ways to use it: push() and its kin hold the undecided bytes and hand
// out pieces with copies of theirs; mark() and its kin only say where the
// pieces lie, in bytes the caller holds (the stream from decided() on).
// A scanner is used one way only.
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

    // As push, takeComplete and finish, over undecided: the stream's bytes
    // from decided() on, which the caller holds (what an earlier call left
    // undecided, then the new bytes). Appends the marks of what is now
    // decided and returns how many bytes of undecided that is.
    qsizetype mark(QByteArrayView undecided, std::vector<FrameMark> &marks);
    qsizetype markComplete(QByteArrayView undecided, std::vector<FrameMark> &marks);
    qsizetype markFinish(QByteArrayView undecided, std::vector<FrameMark> &marks);

    // Frames are being found (the last piece decided was a frame).
    bool inSync() const { return m_inSync; }
    // Stream position up to which the bytes are decided.
    qint64 decided() const { return m_offset; }
    // The pushing way: stream bytes pushed so far, and how many of them are
    // still held back.
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
    // Fills in the mark of a frame that was found (kind, duration, ...); frame
    // is its bytes.
    virtual void describe(const Header &header, QByteArrayView frame, FrameMark &mark);

private:
    enum class Ending
    {
        None,     // frames wait for the next header
        Complete, // whole frames go out unconfirmed
    };

    qsizetype scan(QByteArrayView all, std::vector<FrameMark> &marks, Ending ending);
    qsizetype finishScan(QByteArrayView all, std::vector<FrameMark> &marks);
    // Whether the headers after the frame at pos confirm it; next gets the
    // first of them when it was read.
    Verdict confirm(QByteArrayView all, qsizetype pos, const Header &first, Header &next,
                    bool &nextKnown) const;
    void addOther(std::vector<FrameMark> &marks, qsizetype from, qsizetype to) const;
    // The pushing way: pieces of the held bytes that the marks say.
    QList<StreamPiece> cutHeld(const std::vector<FrameMark> &marks, qsizetype decided);

    QByteArray m_held;   // only in the pushing way
    qint64 m_offset = 0; // stream position of m_held's first byte
    bool m_inSync = false;
    quint32 m_key = 0;
    qint64 m_durationNs = 0;
};
