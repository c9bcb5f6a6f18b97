#pragma once

#include "controls/themedcontrol.h"
#include "base/themecolors.h"

#include <QAbstractSlider>

class QLabel;

// A horizontal slider drawn in the theme's colours. While the handle is
// dragged, a tip above it shows the value. A click on the groove moves the
// handle there and starts a drag.
class ucSlider : public QAbstractSlider, public ThemedControl
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ucSlider)

public:
    explicit ucSlider(QWidget *parent = nullptr);

    void setThemeColors(const ThemeColors &colors) override;

    QSize sizeHint() const override;
    QSize minimumSizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void mouseReleaseEvent(QMouseEvent *event) override;
    void sliderChange(SliderChange change) override;

private:
    QRectF groove() const;
    QPointF handleCentre() const;
    int valueAt(qreal x) const;
    void placeTip();

    ThemeColors m_colors;
    QLabel *m_tip;
    // Where in the handle the drag took hold, so that the handle does not jump.
    qreal m_grabOffset = 0;
};
