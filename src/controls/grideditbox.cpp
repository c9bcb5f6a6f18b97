#include "controls/grideditbox.h"

#include "controls/grideditor.h"

#include <QFocusEvent>
#include <QKeyEvent>

GridEditBox::GridEditBox(GridEditor &editor, QWidget *parent) : QLineEdit(parent), m_editor(editor)
{
    setFrame(false);
    hide();
}

void GridEditBox::keyPressEvent(QKeyEvent *event)
{
    switch (event->key()) {
    case Qt::Key_Escape:
        m_editor.cancel();
        return;
    case Qt::Key_Return:
    case Qt::Key_Enter:
        m_editor.commit();
        return;
    default:
        break;
    }

    qint16 code = 0;
    const QString text = event->text();
    if (event->key() == Qt::Key_Backspace)
        code = 8;
    else if (text.size() == 1 && text.at(0).isPrint())
        code = static_cast<qint16>(text.at(0).unicode());
    if (code == 0) {
        // Cursor keys, Delete and shortcuts are no characters: nothing to filter.
        QLineEdit::keyPressEvent(event);
        return;
    }

    const qint16 key = m_editor.filterKey(code);
    if (key == 0)
        return;
    if (key == code)
        QLineEdit::keyPressEvent(event);
    else if (key == 8)
        backspace();
    else
        insert(QString(QChar(static_cast<char16_t>(static_cast<quint16>(key)))));
}

void GridEditBox::focusOutEvent(QFocusEvent *event)
{
    QLineEdit::focusOutEvent(event);
    // A context menu or another application taking the focus does not end the edit.
    if (event->reason() != Qt::PopupFocusReason && event->reason() != Qt::ActiveWindowFocusReason &&
        m_editor.isEditing())
        m_editor.commit();
}
