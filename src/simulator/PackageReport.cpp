#include "simulator/PackageReport.h"

#include <QJsonArray>

#include <array>

namespace vorn {

QJsonObject PackageServerReport::toJson() const
{
    constexpr std::array kEnds{"running", "complete", "abandoned"}; // in the enumerators' order
    QJsonArray list;
    for (const ServedRequest &request : requests) {
        list.append(
            QJsonObject{{QStringLiteral("method"), QString::fromLatin1(request.method)},
                        {QStringLiteral("target"), QString::fromLatin1(request.target)},
                        {QStringLiteral("secure"), request.secure},
                        {QStringLiteral("status"), request.status},
                        {QStringLiteral("bodyBytes"), request.bodyBytes},
                        {QStringLiteral("end"), kEnds.at(static_cast<std::size_t>(request.end))}});
    }
    return {{QStringLiteral("connections"), connections},
            {QStringLiteral("plainConnections"), plainConnections},
            {QStringLiteral("requests"), list}};
}

} // namespace vorn
