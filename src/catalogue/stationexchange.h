#pragma once

#include "catalogue/station.h"
#include "catalogue/stationlistfile.h"

#include <QList>
#include <QString>
#include <QStringView>

class Catalogue;

// Stations coming into the catalogue from outside (station lists, the station
// directory) and going out to station lists. Outside text is never trusted:
// the catalogue's file has no quoting, so a separator or a line end inside a
// field would break its line.
namespace StationExchange {

// What outside text may hold at most, per field.
inline constexpr qsizetype maxFieldLength = 200;

// The separator the catalogue writes: its own, or the default before its first save.
QString separatorOf(const Catalogue &catalogue);

// Text made fit for one field of a catalogue line: control characters (CR, LF,
// TAB, ...) become blanks, the separator is replaced by "+-" (by a blank when
// that holds the separator), and at most maxLength characters are kept.
QString safeField(QStringView text, const QString &separator, qsizetype maxLength = maxFieldLength);

// A station name from outside: a safe field cleaned like any imported name (at
// most 60 characters, no file-name characters), without the leading "#" that
// would make its line a comment.
QString safeName(QStringView text, const QString &separator);

// A station from a list entry: the new-station defaults, its name and address.
Station fromListEntry(const StationListEntry &entry, const QString &category);

// A station as other players read it: a directory reference becomes its
// playlist service's address, an address without scheme gets "http://".
StationListEntry toListEntry(const Station &station);
QList<StationListEntry> toListEntries(const QList<Station> &stations);

struct AddResult
{
    // Catalogue indices of the stations appended, in the order given.
    QList<int> added;
    // Left out: the stream address is in the catalogue already (any letter case).
    int duplicates = 0;
    // Left out: the stream address is no internet address (http or https)
    // or cannot stand in a catalogue line.
    int refused = 0;
};

// Appends the stations whose stream address is new to the catalogue and to the
// ones appended before them. Every field is made safe first; a station
// without name is named after its address's host. Deleted stations do not
// count as present. Marks the catalogue changed and adds the new categories
// when anything was appended.
AddResult addNew(Catalogue &catalogue, const QList<Station> &stations);

// What an addition did, for people: "Stations added: 3; already in the catalogue: 1."
QString summary(const AddResult &result);

} // namespace StationExchange
