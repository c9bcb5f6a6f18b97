#include "ui/player/playerview.h"

#include "player/mediaplayer.h"

#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QVBoxLayout>

PlayerView::PlayerView(MediaPlayer *player, QWidget *surface, QWidget *parent)
    : QWidget(parent), m_player(player)
{
    // Adopted before the surface, so that the player goes first when the view
    // does and never outlives the surface it draws on.
    m_player->setParent(this);
    setAutoFillBackground(true);
    QPalette black = palette();
    black.setColor(QPalette::Window, Qt::black);
    setPalette(black);
    if (surface) {
        auto *layout = new QVBoxLayout(this);
        layout->setContentsMargins(0, 0, 0, 0);
        layout->addWidget(surface);
    }
    setFocusPolicy(Qt::StrongFocus);
    // A picture may sit in widgets of its own (in full screen it is a window
    // of its own): keys and menu requests are taken wherever they land.
    installEventFilter(this);
    for (QWidget *inner : findChildren<QWidget *>())
        inner->installEventFilter(this);
}

void PlayerView::setEnableContextMenu(bool enabled)
{
    m_contextMenu = enabled;
}

bool PlayerView::eventFilter(QObject *watched, QEvent *event)
{
    if (!watched->isWidgetType())
        return false;
    if (event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent *>(event)->key();
        // Tab still moves the focus on; every other key is the owner's to act on, once.
        if (key == Qt::Key_Tab || key == Qt::Key_Backtab)
            return false;
        emit KeyDown(key);
        return true;
    }
    if (event->type() == QEvent::ContextMenu) {
        if (m_contextMenu)
            showContextMenu(static_cast<QContextMenuEvent *>(event)->globalPos());
        return true;
    }
    return false;
}

void PlayerView::showContextMenu(const QPoint &globalPos)
{
    delete m_menu;
    m_menu = new QMenu(this);
    m_menu->setObjectName(QStringLiteral("PlayerMenu"));
    MediaPlayer *player = m_player;
    m_menu->addAction(tr("Play"), player, &MediaPlayer::play)
        ->setEnabled(player->playState() != MediaPlayer::Playing);
    m_menu->addAction(tr("Pause"), player, &MediaPlayer::pause)
        ->setEnabled(player->playState() == MediaPlayer::Playing);
    m_menu->addAction(tr("Stop"), player, &MediaPlayer::stop)->setEnabled(!player->URL().isEmpty());
    QAction *muted = m_menu->addAction(tr("Mute"), player, [player](bool on) { player->setMute(on); });
    muted->setCheckable(true);
    muted->setChecked(player->mute());
    QAction *full =
        m_menu->addAction(tr("Full Screen"), player, [player](bool on) { player->setFullScreen(on); });
    full->setCheckable(true);
    full->setChecked(player->fullScreen());
    m_menu->popup(globalPos);
}
