#include "ui/player/frmlisten.h"

#include "base/appinfo.h"
#include "base/launchoptions.h"
#include "catalogue/filedl.h"
#include "player/playlistfetch.h"
#include "ui/skin/themepalette.h"

#include <QCloseEvent>
#include <QCoreApplication>
#include <QDate>
#include <QKeyEvent>
#include <QLabel>
#include <QPointer>
#include <QPushButton>
#include <QUrl>

namespace {

// The buttons' row: this far above the bottom edge, under the player.
constexpr int ButtonRowOffset = 32;
constexpr int ButtonHeight = 26;
constexpr int Margin = 6;

QPushButton *newButton(QWidget *parent, const char *name, const QString &text)
{
    auto *button = new QPushButton(text, parent);
    button->setObjectName(QLatin1StringView(name));
    button->setAutoDefault(false);
    button->resize(button->sizeHint().width(), ButtonHeight);
    return button;
}

} // namespace

FrmListen::FrmListen(const LaunchOptions &launch, const ThemeColors &colors, const MediaPlayerFactory &players,
                     QWidget *parent)
    : QWidget(parent, Qt::Window), m_launch(launch), m_player(players(this)), m_fileDL(new FileDL(this)),
      lblInfo(new QLabel(this)), cmdFullScreen(newButton(this, "cmdFullScreen", tr("Full Screen"))),
      cmdContext(newButton(this, "cmdContext", tr("Context Menu")))
{
    setObjectName(QStringLiteral("FrmListen"));
    setWindowTitle(AppInfo::title);
    setPalette(themePalette(colors));
    setAutoFillBackground(true);
    m_fileDL->setObjectName(QStringLiteral("FileDL"));
    m_player->view()->setObjectName(QStringLiteral("MPlayer"));
    m_player->view()->setAccessibleName(tr("Player"));
    lblInfo->setObjectName(QStringLiteral("lblInfo"));
    lblInfo->setTextFormat(Qt::PlainText);
    lblInfo->setTextInteractionFlags(Qt::TextSelectableByMouse);
    // The toggle and the player's menu start out agreeing: the menu is on.
    cmdContext->setCheckable(true);
    cmdContext->setChecked(true);
    m_player->setEnableContextMenu(true);

    cmdFullScreen->move(Margin, 0);
    cmdContext->move(cmdFullScreen->geometry().right() + Margin, 0);
    resize(480, 360);

    connect(m_player, &MediaPlayer::PlayStateChange, this, &FrmListen::MPlayer_PlayStateChange);
    connect(m_player, &MediaPlayer::KeyDown, this, [this](int key) {
        if (key == Qt::Key_Escape)
            Escape();
    });
    connect(m_fileDL, &FileDL::DownloadComplete, this, &FrmListen::FileDL_DownloadComplete);
    connect(m_fileDL, &FileDL::DownloadError, this, &FrmListen::FileDL_DownloadError);
    connect(cmdFullScreen, &QPushButton::clicked, this, &FrmListen::cmdFullScreen_Click);
    connect(cmdContext, &QPushButton::clicked, this, &FrmListen::cmdContext_Click);
}

void FrmListen::Play()
{
    if (ListenUrl.isEmpty()) {
        setWindowTitle(QStringLiteral("Stream missing: ") + ListenTitle);
        m_player->setURL({});
        m_player->view()->hide();
        m_player->view()->resize(m_player->view()->width(), 0);
        return;
    }
    const QString lower = ListenUrl.toLower();
    if (PlaylistFetch::IsPlaylistAddress(ListenUrl)) {
        setWindowTitle(QStringLiteral("Scanning for: ") + ListenTitle);
        FetchPlaylist();
        return;
    }
    // An address naming an MP3 file is a recording: it plays at once.
    setWindowTitle(
        (lower.contains(u".mp3") ? QStringLiteral("Playing: ") : QStringLiteral("Connecting to: ")) +
        ListenTitle);
    StartPlayback(ListenUrl);
}

void FrmListen::StartPlayback(const QString &address)
{
    m_player->view()->setGeometry(0, 0, qMax(1, width()), qMax(1, playerHeight()));
    m_retries = RetryBudget;
    m_player->view()->show();
    m_address = address;
    m_player->setURL(address);
    if (ListenRow == WarmUpRow) {
        m_player->setPlayCount(WarmUpPlayCount);
        m_player->pause();
        move(WarmUpLeft, y());
    }
}

void FrmListen::FetchPlaylist()
{
    const QString address = PlaylistFetch::DownloadAddress(ListenUrl);
    lblInfo->setText(QStringLiteral("Query: ") + address);
    m_fileDL->BeginDownload(QUrl::fromUserInput(address), TagPlaying);
}

void FrmListen::FileDL_DownloadComplete(const QString &key, const QByteArray &body)
{
    if (key != TagPlaying || m_closing)
        return;
    const QString stream = PlaylistFetch::StreamFromPlaylist(body);
    if (stream.isEmpty()) {
        setWindowTitle(QStringLiteral("Station is not available: ") + ListenTitle);
        return;
    }
    setWindowTitle(QStringLiteral("Playing: ") + ListenTitle);
    lblInfo->setText(QStringLiteral("Stream: ") + stream);
    StartPlayback(stream);
}

void FrmListen::FileDL_DownloadError(const QString &key, int statusCode, const QString &statusText)
{
    if (key != TagPlaying || m_closing)
        return;
    setWindowTitle(QStringLiteral("PLS error: ") + QString::number(statusCode) + QStringLiteral(": ") +
                   statusText);
}

void FrmListen::MPlayer_PlayStateChange(int state)
{
    if (m_closing || m_failed)
        return;
    if (ListenRow == WarmUpRow && state != MediaPlayer::Paused) {
        m_player->setPlayCount(WarmUpPlayCount);
        m_player->pause();
    }
    if (state == MediaPlayer::Ready) {
        // The player fell back without playing: try the address again.
        m_player->setURL(m_address);
        --m_retries;
        const QPointer<FrmListen> alive(this);
        QCoreApplication::processEvents();
        if (!alive || m_closing || m_failed)
            return;
    }
    if (m_retries > 0) {
        if (state == MediaPlayer::Playing && ListenRow >= 0 && !m_launch.launchMode)
            emit StationPlayed(PlayedKind, ListenRow, QDate::currentDate().toString(Qt::ISODate));
    } else {
        m_player->setURL({});
        setWindowTitle(QStringLiteral("Unable to load ") + m_address);
        m_address.clear();
        m_failed = true;
    }
}

void FrmListen::cmdFullScreen_Click()
{
    if (m_player->playState() == MediaPlayer::Playing)
        m_player->setFullScreen(true);
}

void FrmListen::cmdContext_Click()
{
    // The button toggled itself before the click arrived.
    m_player->setEnableContextMenu(cmdContext->isChecked());
}

void FrmListen::Escape()
{
    if (m_player->fullScreen())
        m_player->setFullScreen(false);
    else
        close();
}

void FrmListen::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape)
        Escape();
    else if (m_player->fullScreen())
        m_player->setFullScreen(false);
    else
        QWidget::keyPressEvent(event);
}

int FrmListen::playerHeight() const
{
    return height() - ButtonRowOffset - Margin;
}

void FrmListen::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    m_player->view()->setGeometry(0, 0, width(), qMax(0, playerHeight()));
    const int top = height() - ButtonRowOffset;
    cmdFullScreen->move(cmdFullScreen->x(), top);
    cmdContext->move(cmdContext->x(), top);
    const int infoLeft = cmdContext->geometry().right() + 2 * Margin;
    lblInfo->setGeometry(infoLeft, top, qMax(0, width() - infoLeft - Margin), ButtonHeight);
}

void FrmListen::closeEvent(QCloseEvent *event)
{
    m_closing = true;
    m_fileDL->Cancel(TagPlaying);
    m_player->setURL({});
    m_player->stop();
    m_player->close();
    QWidget::closeEvent(event);
}
