#include "support/accessiblenames.h"

#include <QAccessible>
#include <QWidget>

#include <gtest/gtest.h>

void expectAccessibleNames(QWidget *window)
{
    for (QWidget *widget : window->findChildren<QWidget *>()) {
        if (widget->focusPolicy() == Qt::NoFocus || !widget->isVisibleTo(window) ||
            widget->objectName().startsWith(QLatin1StringView("qt_")))
            continue;
        QAccessibleInterface *accessible = QAccessible::queryAccessibleInterface(widget);
        ASSERT_NE(accessible, nullptr);
        EXPECT_FALSE(accessible->text(QAccessible::Name).isEmpty())
            << widget->metaObject()->className() << " " << widget->objectName().toStdString();
    }
}
