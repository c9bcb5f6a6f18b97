#pragma once

#include "recorder/framescanner.h"
#include "recorder/streamformat.h"

#include <QByteArray>
#include <QByteArrayView>

#include <deque>
#include <memory>
#include <vector>

// Turns a recorded stream into song files of whole frames. Every stream byte
// is pushed once; a song boundary is set by cut(). A song file begins at the
// first frame at or after the position given to cut() (an Ogg file first gets
// the stream's header pages) and ends with the last whole frame of the bytes
// pushed before the next cut, so that each file plays from its first byte.
// Bytes that are not audio pass as they come: those before a file's first
// frame are held while it is sought and written after all when none turns up
// within SearchLimit bytes, and a file that ends while no frames are found
// gets every byte pushed up to its end, so a stream the scanner cannot read
// is written as it came. What is kept: the last `history` bytes of the
// stream, the search, and the scanner's few unconfirmed frames.
//
// The stream is kept once: each push's decided bytes are one shared array,
// which the open file gets as it is and the history keeps beside the places
// of its frames, so that a cut takes the new file's beginning from it by
// offset.
class SongFrames
{
public:
    static constexpr qsizetype SearchLimit = 64 * 1024;

    struct Cut
    {
        QByteArray tail; // the end of the file that closes
        QByteArray head; // the beginning of the file that opens
    };

    // history: how far back in the stream a song may begin (one metadata
    // interval, where the song that begins shares its first interval with the
    // one that ends).
    SongFrames(StreamFormat format, qsizetype history);
    SongFrames(const SongFrames &) = delete;
    SongFrames &operator=(const SongFrames &) = delete;
    ~SongFrames();

    // The next stream bytes. Returns what the open song file gets now; with
    // no file open (before the first cut) nothing, the stream is only followed.
    QByteArray push(QByteArrayView data);

    // The place where one song ends and the next begins: the open file (if
    // any) ends with the whole frames of what was pushed; the next one begins
    // at the first frame at or after stream position from, or at the oldest
    // position still kept when from is older.
    Cut cut(qint64 from);

    // The open file ends with the whole frames of what was pushed, and none
    // begins: returns the rest of the file.
    QByteArray endFile();

    // The stream ended: the rest of the open file, which is then closed. An
    // unfinished last frame is left out unless the stream is not audio.
    QByteArray finish();

    bool isFileOpen() const { return m_open; }
    // Stream bytes pushed so far, and how far the scanner has decided what
    // they are (timeAt is exact before that).
    qint64 position() const;
    qint64 decided() const;
    // Audio time of the frames the open file got.
    qint64 fileDurationNs() const { return m_fileDurationNs; }
    // Audio time of the stream's frames that begin before position offset,
    // for marking where a title begins in a file that takes every byte.
    // Offsets older than what is kept count from the oldest piece kept.
    qint64 timeAt(qint64 offset) const;
    // Bytes held: kept pieces, the search and the scanner's unconfirmed frames.
    qsizetype heldBytes() const;

private:
    // Decided stream bytes, from one call to the scanner.
    struct Chunk
    {
        qint64 offset = 0;
        QByteArray bytes;
        qint64 end() const { return offset + bytes.size(); }
    };

    // The first decided bytes of m_undecided, which the scanner's marks in
    // m_marks describe: routed into out and kept.
    void take(qsizetype decided, QByteArray &out);
    void keep(Chunk &&chunk);
    void route(const FrameMark &mark, QByteArrayView bytes, QByteArray &out);
    QByteArray giveUpSearch();

    std::unique_ptr<FrameScanner> m_scanner;
    qsizetype m_history;
    // Bytes pushed that the scanner has not decided yet.
    QByteArray m_undecided;
    // The history: what the last decided bytes are, and the bytes themselves.
    std::deque<FrameMark> m_kept;
    std::deque<Chunk> m_chunks;
    qsizetype m_chunkBytes = 0;
    std::vector<FrameMark> m_marks; // reused for every scan

    bool m_open = false;
    bool m_seeking = false;
    qint64 m_from = 0; // where the open file was to begin
    QByteArray m_search;
    qint64 m_fileDurationNs = 0;
};
