#include "platform/QuitSignals.h"

#include <QCoreApplication>

#include <sys/signalfd.h>
#include <unistd.h>

#include <csignal>

namespace vorn {
namespace {

sigset_t quitSignals()
{
    sigset_t set;
    sigemptyset(&set);
    for (const int number : {SIGINT, SIGTERM, SIGHUP})
        sigaddset(&set, number);
    return set;
}

class EventLoopEnd final : public QuitSignalsObserver
{
public:
    bool quitSignalDidArrive(int /*signal*/) override
    {
        // quit() would first try to close the window, which stays open during an update.
        QCoreApplication::exit();
        return true;
    }
};

} // namespace

QuitSignals::QuitSignals()
{
    const sigset_t set = quitSignals();
    m_fd = FileDescriptor(::signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK));
    // If that failed, the signals keep their default action, which ends the program.
    if (m_fd.isValid())
        ::pthread_sigmask(SIG_BLOCK, &set, nullptr);
}

void QuitSignals::watch()
{
    static EventLoopEnd end;
    watch(end);
}

void QuitSignals::watch(QuitSignalsObserver &observer)
{
    if (!m_fd.isValid())
        return;
    const sigset_t set = quitSignals();
    ::pthread_sigmask(SIG_BLOCK, &set, nullptr);
    m_notifier = std::make_unique<QSocketNotifier>(m_fd.get(), QSocketNotifier::Read);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(), [&, this] {
        bool ends = false;
        signalfd_siginfo arrived{};
        while (::read(m_fd.get(), &arrived, sizeof arrived) > 0)
            ends = observer.quitSignalDidArrive(static_cast<int>(arrived.ssi_signo)) || ends;
        if (ends)
            letKill();
    });
}

void QuitSignals::letKill()
{
    sigset_t set = quitSignals();
    if (m_notifier) {
        m_notifier->setEnabled(false);
        sigdelset(&set, SIGHUP);
        // One that arrived too late to be handled does not kill.
        const timespec now{};
        while (::sigtimedwait(&set, nullptr, &now) > 0)
            continue;
    }
    ::pthread_sigmask(SIG_UNBLOCK, &set, nullptr);
}

} // namespace vorn
