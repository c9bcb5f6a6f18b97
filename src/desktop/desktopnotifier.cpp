#include "desktop/desktopnotifier.h"

#include "desktop/streamtitle.h"

#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

namespace {

const QString Service = QStringLiteral("org.freedesktop.Notifications");
const QString Path = QStringLiteral("/org/freedesktop/Notifications");

// One line of plain text, cut without splitting a character in two.
QString bounded(const QString &text)
{
    QString line = text.simplified();
    if (line.size() <= DesktopNotifier::MaxTextLength)
        return line;
    line.truncate(DesktopNotifier::MaxTextLength - 1);
    if (line.back().isHighSurrogate())
        line.chop(1);
    return line + QChar(0x2026);
}

} // namespace

DesktopNotifier::DesktopNotifier(QDBusConnection bus, QObject *parent)
    : QObject(parent), m_bus(std::move(bus))
{
}

void DesktopNotifier::showSong(const QString &station, const QString &streamTitle)
{
    if (streamTitle.trimmed().isEmpty() || !m_bus.isConnected())
        return;
    m_next = Song{station, streamTitle};
    if (!m_calling)
        sendNext();
}

void DesktopNotifier::sendNext()
{
    if (!m_markup) {
        askCapabilities();
        return;
    }
    if (!m_next)
        return;
    const StreamTitle song = StreamTitle::split(m_next->title);
    // A service that reads markup in the body would take "<" or "&" in a
    // title for markup; one that does not shows the text as it is.
    QStringList lines;
    for (const QString &text : {song.artist, m_next->station}) {
        if (!text.trimmed().isEmpty())
            lines.append(*m_markup ? bounded(text).toHtmlEscaped() : bounded(text));
    }
    m_next.reset();
    QDBusMessage call = QDBusMessage::createMethodCall(Service, Path, Service, QStringLiteral("Notify"));
    call << QStringLiteral("Tunecatch") << m_shownId << QStringLiteral("tunecatch") << bounded(song.title)
         << lines.join(u'\n') << QStringList()
         << QVariantMap{{QStringLiteral("desktop-entry"), QStringLiteral("tunecatch")}} << -1;
    m_calling = true;
    connect(new QDBusPendingCallWatcher(m_bus.asyncCall(call), this), &QDBusPendingCallWatcher::finished,
            this, &DesktopNotifier::finished);
}

void DesktopNotifier::askCapabilities()
{
    m_calling = true;
    const QDBusMessage call =
        QDBusMessage::createMethodCall(Service, Path, Service, QStringLiteral("GetCapabilities"));
    auto *watcher = new QDBusPendingCallWatcher(m_bus.asyncCall(call), this);
    connect(watcher, &QDBusPendingCallWatcher::finished, this, [this](QDBusPendingCallWatcher *answer) {
        answer->deleteLater();
        m_calling = false;
        const QDBusPendingReply<QStringList> reply = *answer;
        if (reply.isError()) {
            // No service: ask again with the next song, it may have come meanwhile.
            m_next.reset();
            return;
        }
        m_markup = reply.value().contains(QStringLiteral("body-markup"));
        sendNext();
    });
}

void DesktopNotifier::finished(QDBusPendingCallWatcher *call)
{
    call->deleteLater();
    m_calling = false;
    const QDBusPendingReply<uint> reply = *call;
    if (reply.isError()) {
        // The service went away; one that comes later is asked afresh.
        m_markup.reset();
        m_shownId = 0;
    } else {
        m_shownId = reply.value();
        emit shown();
    }
    sendNext();
}
