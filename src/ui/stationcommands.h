#pragma once

#include <QList>
#include <QObject>
#include <QPointer>

class AppState;
class FrmTC;
class KeyState;
class LynxGrid;
class PowerControl;
class QTimer;
class QWidget;
class Shell;

// What the commands need of the station list window.
class StationListHost
{
public:
    virtual ~StationListHost() = default;

    virtual LynxGrid &Grid() = 0;
    // Rebuilds the grid from the catalogue through the filters; edits of the
    // old rows are kept for the closing step.
    virtual void FillGrid() = 0;
    // Writes a grid row into the station record at index.
    virtual void WriteBack(int row, int index) = 0;
    // Sets a grid row's cells from the station record at index.
    virtual void FillRow(int row, int index) = 0;
    // Writes every edited row back into its station now, so that a save holds it.
    virtual void CommitEdits() = 0;
    // Drops the edits the list keeps for the closing step: their stations
    // have been saved, or are gone.
    virtual void ForgetEdits() = 0;
};

// The main window's commands on the current station or the whole catalogue:
// record, copy, delete, information page, playlist import, trimming, the
// about box and the web directory search.
class StationCommands : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(StationCommands)

public:
    // The outside world the commands reach.
    struct Services
    {
        Shell &shell;
        KeyState &keys;
        PowerControl &power; // for the recorder windows Record opens
    };

    static inline const QString RecordNoStation =
        QStringLiteral("Select a Station in the list below to Record.");
    static inline const QString DeleteQuestion = QStringLiteral("Do you wish to delete the Station: ");
    static inline const QString DeleteAllQuestion = QStringLiteral("Do you want to Delete ALL stations?");
    static inline const QString TrimNotStarted =
        QStringLiteral("The MP3 trimming tool could not be started:\n%1\n\n"
                       "Its command line is set under Settings.");
    static inline const QString ImportNotSaved = QStringLiteral("The station list could not be saved: ");
    static inline const QString PlaylistFilter = QStringLiteral("Playlists (*.pls);;All files (*)");
    static inline const QString RecordingFilter = QStringLiteral("MP3 files (*.mp3);;All files (*)");

    StationCommands(AppState &state, StationListHost &list, Services services, QWidget *owner);

    void Record();
    // Left Shift held: playlist import.
    void Copy();
    // Right Shift held: delete all stations.
    void Delete();
    void Info();
    void LoadPls();
    void Trim();
    void About();
    void SearchWww(const QString &text, const QString &genre);

    // Closes the recorder windows Record opened, newest first, each
    // completing its file; a Record click whose window has not opened yet
    // opens none.
    void CloseRecorders();

private:
    void TimerRecord_Timer();
    void CopyStation();
    void DeleteStation();
    void DeleteAll();
    void ImportPlaylist();
    QString currentCell(int column) const;

    AppState &m_state;
    StationListHost &m_list;
    Services m_services;
    QWidget *m_owner;
    QTimer *TimerRecord;
    QList<QPointer<FrmTC>> m_recorders;
};
