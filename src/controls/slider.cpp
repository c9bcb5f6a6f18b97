#include "controls/slider.h"

#include <QLabel>
#include <QMouseEvent>
#include <QPainter>
#include <QStyle>

namespace {

constexpr qreal handleRadius = 7;
constexpr qreal grooveHeight = 4;

QColor color(quint32 argb)
{
    return QColor::fromRgba(argb);
}

} // namespace

ucSlider::ucSlider(QWidget *parent)
    : QAbstractSlider(parent), m_colors(Themes::paleBlue()), m_tip(new QLabel(this, Qt::ToolTip))
{
    setOrientation(Qt::Horizontal);
    setAttribute(Qt::WA_Hover);
    setFocusPolicy(Qt::StrongFocus);
    setSizePolicy(QSizePolicy::Expanding, QSizePolicy::Fixed);
    m_tip->setObjectName(QStringLiteral("ucSliderTip"));
    m_tip->setAlignment(Qt::AlignCenter);
    m_tip->setMargin(3);
    setThemeColors(m_colors);
}

void ucSlider::setThemeColors(const ThemeColors &colors)
{
    m_colors = colors;
    QPalette tipPalette = m_tip->palette();
    tipPalette.setColor(QPalette::Window, color(colors.backEdit));
    tipPalette.setColor(QPalette::WindowText, color(colors.foreEdit));
    m_tip->setPalette(tipPalette);
    m_tip->setAutoFillBackground(true);
    update();
}

QSize ucSlider::sizeHint() const
{
    return {100, int(2 * handleRadius) + 6};
}

QSize ucSlider::minimumSizeHint() const
{
    return {int(4 * handleRadius), int(2 * handleRadius) + 6};
}

QRectF ucSlider::groove() const
{
    const QRectF area = QRectF(rect()).adjusted(handleRadius + 1, 0, -handleRadius - 1, 0);
    return {area.left(), area.center().y() - grooveHeight / 2, area.width(), grooveHeight};
}

QPointF ucSlider::handleCentre() const
{
    const QRectF g = groove();
    const int span = maximum() - minimum();
    const qreal share = span > 0 ? qreal(sliderPosition() - minimum()) / span : 0;
    return {g.left() + share * g.width(), g.center().y()};
}

int ucSlider::valueAt(qreal x) const
{
    const QRectF g = groove();
    return QStyle::sliderValueFromPosition(minimum(), maximum(), qRound(x - g.left()), qRound(g.width()));
}

void ucSlider::paintEvent(QPaintEvent *)
{
    QPainter p(this);
    p.setRenderHint(QPainter::Antialiasing);
    const QRectF g = groove();
    const QPointF handle = handleCentre();
    const bool enabled = isEnabled();

    p.setPen(Qt::NoPen);
    p.setBrush(color(m_colors.grid));
    p.drawRoundedRect(g, grooveHeight / 2, grooveHeight / 2);
    QRectF filled = g;
    filled.setRight(handle.x());
    p.setBrush(enabled ? color(m_colors.backSel) : color(m_colors.grid).darker(115));
    p.drawRoundedRect(filled, grooveHeight / 2, grooveHeight / 2);

    const bool lit = enabled && (underMouse() || isSliderDown());
    p.setPen(QPen(hasFocus() ? color(m_colors.focusRect) : color(m_colors.backSel).darker(120), 1.5));
    p.setBrush(lit ? color(m_colors.backSel) : color(m_colors.back));
    p.drawEllipse(handle, handleRadius - 1, handleRadius - 1);
}

void ucSlider::mousePressEvent(QMouseEvent *event)
{
    if (event->button() != Qt::LeftButton || maximum() == minimum()) {
        event->ignore();
        return;
    }
    event->accept();
    const qreal x = event->position().x();
    const qreal handleX = handleCentre().x();
    // Took hold of the handle: keep that hold; elsewhere the handle comes to the mouse.
    m_grabOffset = qAbs(x - handleX) <= handleRadius ? x - handleX : 0;
    setSliderDown(true);
    setSliderPosition(valueAt(x - m_grabOffset));
    placeTip();
    m_tip->show();
}

void ucSlider::mouseMoveEvent(QMouseEvent *event)
{
    if (!isSliderDown()) {
        event->ignore();
        return;
    }
    event->accept();
    setSliderPosition(valueAt(event->position().x() - m_grabOffset));
}

void ucSlider::mouseReleaseEvent(QMouseEvent *event)
{
    if (!isSliderDown() || event->button() != Qt::LeftButton) {
        event->ignore();
        return;
    }
    event->accept();
    m_tip->hide();
    setSliderDown(false);
}

void ucSlider::sliderChange(SliderChange change)
{
    QAbstractSlider::sliderChange(change);
    if (isSliderDown())
        placeTip();
    update();
}

void ucSlider::placeTip()
{
    m_tip->setText(QString::number(sliderPosition()));
    m_tip->adjustSize();
    const QPointF handle = handleCentre();
    const QPoint above(qRound(handle.x()) - m_tip->width() / 2, -m_tip->height() - 2);
    m_tip->move(mapToGlobal(above));
}
