#include "controls/themedprogressbar.h"

#include "base/themecolors.h"

#include <QPainter>

ThemedProgressBar::ThemedProgressBar(QWidget *parent)
    : QProgressBar(parent), m_colors(ProgressColors::fromTheme(Themes::paleBlue()))
{
}

void ThemedProgressBar::setThemeColors(const ThemeColors &colors)
{
    m_colors = ProgressColors::fromTheme(colors);
    update();
}

void ThemedProgressBar::paintEvent(QPaintEvent *)
{
    const qreal span = qreal(maximum()) - minimum();
    const qreal fraction = span > 0 ? (value() - minimum()) / span : 0.0;
    QPainter p(this);
    paintProgress(p, rect(), fraction, isTextVisible() ? text() : QString(),
                  isEnabled() ? m_colors : m_colors.disabled());
}
