#include "ui/player/ucplaybar.h"

#include "controls/picturebutton.h"
#include "controls/slider.h"
#include "skin/skinparam.h"

#include <QLabel>
#include <QPainterPathStroker>
#include <QShowEvent>

namespace {

constexpr int BarHeight = 34;
constexpr int ButtonTop = 3;
constexpr int MuteLeft = 4;
constexpr int SliderLeft = 34;
constexpr int SliderWidth = 80;
constexpr int StopLeft = 152;
constexpr int CaptionLeft = 190;

// Glyphs in the picture button's 24 x 24 box.
QPainterPath playGlyph()
{
    QPainterPath path;
    path.addPolygon(QPolygonF({QPointF(7, 4.5), QPointF(19.5, 12), QPointF(7, 19.5)}));
    path.closeSubpath();
    return path;
}

QPainterPath pauseGlyph()
{
    QPainterPath path;
    path.addRoundedRect(QRectF(6, 5, 4.5, 14), 1, 1);
    path.addRoundedRect(QRectF(13.5, 5, 4.5, 14), 1, 1);
    return path;
}

QPainterPath stopGlyph()
{
    QPainterPath path;
    path.addRoundedRect(QRectF(6, 6, 12, 12), 1.5, 1.5);
    return path;
}

QPainterPath speaker()
{
    QPainterPath path;
    path.addPolygon(QPolygonF(
        {QPointF(2, 9), QPointF(6, 9), QPointF(11, 4.5), QPointF(11, 19.5), QPointF(6, 15), QPointF(2, 15)}));
    path.closeSubpath();
    return path;
}

// Lines and arcs become outlines, so that every glyph is filled alike.
QPainterPath outline(const QPainterPath &strokes)
{
    QPainterPathStroker stroker;
    stroker.setWidth(1.8);
    stroker.setCapStyle(Qt::RoundCap);
    return stroker.createStroke(strokes);
}

QPainterPath soundGlyph()
{
    QPainterPath waves;
    waves.arcMoveTo(QRectF(8, 8, 8, 8), -50);
    waves.arcTo(QRectF(8, 8, 8, 8), -50, 100);
    waves.arcMoveTo(QRectF(6, 4.5, 15, 15), -50);
    waves.arcTo(QRectF(6, 4.5, 15, 15), -50, 100);
    return speaker().united(outline(waves));
}

QPainterPath mutedGlyph()
{
    QPainterPath cross;
    cross.moveTo(14.5, 9);
    cross.lineTo(20.5, 15);
    cross.moveTo(20.5, 9);
    cross.lineTo(14.5, 15);
    return speaker().united(outline(cross));
}

ucPictureButton *newButton(QWidget *parent, const char *name, const QString &text, const QPainterPath &glyph,
                           const QPainterPath &pressedGlyph = {})
{
    auto *button = new ucPictureButton(parent);
    button->setObjectName(QLatin1StringView(name));
    button->setAccessibleName(text);
    button->setToolTip(text);
    button->setGlyph(glyph, pressedGlyph);
    button->resize(button->sizeHint());
    return button;
}

} // namespace

ucPlayBar::ucPlayBar(QWidget *parent)
    : QWidget(parent), lbPlayBar(new QLabel(this)),
      cmdDSPlay(newButton(this, "cmdDSPlay", tr("Play"), playGlyph())),
      cmdDSPause(newButton(this, "cmdDSPause", tr("Pause"), pauseGlyph())),
      cmdDSStop(newButton(this, "cmdDSStop", tr("Stop"), stopGlyph())),
      cmdDSMute(newButton(this, "cmdDSMute", tr("Mute"), soundGlyph(), mutedGlyph())),
      ucSlider1(new ucSlider(this))
{
    setObjectName(QStringLiteral("ucPlayBar"));
    lbPlayBar->setObjectName(QStringLiteral("lbPlayBar"));
    lbPlayBar->setTextFormat(Qt::PlainText);
    cmdDSMute->setToggle(true);
    ucSlider1->setObjectName(QStringLiteral("ucSlider1"));
    ucSlider1->setAccessibleName(tr("Volume"));
    ucSlider1->setRange(0, VolumeMaximum);
    ucSlider1->setPageStep(10);
    ucSlider1->setValue(VolumeMaximum);

    cmdDSMute->move(MuteLeft, ButtonTop);
    ucSlider1->setGeometry(SliderLeft, (BarHeight - ucSlider1->sizeHint().height()) / 2, SliderWidth,
                           ucSlider1->sizeHint().height());
    cmdDSStop->move(StopLeft, ButtonTop);
    setMinimumHeight(BarHeight);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    showStopped();

    connect(cmdDSPlay, &ucPictureButton::clicked, this, [this] {
        showPlaying();
        emit Click(QStringLiteral("Play"));
    });
    connect(cmdDSPause, &ucPictureButton::clicked, this, [this] {
        showPlayButton(true);
        emit Click(QStringLiteral("Pause"));
    });
    connect(cmdDSStop, &ucPictureButton::clicked, this, [this] {
        showStopped();
        emit Click(QStringLiteral("Stop"));
    });
    // The button has toggled before it reports the click.
    connect(cmdDSMute, &ucPictureButton::clicked, this,
            [this](bool muted) { emit Click(muted ? QStringLiteral("Mute") : QStringLiteral("NoMute")); });
    connect(ucSlider1, &ucSlider::valueChanged, this, &ucPlayBar::Volume);
}

QString ucPlayBar::Caption() const
{
    return lbPlayBar->text();
}

void ucPlayBar::setCaption(const QString &caption)
{
    lbPlayBar->setText(caption);
}

void ucPlayBar::SetState(const QString &state)
{
    const QString look = state.toLower();
    if (look == u"stop")
        showStopped();
    else if (look == u"play")
        showPlaying();
}

bool ucPlayBar::press(const QString &key)
{
    const std::pair<QString, ucPictureButton *> buttons[] = {{QStringLiteral("Play"), cmdDSPlay},
                                                             {QStringLiteral("Pause"), cmdDSPause},
                                                             {QStringLiteral("Stop"), cmdDSStop}};
    for (const auto &[name, button] : buttons) {
        if (name == key && button->isEnabled() && button->x() != ParkedLeft) {
            button->click();
            return true;
        }
    }
    return false;
}

int ucPlayBar::volume() const
{
    return ucSlider1->value();
}

void ucPlayBar::setVolume(int value)
{
    ucSlider1->setValue(value);
}

void ucPlayBar::setThemeColors(const ThemeColors &colors)
{
    for (ucPictureButton *button : {cmdDSPlay, cmdDSPause, cmdDSStop, cmdDSMute})
        button->setThemeColors(colors);
    ucSlider1->setThemeColors(colors);
    QPalette captionPalette = lbPlayBar->palette();
    captionPalette.setColor(QPalette::WindowText, QColor::fromRgba(colors.windowText));
    lbPlayBar->setPalette(captionPalette);
}

QSize ucPlayBar::sizeHint() const
{
    return {CaptionLeft + 200, BarHeight};
}

void ucPlayBar::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
    if (event->spontaneous())
        return;
    cmdDSStop->setEnabled(false);
    lbPlayBar->clear();
}

void ucPlayBar::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    lbPlayBar->setGeometry(CaptionLeft, 0, qMax(0, width() - CaptionLeft - 4), height());
}

void ucPlayBar::showStopped()
{
    cmdDSStop->setEnabled(false);
    showPlayButton(true);
}

void ucPlayBar::showPlaying()
{
    showPlayButton(false);
    cmdDSStop->setEnabled(true);
}

void ucPlayBar::showPlayButton(bool play)
{
    // The parked button is hidden as well, so that Tab and screen readers skip it.
    ucPictureButton *shown = play ? cmdDSPlay : cmdDSPause;
    ucPictureButton *parked = play ? cmdDSPause : cmdDSPlay;
    const bool hadFocus = parked->hasFocus();
    parked->move(ParkedLeft, ButtonTop);
    parked->hide();
    shown->move(ShownLeft, ButtonTop);
    shown->show();
    if (hadFocus)
        shown->setFocus();
}
