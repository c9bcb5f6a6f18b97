#pragma once

#include <QByteArray>
#include <QCoreApplication>
#include <QList>
#include <QString>
#include <QStringView>

// One station as other players' station lists hold it.
struct StationListEntry
{
    QString name;
    QString address;

    bool operator==(const StationListEntry &) const = default;
};

// Station lists in the formats other players read and write: M3U and M3U8
// (names from "#EXTINF"), PLS and XSPF. A read gives every station of the file
// or none at all, so that an import never stops half-way.
class StationListFile
{
    Q_DECLARE_TR_FUNCTIONS(StationListFile)

public:
    enum class Format
    {
        M3u8,
        Pls,
        Xspf,
    };

    struct ReadResult
    {
        QList<StationListEntry> entries;
        // Entries left out because their address is no internet address
        // (a relative path, "file://", ...).
        int refused = 0;
        // Why the file gave no stations; empty when it gave some.
        QString error;
    };

    // Bounds that keep any file quick to read: larger files are refused whole.
    static constexpr qint64 maxFileBytes = 16 * 1024 * 1024;
    static constexpr int maxEntries = 100000;
    static constexpr int maxAddressLength = 4096;

    // The format is told by the content, whatever the file is called.
    static ReadResult read(const QByteArray &bytes);
    static ReadResult readFile(const QString &path);

    static QByteArray write(Format format, const QList<StationListEntry> &entries);
    // Replaces the file only once the whole list is written. Empty on
    // success, else the reason.
    static QString writeFile(const QString &path, Format format, const QList<StationListEntry> &entries);
    // ".pls" and ".xspf" (any case) name their format; anything else is M3U8.
    static Format formatForPath(const QString &path);

    // An absolute http or https address with a host, on one line and without
    // blanks: what a station may be played from.
    static bool isInternetAddress(QStringView address);
};
