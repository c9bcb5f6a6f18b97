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

    const QString &Title() const { return m_title; }
    void SetTitle(const QString &title);
    void SetThemeColors(const ThemeColors &colors) override;

    // The panel without its shadow, in the frame's coordinates.
    QRect PanelRect() const;
    QColor FillColor() const { return m_fill; }

protected:
    void paintEvent(QPaintEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void updateMargins();
    QFont titleFont() const;

    QString m_title;
    QColor m_fill, m_border, m_titleColor, m_shadow;
};
