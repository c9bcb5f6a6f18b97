#pragma once

#include <QObject>
#include <QTimer>

#include <functional>

class QSocketNotifier;

// Turns SIGINT, SIGTERM and SIGHUP into an orderly close on the user-interface
// thread, so that a recording stopped from a terminal, by cron or by the
// system shutting down still writes its last cached bytes. A modal dialog
// open at the time is closed first, and the close waits until its event loop
// has returned: a dialog made on the stack as a window's child must not die
// with its window while it still runs.
class TerminationWatcher : public QObject
{
    Q_OBJECT
    Q_DISABLE_COPY_MOVE(TerminationWatcher)

public:
    explicit TerminationWatcher(std::function<void()> onTerminate, QObject *parent = nullptr);
    ~TerminationWatcher() override;

    // How long a closed dialog may take to go before the close goes on anyway
    // (one kept after it closes never does).
    static constexpr int ModalWait = 300;

private:
    void deliver();

    std::function<void()> m_onTerminate;
    QTimer m_modalWait;
    QMetaObject::Connection m_modalGone;
    // Dialogs closed for this signal: a dialog that opens another as it closes cannot keep the program.
    int m_modalsClosed = 0;
    QSocketNotifier *m_notifier = nullptr;
};
