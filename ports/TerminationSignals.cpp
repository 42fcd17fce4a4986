#include "ports/TerminationSignals.h"

#include <csignal>
#include <sys/signalfd.h>
#include <unistd.h>

namespace {

sigset_t terminationSet()
{
    sigset_t set;
    sigemptyset(&set);
    sigaddset(&set, SIGINT);
    sigaddset(&set, SIGTERM);
    return set;
}

} // namespace

void TerminationSignals::block()
{
    const sigset_t set = terminationSet();
    pthread_sigmask(SIG_BLOCK, &set, nullptr);
}

TerminationSignals::TerminationSignals(QObject* parent) : QObject(parent)
{
    const sigset_t set = terminationSet();
    m_fd = signalfd(-1, &set, SFD_NONBLOCK | SFD_CLOEXEC);
    if (m_fd < 0)
        return;
    m_notifier = std::make_unique<QSocketNotifier>(m_fd, QSocketNotifier::Read);
    connect(m_notifier.get(), &QSocketNotifier::activated, this, &TerminationSignals::drain);
}

TerminationSignals::~TerminationSignals()
{
    m_notifier.reset();
    if (m_fd >= 0)
        ::close(m_fd);
}

void TerminationSignals::drain()
{
    signalfd_siginfo info{};
    bool any = false;
    while (::read(m_fd, &info, sizeof info) == ssize_t(sizeof info))
        any = true;
    if (any)
        emit received();
}

