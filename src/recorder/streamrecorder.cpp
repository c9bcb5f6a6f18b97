#include "recorder/streamrecorder.h"

#include "base/apperror.h"
#include "base/appinfo.h"
#include "base/apppaths.h"
#include "base/prompt.h"
#include "catalogue/filedl.h"
#include "catalogue/playlist.h"
#include "recorder/modshutdown.h"
#include "recorder/streamaddress.h"

#include <QFile>
#include <QUrl>

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
    ShowTitle({});
    m_recording = true;
    m_streamCame = false;
    emit started();
    m_limitClock.start();
    const QString &address = m_settings.address;
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
    ShowTitle({});
    m_fileDL->Cancel(TagRecording);
    EndStream();
    m_output.CloseFile();
    m_recording = false;
    m_limitClock.stop();
    const bool askedFor = reason.text.isEmpty();
    if (const QString &outputError = m_output.Error(); !outputError.isEmpty()) {
        showStatus(outputError);
        // The last bytes could not be written: the stop asked for failed after all.
        if (askedFor)
            reason = {StopReason::Kind::OutputFailed, outputError};
    }
    if (!askedFor)
        showStatus(reason.text);
    emit stopped(reason);
}

void StreamRecorder::StartRecording(const QString &address)
{
    const bool singleSong = m_settings.singleSong;
    m_output.ResetCounters();
    m_output.SetFileName(BuildFileName());
    if (!singleSong)
        m_output.RemoveSongPlaceholder();
    if (StopOverwrite())
        return;
    if (!singleSong && !m_output.OpenFile()) {
        stopWithFailure(StopReason::Kind::OutputFailed, m_output.Error());
        return;
    }
    if (!StartStream(address))
        stopWithFailure(StopReason::Kind::BadAddress, m_status);
}

QString StreamRecorder::BuildFileName() const
{
    return ::BuildFileName(m_settings.saveTemplate, m_settings.station, m_options.now(),
                           AppPaths::RecordingsFolder());
}

bool StreamRecorder::StopOverwrite()
{
    QFile existing(m_output.FileName());
    if (!existing.open(QIODevice::ReadOnly))
        return false;
    existing.close();
    if (m_options.launchMode)
        return false;
    return !m_prompt.askYesNo(tr("Warning! This file already exists. Overwrite it?"), AppInfo::Title,
                              Prompt::Icon::Warning);
}

bool StreamRecorder::StartStream(const QString &address)
{
    StreamAddress target;
    try {
        target = ParseAddress(address);
    } catch (const AppError &error) {
        showStatus(tr("Invalid stream address: ") + error.description());
        return false;
    }
    m_stream.Reset();
    m_connection->Open(target);
    return true;
}

void StreamRecorder::EndStream()
{
    m_connection->Close();
    m_stream.FlushRest();
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
    m_stream.OnData(bytes);
    checkFailures();
}

void StreamRecorder::onStreamInterrupted()
{
    if (!m_recording)
        return;
    m_stream.Interrupt();
    checkFailures();
}

void StreamRecorder::onConnectionFailed(const QString &reason)
{
    stopWithFailure(m_streamCame ? StopReason::Kind::Dropped : StopReason::Kind::Unreachable, reason);
}

void StreamRecorder::checkFailures()
{
    if (!m_stream.Failure().isEmpty())
        stopWithFailure(StopReason::Kind::StreamFailed, m_stream.Failure());
    else if (!m_output.Error().isEmpty())
        stopWithFailure(StopReason::Kind::OutputFailed, m_output.Error());
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
        if (Playlist::IsDirectoryReference(address)) {
            url = Playlist::PlaylistServiceAddress(Playlist::DirectoryNumber(address));
            const QString service = qEnvironmentVariable(PlaylistServiceVariable);
            if (!service.isEmpty())
                url.replace(0, Playlist::ServiceHost.size(), service);
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
        Playlist::UsableAddress(Playlist::ChooseStreamFromPlaylist(QString::fromLocal8Bit(body)));
    if (address.isEmpty()) {
        stopWithFailure(StopReason::Kind::Unreachable, tr("PLS contains no valid stream url"));
        return;
    }
    showStatus(tr("Connecting to: ") + address);
    StartRecording(address);
}

void StreamRecorder::onDownloadError(const QString &key, int statusCode, const QString &statusText)
{
    if (key != TagRecording)
        return;
    stopWithFailure(StopReason::Kind::Unreachable,
                    tr("PLS error: ") + QString::number(statusCode) + QStringLiteral(": ") + statusText);
}

void StreamRecorder::checkLimit()
{
    if (!m_recording || !m_settings.limit)
        return;
    const RecordingSettings::StopLimit limit = *m_settings.limit;
    const std::optional<qint32> elapsed =
        RecorderStats::ElapsedSeconds(m_stream.BytesTotal(), m_stream.Bitrate());
    const std::optional<int> percent =
        RecorderStats::LimitProgress(limit.kind, limit.value, elapsed, m_output.BytesWritten());
    if (!percent)
        return;
    emit limitProgress(*percent);
    if (RecorderStats::LimitReached(percent, limit.value))
        FinishRecording();
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
        .receiveBuffer = m_stream.ReceiveBufferLength(),
        .peakBuffer = m_stream.PeakBuffer(),
        .averagePacket = m_stream.AveragePacket(),
        .largestPacket = m_stream.LargestPacket(),
        .discardedBytes = m_stream.DiscardedBytes(),
        .resyncCount = m_stream.ResyncCount(),
        .lastTextValid = m_stream.LastTextValid(),
        .inSync = m_stream.ResyncState() == 0,
        .lastText = m_stream.LastText(),
        .headerText = m_stream.HeaderText(),
        .diskCache = m_output.DiskCache().size(),
        .blockWrites = m_output.BlockWrites(),
        .bytesWritten = m_output.BytesWritten(),
    };
}

QString StreamRecorder::ShownTitle() const
{
    return m_title;
}

void StreamRecorder::ShowTitle(const QString &title)
{
    m_title = title;
    emit titleChanged(title);
}

void StreamRecorder::ShowStreamText(const QString &text)
{
    m_status = text;
    emit stationNameChanged(text);
}

void StreamRecorder::ShowGenre(const QString &genre)
{
    emit genreChanged(genre);
}

void StreamRecorder::SetHyperlinkA(const QString &url)
{
    emit stationLinkChanged(url);
}

void StreamRecorder::SetHyperlinkB(const QString &url)
{
    emit songLinkChanged(url);
}

QString StreamRecorder::ScanSongText() const
{
    return m_settings.scanSong;
}

void StreamRecorder::ShowWaitScan(bool visible)
{
    emit waitingForSong(visible);
}

void StreamRecorder::SetWriteEnabled(bool enabled)
{
    m_output.SetWriteEnabled(enabled);
}

void StreamRecorder::WriteToDisk(QByteArrayView data, bool flush)
{
    m_output.WriteToDisk(data, flush);
}

// Where a song ends: the parser calls this at a title change, after the
// interval in front of the title has been written with flush set.
void StreamRecorder::NewSong(const QString &title)
{
    m_output.NewSong(title, m_settings.singleSong, BuildFileName());
}

bool StreamRecorder::IsFileOpen() const
{
    return m_output.IsFileOpen();
}

void StreamRecorder::SwitchToContinuous()
{
    m_settings.singleSong = false;
    emit switchedToContinuous();
    m_output.SwitchToContinuous();
}
