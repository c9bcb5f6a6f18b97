#pragma once

#include <QCoreApplication>
#include <QString>
#include <QStringList>

// What a finished recording wrote: its files, their size on disk and how
// long it ran, in one line for the recorder window.
struct RecordingSummary
{
    Q_DECLARE_TR_FUNCTIONS(RecordingSummary)

public:
    int files = 0;
    qint64 bytes = 0;
    qint64 seconds = 0;
    QString folder; // holding most of the files; empty when none was written

    // files as the output opened them; a file no longer on disk counts for nothing.
    static RecordingSummary of(const QStringList &files, qint64 seconds);
    QString text() const;
};
