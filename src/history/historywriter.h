#pragma once

#include <QObject>
#include <QString>

// Appends lines to the history file on a thread of its own, so that a slow
// or full disk never holds up the player or the recorder. When the file has
// grown a tenth past its bound it is rewritten with its newest lines.
class HistoryWriter : public QObject
{
    Q_OBJECT

public:
    HistoryWriter(QString path, qsizetype limit, qint64 linesInFile);
    Q_DISABLE_COPY_MOVE(HistoryWriter)

    // Each call opens, appends and closes, so another program's rename of the
    // file is seen at the next title.
    void append(const QByteArray &lines, qint64 count);
    // Rewrites the file with its newest `limit` lines when it holds too many.
    void compactIfDue();

signals:
    // Once per run of failures; the next success ends the run.
    void failed(const QString &reason);

private:
    void compact();
    void report(const QString &reason);

    QString m_path;
    qsizetype m_limit;
    qint64 m_lines;
    bool m_failing = false;
};
