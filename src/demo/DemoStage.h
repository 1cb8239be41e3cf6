#pragma once

#include "simulator/PackageServer.h"
#include "simulator/SimulatedDevice.h"

#include <QString>

namespace vorn {

// What the demonstration needs: a simulated device, a package server, and firmware and settings in
// directories of their own, so that the user's are left alone.
class DemoStage
{
public:
    // `directory` is empty and belongs to the caller, who removes it.
    explicit DemoStage(const QString &directory);

    // Starts everything. Returns false, with the reason, if something could not be started.
    bool start(QString &problem);

    QString deviceDirectory() const { return m_directory + QStringLiteral("/devices"); }
    QString cacheDirectory() const { return m_directory + QStringLiteral("/cache"); }
    QString configDirectory() const { return m_directory + QStringLiteral("/config"); }
    QString firmwareFolder() const;
    // HOST:PORT of the package server, and the file (PEM) with the CA to trust for it.
    QString packageHost() const { return m_server.host(); }
    QString packageCaFile() const { return m_server.authorityFile(); }

    const SimulatedDevice &device() const { return m_device; }

private:
    const QString m_directory;
    SimulatedDevice m_device;
    PackageServer m_server;
};

} // namespace vorn
