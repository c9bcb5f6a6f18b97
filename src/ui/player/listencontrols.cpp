#include "ui/player/listencontrols.h"

#include "player/mediaplayer.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSlider>
#include <QTime>

#include <climits>

namespace {

QString clock(qint64 milliseconds)
{
    const QTime time = QTime(0, 0).addMSecs(int(qMax<qint64>(0, milliseconds)));
    return time.toString(milliseconds >= 3600000 ? QStringLiteral("h:mm:ss") : QStringLiteral("m:ss"));
}

QPushButton *newButton(const char *name, const QString &text)
{
    auto *button = new QPushButton(text);
    button->setObjectName(QLatin1StringView(name));
    button->setAutoDefault(false);
    return button;
}

} // namespace

ListenControls::ListenControls(MediaPlayer &player, QWidget *parent)
    : QWidget(parent), m_player(player), lblStation(new QLabel), lblTitle(new QLabel),
      cmdPlay(newButton("cmdPlay", tr("Play"))), cmdPause(newButton("cmdPause", tr("Pause"))),
      cmdStop(newButton("cmdStop", tr("Stop"))), sldVolume(new QSlider(Qt::Horizontal)),
      sldPosition(new QSlider(Qt::Horizontal)), lblPosition(new QLabel)
{
    setObjectName(QStringLiteral("ListenControls"));
    lblStation->setObjectName(QStringLiteral("lblStation"));
    lblTitle->setObjectName(QStringLiteral("lblTitle"));
    lblPosition->setObjectName(QStringLiteral("lblPosition"));
    for (QLabel *label : {lblStation, lblTitle, lblPosition})
        label->setTextFormat(Qt::PlainText); // names and titles are never markup
    QFont bold = lblStation->font();
    bold.setBold(true);
    bold.setPointSizeF(bold.pointSizeF() * 1.2);
    lblStation->setFont(bold);
    lblTitle->setWordWrap(true);
    sldVolume->setObjectName(QStringLiteral("sldVolume"));
    sldVolume->setAccessibleName(tr("Volume"));
    sldVolume->setRange(0, 100);
    sldVolume->setValue(m_player.volume());
    sldVolume->setMaximumWidth(140);
    sldPosition->setObjectName(QStringLiteral("sldPosition"));
    sldPosition->setAccessibleName(tr("Position"));
    sldPosition->setSingleStep(5000);
    sldPosition->setPageStep(30000);

    auto *buttons = new QHBoxLayout;
    buttons->addWidget(cmdPlay);
    buttons->addWidget(cmdPause);
    buttons->addWidget(cmdStop);
    buttons->addStretch(1);
    auto *volume = new QLabel(tr("&Volume:"));
    volume->setBuddy(sldVolume);
    buttons->addWidget(volume);
    buttons->addWidget(sldVolume);
    auto *seek = new QHBoxLayout;
    seek->addWidget(sldPosition, 1);
    seek->addWidget(lblPosition);

    auto *top = new QVBoxLayout(this);
    top->addWidget(lblStation);
    top->addWidget(lblTitle);
    top->addLayout(seek);
    top->addLayout(buttons);
    top->addStretch(1);

    connect(cmdPlay, &QPushButton::clicked, &m_player, &MediaPlayer::play);
    connect(cmdPause, &QPushButton::clicked, &m_player, &MediaPlayer::pause);
    connect(cmdStop, &QPushButton::clicked, &m_player, &MediaPlayer::stop);
    connect(sldVolume, &QSlider::valueChanged, &m_player, &MediaPlayer::setVolume);
    // A drag seeks where it is let go; a key or a click on the groove at once.
    connect(sldPosition, &QSlider::actionTriggered, this, [this] {
        if (!sldPosition->isSliderDown())
            m_player.setPosition(sldPosition->sliderPosition());
    });
    connect(sldPosition, &QSlider::sliderReleased, this,
            [this] { m_player.setPosition(sldPosition->sliderPosition()); });
    connect(&m_player, &MediaPlayer::mediaChanged, this, &ListenControls::showMedia);
    connect(&m_player, &MediaPlayer::titleChanged, this, &ListenControls::showTitle);
    connect(&m_player, &MediaPlayer::PlayStateChange, this, &ListenControls::showState);
    connect(&m_player, &MediaPlayer::positionChanged, this, &ListenControls::showPosition);
    showMedia();
    showState(m_player.playState());
}

void ListenControls::setStation(const QString &name)
{
    lblStation->setText(name);
}

void ListenControls::showMedia()
{
    showTitle(m_player.title());
    const qint64 length = m_player.duration();
    sldPosition->setVisible(length > 0);
    lblPosition->setVisible(length > 0);
    sldPosition->setRange(0, int(qMin<qint64>(length, INT_MAX)));
    showPosition(m_player.position());
}

void ListenControls::showTitle(const QString &title)
{
    lblTitle->setText(title);
    lblTitle->setVisible(!title.isEmpty());
}

void ListenControls::showState(int state)
{
    cmdPlay->setEnabled(state != MediaPlayer::Playing);
    cmdPause->setEnabled(state == MediaPlayer::Playing);
    cmdStop->setEnabled(!m_player.URL().isEmpty() && state != MediaPlayer::Stopped);
}

void ListenControls::showPosition(qint64 milliseconds)
{
    if (!sldPosition->isSliderDown())
        sldPosition->setValue(int(qMin<qint64>(milliseconds, INT_MAX)));
    lblPosition->setText(clock(milliseconds) + QStringLiteral(" / ") + clock(m_player.duration()));
}
