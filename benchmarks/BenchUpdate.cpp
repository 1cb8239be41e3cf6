// Updates simulated devices through the whole program (event loop, port, updater, a window that
// shows the progress) and compares its speed with a bare loop of write and read on the same kind of
// terminal, and with what a serial line itself needs.

#include "platform/FileDescriptor.h"
#include "serial/ORSSerialPort.h"
#include "simulator/SimulatedDevice.h"
#include "update/Frames.h"
#include "update/Updater.h"
#include "window/MainWindow.h"

#include <QApplication>
#include <QEventLoop>
#include <QLabel>
#include <QLoggingCategory>
#include <QTemporaryDir>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
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
constexpr double kAllowedOnTheLine = 1.10;

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
    std::vector<QByteArray> frames{DownloadHeader(static_cast<quint32>(image.size()))};
    const QByteArrayView bytes(image);
    qsizetype at = 0;
    for (; bytes.size() - at >= kDataFrameBytes; at += kDataFrameBytes)
        frames.push_back(DataFrame(bytes.sliced(at, kDataFrameBytes)));
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

// The program's parts around an update, wired as in the program.
class WholeProgram : public ORSSerialPortDelegate, public UpdateObserver
{
public:
    explicit WholeProgram(const QString &path) : m_updater(this)
    {
        m_window.show();
        SerialDevice device;
        device.calloutDevice = path;
        device.ttyDevice = QStringLiteral("usbserial-bench");
        m_port = ORSSerialPort::serialPortWithDevice(std::make_shared<SerialDevice>(device));
        m_port->setDelegate(this);
        m_port->setBaudRate(kBaud);
        m_port->open();
    }
    ~WholeProgram() override = default;
    WholeProgram(const WholeProgram &) = delete;
    WholeProgram &operator=(const WholeProgram &) = delete;

    bool update(const QString &imagePath)
    {
        m_updater.startUpdate(m_port, imagePath);
        m_loop.exec();
        return m_succeeded;
    }

    void serialPortWasRemovedFromSystem(ORSSerialPort &) override {}
    void serialPortDidReceiveData(ORSSerialPort &, const QByteArray &data) override
    {
        m_updater.serialPortDidReceiveData(data);
    }
    void showUpdateText(const QString &text) override { m_label->setText(text); }
    void updateDidBegin() override { m_window.resetUpdateProgress(); }
    void updateDidProgress(int percent) override { m_window.showUpdateProgress(percent); }
    void updateIsErasing() override { m_window.showUpdateBusy(); }
    void updateDidEnd(const UpdateResult &result) override
    {
        m_succeeded = result.succeeded();
        m_loop.quit();
    }
    void versionQueryDidEnd() override {}

private:
    MainWindow m_window;
    QLabel *const m_label = m_window.findChild<QLabel *>(QStringLiteral("updateText_1015"));
    QEventLoop m_loop;
    Updater m_updater;
    ORSSerialPortPtr m_port;
    bool m_succeeded = false;
};

// A device, a terminal of its own and a way to update it; the times of its data frames.
struct Subject
{
    explicit Subject(const DeviceOptions &options = {}) : device(options) {}

    // From the release of the first data frame to the final answer, as the device saw it.
    std::optional<Microseconds> timeOf(bool succeeded, const QByteArray &image) const
    {
        const DeviceReport report = device.report();
        if (!succeeded || report.image != image || report.errorCount > 0) {
            std::fprintf(stderr, "An update failed\n");
            return std::nullopt;
        }
        return report.times.toLastAnswer - report.times.toRelease;
    }

    SimulatedDevice device;
};

double median(std::vector<double> values)
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

bool report(const char *name, double ratio, double allowed)
{
    const bool met = ratio <= allowed;
    std::printf("%s: ratio %.2f (allowed: %.2f): %s\n", name, ratio, allowed,
                met ? "met" : "MISSED");
    return met;
}

bool compareWithBareLoop(const QString &folder, int rounds)
{
    const QByteArray image = imageOf(kFramesPerRun * kDataFrameBytes);
    const std::vector<QByteArray> frames = framesOf(image);
    const QString path = folder + QStringLiteral("/bench.bin");
    QFile file(path);
    Subject bareSubject;
    Subject programSubject;
    if (!file.open(QIODevice::WriteOnly) || file.write(image) != image.size() || !file.flush() ||
        !bareSubject.device.start() || !programSubject.device.start())
        return false;
    BareLoop bare(bareSubject.device.path());
    WholeProgram program(programSubject.device.path());

    std::vector<double> bareTimes;
    std::vector<double> programTimes;
    // The first round warms up and does not count.
    for (int round = 0; round <= rounds; ++round) {
        const auto bareTime = bareSubject.timeOf(bare.update(frames), image);
        const auto programTime = programSubject.timeOf(program.update(path), image);
        if (!bareTime || !programTime)
            return false;
        if (round > 0) {
            bareTimes.push_back(bareTime->count() / kFramesPerRun);
            programTimes.push_back(programTime->count() / kFramesPerRun);
        }
    }
    const double base = median(bareTimes);
    const double whole = median(programTimes);
    std::printf(
        "Time per data frame, device with instant answers, medians of %d runs of %d frames\n"
        "%-28s %8.1f us\n%-28s %8.1f us\n",
        rounds, static_cast<int>(kFramesPerRun), "bare write 252 / read 1", base, "whole program",
        whole);
    return report("Whole program to bare loop", whole / base, kAllowedPerFrame);
}

bool compareWithLine(const QString &folder)
{
    const QByteArray image = imageOf(kPacedLength);
    const std::vector<QByteArray> frames = framesOf(image);
    qsizetype bytes = 0;
    for (auto frame = frames.begin() + 1; frame != frames.end(); ++frame)
        bytes += frame->size() + 1; // and its acknowledgement
    const double lineSeconds = static_cast<double>(bytes) * kBitsPerByte / kBaud;

    DeviceOptions options;
    options.baud = kBaud;
    const QString path = folder + QStringLiteral("/paced.bin");
    QFile file(path);
    Subject subject(options);
    if (!file.open(QIODevice::WriteOnly) || file.write(image) != image.size() || !file.flush() ||
        !subject.device.start())
        return false;
    WholeProgram program(subject.device.path());
    std::vector<double> seconds;
    for (int round = 0; round < kPacedRounds; ++round) {
        const auto time = subject.timeOf(program.update(path), image);
        if (!time)
            return false;
        seconds.push_back(time->count() / 1e6);
    }
    std::printf("\n1 MiB to a device paced at 2 Mbaud with instant answers, median of %d\n"
                "%-28s %8.3f s\n%-28s %8.3f s\n",
                kPacedRounds, "the line's own time", lineSeconds, "whole program", median(seconds));
    return report("Whole program to line", median(seconds) / lineSeconds, kAllowedOnTheLine);
}

} // namespace

// bench_update [ROUNDS]: 0 when the targets are met.
int main(int argc, char **argv)
{
    if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    const QApplication application(argc, argv);
    QLoggingCategory::setFilterRules(QStringLiteral("vorn.*.info=false"));
    const QTemporaryDir folder;
    const int rounds = QCoreApplication::arguments().value(1).toInt();
    const bool fast = compareWithBareLoop(folder.path(), rounds > 0 ? rounds : kDefaultRounds);
    const bool onTheLine = compareWithLine(folder.path());
    return fast && onTheLine ? 0 : 1;
}
