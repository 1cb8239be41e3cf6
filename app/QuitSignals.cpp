#include "app/QuitSignals.h"

#include <QCoreApplication>
#include <QSocketNotifier>

#include <csignal>
#include <sys/signalfd.h>

namespace vorn {

QuitSignals::QuitSignals()
{
    sigset_t set;
    sigemptyset(&set);
    for (const int number : {SIGINT, SIGTERM, SIGHUP})
        sigaddset(&set, number);
    m_fd = FileDescriptor(::signalfd(-1, &set, SFD_CLOEXEC | SFD_NONBLOCK));
    // Without the descriptor the signals keep their deadly meaning.
    if (m_fd.isValid())
        ::pthread_sigmask(SIG_BLOCK, &set, nullptr);
}

QuitSignals::~QuitSignals() = default;

void QuitSignals::watch()
{
    if (!m_fd.isValid())
        return;
    m_notifier = std::make_unique<QSocketNotifier>(m_fd.get(), QSocketNotifier::Read);
    QObject::connect(m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(), [this] {
        m_notifier->setEnabled(false);
        QCoreApplication::quit();
    });
}

} // namespace vorn
