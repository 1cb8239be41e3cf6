#pragma once

#include "simulator/PackageServer.h"
#include "simulator/SimulatedDevice.h"

#include <QString>

namespace vorn {

// What the demonstration plays on: a simulated device, a package server, and a private folder for
// the firmware, so that nothing of the user's is touched. All of it is gone afterwards.
class DemoStage
{
public:
    // `directory` is an empty one of the caller's.
    explicit DemoStage(const QString &directory);

    // False, with the reason, when something could not be set up.
    bool set(QString &problem);

    QString deviceDirectory() const { return m_directory + QStringLiteral("/devices"); }
    QString cacheDirectory() const { return m_directory + QStringLiteral("/cache"); }
    QString configDirectory() const { return m_directory + QStringLiteral("/config"); }
    QString firmwareFolder() const;
    // HOST:PORT of the package server, and the file with the certificate to trust it by.
    QString packageHost() const { return m_server.host(); }
    QString packageCaFile() const { return m_server.authorityFile(); }

    const SimulatedDevice &device() const { return m_device; }

private:
    const QString m_directory;
    SimulatedDevice m_device;
    PackageServer m_server;
};

} // namespace vorn
