#include "recorder/songcutter.h"

#include "base/apperror.h"
#include "base/settingsstore.h"

using namespace Qt::StringLiterals;

SongCutter::SongCutter(StreamFormat format, const QString &station, bool quietSearch)
    : m_delay(station), m_scanner(FrameScanner::create(format)),
      m_planner(quietSearch ? std::optional(format) : std::nullopt, &m_delay)
{
}

SongCutter::~SongCutter() = default;

bool SongCutter::quietSearchSetting()
{
    // A value that is no Boolean (edited by hand) counts as never set.
    try {
        return SettingsStore::getBoolean(SettingsStore::CutAtQuietMoment, true);
    } catch (const AppError &) {
        return true;
    }
}

void SongCutter::saveQuietSearchSetting(bool on)
{
    SettingsStore::saveBoolean(SettingsStore::CutAtQuietMoment, on);
}

QString SongCutter::quietSearchCaption()
{
    return tr("Cut songs at the quiet moment nearest the title change");
}

QString SongCutter::qualityNote(CutQuality quality)
{
    // Tags are read by other programs: the words stay the same in every language.
    return quality == CutQuality::Title ? u"cut at title"_s : u"cut at silence"_s;
}

void SongCutter::push(QByteArrayView bytes)
{
    if (bytes.isEmpty())
        return;
    m_planner.addBytes(bytes);
    m_position += bytes.size();
    take(m_scanner->push(bytes));
}

void SongCutter::changeTitle(const QString &title)
{
    m_planner.changeTitle(m_position, title);
}

void SongCutter::finish()
{
    take(m_scanner->finish());
    m_planner.flush();
}

std::vector<SongCutter::Output> SongCutter::takeOutput()
{
    return m_planner.takeOutput();
}

qsizetype SongCutter::bytesHeld() const
{
    return m_planner.bytesHeld();
}

qsizetype SongCutter::peakBytesHeld() const
{
    return m_planner.peakBytesHeld();
}

bool SongCutter::searching() const
{
    return m_planner.searching() && (m_framed || m_position <= CutPlanner::TailLimit);
}

void SongCutter::take(const QList<StreamPiece> &pieces)
{
    for (const StreamPiece &piece : pieces) {
        if (piece.kind == StreamPiece::Kind::Other)
            continue;
        m_framed = true;
        m_planner.addFrame({piece.offset, static_cast<qint32>(piece.bytes.size()),
                            static_cast<double>(piece.durationNs) / 1e9,
                            piece.kind == StreamPiece::Kind::Header, piece.canBegin});
    }
}
