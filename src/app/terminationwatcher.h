#pragma once

#include <QObject>

#include <functional>

class QSocketNotifier;

// Turns SIGINT, SIGTERM and SIGHUP into an orderly close on the user-interface
// thread, so that a recording stopped from a terminal, by cron or by the
// system shutting down still writes its last cached bytes.
class TerminationWatcher : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(TerminationWatcher)

public:
    explicit TerminationWatcher(std::function<void()> onTerminate, QObject *parent = nullptr);
    ~TerminationWatcher() override;

private:
    std::function<void()> m_onTerminate;
    QSocketNotifier *m_notifier = nullptr;
};
