#pragma once

#include <QLineEdit>

class GridEditor;

// The grid's own edit box. Typed characters pass the column's input filter and
// the host's EditKeyPress before they reach the text.
class GridEditBox : public QLineEdit
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(GridEditBox)

public:
    GridEditBox(GridEditor &editor, QWidget *parent);

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;

private:
    GridEditor &m_editor;
};
