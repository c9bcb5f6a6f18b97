#pragma once

#include "controls/themedcontrol.h"

#include <QColor>
#include <QFrame>

// A panel with rounded corners and a soft shadow, in the theme's colours,
// with an optional title in its top left corner. Its contents margins leave
// room for the shadow and the title, so a layout set on it stays inside the
// panel. Screen readers see a group named by its title.
class RoundedFrame : public QFrame, public ThemedControl
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(RoundedFrame)

public:
    explicit RoundedFrame(const QString &title = {}, QWidget *parent = nullptr);

    const QString &title() const { return m_title; }
    void setTitle(const QString &title);
    void setThemeColors(const ThemeColors &colors) override;

    // The panel without its shadow, in the frame's coordinates.
    QRect panelRect() const;
    QColor fillColor() const { return m_fill; }

protected:
    void paintEvent(QPaintEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void updateMargins();
    QFont titleFont() const;

    QString m_title;
    QColor m_fill, m_border, m_titleColor, m_shadow;
};
