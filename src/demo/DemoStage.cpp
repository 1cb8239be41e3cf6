#include "demo/DemoStage.h"

#include "simulator/SampleFirmware.h"

#include <QDir>

namespace vorn {
namespace {

DeviceOptions demoDevice(const QString &directory)
{
    DeviceOptions options;
    options.directory = directory;
    options.name = QStringLiteral("usbserial-demo");
    options.modelCode = 8;
    options.eraseTime = std::chrono::milliseconds(500);
    options.baud = 2000000;
    return options;
}

PackageAnswer demoPackage()
{
    PackageAnswer answer;
    answer.package = samplePackage();
    answer.lastModified = "Sat, 14 Nov 2026 09:30:00 GMT";
    // Slow enough for its progress to be seen.
    answer.bytesPerSecond = 400000;
    return answer;
}

} // namespace

DemoStage::DemoStage(const QString &directory)
    : m_directory(directory), m_device(demoDevice(deviceDirectory())), m_server(demoPackage())
{
}

bool DemoStage::start(QString &problem)
{
    for (const QString &path : {deviceDirectory(), cacheDirectory(), configDirectory()}) {
        if (!QDir().mkpath(path)) {
            problem = QStringLiteral("Cannot create the directory ") + path;
            return false;
        }
    }
    return writeSampleFirmware(firmwareFolder(), &problem) && m_device.start(&problem) &&
           m_server.start(&problem);
}

QString DemoStage::firmwareFolder() const
{
    return cacheDirectory() + QStringLiteral("/VornUpdate2");
}

} // namespace vorn
