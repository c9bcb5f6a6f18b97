#pragma once

#include "catalogue/station.h"

#include <QSet>
#include <QStringList>

#include <vector>

class Prompt;

// The distinct categories seen while loading, in order of first appearance.
// Keys compare without regard to case; the list begins with the empty entry.
class CategoryList
{
public:
    CategoryList();

    // False when an equal key (any case) is already there.
    bool add(const QString &category);
    const QStringList &items() const { return m_items; }

private:
    QStringList m_items;
    QSet<QString> m_keys;
};

// The station catalogue "Stations.txt": the Stations array (element 0 unused,
// stations at 1 to stationCount()), its version, separator and categories.
class Catalogue
{
public:
    static inline const QString defaultSeparator = QStringLiteral("\u00B1");
    // What load tells the user when the file cannot be read whole.
    static QString damagedMessage();

    Catalogue();

    // The data folder followed by "Stations.txt".
    static QString cataloguePath();

    // Reads the catalogue file. A damaged line stops the load with a message
    // through prompt; what was read before it stays loaded.
    void load(Prompt &prompt, const QString &appTitle);
    // Writes the whole catalogue, keeping the previous file as ".bck". Throws
    // AppError when the new file cannot be written; clears the changed flag.
    void save();

    int stationCount() const { return static_cast<int>(m_stations.size()) - 1; }
    Station &at(int index) { return m_stations.at(static_cast<std::size_t>(index)); }
    const Station &at(int index) const { return m_stations.at(static_cast<std::size_t>(index)); }
    // Appends at stationCount() + 1 and returns that index. Amortised: no copy of the whole array.
    int append(Station station);
    // Empties the array (count 0). Version, separator, categories and the
    // changed flag stay as they are.
    void removeAll();

    QString version;
    QString separator;
    CategoryList categories;
    // Set by every change of a station, cleared by save().
    bool dirty = false;

    // Imports every "*.pls" of folder with the chosen variant, then saves and reloads.
    void importFolder(const QString &folder, const QString &genre, bool secondVariant, Prompt &prompt,
                      const QString &appTitle);
    // A saved directory playlist "name _#_ bitrate _#_ number.pls". True when a station was appended.
    bool importPlaylistFile(const QString &folder, const QString &fileName, const QString &genre);
    // Any playlist file; the bit rate comes from the file name's last word.
    bool importPlaylistFile2(const QString &folder, const QString &fileName, const QString &genre);

    // Case-insensitive search of StreamURL over elements 0 to the count.
    bool hasStreamUrl(const QString &url) const;

    // The text of one station line as the writer produces it.
    QString stationLine(const Station &station) const;

private:
    bool appendImported(const QString &titleLine, const QString &streamUrl, const QString &genre,
                        const QString &bitRate);

    std::vector<Station> m_stations;
};
