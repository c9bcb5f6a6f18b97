#pragma once

#include "catalogue/station.h"
#include "catalogue/stationinput.h"

#include <QDialog>

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QPushButton;
class StreamProbe;
struct ProbeReport;

// A station's fields in one form, for adding a station or editing one: name,
// stream address, genre, category, bit rate, format, rating, information
// address, output file and one file per song. Test asks the stream address
// what it sends and fills the fields still empty from the answer. OK keeps
// the form open, with the field to fix in focus, until the station is one
// the catalogue can hold.
class StationForm : public QDialog
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(StationForm)

public:
    enum class Purpose
    {
        Add,
        Edit
    };

    // station gives the fields shown (and the ones the form does not show,
    // which stay); separator is the catalogue's field separator.
    StationForm(Purpose purpose, const Station &station, const QString &separator,
                const QStringList &categories, QWidget *parent = nullptr);

    // The station as the form shows it, addresses and name trimmed.
    Station station() const;
    // How long Test waits for an answer, in milliseconds.
    void setTestLimit(int milliseconds);

    void accept() override;

private:
    void build(const QStringList &categories);
    void showFields(const Station &station);
    void cmdTestClick();
    void showReport(const ProbeReport &report);
    QWidget *fieldWidget(StationInput::Field field) const;

    Station m_station;
    QString m_separator;
    QString m_formatGuess;
    StreamProbe *m_probe;

    QLineEdit *txtName = nullptr;
    QLineEdit *txtStreamUrl = nullptr;
    QPushButton *cmdTest = nullptr;
    QComboBox *cboGenre = nullptr;
    QComboBox *cboCategory = nullptr;
    QLineEdit *txtBitRate = nullptr;
    QComboBox *cboFormat = nullptr;
    QComboBox *cboRating = nullptr;
    QLineEdit *txtInfoUrl = nullptr;
    QLineEdit *txtOutputFile = nullptr;
    QCheckBox *chkSingleSong = nullptr;
    QLabel *lblTest = nullptr;
    QLabel *lblProblem = nullptr;
};
