#include "catalogue/stationexchange.h"

#include "catalogue/catalogue.h"
#include "catalogue/playlist.h"
#include "catalogue/stationnames.h"

#include <QCoreApplication>
#include <QSet>
#include <QUrl>

namespace StationExchange {

namespace {

bool isControl(QChar c)
{
    return c.unicode() < 0x20 || c.unicode() == 0x7f;
}

// Cuts at most at length, never between the two halves of a surrogate pair.
void cut(QString &text, qsizetype length)
{
    if (text.size() <= length)
        return;
    text.truncate(length);
    if (!text.isEmpty() && text.back().isHighSurrogate())
        text.chop(1);
}

// An internet address fit for a catalogue line, or empty when there is none. A
// separator inside is percent-encoded, which leads to the same place; any
// other change to fit would lead elsewhere.
QString storableAddress(const QString &address, const QString &separator)
{
    QString trimmed = address.trimmed();
    if (trimmed.contains(separator))
        trimmed = QUrl(trimmed).toString(QUrl::FullyEncoded);
    if (trimmed.contains(separator) || !StationListFile::isInternetAddress(trimmed))
        return QString();
    return trimmed;
}

QString folded(const QString &address)
{
    return address.toCaseFolded();
}

} // namespace

QString separatorOf(const Catalogue &catalogue)
{
    return catalogue.separator.isEmpty() ? Catalogue::defaultSeparator : catalogue.separator;
}

QString safeField(QStringView text, const QString &separator, qsizetype maxLength)
{
    QString result;
    // One character beyond the bound shows whether the cut splits a pair.
    const QStringView head = text.first(qMin(text.size(), maxLength + 1));
    result.reserve(head.size());
    // A run of line ends becomes one blank: "Jazz\r\nOne" reads "Jazz One".
    for (const QChar c : head) {
        if (!isControl(c))
            result += c;
        else if (!result.endsWith(u' '))
            result += u' ';
    }
    if (!separator.isEmpty() && result.contains(separator)) {
        const QString replacement =
            QStringLiteral("+-").contains(separator) ? QStringLiteral(" ") : QStringLiteral("+-");
        result.replace(separator, replacement);
        // A replacement next to part of a longer separator can form it anew;
        // removing shortens the text, so this ends.
        while (result.contains(separator))
            result.remove(separator);
    }
    cut(result, maxLength);
    return result;
}

QString safeName(QStringView text, const QString &separator)
{
    QString name = StationNames::cleanName(safeField(text, separator));
    qsizetype start = 0;
    while (start < name.size() && (name[start] == u'#' || name[start] == u' '))
        ++start;
    return name.mid(start);
}

Station fromListEntry(const StationListEntry &entry, const QString &category)
{
    Station station = Station::newStation();
    station.Name = entry.name;
    station.StreamURL = entry.address;
    station.Category = category;
    return station;
}

StationListEntry toListEntry(const Station &station)
{
    QString address = station.StreamURL.trimmed();
    // The shortest reference is "ssrn#" with one digit and ".pls".
    if (Playlist::isDirectoryReference(address) && address.size() >= 10)
        address = Playlist::playlistServiceAddress(Playlist::directoryNumber(address));
    else if (!address.isEmpty() && !address.contains(u"://"))
        address.prepend(QStringLiteral("http://"));
    return {station.Name, address};
}

QList<StationListEntry> toListEntries(const QList<Station> &stations)
{
    QList<StationListEntry> entries;
    entries.reserve(stations.size());
    for (const Station &station : stations)
        entries.append(toListEntry(station));
    return entries;
}

AddResult addNew(Catalogue &catalogue, const QList<Station> &stations)
{
    const QString separator = separatorOf(catalogue);
    // One pass over the catalogue, then one look-up per station: a large
    // catalogue is not searched once for every station added.
    QSet<QString> present;
    present.reserve(catalogue.stationCount() + stations.size());
    for (int i = 1; i <= catalogue.stationCount(); ++i) {
        if (!catalogue.at(i).Deleted)
            present.insert(folded(catalogue.at(i).StreamURL));
    }

    AddResult result;
    for (const Station &given : stations) {
        const QString address = storableAddress(given.StreamURL, separator);
        if (address.isEmpty()) {
            ++result.refused;
            continue;
        }
        const QString key = folded(address);
        if (present.contains(key)) {
            ++result.duplicates;
            continue;
        }
        present.insert(key);

        Station s = given;
        s.StreamURL = address;
        s.Name = safeName(given.Name, separator);
        if (s.Name.isEmpty())
            s.Name = safeName(QUrl(address).host(), separator);
        for (QString *field :
             {&s.Genre, &s.BitRate, &s.Format, &s.Category, &s.OutputFile, &s.LastDate, &s.CallSign})
            *field = safeField(*field, separator);
        // The reader trims this one; stored trimmed, it reads back the same.
        s.InfoUrl =
            StationNames::trimBlanks(safeField(given.InfoUrl, separator, StationListFile::maxAddressLength));
        s.Deleted = false;
        catalogue.categories.add(s.Category);
        result.added.append(catalogue.append(std::move(s)));
    }
    if (!result.added.isEmpty())
        catalogue.dirty = true;
    return result;
}

QString summary(const AddResult &result)
{
    // "label: number" reads right for any number without plural forms.
    const auto part = [](const char *label, qsizetype n) {
        return QCoreApplication::translate("StationExchange", label).arg(n);
    };
    QStringList parts{part(QT_TRANSLATE_NOOP("StationExchange", "Stations added: %1"), result.added.size())};
    if (result.duplicates > 0)
        parts.append(
            part(QT_TRANSLATE_NOOP("StationExchange", "already in the catalogue: %1"), result.duplicates));
    if (result.refused > 0)
        parts.append(part(QT_TRANSLATE_NOOP("StationExchange", "without an internet stream address: %1"),
                          result.refused));
    return parts.join(QStringLiteral("; ")) + u'.';
}

} // namespace StationExchange
