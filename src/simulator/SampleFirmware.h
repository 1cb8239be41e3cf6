#pragma once

#include <QByteArray>
#include <QString>

#include <vector>

namespace vorn {

struct SampleImage
{
    QString name;
    QByteArray bytes;
};

enum class SampleRelease {
    Installed, // what a firmware folder holds before a download
    Latest     // what the sample package brings: newer images, and one that is installed already
};

// Firmware images for every family of models: 40 to 120 kB of random-looking content, the same at
// every call. No device could run them.
std::vector<SampleImage> sampleFirmware(SampleRelease release);

// Writes the installed release into the folder, which is created when it does not exist. False,
// with the reason in *problem, when a file cannot be written.
bool writeSampleFirmware(const QString &folder, QString *problem);

// A zip archive with the latest release in the folder VornUpdate2. Empty when no temporary file can
// be written.
QByteArray samplePackage();

} // namespace vorn
