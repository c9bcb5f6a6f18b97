#pragma once

#include <QColor>
#include <QRectF>
#include <QString>

class QPainter;
struct ThemeColors;

// The colours of a progress bar: the track, the filled part, the frame and
// the text over each part.
struct ProgressColors
{
    QColor track;
    QColor chunk;
    QColor frame;
    QColor text;
    QColor textOnChunk;

    static ProgressColors fromTheme(const ThemeColors &colors);
    // The same bar set back, for a disabled control.
    ProgressColors disabled() const;
};

// Draws a horizontal bar filling rect, filled to fraction (clamped to 0..1),
// with text centred on it. The text changes colour where the filled part runs
// under it, so it stays readable at any value. The grid's progress cells and
// the themed progress bar share this drawing.
void paintProgress(QPainter &p, const QRectF &rect, qreal fraction, const QString &text,
                   const ProgressColors &colors);
