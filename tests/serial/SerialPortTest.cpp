#include "serial/LineSpeed.h"
#include "serial/ORSSerialPacketDescriptor.h"
#include "tests/serial/SerialPortFixture.h"

#include <QTemporaryDir>

#include <sys/ioctl.h>

#include <numeric>
#include <thread>

namespace vorn {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

class SerialPortTest : public SerialPortFixture
{
protected:
    // Returns when the write has begun; it stays blocked, being more than any buffer holds.
    std::thread sendMoreThanIsTaken(bool &sent)
    {
        std::thread sender([this, &sent] { sent = port->sendData(QByteArray(4 << 20, 'x')); });
        EXPECT_TRUE(eventually([this] {
            int waiting = 0;
            return ::ioctl(terminal.master(), FIONREAD, &waiting) == 0 && waiting > 0;
        }));
        return sender;
    }
};

// So many bytes in which each place is told from its neighbours.
QByteArray countingBytes(qsizetype count)
{
    QByteArray bytes(count, Qt::Uninitialized);
    std::iota(bytes.begin(), bytes.end(), '\0');
    return bytes;
}

bool isSame(const termios &a, const termios &b)
{
    return a.c_iflag == b.c_iflag && a.c_oflag == b.c_oflag && a.c_cflag == b.c_cflag &&
           a.c_lflag == b.c_lflag;
}

TEST_F(SerialPortTest, EverySpeedReachesTheLineAtOpenAndWhileOpen)
{
    port->setBaudRate(9600);
    openPort();
    EXPECT_EQ(outputSpeed(terminal.master()), 9600U);
    for (const quint32 rate : {2000000U, 12345U, 13U, 115200U}) {
        port->setBaudRate(rate);
        EXPECT_EQ(outputSpeed(terminal.master()), rate);
    }
    EXPECT_TRUE(delegate.take().isEmpty());
}

TEST_F(SerialPortTest, ANonStandardSpeedIsAnErrorWhereItIsNotAllowed)
{
    openPort();
    port->setAllowsNonStandardBaudRates(false);
    port->setBaudRate(12345);
    delegate.expect({"error EINVAL"});
    EXPECT_EQ(outputSpeed(terminal.master()), 19200U);
    EXPECT_TRUE(port->isOpen());
}

TEST_F(SerialPortTest, SettingsReachAnOpenLineAtOnceAndTheOldOnesComeBackAtClose)
{
    termios before = terminal.lineSettings();
    before.c_lflag |= ICANON | ECHO;
    before.c_iflag |= IXOFF;
    ASSERT_EQ(::tcsetattr(terminal.master(), TCSANOW, &before), 0);
    ASSERT_EQ(setArbitrarySpeed(terminal.master(), 54321), 0);
    before = terminal.lineSettings();

    openPort();
    port->setParity(1);
    port->setNumberOfStopBits(2);
    port->setShouldEchoReceivedData(true);
    const termios set = terminal.lineSettings();
    // A pseudo-terminal has eight data bits and no parity bit, whatever is asked for.
    EXPECT_EQ(set.c_cflag & (PARODD | CSTOPB), tcflag_t{PARODD | CSTOPB});
    EXPECT_EQ(set.c_lflag & (ECHO | ICANON), tcflag_t{ECHO});
    port->setParity(3);
    EXPECT_EQ(port->parity(), 0U);

    closePort();
    EXPECT_TRUE(isSame(terminal.lineSettings(), before));
    EXPECT_EQ(outputSpeed(terminal.master()), 54321U);
}

TEST_F(SerialPortTest, AChangeOfFlowControlEndsWithTheClosedPortAndHoldsAtTheNextOpening)
{
    openPort();
    port->setUsesRTSCTSFlowControl(true);
    delegate.expect({"closed"});
    openPort();
    EXPECT_TRUE(terminal.lineSettings().c_cflag & CRTSCTS);
}

TEST_F(SerialPortTest, APortInUseIsRefusedToTheNext)
{
    openPort();
    RecordingDelegate otherDelegate;
    const auto other = ORSSerialPort::serialPortWithDevice(terminal.device());
    other->setDelegate(&otherDelegate);
    other->open();
    EXPECT_FALSE(other->isOpen());
    otherDelegate.expect({"error EBUSY"});
    terminal.send("still mine");
    delegate.expect({"data still mine"});
    closePort();
    other->open();
    otherDelegate.expect(kOpened);
}

TEST_F(SerialPortTest, WhatCannotBeOpenedIsToldWithItsReason)
{
    const QList<QPair<QString, QByteArray>> cases{
        {"/dev/null", "error ENOTTY"}, {"/nowhere/at-all", "error ENOENT"}, {"/", "error EISDIR"}};
    for (const auto &[path, error] : cases) {
        const auto broken = ORSSerialPort::serialPortWithDevice(terminal.device(path));
        broken->setDelegate(&delegate);
        broken->open();
        EXPECT_FALSE(broken->isOpen());
        delegate.expect({error});
    }
}

TEST_F(SerialPortTest, OpeningTwiceAndClosingTwiceTellsNothingNew)
{
    EXPECT_TRUE(port->close());
    openPort();
    port->open();
    closePort();
    EXPECT_TRUE(port->close());
    runEventLoopFor(milliseconds(50));
    EXPECT_TRUE(delegate.take().isEmpty());
}

TEST_F(SerialPortTest, BytesArriveInOrderInBothDirections)
{
    openPort();
    const QByteArray bytes = countingBytes(200000);
    std::thread sender([&] { EXPECT_TRUE(port->sendData(bytes)); });
    EXPECT_EQ(terminal.take(bytes.size()), bytes);
    sender.join();
    std::thread device([&] { terminal.send(bytes); });
    EXPECT_TRUE(eventually([&] { return delegate.contains("data " + bytes); }));
    device.join();
    EXPECT_TRUE(port->sendData({}));
}

TEST_F(SerialPortTest, PacketsFollowTheBytesThatTheyCameIn)
{
    const auto descriptor = std::make_shared<const ORSSerialPacketDescriptor>(
        ORSSerialPacketDescriptor::PrefixSuffix{"!", ";"}, 8);
    port->startListeningForPacketsMatchingDescriptor(descriptor);
    openPort();
    terminal.send("x!a;y!b;");
    delegate.expect({"data x!a;y!b;", "packet !a;", "packet !b;"});
    port->stopListeningForPacketsMatchingDescriptor(descriptor);
    EXPECT_TRUE(port->packetDescriptors().isEmpty());
    terminal.send("!c;");
    delegate.expect({"data !c;"});
    closePort();
}

TEST_F(SerialPortTest, ATerminalWithoutModemLinesIsToldOncePerOpening)
{
    openPort();
    port->setRTS(true);
    port->setDTR(true);
    runEventLoopFor(milliseconds(100)); // ten times the interval of the pin polling
    EXPECT_TRUE(delegate.take().isEmpty());
    closePort();
    openPort();
}

TEST_F(SerialPortTest, ClosingNeverWaitsForADeviceThatTakesNothing)
{
    openPort();
    bool sent = true;
    std::thread sender = sendMoreThanIsTaken(sent);
    const auto begin = Clock::now();
    port->close();
    EXPECT_LT(Clock::now() - begin, milliseconds(500));
    sender.join();
    delegate.expect({"closed"});
    EXPECT_LT(Clock::now() - begin, std::chrono::seconds(3));
    EXPECT_FALSE(sent);
    EXPECT_FALSE(port->sendData("x"));
}

TEST_F(SerialPortTest, AnUnpluggedDeviceIsOneErrorThenRemovalThenClosedAndOpensAgain)
{
    const QTemporaryDir directory;
    const QString link = directory.filePath("usbserial-1");
    port = ORSSerialPort::serialPortWithDevice(terminal.device(link));
    port->setDelegate(&delegate);
    bool wasReleased = false;
    delegate.onEvent = [&](const QByteArray &event) {
        if (event == "error ENXIO")
            wasReleased = !holdsTerminal(terminal.path());
    };
    // The best of some turns: a busy machine may delay any one.
    auto fastest = Clock::duration::max();
    for (int turn = 0; turn < 10 && (turn < 3 || fastest > milliseconds(50)); ++turn) {
        ASSERT_TRUE(QFile::link(terminal.path(), link));
        openPort();
        EXPECT_TRUE(holdsTerminal(terminal.path()));
        const auto begin = Clock::now();
        terminal.unplug();
        delegate.expect({"error ENXIO", "removed", "closed"});
        fastest = std::min(fastest, Clock::now() - begin);
        EXPECT_TRUE(wasReleased) << "the port keeps the terminal's name from the device";
        EXPECT_FALSE(port->isOpen());
        ASSERT_TRUE(QFile::remove(link));
        terminal = TestTerminal();
    }
    EXPECT_LE(fastest, milliseconds(50));
    const auto before = processorTime();
    runEventLoopFor(milliseconds(500));
    EXPECT_LT(processorTime() - before, milliseconds(50)) << "somebody spins";
}

TEST_F(SerialPortTest, AWaitingWriteEndsWhenTheDeviceIsUnplugged)
{
    openPort();
    bool sent = true;
    std::thread sender = sendMoreThanIsTaken(sent);
    terminal.unplug();
    sender.join();
    EXPECT_FALSE(sent);
    EXPECT_TRUE(eventually([&] { return delegate.contains("closed"); }));
    EXPECT_EQ(delegate.take().count("removed"), 1);
}

TEST_F(SerialPortTest, TheFirstPortOfAPathIsTheKnownOne)
{
    auto other = ORSSerialPort::serialPortWithDevice(terminal.device());
    EXPECT_TRUE(other->isEqual(*port) && other->hash() == port->hash());
    EXPECT_EQ(ORSSerialPort::existingPortWithPath(terminal.path()), port.get());
    port.reset();
    EXPECT_EQ(ORSSerialPort::existingPortWithPath(terminal.path()), other.get());
    other.reset();
    EXPECT_EQ(ORSSerialPort::existingPortWithPath(terminal.path()), nullptr);
}

} // namespace
} // namespace vorn
