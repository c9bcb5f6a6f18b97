#pragma once

#include <QString>

// Message boxes, questions and the file-open dialog go through this seam so
// that tests can answer them without a modal loop.
class Prompt
{
public:
    enum class Icon { Information, Warning, Critical, Question };
    // The answer Enter gives: a question whose Yes destroys something leans to No.
    enum class Answer
    {
        Yes,
        No
    };

    virtual ~Prompt() = default;

    virtual void message(const QString &text, const QString &title, Icon icon) = 0;
    // True for Yes.
    virtual bool askYesNo(const QString &text, const QString &title, Icon icon,
                          Answer byDefault = Answer::Yes) = 0;
    // The path of an existing file the user chose, starting in folder (the
    // last one used when empty); empty when cancelled. filter lists the file
    // types as "Playlists (*.pls);;All files (*)".
    virtual QString chooseOpenFile(const QString &title, const QString &folder, const QString &filter) = 0;
};
