#include "simulator/PackageServerLog.h"

#include <QJsonArray>

#include <algorithm>

namespace vorn {

namespace {

QString nameOf(ServedRequest::End end)
{
    switch (end) {
    case ServedRequest::End::Running:
        return QStringLiteral("running");
    case ServedRequest::End::Complete:
        return QStringLiteral("complete");
    case ServedRequest::End::Abandoned:
        return QStringLiteral("abandoned");
    }
    return {};
}

} // namespace

QJsonObject PackageServerReport::toJson() const
{
    QJsonArray list;
    for (const ServedRequest &request : requests) {
        list.append(QJsonObject{
            {QStringLiteral("method"), QString::fromLatin1(request.method)},
            {QStringLiteral("target"), QString::fromLatin1(request.target)},
            {QStringLiteral("secure"), request.secure},
            {QStringLiteral("status"), request.status},
            {QStringLiteral("bodyBytes"), request.bodyBytes},
            {QStringLiteral("end"), nameOf(request.end)},
        });
    }
    return {{QStringLiteral("connections"), connections},
            {QStringLiteral("plainConnections"), plainConnections},
            {QStringLiteral("requests"), list}};
}

void PackageServerLog::connected(bool secure)
{
    const std::lock_guard lock(m_mutex);
    ++(secure ? m_report.connections : m_report.plainConnections);
}

qsizetype PackageServerLog::began(const ServedRequest &request)
{
    qsizetype index = 0;
    {
        const std::lock_guard lock(m_mutex);
        index = m_report.requests.size();
        m_report.requests.append(request);
    }
    m_changed.notify_all();
    return index;
}

void PackageServerLog::sent(qsizetype request, qint64 bodyBytes)
{
    const std::lock_guard lock(m_mutex);
    m_report.requests[request].bodyBytes += bodyBytes;
}

void PackageServerLog::ended(qsizetype request, ServedRequest::End end)
{
    {
        const std::lock_guard lock(m_mutex);
        m_report.requests[request].end = end;
    }
    m_changed.notify_all();
}

PackageServerReport PackageServerLog::report() const
{
    const std::lock_guard lock(m_mutex);
    PackageServerReport copy{m_report.connections, m_report.plainConnections, {}};
    for (ServedRequest request : m_report.requests) {
        // Deep copies: no memory is shared across threads but under the lock.
        request.method = QByteArray(request.method.constData(), request.method.size());
        request.target = QByteArray(request.target.constData(), request.target.size());
        copy.requests.append(request);
    }
    return copy;
}

bool PackageServerLog::waitForRequests(qsizetype count, std::chrono::milliseconds limit) const
{
    std::unique_lock lock(m_mutex);
    return m_changed.wait_for(lock, limit, [&] { return m_report.requests.size() >= count; });
}

bool PackageServerLog::waitForEnds(qsizetype count, std::chrono::milliseconds limit) const
{
    const auto ended = [](const ServedRequest &request) {
        return request.end != ServedRequest::End::Running;
    };
    std::unique_lock lock(m_mutex);
    return m_changed.wait_for(lock, limit, [&] {
        return std::count_if(m_report.requests.cbegin(), m_report.requests.cend(), ended) >= count;
    });
}

} // namespace vorn
