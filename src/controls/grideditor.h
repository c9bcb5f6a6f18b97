#pragma once

#include <QObject>
#include <QPalette>
#include <QPointer>

class GridEditBox;
class LynxGrid;
class QWidget;

// The grid's edit protocol: which cell is being edited, with which control
// (the grid's edit box or the control bound to the column), and how the edit
// ends. The host takes part through the grid's RequestEdit, RequestUpdate and
// EditKeyPress.
class GridEditor : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(GridEditor)

public:
    explicit GridEditor(LynxGrid &grid);

    bool isEditing() const { return m_editing; }
    int row() const { return m_row; }
    int col() const { return m_col; }

    void bindControl(int col, QWidget *control);
    // Asks the host, then edits the cell (or toggles a check box cell); true when it went ahead.
    // With replace the edit starts from initial instead of the cell's text.
    bool start(int row, int col, const QString &initial, bool replace);
    // Starts an edit that replaces the cell's text, typing key as its first character.
    void startTyping(int row, int col, qint16 key);
    bool commit();
    void cancel();
    // Puts the editing control over its cell after the cell moved.
    void place();
    // A typed character after the column's filter and the host; 0 when discarded.
    qint16 filterKey(qint16 key);
    void setColor(QPalette::ColorRole role, const QColor &color);
    void setFont(const QFont &font);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void close();

    LynxGrid &m_grid;
    GridEditBox *m_editBox;
    bool m_editing = false;
    int m_row = -1;
    int m_col = -1;
    QPointer<QWidget> m_control;
};
