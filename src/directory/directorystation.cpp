#include "directory/directorystation.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonParseError>

#include <limits>

namespace {

QString text(const QJsonObject &object, QLatin1StringView key)
{
    const QJsonValue value = object.value(key);
    return value.isString() ? value.toString().left(DirectoryJson::maxTextLength) : QString();
}

// Numbers sometimes come as text; anything else, negative or beyond the
// bound reads as 0.
qint64 number(const QJsonObject &object, QLatin1StringView key, qint64 bound)
{
    const QJsonValue value = object.value(key);
    qint64 n = 0;
    if (value.isDouble()) {
        const double d = value.toDouble();
        n = d >= 0 && d <= double(bound) ? qint64(d) : 0;
    } else if (value.isString()) {
        n = value.toString().trimmed().toLongLong();
    }
    return n >= 0 && n <= bound ? n : 0;
}

// The top-level array of an answer, or the reason there is none.
QJsonArray topArray(const QByteArray &json, QString &error)
{
    QJsonParseError parse;
    const QJsonDocument document = QJsonDocument::fromJson(json, &parse);
    if (parse.error != QJsonParseError::NoError)
        error = DirectoryJson::tr("The station directory sent a damaged answer (%1 at byte %2).")
                    .arg(parse.errorString())
                    .arg(parse.offset);
    else if (!document.isArray())
        error = DirectoryJson::tr("The station directory's answer is not a list.");
    return document.array();
}

} // namespace

QString DirectoryStation::streamAddress() const
{
    const QString resolved = urlResolved.trimmed();
    return resolved.isEmpty() ? url.trimmed() : resolved;
}

QString DirectoryStation::firstTag() const
{
    return tags.section(u',', 0, 0).trimmed();
}

DirectoryJson::Parsed<DirectoryStation> DirectoryJson::stations(const QByteArray &json, int maxCount)
{
    Parsed<DirectoryStation> parsed;
    const QJsonArray array = topArray(json, parsed.error);
    parsed.values.reserve(qMin<qsizetype>(array.size(), maxCount));
    for (const QJsonValue &value : array) {
        if (parsed.values.size() >= maxCount)
            break;
        const QJsonObject o = value.toObject();
        DirectoryStation s;
        s.url = text(o, QLatin1StringView("url"));
        s.urlResolved = text(o, QLatin1StringView("url_resolved"));
        if (s.streamAddress().isEmpty())
            continue;
        s.stationUuid = text(o, QLatin1StringView("stationuuid"));
        s.name = text(o, QLatin1StringView("name"));
        s.homepage = text(o, QLatin1StringView("homepage"));
        s.favicon = text(o, QLatin1StringView("favicon"));
        s.tags = text(o, QLatin1StringView("tags"));
        s.country = text(o, QLatin1StringView("country"));
        s.language = text(o, QLatin1StringView("language"));
        s.codec = text(o, QLatin1StringView("codec"));
        s.bitrate = int(number(o, QLatin1StringView("bitrate"), 100000));
        s.votes = number(o, QLatin1StringView("votes"), std::numeric_limits<qint32>::max());
        s.clickCount = number(o, QLatin1StringView("clickcount"), std::numeric_limits<qint32>::max());
        parsed.values.append(std::move(s));
    }
    return parsed;
}

DirectoryJson::Parsed<DirectoryFilterValue> DirectoryJson::filterValues(const QByteArray &json, int maxCount)
{
    Parsed<DirectoryFilterValue> parsed;
    const QJsonArray array = topArray(json, parsed.error);
    parsed.values.reserve(qMin<qsizetype>(array.size(), maxCount));
    for (const QJsonValue &value : array) {
        if (parsed.values.size() >= maxCount)
            break;
        const QJsonObject o = value.toObject();
        DirectoryFilterValue v{
            text(o, QLatin1StringView("name")).trimmed(),
            int(number(o, QLatin1StringView("stationcount"), std::numeric_limits<qint32>::max()))};
        if (!v.name.isEmpty())
            parsed.values.append(std::move(v));
    }
    return parsed;
}

QString formatFromCodec(const QString &codec)
{
    // "AAC+" is AAC to a player; "MP3,H.264" is a video stream's audio.
    QString format = codec.section(u',', 0, 0).trimmed().toLower().left(16);
    format.remove(u'+');
    return format == u"unknown" ? QString() : format;
}

Station toCatalogueStation(const DirectoryStation &result, const QString &category)
{
    Station station = Station::newStation();
    station.Name = result.name;
    station.Genre = result.firstTag();
    station.BitRate = result.bitrate > 0 ? QString::number(result.bitrate) : QString();
    station.Format = formatFromCodec(result.codec);
    station.Category = category.isEmpty() ? directoryCategory : category;
    station.StreamURL = result.streamAddress();
    station.InfoUrl = result.homepage.trimmed();
    return station;
}
