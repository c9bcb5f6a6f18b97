#include "support/scriptedprompt.h"

void ScriptedPrompt::message(const QString &text, const QString &title, Icon icon)
{
    shown.append({text, title, icon});
}

bool ScriptedPrompt::askYesNo(const QString &text, const QString &title, Icon icon, Answer byDefault)
{
    shown.append({text, title, icon, byDefault});
    return answers.isEmpty() ? false : answers.takeFirst();
}

QString ScriptedPrompt::chooseOpenFile(const QString &, const QString &folder, const QString &)
{
    fileFolders.append(folder);
    return files.isEmpty() ? QString() : files.takeFirst();
}

QStringList ScriptedPrompt::texts() const
{
    QStringList result;
    for (const Shown &s : shown)
        result.append(s.text);
    return result;
}
