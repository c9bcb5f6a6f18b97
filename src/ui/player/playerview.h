#pragma once

#include <QPointer>
#include <QWidget>

#include <functional>

class MediaPlayer;
class QMenu;

// The widget a player shows itself in: its pictures where the media has them,
// the keys pressed on it, told as KeyDown, and the player's own context menu
// (play, pause, stop, mute, full screen) while enableContextMenu is on.
class PlayerView : public QWidget
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(PlayerView)

public:
    // The view takes player as its child; surface, when there is one, is the
    // widget the player draws its pictures on.
    PlayerView(MediaPlayer *player, QWidget *surface, QWidget *parent = nullptr);

    MediaPlayer &player() const { return *m_player; }
    bool enableContextMenu() const { return m_contextMenu; }
    void setEnableContextMenu(bool enabled);

signals:
    // A key pressed while the view has the focus (a Qt::Key value); the view
    // itself does nothing with it.
    void KeyDown(int key);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void showContextMenu(const QPoint &globalPos);

    MediaPlayer *m_player;
    bool m_contextMenu = true;
    QPointer<QMenu> m_menu;
};

// Makes a player and the view it shows in; the view belongs to owner.
using MediaPlayerFactory = std::function<PlayerView *(QWidget *owner)>;
