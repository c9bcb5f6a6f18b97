#pragma once

class QWidget;

// Every control of the window a user can reach with the keyboard tells a
// screen reader what it is. Qt's inner parts of a control ("qt_...") speak
// through the control.
void expectAccessibleNames(QWidget *window);
