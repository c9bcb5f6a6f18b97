#include "app/frmsettings.h"

#include "base/apperror.h"
#include "base/settingsstore.h"
#include "base/trimtool.h"
#include "directory/serverdiscovery.h"
#include "recorder/songcutter.h"
#include "recorder/songfileoptions.h"

#include <QCheckBox>
#include <QComboBox>
#include <QDialogButtonBox>
#include <QFormLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

FrmSettings::FrmSettings(TrimTool &trimTool, QWidget *parent)
    : QDialog(parent), m_trimTool(trimTool), m_txtTrimMP3(new QLineEdit(this)),
      m_chkSongNotifications(new QCheckBox(tr("Show a notification when the song changes"), this)),
      m_txtDirectoryServer(new QLineEdit(this)), m_lblServerError(new QLabel(this)),
      m_chkWriteTags(new QCheckBox(tr("Write tags to song files"), this)),
      m_cboPartialSongs(new QComboBox(this)),
      m_chkQuietCut(new QCheckBox(SongCutter::quietSearchCaption(), this))
{
    setObjectName(QStringLiteral("FrmSettings"));
    setWindowTitle(tr("Settings"));
    setModal(true);

    m_txtTrimMP3->setObjectName(QStringLiteral("txtTrimMP3"));
    m_txtTrimMP3->setText(m_trimTool.command);
    m_txtTrimMP3->setMinimumWidth(460);

    m_txtDirectoryServer->setObjectName(QStringLiteral("txtDirectoryServer"));
    m_txtDirectoryServer->setText(SettingsStore::getSetting(SettingsStore::DirectoryServer));
    m_txtDirectoryServer->setPlaceholderText(tr("The directory's own servers"));
    m_txtDirectoryServer->setToolTip(
        tr("A mirror of the station directory, for example http://127.0.0.1:8080; "
           "leave it empty to use the directory's own servers."));
    m_txtDirectoryServer->setAccessibleName(tr("Station directory server"));
    m_lblServerError->setObjectName(QStringLiteral("lblServerError"));
    m_lblServerError->setWordWrap(true);
    m_lblServerError->hide();

    auto *hint = new QLabel(tr("%APP% stands for the program's folder, %MP3FILE% for the recording to trim."), this);
    hint->setWordWrap(true);
    hint->setEnabled(false);

    m_chkSongNotifications->setObjectName(QStringLiteral("chkSongNotifications"));
    m_chkSongNotifications->setChecked(songNotifications());
    m_chkSongNotifications->setToolTip(
        tr("While a station plays and no window of the program is active, the desktop shows each new song."));

    auto *buttons = new QDialogButtonBox(this);
    auto *cmdOk = buttons->addButton(tr("OK"), QDialogButtonBox::AcceptRole);
    auto *cmdCancel = buttons->addButton(tr("Cancel"), QDialogButtonBox::RejectRole);
    auto *cmdSearch = buttons->addButton(tr("Restore Default"), QDialogButtonBox::ResetRole);
    cmdOk->setObjectName(QStringLiteral("cmdOk"));
    cmdCancel->setObjectName(QStringLiteral("cmdCancel"));
    cmdSearch->setObjectName(QStringLiteral("cmdSearch"));
    cmdOk->setDefault(true);

    connect(cmdOk, &QPushButton::clicked, this, &FrmSettings::cmdOkClick);
    connect(cmdCancel, &QPushButton::clicked, this, &QDialog::reject);
    connect(cmdSearch, &QPushButton::clicked, this, &FrmSettings::cmdSearchClick);

    const SongFileOptions songFiles = SongFileOptions::fromStore();
    m_chkWriteTags->setObjectName(QStringLiteral("chkWriteTags"));
    m_chkWriteTags->setChecked(songFiles.writeTags);
    m_cboPartialSongs->setObjectName(QStringLiteral("cboPartialSongs"));
    // In the order of SongFileOptions::PartialSongs.
    m_cboPartialSongs->addItems({tr("Keep them beside the others"),
                                 tr("Move them into the folder \"incomplete\""), tr("Delete them")});
    m_cboPartialSongs->setCurrentIndex(int(songFiles.partialSongs));
    m_chkQuietCut->setObjectName(QStringLiteral("chkQuietCut"));
    m_chkQuietCut->setChecked(songFiles.cutAtQuietMoment);
    m_chkQuietCut->setToolTip(tr("Off: a song file begins at the whole frame nearest the interval before its "
                                 "title, as the station sends it."));

    auto *form = new QFormLayout;
    form->addRow(tr("MP3 trimming tool:"), m_txtTrimMP3);
    form->addRow(tr("Station directory server:"), m_txtDirectoryServer);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(form);
    layout->addWidget(hint);
    layout->addWidget(m_lblServerError);
    layout->addWidget(m_chkSongNotifications);
    auto *songForm = new QFormLayout;
    songForm->addRow(QString(), m_chkWriteTags);
    songForm->addRow(tr("Partial songs:"), m_cboPartialSongs);
    songForm->addRow(QString(), m_chkQuietCut);
    auto *partialHint =
        new QLabel(tr("The first and the last song of a recording hold only part of the song."), this);
    partialHint->setWordWrap(true);
    partialHint->setEnabled(false);
    layout->addLayout(songForm);
    layout->addWidget(partialHint);
    layout->addWidget(buttons);
}

void FrmSettings::cmdOkClick()
{
    // An address that is none would only fail every search later: say why now.
    const QString server = m_txtDirectoryServer->text().trimmed();
    const QString error = server.isEmpty() ? QString() : ServerDiscovery::checkBase(server);
    m_lblServerError->setText(error);
    m_lblServerError->setVisible(!error.isEmpty());
    if (!error.isEmpty()) {
        m_txtDirectoryServer->setFocus();
        return;
    }
    SettingsStore::saveSetting(SettingsStore::DirectoryServer, server);
    m_trimTool.command = m_txtTrimMP3->text();
    SettingsStore::saveSetting(SettingsStore::TrimMP3Tool, m_trimTool.command);
    SettingsStore::saveBoolean(SettingsStore::SongNotifications, m_chkSongNotifications->isChecked());
    SongFileOptions songFiles;
    songFiles.writeTags = m_chkWriteTags->isChecked();
    songFiles.partialSongs = SongFileOptions::PartialSongs(m_cboPartialSongs->currentIndex());
    songFiles.cutAtQuietMoment = m_chkQuietCut->isChecked();
    songFiles.store();
    accept();
}

bool FrmSettings::songNotifications()
{
    try {
        return SettingsStore::getBoolean(SettingsStore::SongNotifications, false);
    } catch (const AppError &) {
        // A value edited by hand into something else counts as off.
        return false;
    }
}

void FrmSettings::cmdSearchClick()
{
    m_trimTool.command.clear();
    m_trimTool.applyDefault();
    m_txtTrimMP3->setText(m_trimTool.command);
    SettingsStore::saveSetting(SettingsStore::TrimMP3Tool, m_trimTool.command);
}
