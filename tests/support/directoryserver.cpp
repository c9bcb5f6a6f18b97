#include "support/directoryserver.h"

#include <QHash>
#include <QHostAddress>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTcpSocket>
#include <QTimer>
#include <QUrl>

#include <algorithm>
#include <memory>

using namespace Qt::StringLiterals;

namespace {

QMap<QString, QString> formValues(const QByteArray &query)
{
    QMap<QString, QString> values;
    for (const QByteArray &pair : query.split('&')) {
        if (pair.isEmpty())
            continue;
        const qsizetype equals = pair.indexOf('=');
        QByteArray key = pair.left(equals < 0 ? pair.size() : equals);
        QByteArray value = equals < 0 ? QByteArray() : pair.mid(equals + 1);
        values.insert(QUrl::fromPercentEncoding(key.replace('+', ' ')),
                      QUrl::fromPercentEncoding(value.replace('+', ' ')));
    }
    return values;
}

bool listHas(const QString &commaList, const QString &value)
{
    const QStringList items = commaList.split(u',');
    return std::any_of(items.begin(), items.end(), [&](const QString &item) {
        return item.trimmed().compare(value, Qt::CaseInsensitive) == 0;
    });
}

bool matches(const QString &field, const QString &wanted, bool exact, bool isList)
{
    if (wanted.isEmpty())
        return true;
    if (!exact)
        return field.contains(wanted, Qt::CaseInsensitive);
    return isList ? listHas(field, wanted) : field.compare(wanted, Qt::CaseInsensitive) == 0;
}

QJsonObject stationObject(const DirectoryServer::Station &s)
{
    const QString when = u"2024-05-01 10:00:00"_s;
    const QString whenIso = u"2024-05-01T10:00:00Z"_s;
    return QJsonObject{
        {u"changeuuid"_s, s.uuid},
        {u"stationuuid"_s, s.uuid},
        {u"serveruuid"_s, QJsonValue::Null},
        {u"name"_s, s.name},
        {u"url"_s, s.url},
        {u"url_resolved"_s, s.urlResolved},
        {u"homepage"_s, s.homepage},
        {u"favicon"_s, s.favicon},
        {u"tags"_s, s.tags},
        {u"country"_s, s.country},
        {u"countrycode"_s, s.countryCode},
        {u"iso_3166_2"_s, QString()},
        {u"state"_s, QString()},
        {u"language"_s, s.language},
        {u"languagecodes"_s, s.languageCodes},
        {u"votes"_s, s.votes},
        {u"lastchangetime"_s, when},
        {u"lastchangetime_iso8601"_s, whenIso},
        {u"codec"_s, s.codec},
        {u"bitrate"_s, s.bitrate},
        {u"hls"_s, 0},
        {u"lastcheckok"_s, 1},
        {u"lastchecktime"_s, when},
        {u"lastchecktime_iso8601"_s, whenIso},
        {u"lastcheckoktime"_s, when},
        {u"lastcheckoktime_iso8601"_s, whenIso},
        {u"lastlocalchecktime"_s, when},
        {u"lastlocalchecktime_iso8601"_s, whenIso},
        {u"clicktimestamp"_s, when},
        {u"clicktimestamp_iso8601"_s, whenIso},
        {u"clickcount"_s, s.clickCount},
        {u"clicktrend"_s, 0},
        {u"ssl_error"_s, 0},
        {u"geo_lat"_s, QJsonValue::Null},
        {u"geo_long"_s, QJsonValue::Null},
        {u"has_extended_info"_s, false},
    };
}

QByteArray httpAnswer(int status, const QByteArray &body, const QByteArray &type)
{
    return "HTTP/1.1 " + QByteArray::number(status) + (status == 200 ? " OK" : " Failed") +
           "\r\nContent-Type: " + type + "\r\nContent-Length: " + QByteArray::number(body.size()) +
           "\r\nConnection: close\r\n\r\n" + body;
}

} // namespace

DirectoryServer::DirectoryServer(QObject *parent) : QObject(parent)
{
    connect(&m_server, &QTcpServer::pendingConnectionAvailable, this, &DirectoryServer::onNewConnection);
}

DirectoryServer::~DirectoryServer() = default;

bool DirectoryServer::start()
{
    return m_server.listen(QHostAddress::LocalHost, 0);
}

QString DirectoryServer::base() const
{
    return u"http://127.0.0.1:"_s + QString::number(m_server.serverPort());
}

QList<DirectoryServer::Station> DirectoryServer::sampleStations(int count)
{
    static const QString tags[] = {u"jazz,smooth jazz"_s, u"rock,classic rock"_s, u"news,talk"_s, u"pop"_s,
                                   QString()};
    static const QString countries[][2] = {
        {u"Austria"_s, u"AT"_s}, {u"Germany"_s, u"DE"_s}, {u"France"_s, u"FR"_s}};
    static const QString languages[][2] = {
        {u"german"_s, u"de"_s}, {u"german,english"_s, u"de,en"_s}, {u"french"_s, u"fr"_s}};
    static const QString codecs[] = {u"MP3"_s, u"AAC"_s, u"AAC+"_s, u"OGG"_s};
    QList<Station> list;
    for (int i = 0; i < count; ++i) {
        const QString n = QString::number(i).rightJustified(5, u'0');
        Station s;
        s.uuid = u"00000000-0000-4000-8000-0000000%1"_s.arg(n);
        s.name = u"Station "_s + n;
        s.url = u"http://radio.example/"_s + n + u".pls"_s;
        s.urlResolved = u"http://stream.example/"_s + n;
        s.homepage = u"https://radio.example/"_s + n;
        s.favicon = u"https://radio.example/"_s + n + u".png"_s;
        s.tags = tags[i % 5];
        s.country = countries[i % 3][0];
        s.countryCode = countries[i % 3][1];
        s.language = languages[i % 3][0];
        s.languageCodes = languages[i % 3][1];
        s.codec = codecs[i % 4];
        s.bitrate = 64 * (1 + i % 5);
        s.votes = (i * 37) % 1000;
        s.clickCount = (i * 53) % 500;
        list.append(s);
    }
    return list;
}

QByteArray DirectoryServer::stationsJson(const QList<Station> &list)
{
    QJsonArray array;
    for (const Station &s : list)
        array.append(stationObject(s));
    return QJsonDocument(array).toJson(QJsonDocument::Compact);
}

void DirectoryServer::onNewConnection()
{
    while (QTcpSocket *socket = m_server.nextPendingConnection()) {
        connect(socket, &QTcpSocket::disconnected, socket, &QObject::deleteLater);
        auto received = std::make_shared<QByteArray>();
        connect(socket, &QTcpSocket::readyRead, this, [this, socket, received] {
            if (received->endsWith("\r\n\r\n"))
                return; // answered already
            *received += socket->readAll();
            const qsizetype end = received->indexOf("\r\n\r\n");
            if (end < 0)
                return;
            received->truncate(end + 4);
            Request request;
            const QList<QByteArray> lines = received->split('\n');
            const QByteArray target = lines.value(0).split(' ').value(1);
            const qsizetype question = target.indexOf('?');
            request.path = target.left(question < 0 ? target.size() : question);
            request.query = formValues(question < 0 ? QByteArray() : target.mid(question + 1));
            for (const QByteArray &line : lines) {
                if (line.toLower().startsWith("user-agent:"))
                    request.userAgent = line.mid(11).trimmed();
            }
            requests.append(request);
            QTimer::singleShot(delayMs, socket, [this, socket, request] { answer(socket, request); });
        });
    }
}

void DirectoryServer::answer(QTcpSocket *socket, const Request &request)
{
    if (endlessPiece > 0) {
        socket->write("HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nConnection: close\r\n\r\n[");
        auto *timer = new QTimer(socket);
        connect(timer, &QTimer::timeout, socket,
                [socket, piece = QByteArray(endlessPiece, ' ')] { socket->write(piece); });
        timer->start(endlessIntervalMs);
        return;
    }
    int status = 200;
    QByteArray type = "application/json";
    QByteArray content;
    if (failStatus != 0) {
        status = failStatus;
        content = R"({"ok":false,"message":"failed"})";
    } else if (!body.isEmpty()) {
        content = body;
    } else if (files.contains(request.path)) {
        content = files.value(request.path);
        type = "application/octet-stream";
    } else {
        content = apiAnswer(request, status);
    }
    socket->write(httpAnswer(status, content, type));
    socket->disconnectFromHost();
}

QByteArray DirectoryServer::apiAnswer(const Request &request, int &status)
{
    if (request.path == "/json/stations/search")
        return search(request.query);
    if (request.path.startsWith("/json/url/"))
        return click(QString::fromUtf8(request.path.mid(10)));
    if (request.path == "/json/tags" || request.path == "/json/countries" ||
        request.path == "/json/languages" || request.path == "/json/codecs")
        return list(request.path, request.query);
    status = 404;
    return "[]";
}

QByteArray DirectoryServer::search(const QMap<QString, QString> &q) const
{
    const auto exact = [&q](const char *key) { return q.value(QLatin1StringView(key)) == u"true"; };
    const int minRate = q.value(u"bitrateMin"_s).toInt();
    QList<Station> found;
    for (const Station &s : stations) {
        if (matches(s.name, q.value(u"name"_s), exact("nameExact"), false) &&
            matches(s.tags, q.value(u"tag"_s), exact("tagExact"), true) &&
            matches(s.country, q.value(u"country"_s), exact("countryExact"), false) &&
            matches(s.language, q.value(u"language"_s), exact("languageExact"), true) &&
            matches(s.codec, q.value(u"codec"_s), true, false) && s.bitrate >= minRate)
            found.append(s);
    }
    const QString order = q.value(u"order"_s, u"name"_s);
    const auto key = [&order](const Station &s) -> QVariant {
        if (order == u"votes")
            return s.votes;
        if (order == u"clickcount")
            return s.clickCount;
        if (order == u"bitrate")
            return s.bitrate;
        if (order == u"codec")
            return s.codec.toLower();
        return s.name.toLower();
    };
    std::stable_sort(found.begin(), found.end(), [&key](const Station &a, const Station &b) {
        return QVariant::compare(key(a), key(b)) == QPartialOrdering::Less;
    });
    if (q.value(u"reverse"_s) == u"true")
        std::reverse(found.begin(), found.end());
    const int offset = q.value(u"offset"_s).toInt();
    const int limit = q.value(u"limit"_s, u"100000"_s).toInt();
    return stationsJson(found.mid(offset, limit));
}

QByteArray DirectoryServer::list(const QByteArray &path, const QMap<QString, QString> &q) const
{
    struct Value
    {
        QString name;
        QString code;
        int count = 0;
    };
    QList<Value> values;
    const auto count = [&values](const QString &name, const QString &code) {
        if (name.trimmed().isEmpty())
            return;
        const auto it =
            std::find_if(values.begin(), values.end(), [&](const Value &v) { return v.name == name; });
        if (it == values.end())
            values.append({name, code, 1});
        else
            ++it->count;
    };
    for (const Station &s : stations) {
        if (path == "/json/tags") {
            for (const QString &tag : s.tags.split(u','))
                count(tag.trimmed(), QString());
        } else if (path == "/json/countries") {
            count(s.country, s.countryCode);
        } else if (path == "/json/languages") {
            const QStringList names = s.language.split(u',');
            const QStringList codes = s.languageCodes.split(u',');
            for (qsizetype i = 0; i < names.size(); ++i)
                count(names[i].trimmed(), codes.value(i).trimmed());
        } else {
            count(s.codec, QString());
        }
    }
    if (q.value(u"order"_s) == u"stationcount")
        std::stable_sort(values.begin(), values.end(),
                         [](const Value &a, const Value &b) { return a.count < b.count; });
    else
        std::stable_sort(values.begin(), values.end(),
                         [](const Value &a, const Value &b) { return a.name < b.name; });
    if (q.value(u"reverse"_s) == u"true")
        std::reverse(values.begin(), values.end());
    const QString codeKey = path == "/json/countries" ? u"iso_3166_1"_s : u"iso_639"_s;
    QJsonArray array;
    for (const Value &v : values.mid(0, q.value(u"limit"_s, u"100000"_s).toInt())) {
        QJsonObject o{{u"name"_s, v.name}, {u"stationcount"_s, v.count}};
        if (path == "/json/countries" || path == "/json/languages")
            o.insert(codeKey, v.code);
        array.append(o);
    }
    return QJsonDocument(array).toJson(QJsonDocument::Compact);
}

QByteArray DirectoryServer::click(const QString &uuid)
{
    const auto it =
        std::find_if(stations.begin(), stations.end(), [&](const Station &s) { return s.uuid == uuid; });
    QJsonObject answer{{u"ok"_s, it != stations.end()},
                       {u"message"_s, it != stations.end() ? u"retrieved station url"_s
                                                           : u"did not find station with matching uuid"_s},
                       {u"stationuuid"_s, it != stations.end() ? it->uuid : QString()},
                       {u"name"_s, it != stations.end() ? it->name : QString()},
                       {u"url"_s, it != stations.end() ? it->urlResolved : QString()}};
    if (it != stations.end())
        ++it->clickCount;
    return QJsonDocument(answer).toJson(QJsonDocument::Compact);
}
