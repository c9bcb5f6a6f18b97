#include "controls/picturebutton.h"

#include <QPainter>
#include <QPixmap>

namespace {

constexpr int faceSize = 28;
constexpr qreal scales[] = {1.0, 2.0};

QColor color(quint32 argb)
{
    return QColor::fromRgba(argb);
}

QColor withAlpha(QColor c, qreal alpha)
{
    c.setAlphaF(alpha);
    return c;
}

struct Face
{
    QColor back; // transparent for none
    QColor ink;
};

// One picture: a rounded face and the glyph centred on it, drawn at each
// scale so that 2x screens get pixels of their own rather than enlarged ones.
QIcon picture(const QPainterPath &glyph, const Face &face, int size)
{
    QIcon icon;
    for (const qreal scale : scales) {
        QPixmap pixmap(QSize(size, size) * scale);
        pixmap.setDevicePixelRatio(scale);
        pixmap.fill(Qt::transparent);
        QPainter p(&pixmap);
        p.setRenderHint(QPainter::Antialiasing);
        p.setPen(Qt::NoPen);
        if (face.back.alpha() > 0) {
            p.setBrush(face.back);
            p.drawRoundedRect(QRectF(0.5, 0.5, size - 1, size - 1), 5, 5);
        }
        const qreal margin = size / 7.0;
        const qreal glyphScale = (size - 2 * margin) / ucPictureButton::glyphBox;
        p.translate(margin, margin);
        p.scale(glyphScale, glyphScale);
        p.setBrush(face.ink);
        p.drawPath(glyph);
        p.end();
        icon.addPixmap(pixmap);
    }
    return icon;
}

} // namespace

ucPictureButton::ucPictureButton(QWidget *parent)
    : QAbstractButton(parent), m_colors(Themes::paleBlue())
{
    setAttribute(Qt::WA_Hover);
    setFocusPolicy(Qt::StrongFocus);
    setIconSize(QSize(faceSize, faceSize));
}

void ucPictureButton::setPictures(const Pictures &pictures)
{
    m_glyph.clear();
    m_pressedGlyph.clear();
    m_pictures = pictures;
    update();
}

void ucPictureButton::setGlyph(const QPainterPath &glyph, const QPainterPath &pressedGlyph)
{
    m_glyph = glyph;
    m_pressedGlyph = pressedGlyph;
    drawGlyphPictures();
}

void ucPictureButton::setThemeColors(const ThemeColors &colors)
{
    m_colors = colors;
    if (!m_glyph.isEmpty())
        drawGlyphPictures();
    update();
}

ucPictureButton::Pictures ucPictureButton::glyphPictures(const QPainterPath &glyph,
                                                         const QPainterPath &pressedGlyph,
                                                         const ThemeColors &colors, int size)
{
    const QColor ink = color(colors.windowText);
    const QColor accent = color(colors.backSel);
    const QPainterPath &down = pressedGlyph.isEmpty() ? glyph : pressedGlyph;
    return {
        .normal = picture(glyph, {color(colors.backFixed), ink}, size),
        .hover = picture(glyph, {withAlpha(accent, 0.35), ink}, size),
        .pressed = picture(down, {accent, color(colors.foreSel)}, size),
        .disabled = picture(glyph, {withAlpha(color(colors.backFixed), 0.5), withAlpha(ink, 0.35)}, size),
    };
}

QSize ucPictureButton::sizeHint() const
{
    return iconSize();
}

const QIcon &ucPictureButton::shownPicture() const
{
    if (!isEnabled())
        return m_pictures.disabled;
    if (isDown() || isChecked())
        return m_pictures.pressed;
    if (underMouse())
        return m_pictures.hover;
    return m_pictures.normal;
}

void ucPictureButton::drawGlyphPictures()
{
    m_pictures = glyphPictures(m_glyph, m_pressedGlyph, m_colors, iconSize().width());
    update();
}

void ucPictureButton::paintEvent(QPaintEvent *)
{
    QPainter p(this);
    QRect face(QPoint(), iconSize());
    face.moveCenter(rect().center());
    shownPicture().paint(&p, face);
    if (hasFocus()) {
        p.setRenderHint(QPainter::Antialiasing);
        p.setPen(QPen(color(m_colors.focusRect), 1.5));
        p.setBrush(Qt::NoBrush);
        p.drawRoundedRect(QRectF(face).adjusted(1, 1, -1, -1), 5, 5);
    }
}
