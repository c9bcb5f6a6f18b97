#pragma once

#include "catalogue/station.h"

#include <QCoreApplication>
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
    Q_DECLARE_TR_FUNCTIONS(Catalogue)

public:
    static inline const QString defaultSeparator = QStringLiteral("\u00B1");
    // The first line of what load tells the user when the file cannot be
    // read whole; below it come what was wrong and where the lists are kept.
    static QString damagedMessage();

    Catalogue();

    // The data folder followed by "Stations.txt".
    static QString cataloguePath();

    // Reads the catalogue file. A damaged line stops the load with a message
    // through prompt that says what was wrong; what was read before it stays
    // loaded. The damaged file is copied aside first (".damaged", numbered
    // when one with other contents is there), so no station in it is lost.
    void load(Prompt &prompt, const QString &appTitle);
    // Reads the text of a catalogue file into this catalogue as load does.
    // Returns what stopped it, empty when the whole text was read.
    QString read(const QString &text);
    // Writes the whole catalogue, keeping the previous file as ".bck" - unless
    // the previous file was found damaged: its copy is aside already, and the
    // ".bck" still holds the list before it. Throws AppError when the new file
    // cannot be written; clears the changed flag.
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
    // The file last loaded was damaged: its ".bck" is the list to keep.
    bool m_loadedDamaged = false;
};
