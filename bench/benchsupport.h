#pragma once

#include "base/prompt.h"

// What every benchmark program needs besides what it measures.

// Answers every question the same way and counts messages: a message in a
// benchmark means the run went wrong.
class QuietPrompt : public Prompt
{
public:
    explicit QuietPrompt(bool answer = false) : m_answer(answer) {}

    void message(const QString &text, const QString &title, Icon icon) override;
    bool askYesNo(const QString &text, const QString &title, Icon icon, Answer byDefault) override;
    QString chooseOpenFile(const QString &title, const QString &folder, const QString &filter) override;

    int messages = 0;

private:
    bool m_answer;
};

// A figure of this process from the kernel's own account ("VmRSS:" resident,
// "VmHWM:" peak resident), in MB; 0 where there is no such account.
double processMegabytes(const char *field);
// The same figure of another process of this user.
double processMegabytes(const char *field, qint64 pid);

// CPU time this process has used, user and system, in seconds.
double processCpuSeconds();
