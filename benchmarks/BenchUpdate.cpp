// Updates simulated devices through the whole program, window and controller included, and compares
// its speed with a bare loop of write and read on the same kind of device.

#include "app/ViewController.h"
#include "benchmarks/Programs.h"
#include "platform/Directories.h"
#include "platform/DirectoryDeviceRegistry.h"
#include "platform/FileDescriptor.h"
#include "simulator/SimulatedDevice.h"
#include "update/BootParameters.h"
#include "update/Frames.h"
#include "window/MainWindow.h"

#include <QApplication>
#include <QComboBox>
#include <QDir>
#include <QLabel>
#include <QLoggingCategory>
#include <QTemporaryDir>
#include <QTimer>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <functional>
#include <optional>
#include <vector>

namespace {

using namespace vorn;
using Microseconds = std::chrono::duration<double, std::micro>;

constexpr int kDefaultRounds = 15;
constexpr qsizetype kFramesPerRun = 1000;
constexpr double kAllowedPerFrame = 3.0;

constexpr int kBaud = 2'000'000;
constexpr int kBitsPerByte = 10; // a start bit, eight data bits, a stop bit
constexpr int kPacedRounds = 3;
constexpr qsizetype kPacedLength = 1024 * 1024;
constexpr double kAllowedPaced = 1.10;

QByteArray imageOf(qsizetype length)
{
    QByteArray image(length, Qt::Uninitialized);
    quint32 state = 1;
    for (char &byte : image) {
        state = state * 1664525U + 1013904223U;
        byte = static_cast<char>(state >> 24U);
    }
    return image;
}

// What goes over the line from the download header on.
std::vector<QByteArray> framesOf(const QByteArray &image)
{
    std::vector<QByteArray> frames{
        DownloadHeader(kDeviceFamilies.front().loadAddress, static_cast<quint32>(image.size()))};
    const QByteArrayView bytes(image);
    const qsizetype perFrame = kDeviceFamilies.front().imageBytesPerFrame;
    qsizetype at = 0;
    for (; bytes.size() - at >= perFrame; at += perFrame)
        frames.push_back(DataFrame(bytes.sliced(at, perFrame)));
    frames.push_back(LastDataFrame(bytes.sliced(at)));
    return frames;
}

class BareLoop
{
public:
    explicit BareLoop(const QString &path)
        : m_fd(::open(path.toLocal8Bit().constData(), O_RDWR | O_NOCTTY | O_CLOEXEC))
    {
    }

    bool update(const std::vector<QByteArray> &frames)
    {
        const QByteArray sync(1, static_cast<char>(SyncByte));
        if (!ask(sync, 1) || !ask(CmdConnect(), 4) || !ask(CmdQueryVersion(), 1) ||
            !ask(CmdDownload(), 1) || !ask(frames.front(), 2))
            return false;
        return std::all_of(frames.begin() + 1, frames.end(),
                           [this](const QByteArray &frame) { return ask(frame, 1); });
    }

private:
    bool ask(const QByteArray &frame, ssize_t answerLength)
    {
        if (::write(m_fd.get(), frame.constData(), static_cast<size_t>(frame.size())) !=
            frame.size())
            return false;
        std::array<char, 4> answer{};
        while (answerLength > 0) {
            const ssize_t count =
                ::read(m_fd.get(), answer.data(), static_cast<size_t>(answerLength));
            if (count <= 0 || static_cast<quint8>(answer[0]) == NakByte)
                return false;
            answerLength -= count;
        }
        return true;
    }

    FileDescriptor m_fd;
};

// The program's window and controller on a simulated device, pressed like by a user.
class WholeProgram
{
public:
    // The device appears in the directory that the program watches.
    explicit WholeProgram() : m_controller(m_window, PackageLocation())
    {
        m_controller.viewDidLoad();
        m_window.show();
    }

    // Opens the device that is plugged in, and chooses the one firmware file.
    bool open()
    {
        auto *files = m_window.findChild<QComboBox *>(QStringLiteral("firmwareList_1002"));
        // Also until the device's arrival, which rebuilds the list, has been told.
        waitUntil([] { return false; }, kSettled);
        if (!m_controller.serialPort())
            return false;
        m_controller.openHandleBtn();
        waitUntil([] { return false; }, kSettled);
        files->setCurrentIndex(files->findText(kFile));
        emit files->activated(files->currentIndex());

        return files->currentText() == kFile;
    }
    bool update()
    {
        m_status->setText(QString());
        m_controller.send();
        waitUntil([&] {
            return m_status->text().contains(u"successfully update") ||
                   m_status->text().contains(u"try again");
        });
        return m_status->text().contains(u"successfully update");
    }

    static inline const QString kFile = QStringLiteral("VORN_PLATINA-bench.bin");

private:
    static constexpr std::chrono::seconds kLimit{120};
    static constexpr std::chrono::milliseconds kSettled{700}; // after which both lists stay

    static bool waitUntil(const std::function<bool()> &condition,
                          std::chrono::milliseconds limit = kLimit)
    {
        QTimer lookAgain;
        lookAgain.start(20);
        const auto deadline = std::chrono::steady_clock::now() + limit;
        while (!condition() && std::chrono::steady_clock::now() < deadline)
            QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
        return condition();
    }

    MainWindow m_window;
    ViewController m_controller;
    QLabel *const m_status = m_window.findChild<QLabel *>(QStringLiteral("updateText_1015"));
};

// The directory that stands for the system's devices, and the firmware folder.
struct Stage
{
    Stage()
    {
        qputenv("XDG_CACHE_HOME", QFile::encodeName(folder.filePath(QStringLiteral("cache"))));
        QDir(folder.path()).mkpath(QStringLiteral("devices"));
        QDir(cachesDirectory()).mkpath(QStringLiteral("VornUpdate2"));
        SerialDeviceRegistry::setSystem(std::make_unique<DirectoryDeviceRegistry>(devices()));
    }
    QString devices() const { return folder.filePath(QStringLiteral("devices")); }
    static bool writeFirmware(const QByteArray &image)
    {
        QFile file(cachesDirectory() + QStringLiteral("/VornUpdate2/") + WholeProgram::kFile);
        return file.open(QIODevice::WriteOnly) && file.write(image) == image.size();
    }

    const QTemporaryDir folder;
};

// From the release of the first data frame to the final answer, as the device saw it.
std::optional<Microseconds> timeOf(const SimulatedDevice &device, bool succeeded,
                                   const QByteArray &image)
{
    const DeviceReport report = device.report();
    if (!succeeded || report.image != image || report.errorCount > 0) {
        std::fprintf(stderr, "An update failed\n");
        return std::nullopt;
    }
    return report.times.toLastAnswer - report.times.toRelease;
}

bool report(const char *name, double ratio, double allowed)
{
    const bool met = ratio <= allowed;
    std::printf("%s: ratio %.2f (allowed: %.2f): %s\n", name, ratio, allowed,
                met ? "met" : "MISSED");
    return met;
}

struct Medians
{
    double bare = 0;
    double program = 0; // both in microseconds
};

// The same image by the bare loop and by the program, in turns, each on a device of its own.
std::optional<Medians> compare(const Stage &stage, const DeviceOptions &options,
                               const QByteArray &image, int rounds)
{
    const std::vector<QByteArray> frames = framesOf(image);
    SimulatedDevice bareDevice(options);
    DeviceOptions named = options;
    named.directory = stage.devices();
    named.name = QStringLiteral("usbserial-bench");
    SimulatedDevice programDevice(named);
    if (!Stage::writeFirmware(image) || !bareDevice.start() || !programDevice.start())
        return std::nullopt;
    BareLoop bare(bareDevice.path());
    WholeProgram program;
    if (!program.open()) {
        std::fprintf(stderr, "The device cannot be opened or its file not chosen\n");
        return std::nullopt;
    }
    std::vector<double> bareTimes;
    std::vector<double> programTimes;
    // The first round warms up and does not count.
    for (int round = 0; round <= rounds; ++round) {
        const auto bareTime = timeOf(bareDevice, bare.update(frames), image);
        const auto programTime = timeOf(programDevice, program.update(), image);
        if (!bareTime || !programTime)
            return std::nullopt;
        if (round > 0) {
            bareTimes.push_back(bareTime->count());
            programTimes.push_back(programTime->count());
        }
    }
    return Medians{median(bareTimes), median(programTimes)};
}

bool compareOnInstantDevice(const Stage &stage, int rounds)
{
    const QByteArray image = imageOf(kFramesPerRun * kDeviceFamilies.front().imageBytesPerFrame);
    const auto times = compare(stage, {}, image, rounds);
    if (!times)
        return false;
    std::printf(
        "Time per data frame, device with instant answers, medians of %d runs of %d frames\n"
        "%-28s %8.1f us\n%-28s %8.1f us\n",
        rounds, static_cast<int>(kFramesPerRun), "bare write 252 / read 1",
        times->bare / kFramesPerRun, "whole program", times->program / kFramesPerRun);
    return report("Whole program to bare loop", times->program / times->bare, kAllowedPerFrame);
}

bool compareOnPacedDevice(const Stage &stage)
{
    const QByteArray image = imageOf(kPacedLength);
    const std::vector<QByteArray> frames = framesOf(image);
    qsizetype bytes = 0;
    for (auto frame = frames.begin() + 1; frame != frames.end(); ++frame)
        bytes += frame->size() + 1; // and its acknowledgement
    const double line = static_cast<double>(bytes) * kBitsPerByte / kBaud * 1e6;

    DeviceOptions options;
    options.baud = kBaud;
    const auto times = compare(stage, options, image, kPacedRounds);
    if (!times)
        return false;
    std::printf("\n1 MiB to a device paced at 2 Mbaud with instant answers, medians of %d\n"
                "%-28s %8.3f s\n%-28s %8.3f s  (%.2f of the line)\n"
                "%-28s %8.3f s  (%.2f of the line)\n",
                kPacedRounds, "the line's own time", line / 1e6, "bare write 252 / read 1",
                times->bare / 1e6, times->bare / line, "whole program", times->program / 1e6,
                times->program / line);
    return report("Whole program to bare loop", times->program / times->bare, kAllowedPaced);
}

} // namespace

// bench_update [ROUNDS]: 0 when the targets are met.
int main(int argc, char **argv)
{
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    QLoggingCategory::setFilterRules(QStringLiteral("vorn.*.info=false"));
    const Stage stage;
    const int rounds = QCoreApplication::arguments().value(1).toInt();
    const bool fast = compareOnInstantDevice(stage, rounds > 0 ? rounds : kDefaultRounds);
    const bool onTheLine = compareOnPacedDevice(stage);
    return fast && onTheLine ? 0 : 1;
}
