// How long the command line takes for eight devices at once, beside one.
#include "benchmarks/Programs.h"
#include "simulator/SimulatedDevice.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <array>
#include <cstdio>
#include <memory>

namespace {

using namespace vorn;

constexpr int kRounds = 3;
constexpr int kBaud = 2'000'000;
constexpr qsizetype kLength = 1024 * 1024;
constexpr std::array kDevices{8, 1};
constexpr double kAllowed = 1.2;

// Seconds that `update --all` takes for so many devices; no value unless each got the image.
std::optional<double> updateAll(int count, const QByteArray &image)
{
    const QTemporaryDir folder;
    const QString imagePath = folder.filePath(QStringLiteral("image.bin"));
    QFile file(imagePath);
    const QString directory = folder.filePath(QStringLiteral("devices"));
    if (!QDir().mkpath(directory) || !file.open(QIODevice::WriteOnly) ||
        file.write(image) != image.size() || !file.flush())
        return std::nullopt;
    std::vector<std::unique_ptr<SimulatedDevice>> devices;
    for (int i = 0; i < count; ++i) {
        DeviceOptions options;
        options.directory = directory;
        options.name = QStringLiteral("usbserial-%1").arg(i);
        options.baud = kBaud;
        devices.push_back(std::make_unique<SimulatedDevice>(options));
        if (!devices.back()->start())
            return std::nullopt;
    }
    const auto run =
        runProgram({builtProgram(QStringLiteral("vornupdater-cli")), QStringLiteral("--device-dir"),
                    directory, QStringLiteral("update"), QStringLiteral("--all"),
                    QStringLiteral("--firmware"), imagePath});
    for (const auto &device : devices)
        if (device->report().image != image)
            return std::nullopt;
    return run ? std::optional(run->wall) : std::nullopt;
}

} // namespace

// bench_side_by_side: 0 when the target is met.
int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    const QByteArray image = QByteArray("firmware").repeated(kLength / 8);
    std::array<std::vector<double>, kDevices.size()> times;
    for (int round = 0; round < kRounds; ++round) {
        for (std::size_t i = 0; i < kDevices.size(); ++i) {
            const auto seconds = updateAll(kDevices[i], image);
            if (!seconds) {
                std::fprintf(stderr, "An update failed\n");
                return 1;
            }
            times[i].push_back(*seconds);
        }
    }
    const double ratio = median(times[0]) / median(times[1]);
    std::printf("vornupdater-cli update --all, 1 MiB to devices paced at 2 Mbaud, medians of %d\n"
                "%d devices %8.3f s\n%d device  %8.3f s\nEight to one: ratio %.2f (allowed: %.2f): "
                "%s\n",
                kRounds, kDevices[0], median(times[0]), kDevices[1], median(times[1]), ratio,
                kAllowed, ratio <= kAllowed ? "met" : "MISSED");
    return ratio <= kAllowed ? 0 : 1;
}
