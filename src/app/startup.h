#pragma once

#include <QCoreApplication>
#include <QString>

struct ProgramParts;
class AppWindows;

// The program's entry sequence and its common closing procedure.
class Startup
{
    Q_DECLARE_TR_FUNCTIONS(Startup)

public:
    Startup(ProgramParts &parts, AppWindows &windows);

    // The versions whose catalogue the upgrade replaces, and the marker it leaves.
    static inline const QString catalogueFileName = QStringLiteral("Stations.txt");
    static constexpr int upgradedVersion = 32;
    // In the data folder: one line (size and SHA-256) per installed station list
    // taken over, so that no installed file is ever taken over twice.
    static inline const QString takenOverFileName = QStringLiteral("Stations.taken");

    // Prepares everything and shows the main window, or the recorder window
    // when commandLine holds two characters or more after trimming. Returns
    // true when a window was shown; false after a fatal error before that.
    bool SubMain(const QString &commandLine);

    // Saves the catalogue when changed, stores the filters, unloads the
    // windows, removes the skin and ends the process. Runs once.
    void close();
    // The program is told to end (a signal): every window unloads first, as
    // when the user closes it, so the station list sweeps its edits into the
    // catalogue; then the closing procedure runs.
    void terminate();
    bool hasClosed() const { return m_closing; }
    // Where start-up found the data folder.
    const QString &dataFolder() const { return m_dataFolder; }

    static bool isUpgradeVersion(int version);

private:
    static QString fatalTitle();
    void prepareDataFolder();
    void takeOverInstalledList(bool upgrade);
    bool replaceCatalogue(const QByteArray &installed, bool upgrade);
    void loadStartupSettings();

    ProgramParts &m_parts;
    QString m_dataFolder;
    AppWindows &m_windows;
    bool m_windowShown = false;
    bool m_closing = false;
};
