#include "directory/serverdiscovery.h"

#include <QDnsLookup>
#include <QRandomGenerator>
#include <QUrl>

#include <algorithm>

ServerDiscovery::ServerDiscovery(QObject *parent) : QObject(parent)
{
    // The system's resolver has its own timeouts, but their sum is long.
    m_timeout.setSingleShot(true);
    connect(&m_timeout, &QTimer::timeout, this, [this] { finish({}); });
}

ServerDiscovery::~ServerDiscovery() = default;

void ServerDiscovery::start()
{
    if (isRunning())
        return;
    m_lookup = new QDnsLookup(QDnsLookup::SRV, serviceRecord, this);
    connect(m_lookup, &QDnsLookup::finished, this, &ServerDiscovery::onLookupFinished);
    m_timeout.start(timeoutMs);
    m_lookup->lookup();
}

bool ServerDiscovery::isRunning() const
{
    return m_lookup != nullptr;
}

void ServerDiscovery::onLookupFinished()
{
    QStringList bases;
    if (m_lookup->error() == QDnsLookup::NoError) {
        const QList<QDnsServiceRecord> records = m_lookup->serviceRecords();
        for (const QDnsServiceRecord &record : records)
            bases.append(baseForHost(record.target(), record.port()));
    }
    finish(bases);
}

void ServerDiscovery::finish(QStringList bases)
{
    m_timeout.stop();
    if (m_lookup) {
        disconnect(m_lookup, nullptr, this, nullptr);
        m_lookup->abort();
        m_lookup->deleteLater();
        m_lookup = nullptr;
    }
    bases.removeAll(QString());
    bases.removeDuplicates();
    std::shuffle(bases.begin(), bases.end(), *QRandomGenerator::global());
    // Last, as it stands for the same servers: one of them, chosen by DNS.
    const QString roundRobin = baseForHost(roundRobinHost, 443);
    if (!bases.contains(roundRobin))
        bases.append(roundRobin);
    emit found(bases);
}

QString ServerDiscovery::checkBase(const QString &base)
{
    if (!base.startsWith(u"http://", Qt::CaseInsensitive) &&
        !base.startsWith(u"https://", Qt::CaseInsensitive))
        return tr("The server address \"%1\" must begin with http:// or https://.").arg(base);
    const QUrl url(base, QUrl::StrictMode);
    if (!url.isValid() || url.host().isEmpty())
        return tr("\"%1\" is no server address: it takes the form http://host:port.").arg(base);
    if (!url.path().isEmpty() || url.hasQuery() || url.hasFragment() || !url.userInfo().isEmpty())
        return tr("The server address \"%1\" holds more than scheme, host and port (a path or a trailing "
                  "\"/\").")
            .arg(base);
    return QString();
}

QString ServerDiscovery::baseForHost(QString host, quint16 port)
{
    // DNS names may come fully qualified, with the root's dot at the end.
    while (host.endsWith(u'.'))
        host.chop(1);
    if (host.isEmpty())
        return QString();
    QString base = QStringLiteral("https://") + host.toLower();
    if (port != 0 && port != 443)
        base += u':' + QString::number(port);
    return base;
}
