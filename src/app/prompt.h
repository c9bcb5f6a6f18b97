#pragma once

#include <QString>

// Message boxes and questions go through this seam so that tests can answer
// them without a modal loop.
class Prompt
{
public:
    enum class Icon { Information, Warning, Critical, Question };

    virtual ~Prompt() = default;

    virtual void message(const QString &text, const QString &title, Icon icon) = 0;
    // True for Yes.
    virtual bool askYesNo(const QString &text, const QString &title, Icon icon) = 0;
};
