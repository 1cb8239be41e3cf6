#include "simulator/PackageServer.h"

#include "simulator/PackageServerLog.h"
#include "simulator/PackageServerThread.h"

#include <QTemporaryFile>

#include <utility>

namespace vorn {

PackageServer::PackageServer(PackageAnswer answer, CertificateKind certificate)
    : m_problem(packageAnswerProblem(answer)), m_kind(certificate),
      m_authorityFile(std::make_unique<QTemporaryFile>()),
      m_log(std::make_unique<PackageServerLog>()),
      m_thread(std::make_unique<PackageServerThread>(std::move(answer), *m_log))
{
}

PackageServer::~PackageServer() = default;

bool PackageServer::start(QString *problem, quint16 port)
{
    QString why = m_problem;
    bool good = why.isEmpty();
    if (good) {
        std::optional<ServerCertificate> made = makeServerCertificate(m_kind, &why);
        good = made.has_value();
        if (good)
            m_certificate = std::move(*made);
    }
    if (good && (!m_authorityFile->open() || m_authorityFile->write(m_certificate.authority) < 0 ||
                 !m_authorityFile->flush())) {
        why = m_authorityFile->errorString();
        good = false;
    }
    good = good && m_thread->start(m_certificate, port, &why);
    if (problem != nullptr)
        *problem = why;
    return good;
}

quint16 PackageServer::port() const
{
    return m_thread->port();
}

quint16 PackageServer::plainPort() const
{
    return m_thread->plainPort();
}

QString PackageServer::host() const
{
    return QStringLiteral("127.0.0.1:%1").arg(port());
}

const QByteArray &PackageServer::authority() const
{
    return m_certificate.authority;
}

QString PackageServer::authorityFile() const
{
    return m_authorityFile->fileName();
}

bool PackageServer::setAnswer(PackageAnswer answer)
{
    if (!packageAnswerProblem(answer).isEmpty())
        return false;
    m_thread->setAnswer(std::move(answer));
    return true;
}

PackageServerReport PackageServer::report() const
{
    return m_log->report();
}

bool PackageServer::waitForRequests(int count, std::chrono::milliseconds limit) const
{
    return m_log->waitForRequests(count, limit);
}

bool PackageServer::waitForEnds(int count, std::chrono::milliseconds limit) const
{
    return m_log->waitForEnds(count, limit);
}

} // namespace vorn
