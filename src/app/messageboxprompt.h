#pragma once

#include "base/prompt.h"

class QWidget;

// The program's questions and messages as message boxes, and the file-open
// dialog, over the active window.
class MessageBoxPrompt : public Prompt
{
public:
    void message(const QString &text, const QString &title, Icon icon) override;
    bool askYesNo(const QString &text, const QString &title, Icon icon, Answer byDefault) override;
    QString chooseOpenFile(const QString &title, const QString &folder, const QString &filter) override;
};
