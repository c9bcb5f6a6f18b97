#pragma once

#include "base/prompt.h"

#include <QList>
#include <QStringList>

// Answers questions and file dialogs from a script and remembers every
// message shown and every dialog opened.
class ScriptedPrompt : public Prompt
{
public:
    struct Shown
    {
        QString text, title;
        Icon icon;
        Answer byDefault = Answer::Yes; // of a question
    };
    void message(const QString &text, const QString &title, Icon icon) override;
    bool askYesNo(const QString &text, const QString &title, Icon icon, Answer byDefault) override;
    QString chooseOpenFile(const QString &title, const QString &folder, const QString &filter) override;
    // Answers for the next questions, in order; an unscripted question is answered No.
    QList<bool> answers;
    QList<Shown> shown;
    // Paths the next file dialogs choose, in order; an unscripted dialog is cancelled.
    QStringList files;
    // The starting folder of every file dialog opened.
    QStringList fileFolders;
    QStringList texts() const;
};
