#include "ui/player/mediaplayer.h"

#include <QContextMenuEvent>
#include <QKeyEvent>
#include <QMenu>
#include <QWidget>

MediaPlayer::MediaPlayer(QObject *parent) : QObject(parent) {}

MediaPlayer::~MediaPlayer()
{
    delete m_menu;
}

void MediaPlayer::setEnableContextMenu(bool enabled)
{
    m_contextMenu = enabled;
}

void MediaPlayer::setView(QWidget *view)
{
    m_view = view;
    view->setFocusPolicy(Qt::StrongFocus);
    // A video surface may sit in widgets of its own (in full screen it is a
    // window of its own): keys and menu requests are taken wherever they land.
    view->installEventFilter(this);
    for (QWidget *inner : view->findChildren<QWidget *>())
        inner->installEventFilter(this);
}

bool MediaPlayer::eventFilter(QObject *watched, QEvent *event)
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

void MediaPlayer::showContextMenu(const QPoint &globalPos)
{
    delete m_menu;
    m_menu = new QMenu(m_view);
    m_menu->setObjectName(QStringLiteral("PlayerMenu"));
    m_menu->addAction(tr("Play"), this, &MediaPlayer::play)->setEnabled(playState() != Playing);
    m_menu->addAction(tr("Pause"), this, &MediaPlayer::pause)->setEnabled(playState() == Playing);
    m_menu->addAction(tr("Stop"), this, &MediaPlayer::stop)->setEnabled(!URL().isEmpty());
    QAction *muted = m_menu->addAction(tr("Mute"), this, [this](bool on) { setMute(on); });
    muted->setCheckable(true);
    muted->setChecked(mute());
    QAction *full = m_menu->addAction(tr("Full Screen"), this, [this](bool on) { setFullScreen(on); });
    full->setCheckable(true);
    full->setChecked(fullScreen());
    m_menu->popup(globalPos);
}
