#include "simulator/PackageServerThread.h"

#include "simulator/PackageListeners.h"

#include <QEventLoop>
#include <QHostAddress>
#include <QSocketNotifier>
#include <QSslConfiguration>
#include <QSslKey>

#include <sys/eventfd.h>

#include <utility>

namespace vorn {

PackageServerThread::PackageServerThread(PackageAnswer answer, PackageServerLog &log)
    : m_log(log), m_stop(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)), m_answer(std::move(answer))
{
}

PackageServerThread::~PackageServerThread()
{
    if (!m_thread.joinable())
        return;
    // An event descriptor instead of a posted event: the hand-off is one that every tool sees.
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = ::write(m_stop.get(), &one, sizeof one);
    m_thread.join();
}

bool PackageServerThread::start(const ServerCertificate &certificate, quint16 port,
                                QString *problem)
{
    m_thread = std::thread([this, &certificate, port] { run(certificate, port); });
    std::unique_lock lock(m_mutex);
    m_started.wait(lock, [this] { return m_settled; });
    *problem = m_problem;
    return m_problem.isEmpty();
}

void PackageServerThread::setAnswer(PackageAnswer answer)
{
    const std::lock_guard lock(m_mutex);
    m_answer = std::move(answer);
}

PackageAnswer PackageServerThread::answer() const
{
    const std::lock_guard lock(m_mutex);
    return m_answer;
}

void PackageServerThread::settle(const QString &problem)
{
    {
        const std::lock_guard lock(m_mutex);
        m_problem = problem;
        m_settled = true;
    }
    m_started.notify_all();
}

void PackageServerThread::run(const ServerCertificate &certificate, quint16 port)
{
    QEventLoop loop; // the first of all: it gives the thread what sockets need
    const auto source = [this] { return answer(); };
    PlainListener plain(source, m_log);
    if (!plain.listen(QHostAddress::LocalHost)) {
        settle(plain.errorString());
        return;
    }
    m_plainPort = plain.serverPort();

    TlsListener tls(m_plainPort, source, m_log);
    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    configuration.setLocalCertificate(QSslCertificate(certificate.certificate));
    configuration.setPrivateKey(QSslKey(certificate.key, QSsl::Ec));
    configuration.setPeerVerifyMode(QSslSocket::VerifyNone);
    tls.setSslConfiguration(configuration);
    if (!tls.listen(QHostAddress::LocalHost, port)) {
        settle(tls.errorString());
        return;
    }
    m_port = tls.serverPort();

    const QSocketNotifier stop(m_stop.get(), QSocketNotifier::Read);
    QObject::connect(&stop, &QSocketNotifier::activated, &loop, &QEventLoop::quit);
    settle({});
    loop.exec();
}

} // namespace vorn
