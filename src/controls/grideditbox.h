#pragma once

#include <QLineEdit>

class LynxGrid;

// The grid's own edit box. Typed characters pass the column's input filter and
// the host's EditKeyPress before they reach the text.
class GridEditBox : public QLineEdit
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(GridEditBox)

public:
    GridEditBox(LynxGrid &grid, QWidget *parent);

protected:
    void keyPressEvent(QKeyEvent *event) override;
    void focusOutEvent(QFocusEvent *event) override;

private:
    LynxGrid &m_grid;
};
