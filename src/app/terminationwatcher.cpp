#include "app/terminationwatcher.h"

#include <QSocketNotifier>

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

} // namespace

TerminationWatcher::TerminationWatcher(std::function<void()> onTerminate, QObject *parent)
    : QObject(parent), m_onTerminate(std::move(onTerminate))
{
#ifdef Q_OS_UNIX
    if (::socketpair(AF_UNIX, SOCK_STREAM, 0, signalPipe) != 0)
        return;
    m_notifier = new QSocketNotifier(signalPipe[1], QSocketNotifier::Read, this);
    connect(m_notifier, &QSocketNotifier::activated, this, [this] {
        char byte = 0;
        [[maybe_unused]] const auto read = ::read(signalPipe[1], &byte, 1);
        if (m_onTerminate)
            m_onTerminate();
    });
    struct sigaction action = {};
    action.sa_handler = onSignal;
    sigemptyset(&action.sa_mask);
    action.sa_flags = SA_RESTART;
    for (const int s : watchedSignals)
        ::sigaction(s, &action, nullptr);
#endif
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
