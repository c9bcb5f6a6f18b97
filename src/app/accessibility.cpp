#include "app/accessibility.h"

#include <QAbstractItemView>
#include <QAccessibleWidget>
#include <QComboBox>
#include <QLineEdit>

namespace {

// A drop-down read by its own name (its buddy label's text or its accessible
// name) with the chosen entry as its value. Qt's own interface on Linux
// reports the entry as the name.
class NamedComboBox : public QAccessibleWidget
{
public:
    explicit NamedComboBox(QComboBox *combo) : QAccessibleWidget(combo, QAccessible::ComboBox)
    {
        addControllingSignal(QStringLiteral("currentIndexChanged(int)"));
    }

    QString text(QAccessible::Text t) const override
    {
        if (t == QAccessible::Value)
            return combo()->currentText();
        return QAccessibleWidget::text(t);
    }

    // The list of entries, then the edit field of an editable drop-down.
    int childCount() const override { return combo()->isEditable() ? 2 : 1; }

    QAccessibleInterface *child(int index) const override
    {
        if (index == 0)
            return QAccessible::queryAccessibleInterface(combo()->view());
        if (index == 1 && combo()->isEditable())
            return QAccessible::queryAccessibleInterface(combo()->lineEdit());
        return nullptr;
    }

    int indexOfChild(const QAccessibleInterface *child) const override
    {
        if (child->object() == combo()->view())
            return 0;
        return combo()->isEditable() && child->object() == combo()->lineEdit() ? 1 : -1;
    }

    QAccessible::State state() const override
    {
        QAccessible::State s = QAccessibleWidget::state();
        s.expandable = true;
        s.expanded = combo()->view()->isVisible();
        s.editable = combo()->isEditable();
        return s;
    }

    QStringList actionNames() const override
    {
        return QStringList{showMenuAction(), pressAction()} + QAccessibleWidget::actionNames();
    }

    void doAction(const QString &name) override
    {
        if (name != showMenuAction() && name != pressAction()) {
            QAccessibleWidget::doAction(name);
            return;
        }
        if (combo()->view()->isVisible())
            combo()->hidePopup();
        else
            combo()->showPopup();
    }

private:
    QComboBox *combo() const { return static_cast<QComboBox *>(widget()); }
};

QAccessibleInterface *factory(const QString &className, QObject *object)
{
    if (className == u"QComboBox")
        return new NamedComboBox(static_cast<QComboBox *>(object));
    // Reached only by widgets whose own classes Qt has no interface for.
    if (className == u"QWidget" && object->isWidgetType()) {
        auto *widget = static_cast<QWidget *>(object);
        if (widget->windowType() == Qt::Window)
            return new QAccessibleWidget(widget, QAccessible::Window);
        if (widget->windowType() == Qt::Dialog)
            return new QAccessibleWidget(widget, QAccessible::Dialog);
    }
    return nullptr;
}

} // namespace

namespace Accessibility {

void install()
{
    QAccessible::installFactory(&factory);
}

} // namespace Accessibility
