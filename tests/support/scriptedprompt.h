#pragma once

#include "app/prompt.h"

#include <QList>
#include <QStringList>

// Answers questions from a script and remembers every message shown.
class ScriptedPrompt : public Prompt
{
public:
    struct Shown
    {
        QString text;
        QString title;
        Icon icon;
    };

    void message(const QString &text, const QString &title, Icon icon) override;
    bool askYesNo(const QString &text, const QString &title, Icon icon) override;

    // Answers for the next questions, in order; an unscripted question is answered No.
    QList<bool> answers;
    QList<Shown> shown;

    QStringList texts() const;
};
