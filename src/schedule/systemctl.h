#pragma once

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QStringList>

#include <functional>

class QProcess;
class QTimer;

// `systemctl --user` as the task store uses it to activate what it wrote and
// to read the timers' state. Calls never wait: they queue, run one after the
// other, and report when each has ended. Tests replace it: nothing may start
// or stop real units of the test machine.
class Systemctl : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(Systemctl)

public:
    struct Result
    {
        // False when systemctl could not be started or could not reach the
        // user's service manager.
        bool reached = false;
        int exitCode = -1;
        QByteArray output;
        QByteArray error;
    };
    using Done = std::function<void(const Result &)>;

    explicit Systemctl(QObject *parent = nullptr);

    // Runs `systemctl --user` with these arguments after the calls queued
    // before it; done, when given, is told the result.
    virtual void call(const QStringList &arguments, Done done = {}) = 0;
    // True while a call runs or waits.
    virtual bool busy() const = 0;

signals:
    void busyChanged(bool busy);
};

// The real systemctl, run as a child process one call at a time. A call
// that does not reach the manager, or does not end within the time limit,
// fails the calls queued behind it as well: a manager that does not answer
// is not asked again and again. Calls that change something and are still
// queued when it is destroyed (the program ends) are handed to a detached
// shell, each within the same time limit, so no saved task stays unknown to
// the manager.
class ProcessSystemctl : public Systemctl
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(ProcessSystemctl)

public:
    static constexpr int defaultTimeoutMs = 20000;

    explicit ProcessSystemctl(QString program = QStringLiteral("systemctl"), int timeoutMs = defaultTimeoutMs,
                              QObject *parent = nullptr);
    ~ProcessSystemctl() override;

    void call(const QStringList &arguments, Done done = {}) override;
    bool busy() const override;

private:
    struct Call
    {
        QStringList arguments;
        Done done;
    };

    void startNext();
    void finished();
    void timedOut();
    // Ends the running call with result and answers it; when the manager was
    // not reached, the queued calls fail with it.
    void conclude(const Result &result);
    void tellBusy();
    void handOver();

    QString m_program;
    int m_timeoutMs;
    QList<Call> m_queue; // the running call first
    QProcess *m_process = nullptr;
    QTimer *m_timer;
    bool m_toldBusy = false;
};
