#include "simulator/PackageReport.h"

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

qsizetype PackageServerReport::endedRequests() const
{
    return std::count_if(requests.cbegin(), requests.cend(), [](const ServedRequest &request) {
        return request.end != ServedRequest::End::Running;
    });
}

QJsonObject PackageServerReport::toJson() const
{
    QJsonArray list;
    for (const ServedRequest &request : requests) {
        list.append(QJsonObject{{QStringLiteral("method"), QString::fromLatin1(request.method)},
                                {QStringLiteral("target"), QString::fromLatin1(request.target)},
                                {QStringLiteral("secure"), request.secure},
                                {QStringLiteral("status"), request.status},
                                {QStringLiteral("bodyBytes"), request.bodyBytes},
                                {QStringLiteral("end"), nameOf(request.end)}});
    }
    return {{QStringLiteral("connections"), connections},
            {QStringLiteral("plainConnections"), plainConnections},
            {QStringLiteral("requests"), list}};
}

} // namespace vorn
