#include "recorder/streamtitlewatch.h"

#include "base/apperror.h"
#include "recorder/streamaddress.h"

#include <QUrl>

StreamTitleWatch::StreamTitleWatch(StreamTiming timing, QObject *parent)
    : QObject(parent), m_connection(std::move(timing)), m_stream(*this)
{
    connect(&m_connection, &StreamConnection::dataReceived, this, &StreamTitleWatch::onData);
    // A new connection brings its own header.
    connect(&m_connection, &StreamConnection::interrupted, this, [this] { m_stream.interrupt(); });
    connect(&m_connection, &StreamConnection::failed, this, &StreamTitleWatch::stop);
}

StreamTitleWatch::~StreamTitleWatch()
{
    m_connection.disconnect(this);
}

bool StreamTitleWatch::watches(const QString &address)
{
    const QString scheme = QUrl(address.trimmed()).scheme().toLower();
    return scheme == u"http" || scheme == u"https" || scheme == u"icyx";
}

void StreamTitleWatch::watch(const QString &address)
{
    stop();
    if (!watches(address))
        return;
    StreamAddress target;
    try {
        target = ParseAddress(address.trimmed());
    } catch (const AppError &) {
        return;
    }
    m_stream.reset();
    m_title.clear();
    m_watching = true;
    m_connection.open(target);
}

void StreamTitleWatch::stop()
{
    m_watching = false;
    m_connection.close();
}

void StreamTitleWatch::onData(const QByteArray &bytes)
{
    if (!m_watching)
        return;
    m_stream.onData(bytes);
    // Without an interval, or with a stream that cannot be parsed, no title will come.
    if (!m_stream.failure().isEmpty() || (m_stream.HeaderDone() && m_stream.MetaInterval() <= 0))
        stop();
}

void StreamTitleWatch::showTitle(const QString &title)
{
    if (title == m_title)
        return;
    m_title = title;
    emit titleChanged(title);
}
