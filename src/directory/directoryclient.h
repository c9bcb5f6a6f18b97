#pragma once

#include "directory/boundeddownload.h"
#include "directory/directoryquery.h"
#include "directory/directorystation.h"
#include "directory/serverdiscovery.h"

#include <QList>
#include <QNetworkAccessManager>
#include <QObject>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <vector>

// The open station directory's JSON API: station searches a page at a time,
// the lists that fill the filter boxes, and the click count the directory
// asks for whenever a user plays one of its stations. Each call is tried on
// the known servers in turn until one answers; the one that answered is asked
// first next time. Results and failures come as signals, failures as
// sentences for people.
class DirectoryClient : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(DirectoryClient)

public:
    enum class ListKind
    {
        Tags,
        Countries,
        Languages,
        Codecs,
    };
    Q_ENUM(ListKind)

    struct Limits
    {
        qint64 maxSearchBytes = 16 * 1024 * 1024; // 10,000 stations take about 10 MB
        qint64 maxListBytes = 4 * 1024 * 1024;
        int maxListValues = 1000;
        int silenceMs = 15000;
        int deadlineMs = 60000;
    };
    static constexpr int maxPendingClicks = 16;

    // "Tunecatch/<version>": the directory asks programs to name themselves.
    static QString defaultUserAgent();

    explicit DirectoryClient(QObject *parent = nullptr);
    ~DirectoryClient() override;

    // The configured server: empty finds the directory's servers by DNS
    // (once, when first needed); otherwise "scheme://host[:port]" is used
    // alone. An address that is none makes every call fail with the reason,
    // which is also returned (empty when the address is fine).
    QString setServer(const QString &base);
    // Servers tried in this order, without DNS: mirrors, or test servers.
    void setServers(const QStringList &bases);
    // The server that answered last, else the first to be tried; empty before
    // the servers are known.
    QString currentServer() const;

    void setUserAgent(const QString &userAgent);
    void setLimits(const Limits &limits);

    // Starts a search; the one still under way is cancelled without a signal.
    void search(const DirectoryQuery &query);
    void cancelSearch();
    bool isSearching() const;

    // Fetches one of the filter lists, the most used values first. A fetch of
    // the same list still under way is not repeated.
    void fetchList(ListKind kind);

    // Tells the directory that a user plays the station. False when the
    // identifier is none, or too many counts are under way already.
    bool countClick(const QString &stationUuid);

signals:
    void searchFinished(const DirectoryQuery &query, const QList<DirectoryStation> &stations);
    void searchFailed(const DirectoryQuery &query, const QString &message);
    void listFinished(DirectoryClient::ListKind kind, const QList<DirectoryFilterValue> &values);
    void listFailed(DirectoryClient::ListKind kind, const QString &message);
    void clickCounted(const QString &stationUuid, bool counted);

private:
    struct Call
    {
        enum class Purpose
        {
            Search,
            List,
            Click,
        } purpose = Purpose::Search;
        ListKind list = ListKind::Tags;
        QString pathAndQuery;
        qint64 maxBytes = 0;
        QStringList servers;
        int server = 0;
        int tried = 0;
        BoundedDownload *download = nullptr;
        std::function<void(const QByteArray &body)> done;
        std::function<void(const QString &message)> fail;
    };

    void run(std::unique_ptr<Call> call);
    // Starts or fails the calls that wait for servers, as far as they are known.
    void startWaiting();
    void tryServer(Call &call);
    void onDownloadEnded(Call &call);
    std::unique_ptr<Call> take(Call &call);
    void onServersFound(const QStringList &bases);

    QNetworkAccessManager m_network;
    ServerDiscovery m_discovery;
    QString m_userAgent;
    Limits m_limits;
    QStringList m_servers;
    int m_current = 0;
    // No server is configured: they are found by DNS.
    bool m_discover = true;
    // Why no server can be used.
    QString m_serverError;
    std::vector<std::unique_ptr<Call>> m_calls;
    Call *m_search = nullptr;
};
