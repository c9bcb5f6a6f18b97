#include "recorder/streamrecorder.h"

#include "base/apperror.h"
#include "base/appinfo.h"
#include "base/apppaths.h"
#include "base/prompt.h"
#include "catalogue/filedl.h"
#include "catalogue/playlist.h"
#include "recorder/modshutdown.h"
#include "recorder/streamaddress.h"
#include "recorder/streamformat.h"

#include <QFile>
#include <QFileInfo>
#include <QUrl>

#include <algorithm>

#include <utility>

StreamRecorder::StreamRecorder(Prompt &prompt, PowerControl &power, Options options, QObject *parent)
    : QObject(parent), m_prompt(prompt), m_power(power), m_options(std::move(options)), m_stream(*this)
{
    if (!m_options.now)
        m_options.now = [] { return QDateTime::currentDateTime(); };
    m_connection = new StreamConnection(m_options.connection, this);
    m_fileDL = new FileDL(this);
    m_fileDL->setObjectName(QStringLiteral("FileDL"));
    m_limitClock.setInterval(LimitInterval);
    connect(&m_limitClock, &QTimer::timeout, this, &StreamRecorder::checkLimit);
    connect(m_connection, &StreamConnection::statusChanged, this, &StreamRecorder::showStatus);
    connect(m_connection, &StreamConnection::dataReceived, this, &StreamRecorder::onStreamData);
    connect(m_connection, &StreamConnection::interrupted, this, &StreamRecorder::onStreamInterrupted);
    connect(m_connection, &StreamConnection::failed, this, &StreamRecorder::onConnectionFailed);
    connect(m_fileDL, &FileDL::DownloadComplete, this, &StreamRecorder::onDownloadComplete);
    connect(m_fileDL, &FileDL::DownloadError, this, &StreamRecorder::onDownloadError);
}

StreamRecorder::~StreamRecorder()
{
    // A recorder destroyed while recording still completes its file; the
    // connection outlives this part of the object, so it must not call back.
    m_connection->disconnect(this);
    if (m_recording) {
        EndStream();
        m_output.CloseFile();
    }
}

void StreamRecorder::setSettings(const RecordingSettings &settings)
{
    m_settings = settings;
}

void StreamRecorder::start()
{
    if (m_recording)
        return;
    showTitle({});
    m_recording = true;
    m_streamCame = false;
    m_limitHit = false;
    emit started();
    m_clock.start();
    m_limitClock.start();
    const QString &address = m_settings.address;
    if (m_options.launchMode) {
        // Unattended, a recording that could not end by itself must not begin.
        if (address.trimmed().isEmpty()) {
            stopWithFailure(StopReason::Kind::BadSwitches, tr("No stream address given (-a)."));
            return;
        }
        // A limit of 0 means no limit, as in the window; only a negative one is wrong.
        if (m_settings.limit && m_settings.limit->value < 0) {
            stopWithFailure(StopReason::Kind::BadSwitches, tr("A stop limit (-t, -b) cannot be negative."));
            return;
        }
    }
    if (address.toLower().contains(QStringLiteral(".pls")))
        FetchPlaylist(address, TagRecording);
    else
        StartRecording(address);
}

void StreamRecorder::stop()
{
    end({});
}

void StreamRecorder::end(StopReason reason)
{
    if (!m_recording)
        return;
    m_fileDL->Cancel(TagRecording);
    // The title stays until the rest is parsed: one repeated there is no change.
    EndStream();
    m_output.CloseFile();
    showTitle({});
    m_recording = false;
    m_limitClock.stop();
    showWarnings();
    const bool failure = !reason.text.isEmpty();
    if (const QString &outputError = m_output.error(); !outputError.isEmpty()) {
        showStatus(outputError);
        // The last bytes could not be written: a stop without a failure has one after all.
        if (!failure)
            reason = {StopReason::Kind::OutputFailed, outputError};
    }
    if (failure)
        showStatus(reason.text);
    emit stopped(reason);
}

// The question about an existing file is asked of the name the template
// gives; the files themselves are made once the station's answer says what
// its stream holds, which may change their extension.
void StreamRecorder::StartRecording(const QString &address)
{
    m_startTime = m_options.now();
    m_address = address;
    m_output.resetCounters();
    m_output.setFileName(BuildFileName(m_settings.saveTemplate, m_settings.station, m_startTime,
                                       AppPaths::recordingsFolder()));
    if (!m_settings.singleSong)
        m_output.removeSongPlaceholder();
    if (StopOverwrite())
        return;
    const QString asked = m_output.FileName();
    m_output.startRecording(
        {m_settings.station, address, m_startTime, m_settings.songFiles,
         QFileInfo::exists(asked) ? asked : QString(),
         templateFolder(m_settings.saveTemplate, m_startTime, AppPaths::recordingsFolder())});
    if (!StartStream(address))
        stopWithFailure(StopReason::Kind::BadAddress, m_status);
}

QString StreamRecorder::fileNameAt(const QDateTime &when) const
{
    const StreamFormat format = m_output.format().value_or(StreamFormat::Mp3);
    return BuildFileName(templateWithExtension(m_settings.saveTemplate, format), m_settings.station, when,
                         AppPaths::recordingsFolder());
}

void StreamRecorder::beginOutput()
{
    if (m_output.hasBegun() || !m_stream.HeaderDone())
        return;
    const StreamFormat format = formatFromHeader(m_stream.HeaderText());
    m_output.begin(format, m_stream.MetaInterval());
    emit formatChanged(formatName(format));
    if (!m_settings.singleSong)
        openContinuous();
}

void StreamRecorder::openContinuous()
{
    m_output.setFileName(fileNameAt(m_startTime));
    m_output.removeSongPlaceholder();
    m_output.OpenFile();
}

bool StreamRecorder::StopOverwrite()
{
    QFile existing(m_output.FileName());
    if (!existing.open(QIODevice::ReadOnly))
        return false;
    existing.close();
    if (m_options.launchMode)
        return false;
    return !m_prompt.askYesNo(tr("Warning! This file already exists. Overwrite it?"), AppInfo::title,
                              Prompt::Icon::Warning);
}

bool StreamRecorder::StartStream(const QString &address)
{
    StreamAddress target;
    try {
        target = ParseAddress(address);
    } catch (const AppError &error) {
        showStatus(tr("Invalid stream address: %1").arg(error.description()));
        return false;
    }
    m_stream.reset();
    m_connection->open(target);
    return true;
}

void StreamRecorder::EndStream()
{
    m_connection->close();
    m_stream.flushRest();
    Cleanup();
}

// Nothing is held beyond what EndStream has closed; kept as the one place for it.
void StreamRecorder::Cleanup() {}

void StreamRecorder::showStatus(const QString &text)
{
    m_status = text;
    emit statusChanged(text);
}

void StreamRecorder::onStreamData(const QByteArray &bytes)
{
    if (!m_recording)
        return;
    m_streamCame = true;
    m_stream.onData(bytes);
    beginOutput();
    showWarnings();
    checkFailures();
    // A size limit seen where the bytes went out: the files end there. What
    // follows the limit waits until the socket's call chain is left, as a failure's does.
    if (m_limitHit && m_recording) {
        emit limitProgress(100);
        end({StopReason::Kind::LimitReached, {}});
        QTimer::singleShot(0, this, &StreamRecorder::FinishRecording);
    }
}

void StreamRecorder::showWarnings()
{
    for (const QString &warning : m_output.takeWarnings())
        showStatus(warning);
}

void StreamRecorder::onStreamInterrupted()
{
    if (!m_recording)
        return;
    m_stream.interrupt();
    // The next connection's audio does not go on from this one's.
    m_output.streamBroke();
    showWarnings();
    checkFailures();
}

void StreamRecorder::onConnectionFailed(const QString &reason)
{
    stopWithFailure(m_streamCame ? StopReason::Kind::Dropped : StopReason::Kind::Unreachable, reason);
}

void StreamRecorder::checkFailures()
{
    if (!m_stream.failure().isEmpty())
        stopWithFailure(StopReason::Kind::StreamFailed, m_stream.failure());
    else if (!m_output.error().isEmpty())
        stopWithFailure(StopReason::Kind::OutputFailed, m_output.error());
}

void StreamRecorder::stopWithFailure(StopReason::Kind kind, const QString &reason)
{
    if (!m_recording)
        return;
    end({kind, reason});
    // Out of the socket's or the download's call chain: finishing may end the recorder's owner.
    if (m_options.launchMode)
        QTimer::singleShot(0, this, &StreamRecorder::FinishRecording);
}

void StreamRecorder::FetchPlaylist(const QString &address, const QString &tag)
{
    QString url = address;
    try {
        if (Playlist::isDirectoryReference(address)) {
            url = Playlist::playlistServiceAddress(Playlist::directoryNumber(address));
            const QString service = qEnvironmentVariable(PlaylistServiceVariable);
            if (!service.isEmpty())
                url.replace(0, Playlist::serviceHost.size(), service);
        }
    } catch (const AppError &error) {
        onDownloadError(tag, error.number(), error.description());
        return;
    }
    m_fileDL->BeginDownload(QUrl::fromUserInput(url), tag);
}

void StreamRecorder::onDownloadComplete(const QString &key, const QByteArray &body)
{
    if (key != TagRecording)
        return;
    const QString address =
        Playlist::usableAddress(Playlist::chooseStreamFromPlaylist(QString::fromLocal8Bit(body)));
    if (address.isEmpty()) {
        stopWithFailure(StopReason::Kind::Unreachable, tr("PLS contains no valid stream url"));
        return;
    }
    showStatus(tr("Connecting to: %1").arg(address));
    StartRecording(address);
}

void StreamRecorder::onDownloadError(const QString &key, int statusCode, const QString &statusText)
{
    if (key != TagRecording)
        return;
    stopWithFailure(StopReason::Kind::Unreachable,
                    tr("PLS error: %1: %2").arg(QString::number(statusCode), statusText));
}

void StreamRecorder::checkLimit()
{
    if (!m_recording || !m_settings.limit)
        return;
    const RecordingSettings::StopLimit limit = *m_settings.limit;
    // The clock as well as the bytes: a station that trickles, or names no bit
    // rate, cannot stretch the time.
    const qint32 clockSeconds = qint32(m_clock.elapsed() / 1000);
    const std::optional<qint32> fromBytes =
        RecorderStats::elapsedSeconds(m_stream.BytesTotal(), m_stream.Bitrate());
    const qint32 elapsed = std::max(clockSeconds, fromBytes.value_or(0));
    const std::optional<int> percent =
        RecorderStats::limitProgress(limit.kind, limit.value, elapsed, m_output.bytesTaken());
    if (!percent)
        return;
    emit limitProgress(*percent);
    if (RecorderStats::limitReached(percent, limit.value))
        FinishRecording();
}

bool StreamRecorder::sizeLimitReached() const
{
    if (!m_settings.limit || m_settings.limit->kind != RecorderStats::Limit::Megabytes ||
        m_settings.limit->value <= 0)
        return false;
    return m_output.bytesTaken() >= m_settings.limit->value * 1024 * 1024;
}

void StreamRecorder::FinishRecording()
{
    // The output is complete before any power action.
    end({StopReason::Kind::LimitReached, {}});
    switch (m_settings.powerAction) {
    case RecordingSettings::PowerAction::ShutDown:
        modShutdown::ExitWindows(m_power, modShutdown::ExitPowerOff, true);
        emit finished();
        break;
    case RecordingSettings::PowerAction::Hibernate:
        modShutdown::Suspend(m_power, true, true, false);
        break;
    case RecordingSettings::PowerAction::None:
        if (m_options.launchMode)
            emit finished();
        break;
    }
}

RecorderStats::Counters StreamRecorder::counters() const
{
    return {
        .bytesTotal = m_stream.BytesTotal(),
        .bitrate = m_stream.Bitrate(),
        .metaBlocks = m_stream.MetaBlocks(),
        .receiveBuffer = m_stream.receiveBufferLength(),
        .peakBuffer = m_stream.peakBuffer(),
        .averagePacket = m_stream.averagePacket(),
        .largestPacket = m_stream.largestPacket(),
        .discardedBytes = m_stream.discardedBytes(),
        .resyncCount = m_stream.resyncCount(),
        .lastTextValid = m_stream.lastTextValid(),
        .inSync = m_stream.ResyncState() == 0,
        .lastText = m_stream.LastText(),
        .headerText = m_stream.HeaderText(),
        .diskCache = m_output.DiskCache().size(),
        .blockWrites = m_output.blockWrites(),
        .bytesWritten = m_output.bytesWritten(),
        .format = m_output.format() ? formatName(*m_output.format()) : QString(),
        .cutHeld = m_output.cutBytesHeld(),
        .peakCutHeld = m_output.peakCutBytesHeld(),
    };
}

// The recording's own delay while its songs are cut; else what the settings keep.
QString StreamRecorder::titleDelayText() const
{
    if (const TitleDelay *delay = m_output.titleDelay())
        return delay->text();
    return TitleDelay(delayStation()).text();
}

void StreamRecorder::setTitleDelay(double seconds)
{
    if (TitleDelay *delay = m_output.titleDelay())
        delay->setByHand(seconds);
    else
        TitleDelay(delayStation()).setByHand(seconds);
}

void StreamRecorder::resetTitleDelay()
{
    if (TitleDelay *delay = m_output.titleDelay())
        delay->reset();
    else
        TitleDelay(delayStation()).reset();
}

QString StreamRecorder::delayStation() const
{
    if (!m_settings.station.isEmpty())
        return m_settings.station;
    return m_recording ? m_address : m_settings.address;
}

QString StreamRecorder::shownTitle() const
{
    return m_title;
}

void StreamRecorder::showTitle(const QString &title)
{
    m_title = title;
    emit titleChanged(title);
}

void StreamRecorder::showStreamText(const QString &text)
{
    m_status = text;
    emit stationNameChanged(text);
}

void StreamRecorder::showGenre(const QString &genre)
{
    emit genreChanged(genre);
}

void StreamRecorder::setHyperlinkA(const QString &url)
{
    emit stationLinkChanged(url);
}

void StreamRecorder::setHyperlinkB(const QString &url)
{
    emit songLinkChanged(url);
}

QString StreamRecorder::scanSongText() const
{
    return m_settings.scanSong;
}

void StreamRecorder::showWaitScan(bool visible)
{
    emit waitingForSong(visible);
}

void StreamRecorder::setWriteEnabled(bool enabled)
{
    m_output.setWriteEnabled(enabled);
}

void StreamRecorder::WriteToDisk(QByteArrayView data, bool flush)
{
    // Past a size limit nothing more goes out, also while the recording ends.
    if (m_limitHit)
        return;
    beginOutput();
    m_output.WriteToDisk(data, flush);
    m_limitHit = sizeLimitReached();
}

// Where a song ends: the parser calls this at a title change, after the
// interval in front of the title has been written with flush set.
void StreamRecorder::NewSong(const QString &title)
{
    if (m_limitHit)
        return;
    beginOutput();
    // One file per song turned off before any song began: the rest is one file.
    if (!m_settings.singleSong && !m_output.isFileOpen())
        openContinuous();
    m_output.NewSong(title, m_settings.singleSong, fileNameAt(m_options.now()));
}

// A continuous recording has its file, made as soon as the station's answer
// is in, so it never needs switching.
bool StreamRecorder::isFileOpen() const
{
    return m_output.isFileOpen() || !m_settings.singleSong;
}

void StreamRecorder::switchToContinuous()
{
    m_settings.singleSong = false;
    emit switchedToContinuous();
    if (m_output.hasBegun())
        openContinuous();
    else
        beginOutput();
}
