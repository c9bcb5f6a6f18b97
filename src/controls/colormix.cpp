#include "controls/colormix.h"

// Whole 8-bit channels, so that a mixed colour compares equal to itself once painted.
QColor mixColors(const QColor &a, const QColor &b, qreal amountOfA)
{
    const auto channel = [amountOfA](int x, int y) { return qRound(x * amountOfA + y * (1 - amountOfA)); };
    return QColor(channel(a.red(), b.red()), channel(a.green(), b.green()), channel(a.blue(), b.blue()));
}
