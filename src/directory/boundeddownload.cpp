#include "directory/boundeddownload.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QNetworkRequest>

BoundedDownload::BoundedDownload(QNetworkAccessManager &network, const QNetworkRequest &request,
                                 const Limits &limits, QObject *parent)
    : QObject(parent), m_reply(network.get(request)), m_limits(limits)
{
    m_silence.setSingleShot(true);
    m_deadline.setSingleShot(true);
    connect(&m_silence, &QTimer::timeout, this, [this] { end(Outcome::TimedOut); });
    connect(&m_deadline, &QTimer::timeout, this, [this] { end(Outcome::TimedOut); });
    connect(m_reply, &QNetworkReply::readyRead, this, &BoundedDownload::onReadyRead);
    connect(m_reply, &QNetworkReply::finished, this, &BoundedDownload::onFinished);
    connect(m_reply, &QNetworkReply::metaDataChanged, this, [this] {
        m_silence.start();
        // A declared length beyond the bound ends it before any byte is read.
        if (m_reply->header(QNetworkRequest::ContentLengthHeader).toLongLong() > m_limits.maxBytes)
            end(Outcome::TooLarge);
    });
    m_silence.start(limits.silenceMs);
    m_deadline.start(limits.deadlineMs);
}

BoundedDownload::~BoundedDownload()
{
    cancel();
}

void BoundedDownload::cancel()
{
    m_silence.stop();
    m_deadline.stop();
    if (!m_reply)
        return;
    disconnect(m_reply, nullptr, this, nullptr);
    m_reply->abort();
    m_reply->deleteLater();
    m_reply = nullptr;
}

void BoundedDownload::onReadyRead()
{
    m_silence.start();
    // One byte beyond the bound is enough to know it was passed.
    m_body += m_reply->read(m_limits.maxBytes - m_body.size() + 1);
    if (m_body.size() > m_limits.maxBytes)
        end(Outcome::TooLarge);
}

void BoundedDownload::onFinished()
{
    onReadyRead();
    if (m_outcome != Outcome::Running)
        return;
    m_status = m_reply->attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
    if (m_status >= 400) {
        end(Outcome::HttpError);
    } else if (m_reply->error() != QNetworkReply::NoError) {
        m_networkError = m_reply->errorString();
        end(Outcome::NetworkError);
    } else {
        end(Outcome::Done);
    }
}

void BoundedDownload::end(Outcome outcome)
{
    m_outcome = outcome;
    cancel();
    if (outcome != Outcome::Done)
        m_body.clear();
    emit finished();
}

QString BoundedDownload::errorText() const
{
    switch (m_outcome) {
    case Outcome::NetworkError:
        return tr("it could not be reached (%1)").arg(m_networkError);
    case Outcome::HttpError:
        return tr("it answered with status %1").arg(m_status);
    case Outcome::TooLarge:
        return tr("its answer was larger than %1 KB").arg(m_limits.maxBytes / 1024);
    case Outcome::TimedOut:
        return tr("it did not answer in time");
    case Outcome::Running:
    case Outcome::Done:
        break;
    }
    return QString();
}

bool BoundedDownload::worthRetrying() const
{
    return m_outcome == Outcome::NetworkError || m_outcome == Outcome::TimedOut ||
           (m_outcome == Outcome::HttpError && (m_status >= 500 || m_status == 429));
}
