#include "controls/schemebutton.h"

#include "controls/colormix.h"
#include "controls/hovertracker.h"
#include "base/themecolors.h"

#include <QPainter>
#include <QPainterPath>

namespace {

constexpr qreal radius = 5;

} // namespace

SchemeButton::SchemeButton(const QString &text, QWidget *parent)
    : QPushButton(text, parent), m_hover(new HoverTracker(this))
{
    setThemeColors(Themes::paleBlue());
    connect(m_hover, &HoverTracker::hoverChanged, this, qOverload<>(&QWidget::update));
}

void SchemeButton::setThemeColors(const ThemeColors &colors)
{
    const auto color = [](quint32 argb) { return QColor::fromRgba(argb); };
    m_window = color(colors.window);
    m_face = color(colors.backFixed);
    m_text = color(colors.foreFixed);
    m_accentFace = color(colors.backSel);
    m_accentText = color(colors.foreSel);
    m_faceHover = mixColors(m_face, m_accentFace, 0.75);
    m_border = mixColors(m_face, color(colors.fore), 0.7);
    m_focus = color(colors.focusRect);
    update();
}

void SchemeButton::setAccent(bool accent)
{
    m_accent = accent;
    update();
}

bool SchemeButton::isHovered() const
{
    return m_hover->isHovered();
}

QColor SchemeButton::faceColor() const
{
    if (!isEnabled())
        return mixColors(m_accent ? m_accentFace : m_face, m_window, 0.45);
    if (isDown() || isChecked())
        return m_accent ? m_accentFace.darker(125) : m_accentFace;
    if (m_accent)
        return isHovered() ? m_accentFace.lighter(115) : m_accentFace;
    return isHovered() ? m_faceHover : m_face;
}

QColor SchemeButton::textColor() const
{
    const bool onAccent = m_accent || (isEnabled() && (isDown() || isChecked()));
    const QColor text = onAccent ? m_accentText : m_text;
    return isEnabled() ? text : mixColors(text, faceColor(), 0.45);
}

void SchemeButton::paintEvent(QPaintEvent *)
{
    QPainter p(this);
    p.setRenderHint(QPainter::Antialiasing);
    const QRectF face = QRectF(rect()).adjusted(1.5, 1.5, -1.5, -1.5);
    QPainterPath path;
    path.addRoundedRect(face, radius, radius);
    p.fillPath(path, faceColor());
    p.setPen(QPen(hasFocus() ? m_focus : m_border, hasFocus() ? 2 : 1));
    p.drawPath(path);

    const QRect content = rect().adjusted(6, 2, -6, -2);
    p.setPen(textColor());
    p.drawText(content, Qt::AlignCenter | Qt::TextShowMnemonic, text());
}
