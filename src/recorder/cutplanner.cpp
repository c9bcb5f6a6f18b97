#include "recorder/cutplanner.h"

#include "recorder/titledelay.h"

#include <algorithm>
#include <cmath>

namespace {

// A title may be reported a metadata interval after the bytes it belongs
// to; the audio held back reaches this much further.
constexpr double TitleSlack = 1.0;
// An Ogg stream's headers are a few kilobytes; more is not a header.
constexpr qsizetype StreamHeaderLimit = 256 * 1024;
// Sessions that fail in a row before decoding is given up for the recording.
constexpr int FailuresAllowed = 3;
// Audio the first decoding must give to show the stream can be decoded.
constexpr double ProbeSeconds = 1.0;
// Titles waiting for their cut; a station that changes its title with every
// few bytes gets its oldest ones cut at once.
constexpr size_t PendingTitleLimit = 64;
// Rounding of frame times: a frame starting this close to a moment is at it.
constexpr double Epsilon = 1e-6;

} // namespace

// The decoding of the windows in progress: it begins a little before the
// first pending window and follows the frames as they come.
struct CutPlanner::Session
{
    std::unique_ptr<AudioDecoder> decoder;
    LoudnessEnvelope loudness;
    qint64 nextOffset = 0; // frames from here on are not decoded yet
    double fed = 0;        // seconds of audio given to the decoder
    double heard = 0;      // seconds it gave back
    double longestFrame = 0;
    bool failed = false;
    std::vector<float> samples;
    std::vector<std::pair<int, qsizetype>> pieces; // rate and sample count
};

CutPlanner::CutPlanner(std::optional<StreamFormat> format, TitleDelay *delay, CutWindow window,
                       QuietRules rules, qsizetype heldLimit)
    : m_format(format), m_delay(delay), m_window(window), m_rules(rules), m_heldLimit(heldLimit),
      m_searching(format.has_value())
{
}

CutPlanner::~CutPlanner() = default;

void CutPlanner::addBytes(QByteArrayView bytes)
{
    m_held.append(bytes);
    m_end += bytes.size();
    update(false);
}

bool CutPlanner::addFrame(const AudioFrame &frame)
{
    if (frame.offset < m_framesEnd || frame.length <= 0 || frame.offset + frame.length > m_end ||
        !std::isfinite(frame.duration) || frame.duration < 0)
        return false;
    m_framesEnd = frame.offset + frame.length;
    const HeldFrame held{frame, m_time};
    m_time = held.end();
    // Bytes already let go (a long stretch the scanner found no frame in)
    // only count for the time.
    if (frame.offset < m_heldStart) {
        m_lastWasHeader = false;
        update(false);
        return true;
    }
    if (frame.streamHeader) {
        if (!m_lastWasHeader)
            m_streamHeader.clear();
        if (m_streamHeader.size() + frame.length <= StreamHeaderLimit)
            m_streamHeader.append(heldBytes(frame.offset, frame.length));
    }
    m_lastWasHeader = frame.streamHeader;
    m_frames.push_back(held);
    if (m_session && frame.offset >= m_session->nextOffset)
        feed(*m_session, held);
    probe(held);
    update(false);
    return true;
}

void CutPlanner::changeTitle(qint64 offset, const QString &title)
{
    m_changes.push_back({std::clamp(offset, m_heldStart, m_end), title, std::nullopt});
    // Titles with no frame between them: the oldest names a song that has
    // no audio, and is dropped.
    if (m_changes.size() > PendingTitleLimit) {
        resolveTitles(true);
        if (!decideFirst(Decide::ByTitleNow))
            m_changes.pop_front();
    }
    update(false);
}

void CutPlanner::flush()
{
    update(true);
    m_session.reset();
}

std::vector<CutPlanner::Output> CutPlanner::takeOutput()
{
    return std::exchange(m_output, {});
}

void CutPlanner::update(bool force)
{
    resolveTitles(force);
    for (;;) {
        if (m_searching && !m_session && !m_changes.empty() && m_changes.front().titleTime)
            startSession();
        if (m_changes.empty() || !decideFirst(force ? Decide::Finally : Decide::WhenReady))
            break;
    }
    release(force);
    // A stream far above any usual bit rate: the oldest bytes go out, and
    // the windows are what is left.
    if (bytesHeld() > m_heldLimit) {
        auto frame = std::find_if(m_frames.begin(), m_frames.end(),
                                  [&](const HeldFrame &h) { return h.frame.offset >= m_end - m_heldLimit; });
        releaseUpTo(frame == m_frames.end() ? m_end - m_heldLimit : frame->frame.offset);
    }
    m_peakHeld = std::max(m_peakHeld, bytesHeld());
}

void CutPlanner::resolveTitles(bool force)
{
    for (Change &change : m_changes) {
        if (change.titleTime)
            continue;
        if (change.offset >= m_framesEnd && !force && !unframed(change))
            break;
        // The frame that holds the byte, or the first after it.
        auto frame = std::find_if(m_frames.begin(), m_frames.end(),
                                  [&](const HeldFrame &h) { return h.endOffset() > change.offset; });
        if (frame == m_frames.end())
            change.titleTime = m_time;
        else if (frame->frame.offset >= change.offset)
            change.titleTime = frame->start;
        else
            change.titleTime = frame->start + frame->frame.duration *
                                                  static_cast<double>(change.offset - frame->frame.offset) /
                                                  frame->frame.length;
    }
}

std::unique_ptr<CutPlanner::Session> CutPlanner::newSession()
{
    auto session = std::make_unique<Session>();
    session->decoder = AudioDecoder::create(*m_format);
    if (!session->decoder) {
        m_searching = false;
        return nullptr;
    }
    if (!m_streamHeader.isEmpty())
        session->failed = !session->decoder->decode(m_streamHeader, [](int, std::span<const float>) {});
    return session;
}

void CutPlanner::startSession()
{
    m_session = newSession();
    if (!m_session)
        return;
    const double from = windowStart(m_changes.front()) - PreRoll;
    auto first =
        std::find_if(m_frames.begin(), m_frames.end(), [&](const HeldFrame &h) { return h.end() > from; });
    m_session->nextOffset = first == m_frames.end() ? m_framesEnd : first->frame.offset;
    for (auto frame = first; frame != m_frames.end(); ++frame)
        feed(*m_session, *frame);
}

void CutPlanner::probe(const HeldFrame &held)
{
    if (!m_searching || m_probed)
        return;
    if (!m_probe && !(m_probe = newSession()))
        return;
    feed(*m_probe, held);
    // Not one sample from the stream's start: it is not what the decoder reads.
    if (m_probe->failed && m_probe->heard == 0)
        m_searching = false;
    if (m_probe->failed || m_probe->heard >= ProbeSeconds) {
        m_probed = true;
        m_probe.reset();
    }
}

void CutPlanner::feed(Session &s, const HeldFrame &held)
{
    s.nextOffset = held.endOffset();
    if (s.failed)
        return;
    s.samples.clear();
    s.pieces.clear();
    double heard = 0;
    const bool decoded = s.decoder->decode(
        heldBytes(held.frame.offset, held.frame.length), [&](int rate, std::span<const float> samples) {
            s.samples.insert(s.samples.end(), samples.begin(), samples.end());
            s.pieces.emplace_back(rate, std::ssize(samples));
            heard += static_cast<double>(samples.size()) / rate;
        });
    if (!held.frame.streamHeader) {
        s.fed += held.frame.duration;
        s.longestFrame = std::max(s.longestFrame, held.frame.duration);
    }
    s.heard += heard;
    // Output that drifts from the frames' own durations means the decoder
    // reads the stream wrongly (or reports the wrong rate): its times would
    // be wrong, so it is as good as failed.
    if (!decoded || std::abs(s.heard - s.fed) > std::max(0.5, 2 * s.longestFrame)) {
        s.failed = true;
        // Not one sample: the stream is not what the decoder reads.
        if (s.heard == 0)
            m_searching = false;
        return;
    }
    // A decoder gives a frame's audio when it is fed the frame, except at
    // its start, where it may give nothing while it settles: the samples
    // end where the frame ends.
    double time = held.end() - heard;
    const float *samples = s.samples.data();
    for (const auto &[rate, count] : s.pieces) {
        s.loudness.add(time, rate, std::span(samples, static_cast<size_t>(count)));
        samples += count;
        time += static_cast<double>(count) / rate;
    }
}

bool CutPlanner::unframed(const Change &change) const
{
    return change.offset >= m_framesEnd && m_end - change.offset > TailLimit;
}

double CutPlanner::delay() const
{
    return m_delay ? m_delay->seconds() : 0;
}

double CutPlanner::windowStart(const Change &change) const
{
    double from = std::max(expected(change) - m_window.before, m_windowFloor);
    if (!m_frames.empty())
        from = std::max(from, m_frames.front().start);
    return from;
}

double CutPlanner::windowEnd(const Change &change) const
{
    double to = expected(change) + m_window.after;
    if (m_changes.size() > 1 && m_changes[1].titleTime)
        to = std::min(to, (expected(change) + expected(m_changes[1])) / 2);
    return to;
}

bool CutPlanner::decideFirst(Decide how)
{
    const Change &change = m_changes.front();
    if (!change.titleTime)
        return false;
    if (unframed(change)) {
        m_cuts.push_back({std::max({change.offset, m_heldStart, m_lastCut + 1}), change.title,
                          CutQuality::Title, *change.titleTime, m_time});
        m_lastCut = m_cuts.back().offset;
        m_windowFloor = m_time;
        m_changes.pop_front();
        return true;
    }
    const bool decoding = m_session && !m_session->failed && how != Decide::ByTitleNow;
    const double from = windowStart(change);
    const double to = windowEnd(change);
    if (decoding && how == Decide::WhenReady && m_time < to)
        return false;
    QuietMoment moment{CutQuality::Title, expected(change), expected(change), expected(change)};
    if (decoding)
        moment = findQuietMoment(m_session->loudness, from, std::min(to, m_time), moment.time, m_rules);
    std::optional<qint64> offset = cutFrame(change, moment, from, to);
    if (!offset) {
        moment.quality = CutQuality::Title;
        offset = cutFrame(change, moment, from, from);
    }
    if (!offset && how != Decide::Finally)
        return false;
    // No frame at all after the title (a stream that is no audio): at its byte.
    SongCut cut{offset.value_or(std::max({change.offset, m_heldStart, m_lastCut + 1})), change.title,
                moment.quality, *change.titleTime, m_time};
    for (const HeldFrame &held : m_frames)
        if (held.frame.offset == cut.offset)
            cut.cutTime = held.start;
    if (cut.quality == CutQuality::Silence && m_delay)
        m_delay->learn(cut.titleTime - cut.cutTime);
    m_lastCut = cut.offset;
    m_windowFloor = cut.quality == CutQuality::Title ? cut.cutTime : std::max(cut.cutTime, moment.to);
    m_cuts.push_back(cut);
    m_changes.pop_front();
    if (m_session && m_session->failed && ++m_failures >= FailuresAllowed)
        m_searching = false;
    else if (decoding)
        m_failures = 0;
    if (m_changes.empty() || (m_session && m_session->failed))
        m_session.reset();
    else if (m_session)
        m_session->loudness.dropBefore(m_windowFloor);
    return true;
}

std::optional<qint64> CutPlanner::cutFrame(const Change &change, const QuietMoment &moment, double from,
                                           double to) const
{
    // The frame to cut before: for a quiet moment the one starting nearest
    // to it inside the window; by the title, the first starting at or after
    // the expected moment, or without decoding at or after the title's byte.
    std::optional<size_t> chosen;
    for (size_t i = 0; i < m_frames.size(); ++i) {
        const HeldFrame &held = m_frames[i];
        if (held.frame.streamHeader || !held.frame.canBegin || held.frame.offset <= m_lastCut)
            continue;
        if (moment.quality == CutQuality::Title) {
            if (m_searching ? held.start >= moment.time - Epsilon : held.frame.offset >= change.offset) {
                chosen = i;
                break;
            }
            continue;
        }
        if (held.start < from - Epsilon || held.start > to + Epsilon)
            continue;
        // Coarse frames (Ogg pages) may have no boundary near the moment:
        // any inside the quiet stretch beats a nearer one outside it.
        const auto rank = [&](const HeldFrame &h) {
            const bool inside = h.start >= moment.from - Epsilon && h.start <= moment.to + Epsilon;
            return std::pair(!inside, std::abs(h.start - moment.time));
        };
        if (!chosen || rank(held) < rank(m_frames[*chosen]))
            chosen = i;
    }
    if (!chosen)
        return std::nullopt;
    // A new stream's headers go with the song they open.
    size_t i = *chosen;
    while (i > 0 && m_frames[i - 1].frame.streamHeader && m_frames[i - 1].frame.offset > m_lastCut)
        --i;
    return m_frames[i].frame.offset;
}

void CutPlanner::release(bool all)
{
    if (all) {
        releaseUpTo(m_end);
        return;
    }
    // Bytes past the last frame wait for the scanner, up to a limit.
    qint64 keep = std::max(m_framesEnd, m_end - TailLimit);
    // Frames that end before `time` need not be held; nor the bytes after
    // them when all do.
    const auto firstEndingAfter = [&](double time) {
        auto frame = std::partition_point(m_frames.begin(), m_frames.end(),
                                          [&](const HeldFrame &h) { return h.end() <= time; });
        return frame == m_frames.end() ? m_end : frame->frame.offset;
    };
    if (m_searching) {
        // A title that comes now may move its window back this far.
        keep = std::min(
            keep, firstEndingAfter(m_time - m_window.before - std::max(0.0, delay()) - PreRoll - TitleSlack));
    }
    if (!m_changes.empty()) {
        const Change &change = m_changes.front();
        if (!m_searching)
            keep = std::min(keep, change.offset);
        else if (change.titleTime)
            keep = std::min(keep, firstEndingAfter(windowStart(change) - PreRoll));
    }
    releaseUpTo(keep);
}

void CutPlanner::releaseUpTo(qint64 offset)
{
    offset = std::clamp(offset, m_heldStart, m_end);
    const auto send = [&](qint64 to) {
        if (to <= m_heldStart)
            return;
        const QByteArrayView bytes = heldBytes(m_heldStart, to - m_heldStart);
        if (!m_output.empty() && std::holds_alternative<QByteArray>(m_output.back()))
            std::get<QByteArray>(m_output.back()).append(bytes);
        else
            m_output.emplace_back(bytes.toByteArray());
        m_readPos += bytes.size();
        m_heldStart = to;
    };
    while (!m_cuts.empty() && m_cuts.front().offset <= offset) {
        send(m_cuts.front().offset);
        m_output.emplace_back(m_cuts.front());
        m_cuts.pop_front();
    }
    send(offset);
    while (!m_frames.empty() && m_frames.front().frame.offset < m_heldStart)
        m_frames.pop_front();
    if (m_readPos > TailLimit && m_readPos > m_held.size() / 2) {
        m_held.remove(0, m_readPos);
        m_readPos = 0;
    }
}

QByteArrayView CutPlanner::heldBytes(qint64 offset, qint64 length) const
{
    return QByteArrayView(m_held.constData() + m_readPos + (offset - m_heldStart), length);
}
