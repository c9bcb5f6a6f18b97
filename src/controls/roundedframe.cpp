#include "controls/roundedframe.h"

#include "base/themecolors.h"

#include <QAccessible>
#include <QAccessibleWidget>
#include <QEvent>
#include <QPainter>
#include <QPainterPath>

namespace {

constexpr int radius = 8;
constexpr int shadowSize = 4; // how far the shadow reaches beyond the panel
constexpr int shadowDrop = 2; // the shadow falls a little below the panel
constexpr int padding = 10;

// A panel stands for a group box: a screen reader announces a group named by its title.
class RoundedFrameAccessible : public QAccessibleWidget
{
public:
    explicit RoundedFrameAccessible(RoundedFrame *frame) : QAccessibleWidget(frame, QAccessible::Grouping) {}

    QString text(QAccessible::Text t) const override
    {
        const QString own = QAccessibleWidget::text(t);
        if (t == QAccessible::Name && own.isEmpty())
            return static_cast<RoundedFrame *>(widget())->title();
        return own;
    }
};

QAccessibleInterface *accessibleFactory(const QString &key, QObject *object)
{
    if (key == QLatin1StringView(RoundedFrame::staticMetaObject.className()))
        return new RoundedFrameAccessible(static_cast<RoundedFrame *>(object));
    return nullptr;
}

} // namespace

RoundedFrame::RoundedFrame(const QString &title, QWidget *parent) : QFrame(parent), m_title(title)
{
    static const bool factoryInstalled = (QAccessible::installFactory(accessibleFactory), true);
    Q_UNUSED(factoryInstalled)
    setFrameShape(QFrame::NoFrame);
    setThemeColors(Themes::paleBlue());
    updateMargins();
}

void RoundedFrame::setTitle(const QString &title)
{
    m_title = title;
    updateMargins();
    update();
    QAccessibleEvent event(this, QAccessible::NameChanged);
    QAccessible::updateAccessibility(&event);
}

void RoundedFrame::setThemeColors(const ThemeColors &colors)
{
    m_fill = QColor::fromRgba(colors.backAlt);
    m_border = QColor::fromRgba(colors.grid);
    m_titleColor = QColor::fromRgba(colors.foreHdr);
    // Dark panels need a deeper shadow to be seen at all.
    m_shadow = QColor(0, 0, 0, QColor::fromRgba(colors.window).lightness() < 128 ? 150 : 60);
    update();
}

QRect RoundedFrame::panelRect() const
{
    return rect().adjusted(shadowSize, shadowSize - shadowDrop, -shadowSize, -shadowSize - shadowDrop);
}

QFont RoundedFrame::titleFont() const
{
    QFont bold = font();
    bold.setBold(true);
    return bold;
}

void RoundedFrame::updateMargins()
{
    const int title = m_title.isEmpty() ? 0 : QFontMetrics(titleFont()).height() + 4;
    setContentsMargins(shadowSize + padding, shadowSize - shadowDrop + padding + title, shadowSize + padding,
                       shadowSize + shadowDrop + padding);
}

void RoundedFrame::changeEvent(QEvent *event)
{
    if (event->type() == QEvent::FontChange)
        updateMargins();
    QFrame::changeEvent(event);
}

void RoundedFrame::paintEvent(QPaintEvent *)
{
    QPainter p(this);
    p.setRenderHint(QPainter::Antialiasing);
    const QRectF panel = QRectF(panelRect()).adjusted(0.5, 0.5, -0.5, -0.5);

    // The shadow: rings that widen and fade, dropped a little.
    p.setPen(Qt::NoPen);
    for (int ring = shadowSize; ring >= 1; --ring) {
        QColor shade = m_shadow;
        shade.setAlphaF(m_shadow.alphaF() / (shadowSize + 1) * (shadowSize + 1 - ring) / 2);
        p.setBrush(shade);
        p.drawRoundedRect(panel.adjusted(-ring, -ring + shadowDrop, ring, ring + shadowDrop), radius + ring,
                          radius + ring);
    }

    QPainterPath path;
    path.addRoundedRect(panel, radius, radius);
    p.fillPath(path, m_fill);
    p.setBrush(Qt::NoBrush);
    p.setPen(QPen(m_border, 1));
    p.drawPath(path);

    if (!m_title.isEmpty()) {
        p.setFont(titleFont());
        p.setPen(m_titleColor);
        const QRect titleRect(panelRect().left() + padding, panelRect().top() + padding / 2 + 2,
                              panelRect().width() - 2 * padding, QFontMetrics(titleFont()).height());
        p.drawText(titleRect, Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
                   QFontMetrics(titleFont()).elidedText(m_title, Qt::ElideRight, titleRect.width()));
    }
}
