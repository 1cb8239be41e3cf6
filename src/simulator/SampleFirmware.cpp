#include "simulator/SampleFirmware.h"

#include "ziparchive/ZipArchive.h"

#include <QDir>
#include <QSaveFile>
#include <QTemporaryDir>

#include <array>
#include <chrono>
#include <random>

namespace vorn {

namespace {

struct Sample
{
    const char *name;
    qsizetype size;
    bool installed;
    bool latest;
};

constexpr std::array<Sample, 9> kSamples{{
    {"VORN_I-1.0.4.bin", 40'960, true, false},
    {"VORN_I-1.1.0.bin", 44'213, true, true},
    {"VORN_I-1.2.0.bin", 45'250, false, true}, // a multiple of a frame's 250 bytes
    {"VORN-2.3.1.bin", 65'536, true, false},
    {"VORN-2.4.0.bin", 67'301, false, true},
    {"VORN_PLATINA-3.0.0.bin", 98'304, true, false},
    {"VORN_PLATINA-3.1.2.bin", 102'843, true, true},
    {"VORN_PLATINA-3.2.0.bin", 104'000, false, true},
    {"VORN_PLATINA-3.3.0-beta.bin", 119'999, false, true},
}};

QByteArray content(const Sample &sample, quint32 seed)
{
    // The language standard defines the engine's sequence, so the bytes are the same everywhere.
    std::mt19937 engine(seed);
    QByteArray bytes(sample.size, Qt::Uninitialized);
    for (char &byte : bytes)
        byte = static_cast<char>(engine() & 0xFFU);
    return bytes;
}

} // namespace

std::vector<SampleImage> sampleFirmware(SampleRelease release)
{
    std::vector<SampleImage> images;
    quint32 seed = 0;
    for (const Sample &sample : kSamples) {
        ++seed;
        if (release == SampleRelease::Latest ? sample.latest : sample.installed)
            images.push_back({QLatin1String(sample.name), content(sample, seed)});
    }
    return images;
}

bool writeSampleFirmware(const QString &folder, QString *problem)
{
    if (!QDir().mkpath(folder)) {
        *problem = QStringLiteral("%1: the folder cannot be created").arg(folder);
        return false;
    }
    for (const SampleImage &image : sampleFirmware(SampleRelease::Installed)) {
        QSaveFile file(QDir(folder).filePath(image.name));
        if (!file.open(QIODevice::WriteOnly) || file.write(image.bytes) != image.bytes.size() ||
            !file.commit()) {
            *problem = QStringLiteral("%1: %2").arg(file.fileName(), file.errorString());
            return false;
        }
    }
    return true;
}

QByteArray samplePackage()
{
    using namespace std::chrono;
    FileAttributes attributes;
    attributes.modificationDate = sys_days{2025y / January / 15} + 12h;
    const QTemporaryDir directory;
    QFile file(directory.filePath(QStringLiteral("package.zip")));
    ZipArchive zip;
    bool good = zip.CreateZipFile2(file.fileName()) &&
                zip.addDataToZip(QByteArray(), attributes, QStringLiteral("VornUpdate2/"));
    for (const SampleImage &image : sampleFirmware(SampleRelease::Latest))
        good = good && zip.addDataToZip(image.bytes, attributes,
                                        QStringLiteral("VornUpdate2/") + image.name);
    good = zip.CloseZipFile2() && good && file.open(QIODevice::ReadOnly);
    return good ? file.readAll() : QByteArray();
}

} // namespace vorn
