// The serial port side by side with a bare loop of system calls and with other libraries, on the
// same kind of pseudo-terminal.
#include "benchmarks/FarSide.h"
#include "benchmarks/PlainTerminals.h"
#include "platform/SerialDeviceRegistry.h"
#include "serial/ORSSerialPort.h"
#include "serial/ORSSerialRequest.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QSerialPort>
#include <QTimer>

#include <libserialport.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <ctime>
#include <functional>
#include <vector>

using namespace vorn;

namespace {

using Microseconds = double;

constexpr int kTurns = 8;            // beside the first one, which warms up
constexpr std::size_t kEchoes = 500; // in a turn
constexpr qsizetype kFrame = 252;
constexpr qint64 kStream = qint64{64} << 20;
constexpr int kStreams = 21;
constexpr int kRequests = 10000;
const QByteArray kFrameBytes(kFrame, '\x55');

struct Spread
{
    Microseconds median = 0;
    Microseconds p99 = 0;
};

Spread spreadOf(std::vector<Microseconds> times)
{
    if (times.empty())
        return {};
    std::sort(times.begin(), times.end());
    return {times[times.size() / 2], times[times.size() * 99 / 100]};
}

double processorSeconds()
{
    timespec time{};
    ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

Microseconds since(const QElapsedTimer &clock)
{
    return static_cast<double>(clock.nsecsElapsed()) / 1000.0;
}

// Runs the event loop until quit() or the limit.
void loopFor(int milliseconds)
{
    QTimer::singleShot(milliseconds, qApp, &QCoreApplication::quit);
    QCoreApplication::exec();
}

// Our port, and what it delivers.
class OurPort : public ORSSerialPortDelegate
{
public:
    explicit OurPort(const FarSide &far)
    {
        SerialDevice device;
        device.calloutDevice = far.path();
        device.ttyDevice = QStringLiteral("bench");
        port = ORSSerialPort::serialPortWithDevice(std::make_shared<SerialDevice>(device));
        port->setDelegate(this);
        port->setBaudRate(115200);
        port->open();
    }
    ~OurPort() override { port->close(); }
    OurPort(const OurPort &) = delete;
    OurPort &operator=(const OurPort &) = delete;

    void serialPortWasRemovedFromSystem(ORSSerialPort &) override {}
    void serialPortDidReceiveData(ORSSerialPort &, const QByteArray &data) override
    {
        if (received)
            received(data);
    }
    void serialPortDidReceiveResponseToRequest(ORSSerialPort &, const QByteArray &,
                                               const ORSSerialRequestPtr &) override
    {
        if (answered)
            answered();
    }

    ORSSerialPortPtr port;
    std::function<void(const QByteArray &)> received;
    std::function<void()> answered;
};

std::vector<Microseconds> echoBare()
{
    FarSide far;
    far.echo(kFrame);
    const FileDescriptor fd = openPlainTerminal(far.path());
    std::vector<Microseconds> times;
    for (std::size_t i = 0; i < kEchoes; ++i) {
        QElapsedTimer clock;
        clock.start();
        char byte = 0;
        if (::write(fd.get(), kFrameBytes.data(), kFrame) != kFrame ||
            ::read(fd.get(), &byte, 1) != 1)
            break;
        times.push_back(since(clock));
    }
    return times;
}

std::vector<Microseconds> echoOurs()
{
    FarSide far;
    far.echo(kFrame);
    OurPort ours(far);
    std::vector<Microseconds> times;
    QElapsedTimer clock;
    const auto send = [&] {
        clock.start();
        ours.port->sendData(kFrameBytes);
    };
    ours.received = [&](const QByteArray &) {
        times.push_back(since(clock));
        if (times.size() == kEchoes)
            QCoreApplication::quit();
        else
            send();
    };
    send();
    loopFor(60000);
    return times;
}

std::vector<Microseconds> echoQt()
{
    FarSide far;
    far.echo(kFrame);
    QSerialPort port(far.path());
    port.open(QIODevice::ReadWrite);
    std::vector<Microseconds> times;
    QElapsedTimer clock;
    const auto send = [&] {
        clock.start();
        port.write(kFrameBytes);
    };
    QObject::connect(&port, &QSerialPort::readyRead, &port, [&] {
        port.readAll();
        times.push_back(since(clock));
        if (times.size() == kEchoes)
            QCoreApplication::quit();
        else
            send();
    });
    send();
    loopFor(60000);
    return times;
}

std::vector<Microseconds> echoLibserialport()
{
    FarSide far;
    far.echo(kFrame);
    const LibserialportTerminal port(far.path());
    std::vector<Microseconds> times;
    while (port.get() && times.size() < kEchoes) {
        QElapsedTimer clock;
        clock.start();
        char byte = 0;
        if (sp_blocking_write(port.get(), kFrameBytes.data(), kFrame, 1000) != kFrame ||
            sp_blocking_read(port.get(), &byte, 1, 1000) != 1)
            break;
        times.push_back(since(clock));
    }
    return times;
}

// Megabytes a second.
double streamOurs()
{
    FarSide far;
    OurPort ours(far);
    qint64 count = 0;
    ours.received = [&](const QByteArray &data) {
        count += data.size();
        if (count >= kStream)
            QCoreApplication::quit();
    };
    QElapsedTimer clock;
    clock.start();
    far.stream(kStream);
    loopFor(120000);
    return static_cast<double>(count) / since(clock);
}

double streamQt()
{
    FarSide far;
    QSerialPort port(far.path());
    port.open(QIODevice::ReadWrite);
    qint64 count = 0;
    QObject::connect(&port, &QSerialPort::readyRead, &port, [&] {
        count += port.readAll().size();
        if (count >= kStream)
            QCoreApplication::quit();
    });
    QElapsedTimer clock;
    clock.start();
    far.stream(kStream);
    loopFor(120000);
    return static_cast<double>(count) / since(clock);
}

// Processor time over one second after the far side hung up, as a share of one core.
double hangUpOurs()
{
    FarSide far;
    OurPort ours(far);
    far.hangUp();
    const double before = processorSeconds();
    loopFor(1000);
    return processorSeconds() - before;
}

double hangUpQt()
{
    FarSide far;
    QSerialPort port(far.path());
    port.open(QIODevice::ReadWrite);
    far.hangUp();
    const double before = processorSeconds();
    loopFor(1000);
    return processorSeconds() - before;
}

// Waits for input as its own event calls do.
double hangUpLibserialport()
{
    FarSide far;
    const LibserialportTerminal port(far.path());
    if (!port.get())
        return -1;
    far.hangUp();
    sp_event_set *events = nullptr;
    sp_new_event_set(&events);
    sp_add_port_events(events, port.get(), SP_EVENT_RX_READY);
    QElapsedTimer clock;
    clock.start();
    const double before = processorSeconds();
    char byte = 0;
    while (clock.elapsed() < 1000) {
        sp_wait(events, 100);
        sp_nonblocking_read(port.get(), &byte, 1);
    }
    sp_free_event_set(events);
    return processorSeconds() - before;
}

Microseconds requestTime()
{
    FarSide far;
    far.echo(kFrame);
    OurPort ours(far);
    const auto answer = std::make_shared<ORSSerialPacketDescriptor>(QByteArray("\xAF"));
    int answers = 0;
    ours.answered = [&] {
        if (++answers == kRequests)
            QCoreApplication::quit();
    };
    QElapsedTimer clock;
    clock.start();
    for (int i = 0; i < kRequests; ++i) {
        ours.port->sendRequest(ORSSerialRequest::requestWithDataToSend(
            kFrameBytes, {}, std::chrono::seconds(5), answer));
    }
    loopFor(120000);
    return answers == kRequests ? since(clock) / kRequests : -1;
}

void row(const char *name, const Spread &spread, const Spread &base)
{
    if (spread.median > 0)
        std::printf("  %-28s %9.1f us %9.1f us   %5.2fx  %5.2fx\n", name, spread.median, spread.p99,
                    spread.median / base.median, spread.p99 / base.p99);
    else
        std::printf("  %-28s cannot be measured here\n", name);
}

void share(const char *name, double seconds)
{
    if (seconds >= 0)
        std::printf("  %-28s %8.1f %%\n", name, 100 * seconds);
    else
        std::printf("  %-28s cannot be measured here\n", name);
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication application(argc, argv);

    struct Candidate
    {
        const char *name;
        std::vector<Microseconds> (*echo)();
        std::vector<Microseconds> times{};
    };
    std::array candidates{Candidate{"bare write/read loop", echoBare},
                          Candidate{"ORSSerialPort delegate", echoOurs},
                          Candidate{"Qt SerialPort", echoQt},
                          Candidate{"libserialport (blocking)", echoLibserialport}};
    // In turns, so that neither warm-up nor what else the machine does favours one.
    for (int turn = 0; turn <= kTurns; ++turn) {
        for (Candidate &candidate : candidates) {
            const std::vector<Microseconds> times = candidate.echo();
            if (turn > 0)
                candidate.times.insert(candidate.times.end(), times.begin(), times.end());
        }
    }
    std::printf(
        "252 bytes out, 1 byte back, %d times      median         99 %%   ratio to the bare "
        "loop\n",
        kTurns * static_cast<int>(kEchoes));
    const Spread bare = spreadOf(candidates.front().times);
    for (const Candidate &candidate : candidates)
        row(candidate.name, spreadOf(candidate.times), bare);

    std::printf("\nreceiving 64 MiB, medians of %d\n", kStreams);
    std::vector<double> ourRates;
    std::vector<double> qtRates;
    for (int round = 0; round < kStreams; ++round) {
        const bool oursFirst = round % 2 == 0;
        if (oursFirst)
            ourRates.push_back(streamOurs());
        qtRates.push_back(streamQt());
        if (!oursFirst)
            ourRates.push_back(streamOurs());
    }
    const double oursRate = spreadOf(ourRates).median;
    const double qtRate = spreadOf(qtRates).median;
    std::printf("  %-28s %8.1f MB/s  %5.2fx Qt SerialPort's\n", "ORSSerialPort", oursRate,
                oursRate / qtRate);
    std::printf("  %-28s %8.1f MB/s\n", "Qt SerialPort", qtRate);

    std::printf("\nprocessor time in the second after the far side hung up\n");
    share("ORSSerialPort", hangUpOurs());
    share("Qt SerialPort", hangUpQt());
    share("libserialport", hangUpLibserialport());

    const Microseconds perRequest = requestTime();
    std::printf("\n%d requests of 252 bytes answered by 1 byte\n", kRequests);
    std::printf("  %-28s %9.1f us each   %5.2fx the bare loop\n", "ORSSerialPort", perRequest,
                perRequest / bare.median);
    return 0;
}
