#include "controls/progresspainter.h"

#include "controls/colormix.h"
#include "base/themecolors.h"

#include <QPainter>
#include <QPainterPath>

#include <cmath>

namespace {

qreal luminance(const QColor &c)
{
    const auto channel = [](qreal v) {
        return v <= 0.03928 ? v / 12.92 : std::pow((v + 0.055) / 1.055, 2.4);
    };
    return 0.2126 * channel(c.redF()) + 0.7152 * channel(c.greenF()) + 0.0722 * channel(c.blueF());
}

qreal contrast(const QColor &a, const QColor &b)
{
    const qreal la = luminance(a);
    const qreal lb = luminance(b);
    return (qMax(la, lb) + 0.05) / (qMin(la, lb) + 0.05);
}

} // namespace

ProgressColors ProgressColors::fromTheme(const ThemeColors &colors)
{
    const QColor back = QColor::fromRgba(colors.back);
    const QColor fore = QColor::fromRgba(colors.fore);
    const QColor chunk = QColor::fromRgba(colors.progressBar);
    // Of the theme's two text colours, the one that reads better on the fill.
    const QColor onChunk = contrast(fore, chunk) >= contrast(back, chunk) ? fore : back;
    return {mixColors(chunk, back, 0.18), chunk, QColor::fromRgba(colors.grid), fore, onChunk};
}

ProgressColors ProgressColors::disabled() const
{
    const QColor setBackChunk = mixColors(chunk, track, 0.45);
    return {track, setBackChunk, frame, mixColors(text, track, 0.6),
            mixColors(textOnChunk, setBackChunk, 0.75)};
}

void paintProgress(QPainter &p, const QRectF &rect, qreal fraction, const QString &text,
                   const ProgressColors &colors)
{
    if (rect.width() < 2 || rect.height() < 2)
        return;
    fraction = qBound(0.0, fraction, 1.0);
    p.save();
    p.setRenderHint(QPainter::Antialiasing);

    const QRectF outer = rect.adjusted(0.5, 0.5, -0.5, -0.5);
    const qreal radius = qMin(4.0, outer.height() / 2);
    QPainterPath track;
    track.addRoundedRect(outer, radius, radius);
    p.fillPath(track, colors.track);

    const QRectF filled(outer.left(), outer.top(), outer.width() * fraction, outer.height());
    p.save();
    p.setClipRect(filled);
    p.fillPath(track, colors.chunk);
    p.restore();
    p.setBrush(Qt::NoBrush);
    p.setPen(QPen(colors.frame, 1));
    p.drawPath(track);

    if (!text.isEmpty()) {
        p.save();
        p.setClipRect(filled);
        p.setPen(colors.textOnChunk);
        p.drawText(outer, Qt::AlignCenter, text);
        p.setClipRect(outer.adjusted(outer.width() * fraction, 0, 0, 0));
        p.setPen(colors.text);
        p.drawText(outer, Qt::AlignCenter, text);
        p.restore();
    }
    p.restore();
}
