#pragma once

#include "controls/themedcontrol.h"

#include <QColor>
#include <QPushButton>

class HoverTracker;

// A text push button drawn in the theme's colour scheme: tinted while the
// mouse is over it, in the accent colour while pressed or checked, with a
// focus ring. An accent button (the window's main action) is filled with the
// accent colour throughout. Screen readers see a standard push button. It
// draws no icon: pictures are the picture button's job.
class SchemeButton : public QPushButton, public ThemedControl
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(SchemeButton)

public:
    explicit SchemeButton(const QString &text = {}, QWidget *parent = nullptr);

    void setThemeColors(const ThemeColors &colors) override;
    bool isAccent() const { return m_accent; }
    void setAccent(bool accent);
    bool isHovered() const;

    // The fill and text colours of the current state.
    QColor faceColor() const;
    QColor textColor() const;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    HoverTracker *m_hover;
    bool m_accent = false;
    QColor m_face, m_faceHover, m_text, m_accentFace, m_accentText, m_border, m_focus, m_window;
};
