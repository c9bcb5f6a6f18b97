#include "app/terminationwatcher.h"

#include <QApplication>
#include <QDialog>
#include <QSocketNotifier>
#include <QWidget>

#ifdef Q_OS_UNIX
#include <csignal>
#include <sys/socket.h>
#include <unistd.h>
#endif

namespace {

#ifdef Q_OS_UNIX
// A signal handler may only write to a descriptor; the notifier on the other
// end brings the news to the event loop.
int signalPipe[2] = {-1, -1};

void onSignal(int)
{
    const char byte = 1;
    [[maybe_unused]] const auto written = ::write(signalPipe[0], &byte, 1);
}

constexpr int watchedSignals[] = {SIGINT, SIGTERM, SIGHUP};
#endif

constexpr int MaxModals = 16;

} // namespace

TerminationWatcher::TerminationWatcher(std::function<void()> onTerminate, QObject *parent)
    : QObject(parent), m_onTerminate(std::move(onTerminate))
{
    m_modalWait.setSingleShot(true);
    m_modalWait.setInterval(ModalWait);
    connect(&m_modalWait, &QTimer::timeout, this, &TerminationWatcher::deliver);
#ifdef Q_OS_UNIX
    if (::socketpair(AF_UNIX, SOCK_STREAM, 0, signalPipe) != 0)
        return;
    m_notifier = new QSocketNotifier(signalPipe[1], QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, [this] {
        char byte = 0;
        [[maybe_unused]] const auto read = ::read(signalPipe[1], &byte, 1);
        m_modalsClosed = 0;
        deliver();
    });
    struct sigaction action = {};
    action.sa_handler = onSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    for (const int s : watchedSignals)
        ::sigaction(s, &action, nullptr);
#endif
}

void TerminationWatcher::deliver()
{
    m_modalWait.stop();
    disconnect(m_modalGone);
    QWidget *modal = QApplication::activeModalWidget();
    if (modal && m_modalsClosed < MaxModals) {
        ++m_modalsClosed;
        // Queued: a dialog on the stack is destroyed as the call that ran it
        // returns, and the close goes on from the loop below it.
        m_modalGone =
            connect(modal, &QObject::destroyed, this, &TerminationWatcher::deliver, Qt::QueuedConnection);
        m_modalWait.start();
        if (auto *dialog = qobject_cast<QDialog *>(modal))
            dialog->reject();
        else
            modal->close();
        return;
    }
    if (m_onTerminate)
        m_onTerminate();
}

TerminationWatcher::~TerminationWatcher()
{
#ifdef Q_OS_UNIX
    if (!m_notifier)
        return;
    for (const int s : watchedSignals)
        ::signal(s, SIG_DFL);
    ::close(signalPipe[0]);
    ::close(signalPipe[1]);
    signalPipe[0] = signalPipe[1] = -1;
#endif
}
