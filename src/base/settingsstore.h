#pragma once

#include <QString>

// The per-user settings: text values under application "Tunecatch", section
// "CONFIG". Readers pass a typed default and convert what they get back.
class SettingsStore
{
public:
    // The keys.
    static inline const QString V = QStringLiteral("V");
    static inline const QString OptGenre = QStringLiteral("OptGenre");
    static inline const QString OptCategory = QStringLiteral("OptCategory");
    static inline const QString OptType = QStringLiteral("OptType");
    static inline const QString OptRating = QStringLiteral("OptRating");
    static inline const QString TrimMP3Tool = QStringLiteral("TrimMP3Tool");
    static inline const QString AppSkinOn = QStringLiteral("AppSkinOn");
    static inline const QString AppSkinFile = QStringLiteral("AppSkinFile");
    static inline const QString Theme = QStringLiteral("Theme");
    // Whether a desktop notification tells each new song ("True" or "False").
    static inline const QString SongNotifications = QStringLiteral("SongNotifications");
    // The station directory's server, "scheme://host[:port]"; empty finds the directory's own.
    static inline const QString DirectoryServer = QStringLiteral("DirectoryServer");
    // What song files carry and what becomes of partial ones (SongFileOptions).
    static inline const QString WriteTags = QStringLiteral("WriteTags");
    static inline const QString PartialSongs = QStringLiteral("PartialSongs");
    // Songs cut at the quiet moment nearest the title change (a boolean, on
    // when absent).
    static inline const QString CutAtQuietMoment = QStringLiteral("CutAtQuietMoment");
    // Beyond the nine: where the windows were left, the station grid's
    // columns and whether the recorder's monitor panel was open.
    static inline const QString MainWindow = QStringLiteral("MainWindow");
    static inline const QString MainColumns = QStringLiteral("MainColumns");
    static inline const QString RecorderWindow = QStringLiteral("RecorderWindow");
    static inline const QString RecorderMonitor = QStringLiteral("RecorderMonitor");

    static QString getSetting(const QString &key, const QString &defaultValue = {});
    static void saveSetting(const QString &key, const QString &value);
    // Removes the key (and the keys under it, "key/..."), so that readers get their default.
    static void removeSetting(const QString &key);

    // Leading-number conversion of the stored text; the default when absent.
    static qint32 getNumber(const QString &key, qint32 defaultValue);
    static void saveNumber(const QString &key, qint32 value);

    // Boolean conversion of the stored text; throws AppError on text such as "yes".
    static bool getBoolean(const QString &key, bool defaultValue);
    static void saveBoolean(const QString &key, bool value);
};
