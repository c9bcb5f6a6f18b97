#pragma once

#include <QColor>

// amountOfA of a blended with the rest of b, channel by channel; opaque.
QColor mixColors(const QColor &a, const QColor &b, qreal amountOfA);
