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
    Latest     // what the sample package brings: newer images, and one of the installed ones
};

// Firmware images for every family of models, 40 to 120 kB of content that looks random and is the
// same at every call. No device could run them.
std::vector<SampleImage> sampleFirmware(SampleRelease release);

// Writes the installed release into the folder, which is made when it does not exist. False, with
// the reason in *problem, when a file cannot be written.
bool writeSampleFirmware(const QString &folder, QString *problem);

} // namespace vorn
