#include "ui/skin/themeapplier.h"

#include "controls/themedcontrol.h"
#include "ui/skin/themepalette.h"

#include <QApplication>
#include <QEvent>
#include <QToolTip>
#include <QWidget>

ThemeApplier::ThemeApplier()
{
    qApp->installEventFilter(this);
}

ThemeApplier::~ThemeApplier()
{
    qApp->removeEventFilter(this);
}

void ThemeApplier::themeColorsChanged(const ThemeColors &colors)
{
    m_colors = colors;
    const QPalette palette = themePalette(colors);
    QApplication::setPalette(palette);
    // Tool tips keep a palette of their own.
    QToolTip::setPalette(palette);
    const QList<QWidget *> widgets = QApplication::allWidgets();
    for (QWidget *widget : widgets) {
        if (auto *control = dynamic_cast<ThemedControl *>(widget))
            control->setThemeColors(colors);
    }
}

bool ThemeApplier::eventFilter(QObject *watched, QEvent *event)
{
    if (m_colors && event->type() == QEvent::Polish) {
        if (auto *control = dynamic_cast<ThemedControl *>(watched))
            control->setThemeColors(*m_colors);
    }
    return QObject::eventFilter(watched, event);
}
