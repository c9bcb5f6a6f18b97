#pragma once

#include "catalogue/station.h"

#include <QByteArray>
#include <QCoreApplication>
#include <QList>
#include <QString>

// One station as the open station directory describes it.
struct DirectoryStation
{
    QString stationUuid;
    QString name;
    QString url;
    QString urlResolved;
    QString homepage;
    QString favicon;
    QString tags; // comma-separated
    QString country;
    QString language; // comma-separated
    QString codec;
    int bitrate = 0; // kbit/s, 0 when unknown
    qint64 votes = 0;
    qint64 clickCount = 0;

    // What to play and store: the address the directory resolved (playlists
    // and redirects followed) when it has one, else the one it was given.
    QString streamAddress() const;
    QString firstTag() const;

    bool operator==(const DirectoryStation &) const = default;
};

// A value of a filter list (a tag, country, language or codec) with the
// number of stations that have it.
struct DirectoryFilterValue
{
    QString name;
    int stationCount = 0;

    bool operator==(const DirectoryFilterValue &) const = default;
};

// The directory's JSON answers. Anything may come from a server: missing
// fields read as empty, values of the wrong type are ignored, texts are cut
// to a bound, and at most a given number of entries is kept.
class DirectoryJson
{
    Q_DECLARE_TR_FUNCTIONS(DirectoryJson)

public:
    static constexpr qsizetype maxTextLength = 2048;

    template <typename T> struct Parsed
    {
        QList<T> values;
        QString error; // empty when the answer was a list
    };

    // An array of station objects; entries that are no object or have no
    // address are skipped.
    static Parsed<DirectoryStation> stations(const QByteArray &json, int maxCount);
    // An array of {"name", "stationcount"} objects, as the tag, country,
    // language and codec lists are.
    static Parsed<DirectoryFilterValue> filterValues(const QByteArray &json, int maxCount);
};

// A directory result as a catalogue station: genre from its first tag, bit
// rate, format from its codec, the home page as information address and the
// new-station defaults. The fields are taken as they come; adding the station
// to the catalogue makes them safe (StationExchange::addNew).
Station toCatalogueStation(const DirectoryStation &result, const QString &category = QString());

// "mp3", "aac", "ogg", ... from a codec as the directory names it; empty when
// the directory does not know it.
QString formatFromCodec(const QString &codec);

// The category of stations added from the directory when none is chosen.
inline const QString directoryCategory = QStringLiteral("Directory");
