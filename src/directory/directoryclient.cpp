#include "directory/directoryclient.h"

#include "base/appinfo.h"

#include <QJsonDocument>
#include <QJsonObject>
#include <QNetworkRequest>
#include <QRegularExpression>
#include <QUrl>

#include <algorithm>
#include <utility>

namespace {

constexpr qint64 maxClickBytes = 64 * 1024;

QString listPath(DirectoryClient::ListKind kind)
{
    switch (kind) {
    case DirectoryClient::ListKind::Countries:
        return QStringLiteral("/json/countries");
    case DirectoryClient::ListKind::Languages:
        return QStringLiteral("/json/languages");
    case DirectoryClient::ListKind::Codecs:
        return QStringLiteral("/json/codecs");
    case DirectoryClient::ListKind::Tags:
        break;
    }
    return QStringLiteral("/json/tags");
}

// The click answer's "ok" is true, or "true" from older servers.
bool clickAccepted(const QByteArray &body)
{
    const QJsonValue ok = QJsonDocument::fromJson(body).object().value(QLatin1StringView("ok"));
    return ok.toBool() || ok.toString() == u"true";
}

} // namespace

QString DirectoryClient::defaultUserAgent()
{
    return AppInfo::title + u'/' + AppInfo::version();
}

DirectoryClient::DirectoryClient(QObject *parent) : QObject(parent), m_userAgent(defaultUserAgent())
{
    connect(&m_discovery, &ServerDiscovery::found, this, &DirectoryClient::onServersFound);
}

// Calls still under way end without signals.
DirectoryClient::~DirectoryClient() = default;

QString DirectoryClient::setServer(const QString &base)
{
    const QString trimmed = base.trimmed();
    m_serverError = trimmed.isEmpty() ? QString() : ServerDiscovery::checkBase(trimmed);
    m_discover = trimmed.isEmpty();
    m_servers = m_discover || !m_serverError.isEmpty() ? QStringList() : QStringList{trimmed};
    m_current = 0;
    startWaiting();
    return m_serverError;
}

void DirectoryClient::setServers(const QStringList &bases)
{
    m_servers = bases;
    m_current = 0;
    m_discover = false;
    m_serverError = bases.isEmpty() ? tr("No station directory server is set.") : QString();
    startWaiting();
}

QString DirectoryClient::currentServer() const
{
    return m_servers.value(m_current);
}

void DirectoryClient::setUserAgent(const QString &userAgent)
{
    m_userAgent = userAgent;
}

void DirectoryClient::setLimits(const Limits &limits)
{
    m_limits = limits;
}

void DirectoryClient::search(const DirectoryQuery &query)
{
    cancelSearch();
    auto call = std::make_unique<Call>();
    call->purpose = Call::Purpose::Search;
    call->pathAndQuery = query.pathAndQuery();
    call->maxBytes = m_limits.maxSearchBytes;
    call->done = [this, query](const QByteArray &body) {
        const auto parsed =
            DirectoryJson::stations(body, qBound(1, query.limit, int(DirectoryQuery::maxPageSize)));
        if (parsed.error.isEmpty())
            emit searchFinished(query, parsed.values);
        else
            emit searchFailed(query, parsed.error);
    };
    call->fail = [this, query](const QString &message) { emit searchFailed(query, message); };
    m_search = call.get();
    run(std::move(call));
}

void DirectoryClient::cancelSearch()
{
    if (!m_search)
        return;
    const std::unique_ptr<Call> cancelled = take(*m_search);
    if (cancelled->download) {
        cancelled->download->cancel();
        cancelled->download->deleteLater();
    }
}

bool DirectoryClient::isSearching() const
{
    return m_search != nullptr;
}

void DirectoryClient::fetchList(ListKind kind)
{
    const bool underWay = std::any_of(m_calls.begin(), m_calls.end(), [kind](const std::unique_ptr<Call> &c) {
        return c->purpose == Call::Purpose::List && c->list == kind;
    });
    if (underWay)
        return;
    auto call = std::make_unique<Call>();
    call->purpose = Call::Purpose::List;
    call->list = kind;
    call->pathAndQuery = listPath(kind) +
                         QStringLiteral("?order=stationcount&reverse=true&hidebroken=true&limit=") +
                         QString::number(m_limits.maxListValues);
    call->maxBytes = m_limits.maxListBytes;
    call->done = [this, kind, max = m_limits.maxListValues](const QByteArray &body) {
        const auto parsed = DirectoryJson::filterValues(body, max);
        if (parsed.error.isEmpty())
            emit listFinished(kind, parsed.values);
        else
            emit listFailed(kind, parsed.error);
    };
    call->fail = [this, kind](const QString &message) { emit listFailed(kind, message); };
    run(std::move(call));
}

bool DirectoryClient::countClick(const QString &stationUuid)
{
    static const QRegularExpression identifier(QStringLiteral("^[0-9A-Fa-f-]{1,64}$"));
    const auto clicks = std::count_if(m_calls.begin(), m_calls.end(), [](const std::unique_ptr<Call> &c) {
        return c->purpose == Call::Purpose::Click;
    });
    if (!identifier.match(stationUuid).hasMatch() || clicks >= maxPendingClicks)
        return false;
    auto call = std::make_unique<Call>();
    call->purpose = Call::Purpose::Click;
    call->pathAndQuery = QStringLiteral("/json/url/") + stationUuid;
    call->maxBytes = maxClickBytes;
    call->done = [this, stationUuid](const QByteArray &body) {
        emit clickCounted(stationUuid, clickAccepted(body));
    };
    call->fail = [this, stationUuid](const QString &) { emit clickCounted(stationUuid, false); };
    run(std::move(call));
    return true;
}

void DirectoryClient::run(std::unique_ptr<Call> call)
{
    m_calls.push_back(std::move(call));
    startWaiting();
}

void DirectoryClient::startWaiting()
{
    // A failure's signal may start or cancel calls: look for the next one
    // afresh each time.
    const auto waiting = [this] {
        const auto it = std::find_if(m_calls.begin(), m_calls.end(),
                                     [](const std::unique_ptr<Call> &c) { return !c->download; });
        return it == m_calls.end() ? nullptr : it->get();
    };
    while (Call *call = waiting()) {
        if (!m_serverError.isEmpty()) {
            take(*call)->fail(m_serverError);
        } else if (m_servers.isEmpty()) {
            m_discovery.start();
            return;
        } else {
            call->servers = m_servers;
            call->server = m_current;
            tryServer(*call);
        }
    }
}

void DirectoryClient::onServersFound(const QStringList &bases)
{
    if (!m_discover)
        return;
    m_servers = bases;
    m_current = 0;
    startWaiting();
}

void DirectoryClient::tryServer(Call &call)
{
    QNetworkRequest request(QUrl(call.servers.at(call.server) + call.pathAndQuery));
    request.setHeader(QNetworkRequest::UserAgentHeader, m_userAgent);
    request.setRawHeader("Accept", "application/json");
    request.setMaximumRedirectsAllowed(5);
    const BoundedDownload::Limits limits{call.maxBytes, m_limits.silenceMs, m_limits.deadlineMs};
    call.download = new BoundedDownload(m_network, request, limits, this);
    connect(call.download, &BoundedDownload::finished, this, [this, c = &call] { onDownloadEnded(*c); });
}

void DirectoryClient::onDownloadEnded(Call &call)
{
    BoundedDownload *download = std::exchange(call.download, nullptr);
    download->deleteLater();
    if (download->outcome() == BoundedDownload::Outcome::Done) {
        if (call.servers == m_servers)
            m_current = call.server;
        take(call)->done(download->body());
        return;
    }
    const QString message = tr("The station directory at %1 could not be used: %2.")
                                .arg(call.servers.at(call.server), download->errorText());
    if (download->worthRetrying() && ++call.tried < call.servers.size()) {
        call.server = (call.server + 1) % int(call.servers.size());
        tryServer(call);
        return;
    }
    take(call)->fail(message);
}

std::unique_ptr<DirectoryClient::Call> DirectoryClient::take(Call &call)
{
    if (m_search == &call)
        m_search = nullptr;
    const auto it = std::find_if(m_calls.begin(), m_calls.end(),
                                 [&call](const std::unique_ptr<Call> &c) { return c.get() == &call; });
    std::unique_ptr<Call> taken = std::move(*it);
    m_calls.erase(it);
    return taken;
}
