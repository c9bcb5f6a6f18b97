#pragma once

#include "app/prompt.h"

class QWidget;

// The program's questions and messages as message boxes, over the active window.
class MessageBoxPrompt : public Prompt
{
public:
    void message(const QString &text, const QString &title, Icon icon) override;
    bool askYesNo(const QString &text, const QString &title, Icon icon) override;
};
