#pragma once

#include "simulator/PackageServerReport.h"

#include <chrono>
#include <condition_variable>
#include <mutex>

namespace vorn {

// Keeps the report of a package server. The server's thread writes; any thread reads or waits.
class PackageServerLog
{
public:
    void connected(bool secure);
    // A request begins; the result names it in the calls below.
    qsizetype began(const ServedRequest &request);
    void sent(qsizetype request, qint64 bodyBytes);
    void ended(qsizetype request, ServedRequest::End end);

    PackageServerReport report() const;
    bool waitForRequests(qsizetype count, std::chrono::milliseconds limit) const;
    bool waitForEnds(qsizetype count, std::chrono::milliseconds limit) const;

private:
    mutable std::mutex m_mutex;
    mutable std::condition_variable m_changed;
    PackageServerReport m_report;
};

} // namespace vorn
