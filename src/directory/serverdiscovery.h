#pragma once

#include <QObject>
#include <QStringList>
#include <QTimer>

class QDnsLookup;

// The open station directory's servers, found the way the directory asks: its
// DNS service record lists them; when that gives nothing, its round-robin host
// name stands for all. They are tried in random order, so that no one server
// carries every program's load.
class ServerDiscovery : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ServerDiscovery)

public:
    static inline const QString serviceRecord = QStringLiteral("_api._tcp.radio-browser.info");
    static inline const QString roundRobinHost = QStringLiteral("all.api.radio-browser.info");
    static constexpr int timeoutMs = 10000;

    explicit ServerDiscovery(QObject *parent = nullptr);
    ~ServerDiscovery() override;

    // Asks DNS once; found() follows, with at least the round-robin host.
    void start();
    bool isRunning() const;

    // A configured server address is "http" or "https", a host and an
    // optional port, nothing else ("http://127.0.0.1:8080"). Empty when it is
    // one, else the reason for people.
    static QString checkBase(const QString &base);
    // The address of a server the service record names; "https" as the
    // directory's servers speak it.
    static QString baseForHost(QString host, quint16 port);

signals:
    void found(const QStringList &bases);

private:
    void onLookupFinished();
    void finish(QStringList bases);

    QDnsLookup *m_lookup = nullptr;
    QTimer m_timeout;
};
