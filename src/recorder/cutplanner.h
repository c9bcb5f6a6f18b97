#pragma once

#include "recorder/audiodecoder.h"
#include "recorder/loudnessenvelope.h"
#include "recorder/quietfinder.h"

#include <QByteArray>
#include <QString>

#include <deque>
#include <optional>
#include <variant>
#include <vector>

class TitleDelay;

// A stretch of the stream that holds whole frames of audio: where it lies
// and how long it plays.
struct AudioFrame
{
    qint64 offset = 0;
    qint32 length = 0;
    double duration = 0;
    // Stream headers carry no audio but a decoder needs them first (an Ogg
    // stream's identification, comment and setup pages).
    bool streamHeader = false;
    // A song may begin here: false for an Ogg page that continues a packet.
    bool canBegin = true;
};

// The next song starts with byte `offset` of the stream.
struct SongCut
{
    qint64 offset = 0;
    QString title;
    CutQuality quality = CutQuality::Title;
    // Seconds of audio since the planner began: where the title changed and
    // where the cut is.
    double titleTime = 0;
    double cutTime = 0;
};

// Where to look for the change of song, around the moment the title says.
struct CutWindow
{
    double before = 6;
    double after = 6;
};

// Decides where songs are cut. It sits between the frame scanner and the
// song writer: it takes the stream's bytes, the frames found in them and
// the title changes, holds back the audio a cut may still fall into, and
// lets the bytes go in order with the cuts between them, so that no byte is
// lost or written twice.
//
// Around each title change the audio of a window is decoded and the cut put
// at the quiet moment in it, at a frame boundary. The window is centred on
// the title change moved by the station's delay, and never reaches back
// before the previous cut or past the midpoint to the next change, so cuts
// stay in order when titles come every second. Where nothing quiet is
// found, or decoding a window fails, the cut goes where the delay points;
// without a decoder, or for a stream it cannot read, a song starts with the
// first frame at or after its title's offset.
class CutPlanner
{
public:
    using Output = std::variant<QByteArray, SongCut>;

    // Memory held back is bounded by the window and the bit rate (about
    // 220 KB at 128 kbit/s); past this much, the oldest bytes go out and
    // the windows shrink to what is left.
    static constexpr qsizetype DefaultHeldLimit = 1024 * 1024;
    // Audio decoded before the window so that the decoder has settled.
    static constexpr double PreRoll = 0.25;
    // Bytes after the last frame are held this far for the scanner to find
    // one; past that they are not audio and go out as they are.
    static constexpr qsizetype TailLimit = 64 * 1024;

    // No format: cuts at titles only. `delay` (may be null) centres the
    // windows and learns from each cut at silence.
    explicit CutPlanner(std::optional<StreamFormat> format, TitleDelay *delay = nullptr, CutWindow window = {},
                        QuietRules rules = {}, qsizetype heldLimit = DefaultHeldLimit);
    ~CutPlanner();
    CutPlanner(const CutPlanner &) = delete;
    CutPlanner &operator=(const CutPlanner &) = delete;

    // The stream's bytes as they arrive.
    void addBytes(QByteArrayView bytes);
    // A frame found in bytes already added, after the previous one. False
    // (and ignored) when it is not.
    bool addFrame(const AudioFrame &frame);
    // The title changes with the stream byte at `offset` (already added).
    void changeTitle(qint64 offset, const QString &title);
    // The recording stops, drops or ends: decides every cut with what has
    // arrived and lets all bytes go. Bytes added later continue the stream.
    void flush();

    // What may be written now, in order: bytes for the current song, and
    // cuts before which the next song begins.
    std::vector<Output> takeOutput();

    qsizetype bytesHeld() const { return static_cast<qsizetype>(m_end - m_heldStart); }
    qsizetype peakBytesHeld() const { return m_peakHeld; }
    // False once decoding has failed for good (or there is no decoder).
    bool searching() const { return m_searching; }

private:
    struct HeldFrame
    {
        AudioFrame frame;
        double start = 0;
        double end() const { return start + frame.duration; }
        qint64 endOffset() const { return frame.offset + frame.length; }
    };
    struct Change
    {
        qint64 offset = 0;
        QString title;
        std::optional<double> titleTime;
    };
    struct Session;

    void update(bool force);
    void resolveTitles(bool force);
    std::unique_ptr<Session> newSession();
    void startSession();
    void feed(Session &session, const HeldFrame &held);
    void probe(const HeldFrame &held);
    // How a cut is decided: when its window has passed; now, by the title,
    // if a frame allows; or now whatever there is, at the end of a stream.
    enum class Decide
    {
        WhenReady,
        ByTitleNow,
        Finally
    };
    bool decideFirst(Decide how);
    void endSession(bool failed);
    // The scanner found no frame in the bytes after the title: they are
    // written as they come, and so is the cut.
    bool unframed(const Change &change) const;
    double delay() const;
    // Where the song should change: the title's time moved by the delay.
    double expected(const Change &change) const { return *change.titleTime - delay(); }
    double windowStart(const Change &change) const;
    double windowEnd(const Change &change) const;
    std::optional<qint64> cutFrame(const Change &change, const QuietMoment &moment, double from,
                                   double to) const;
    void release(bool all);
    void releaseUpTo(qint64 offset);
    QByteArrayView heldBytes(qint64 offset, qint64 length) const;

    std::optional<StreamFormat> m_format;
    TitleDelay *m_delay;
    CutWindow m_window;
    QuietRules m_rules;
    qsizetype m_heldLimit;
    bool m_searching;
    int m_failures = 0;

    QByteArray m_held;
    qsizetype m_readPos = 0; // m_held's first byte not yet released
    qint64 m_heldStart = 0;  // its offset in the stream
    qint64 m_end = 0;
    qsizetype m_peakHeld = 0;

    std::deque<HeldFrame> m_frames;
    qint64 m_framesEnd = 0;
    double m_time = 0;
    bool m_lastWasHeader = false;
    QByteArray m_streamHeader;

    std::deque<Change> m_changes;
    std::deque<SongCut> m_cuts;
    qint64 m_lastCut = -1;
    // The next window begins after the quiet stretch the last cut was put in.
    double m_windowFloor = 0;

    std::unique_ptr<Session> m_session;
    // Decodes the stream's first second, to know at once whether it can.
    std::unique_ptr<Session> m_probe;
    bool m_probed = false;
    std::vector<Output> m_output;
};
