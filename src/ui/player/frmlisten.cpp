#include "ui/player/frmlisten.h"

#include "base/appinfo.h"
#include "player/mediaplayer.h"
#include "ui/player/listencontrols.h"
#include "ui/skin/themepalette.h"

#include <QCloseEvent>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>

#include <utility>

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

FrmListen::FrmListen(const LaunchOptions &launch, const ThemeColors &colors,
                     const MediaPlayerFactory &players, QWidget *parent)
    : QWidget(parent, Qt::Window), m_view(players(this)),
      m_session(new ListenSession(launch, m_view->player(), this)),
      m_controls(new ListenControls(m_view->player(), this)), lblInfo(new QLabel(this)),
      cmdFullScreen(newButton(this, "cmdFullScreen", tr("Full Screen"))),
      cmdContext(newButton(this, "cmdContext", tr("Context Menu")))
{
    setObjectName(QStringLiteral("FrmListen"));
    setWindowTitle(AppInfo::title);
    setPalette(themePalette(colors));
    setAutoFillBackground(true);
    m_view->setObjectName(QStringLiteral("MPlayer"));
    m_view->setAccessibleName(tr("Player"));
    lblInfo->setObjectName(QStringLiteral("lblInfo"));
    lblInfo->setAccessibleName(tr("Stream"));
    lblInfo->setTextFormat(Qt::PlainText);
    lblInfo->setTextInteractionFlags(Qt::TextSelectableByMouse);
    // The toggle and the player's menu start out agreeing: the menu is on.
    cmdContext->setCheckable(true);
    cmdContext->setChecked(true);
    m_view->setEnableContextMenu(true);
    m_controls->hide();
    cmdFullScreen->setToolTip(tr("Full Screen: the picture fills the screen; Escape comes back."));
    cmdContext->setToolTip(tr("Context Menu: whether a right click on the picture opens the player's menu."));

    cmdFullScreen->move(Margin, 0);
    cmdContext->move(cmdFullScreen->geometry().right() + Margin, 0);
    resize(480, 360);

    connect(m_session, &ListenSession::captionChanged, this, &FrmListen::setWindowTitle);
    connect(m_session, &ListenSession::infoChanged, lblInfo, &QLabel::setText);
    connect(m_session, &ListenSession::viewRequested, this, &FrmListen::showView);
    connect(m_session, &ListenSession::outOfSightRequested, this, [this] { move(WarmUpLeft, y()); });
    connect(m_session, &ListenSession::closeRequested, this, &FrmListen::close);
    connect(m_session, &ListenSession::stationPlayed, this, &FrmListen::stationPlayed);
    connect(m_session, &ListenSession::songChanged, this, &FrmListen::songChanged);
    connect(m_view, &PlayerView::KeyDown, m_session, [this](int key) {
        if (key == Qt::Key_Escape)
            m_session->escape();
    });
    connect(&m_view->player(), &MediaPlayer::PlayStateChange, this, &FrmListen::fitToMedia);
    connect(&m_view->player(), &MediaPlayer::mediaChanged, this, &FrmListen::fitToMedia);
    connect(cmdFullScreen, &QPushButton::clicked, m_session, &ListenSession::enterFullScreen);
    // The button toggled itself before the click arrived.
    connect(cmdContext, &QPushButton::clicked, m_view, &PlayerView::setEnableContextMenu);
}

void FrmListen::Play()
{
    m_controls->setStation(ListenTitle);
    m_session->play(ListenUrl, ListenTitle, ListenRow);
}

void FrmListen::fitToMedia()
{
    const int state = MPlayer().playState();
    // The hidden warm-up player keeps its window as it is.
    if (ListenRow == ListenSession::WarmUpRow ||
        (state != MediaPlayer::Playing && state != MediaPlayer::Paused))
        return;
    setCompact(!MPlayer().hasVideo());
    // A seek bar or a title may have come: the compact player is as tall as its controls.
    if (m_compact)
        resize(width(), m_controls->sizeHint().height() + ButtonRowOffset + Margin);
}

void FrmListen::setCompact(bool compact)
{
    if (compact == std::exchange(m_compact, compact))
        return;
    m_controls->setVisible(compact);
    cmdFullScreen->setVisible(!compact);
    cmdContext->setVisible(!compact);
    showView(m_viewWanted);
    if (compact) {
        resize(qMax(380, m_controls->sizeHint().width()), height());
    } else {
        resize(480, 360);
    }
}

void FrmListen::showView(bool visible)
{
    m_viewWanted = visible;
    if (visible && !m_compact) {
        m_view->setGeometry(0, 0, qMax(1, width()), qMax(1, playerHeight()));
        m_view->show();
    } else {
        m_view->hide();
        m_view->resize(m_view->width(), 0);
    }
}

void FrmListen::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Escape)
        m_session->escape();
    else if (!m_session->leaveFullScreen())
        QWidget::keyPressEvent(event);
}

int FrmListen::playerHeight() const
{
    return height() - ButtonRowOffset - Margin;
}

void FrmListen::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    if (m_view->isVisible())
        m_view->setGeometry(0, 0, width(), qMax(0, playerHeight()));
    m_controls->setGeometry(0, 0, width(), qMax(0, playerHeight()));
    const int top = height() - ButtonRowOffset;
    cmdFullScreen->move(cmdFullScreen->x(), top);
    cmdContext->move(cmdContext->x(), top);
    const int infoLeft = m_compact ? Margin : cmdContext->geometry().right() + 2 * Margin;
    lblInfo->setGeometry(infoLeft, top, qMax(0, width() - infoLeft - Margin), ButtonHeight);
}

void FrmListen::closeEvent(QCloseEvent *event)
{
    m_session->close();
    QWidget::closeEvent(event);
}
