#pragma once

#include <QObject>
#include <QString>

#include <functional>

class StreamRecorder;

// What a launched recording tells whoever started it: every status its
// window shows, as a line (on standard error, which the journal keeps for a
// scheduled start), and how it ended, as the program's exit status.
class LaunchReport : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(LaunchReport)

public:
    using LineWriter = std::function<void(const QString &line)>;

    explicit LaunchReport(LineWriter write, QObject *parent = nullptr);

    void watch(const StreamRecorder &recorder);
    // How the last recording watched ended (ExitStatus); Done until one has.
    int exitStatus() const { return m_exitStatus; }

    // Writes a line to standard error at once.
    static void toStandardError(const QString &line);

private:
    LineWriter m_write;
    int m_exitStatus = 0;
};
