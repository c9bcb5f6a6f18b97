#pragma once

#include "controls/themedcontrol.h"
#include "base/themecolors.h"

#include <QAbstractButton>
#include <QIcon>
#include <QPainterPath>

// A button shown as one of four pictures: normal, under the mouse, pressed
// and disabled. In toggle mode a click leaves it pressed until the next one,
// and the pressed picture shows the pressed state.
//
// The pictures are either given as they are, or drawn from a glyph (a path
// in a 24 x 24 box) in the colours of the theme, and then drawn again when
// the theme changes. Drawn pictures carry pixmaps for 1x and 2x screens.
class ucPictureButton : public QAbstractButton, public ThemedControl
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ucPictureButton)

public:
    struct Pictures
    {
        QIcon normal;
        QIcon hover;
        QIcon pressed;
        QIcon disabled;
    };

    // The box a glyph is drawn in.
    static constexpr int glyphBox = 24;

    explicit ucPictureButton(QWidget *parent = nullptr);

    void setPictures(const Pictures &pictures);
    const Pictures &getPictures() const { return m_pictures; }
    // pressedGlyph, when given, stands for the pressed state instead of glyph
    // (a toggle whose pressed look differs, such as a crossed-out speaker).
    void setGlyph(const QPainterPath &glyph, const QPainterPath &pressedGlyph = {});
    void setToggle(bool toggle) { setCheckable(toggle); }

    void setThemeColors(const ThemeColors &colors) override;

    // The four pictures of a glyph in a theme's colours, size logical pixels square.
    static Pictures glyphPictures(const QPainterPath &glyph, const QPainterPath &pressedGlyph,
                                  const ThemeColors &colors, int size);

    QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    const QIcon &shownPicture() const;
    void drawGlyphPictures();

    Pictures m_pictures;
    QPainterPath m_glyph;
    QPainterPath m_pressedGlyph;
    ThemeColors m_colors;
};
