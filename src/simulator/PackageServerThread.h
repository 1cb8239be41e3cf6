#pragma once

#include "simulator/PackageServerLog.h"
#include "simulator/PackageServerOptions.h"
#include "simulator/ServerCertificate.h"
#include "simulator/UniqueFd.h"

#include <QString>

#include <condition_variable>
#include <mutex>
#include <thread>

namespace vorn {

// The thread of a package server, with an event loop of its own. Its end closes the ports and
// breaks what is still running.
class PackageServerThread
{
public:
    // The log must outlive the thread.
    PackageServerThread(PackageAnswer answer, PackageServerLog &log);
    ~PackageServerThread();
    PackageServerThread(const PackageServerThread &) = delete;
    PackageServerThread &operator=(const PackageServerThread &) = delete;

    // Listens; once. False, with the reason in *problem, when a port is not to be had.
    bool start(const ServerCertificate &certificate, quint16 port, QString *problem);

    quint16 port() const { return m_port; }
    quint16 plainPort() const { return m_plainPort; }

    void setAnswer(PackageAnswer answer);

private:
    PackageAnswer answer() const;
    void run(const ServerCertificate &certificate, quint16 port);
    void settle(const QString &problem);

    PackageServerLog &m_log;
    UniqueFd m_stop;            // eventfd
    mutable std::mutex m_mutex; // guards what follows
    std::condition_variable m_started;
    PackageAnswer m_answer;
    bool m_settled = false;
    QString m_problem;
    quint16 m_port = 0; // constant once started
    quint16 m_plainPort = 0;
    std::thread m_thread;
};

} // namespace vorn
