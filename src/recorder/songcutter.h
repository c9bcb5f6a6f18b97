#pragma once

#include "recorder/cutplanner.h"
#include "recorder/framescanner.h"
#include "recorder/streamformat.h"
#include "recorder/titledelay.h"

#include <QCoreApplication>
#include <QString>

#include <memory>
#include <optional>
#include <vector>

// Where one song file ends and the next begins, for a recording of one file
// per song. The recorder gives it the stream's audio bytes (metadata taken
// out) and each title change; it finds the stream's frames itself, holds
// back the audio a cut may still fall into, and hands out, in stream order,
// the bytes for the open song and the cuts before which the next song
// begins. Every byte comes out once. With the quiet search on, the cut goes
// to the quiet moment near the title change, moved by the station's learnt
// delay; off, or for a stream it cannot decode, to the first frame at or
// after the title's byte, holding back nothing but the frame scanner's few
// unconfirmed frames.
class SongCutter
{
    Q_DECLARE_TR_FUNCTIONS(SongCutter)

public:
    // Bytes for the open song, or a cut: the next song starts with stream
    // byte `offset` and is named `title`.
    using Output = CutPlanner::Output;

    // `station` names the station whose delay is learnt and used (its name,
    // else its address).
    SongCutter(StreamFormat format, const QString &station, bool quietSearch);
    ~SongCutter();
    SongCutter(const SongCutter &) = delete;
    SongCutter &operator=(const SongCutter &) = delete;

    // The setting "Cut songs at the quiet moment nearest the title change",
    // on unless it was turned off.
    static bool quietSearchSetting();
    static void saveQuietSearchSetting(bool on);
    static QString quietSearchCaption();
    // What a song file's RECORDING field adds after "complete; ".
    static QString qualityNote(CutQuality quality);

    // The next audio bytes of the stream.
    void push(QByteArrayView bytes);
    // The title changes with the next byte to be pushed.
    void changeTitle(const QString &title);
    // The recording stops or the connection drops: every cut is decided with
    // what has arrived and every byte held goes out. After a drop the bytes
    // of the new connection continue the stream.
    void finish();
    // What may be written now, in order.
    std::vector<Output> takeOutput();

    // Stream bytes pushed so far.
    qint64 position() const { return m_position; }
    // Audio held back now, and the most held at once, for the monitor panel.
    qsizetype bytesHeld() const;
    qsizetype peakBytesHeld() const;
    // The quiet moment is still searched for (false when turned off, or the
    // stream proved undecodable: a decoder that fails, or no frame found in
    // the first CutPlanner::TailLimit bytes).
    bool searching() const;
    TitleDelay &delay() { return m_delay; }
    // "Title delay: 2.4 s, learnt", for the recorder window.
    QString delayText() const { return m_delay.text(); }

private:
    void take(const QList<StreamPiece> &pieces);

    TitleDelay m_delay;
    std::unique_ptr<FrameScanner> m_scanner;
    CutPlanner m_planner;
    qint64 m_position = 0;
    bool m_framed = false;
};
