#include "serial/LineSpeed.h"
#include "serial/ORSSerialPacketDescriptor.h"
#include "tests/serial/SerialPortFixture.h"
#include "tests/support/ThreadShortage.h"

#include <QTemporaryDir>

#include <sys/ioctl.h>

#include <numeric>
#include <thread>

namespace vorn {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

using SerialPortTest = SerialPortFixture;

TEST_F(SerialPortTest, EverySpeedReachesTheLineUnlessNonStandardOnesAreNotAllowed)
{
    EXPECT_EQ(m_port->baudRate(), 19200U);
    m_port->setBaudRate(9600);
    openPort();
    EXPECT_EQ(outputSpeed(m_terminal.master()), 9600U);
    for (const quint32 rate : {2000000U, 12345U, 13U, 115200U, 115200U}) {
        EXPECT_EQ(setArbitrarySpeed(m_terminal.master(), 50), 0);
        m_port->setBaudRate(rate);
        EXPECT_EQ(outputSpeed(m_terminal.master()), rate);
    }
    m_port->setAllowsNonStandardBaudRates(false);
    m_port->setBaudRate(12345);
    m_delegate.expect({"error EINVAL"});
    EXPECT_EQ(outputSpeed(m_terminal.master()), 115200U);
    EXPECT_TRUE(m_port->isOpen());
}

TEST_F(SerialPortTest, SettingsReachAnOpenLineAtOnceAndAreRestoredAtClose)
{
    termios before = m_terminal.lineSettings();
    before.c_lflag |= ICANON | ECHO;
    before.c_iflag |= IXOFF;
    ASSERT_EQ(::tcsetattr(m_terminal.master(), TCSANOW, &before), 0);
    ASSERT_EQ(setArbitrarySpeed(m_terminal.master(), 54321), 0);
    before = m_terminal.lineSettings();

    openPort();
    m_port->setParity(1);
    m_port->setNumberOfStopBits(2);
    m_port->setShouldEchoReceivedData(true);
    const termios set = m_terminal.lineSettings();
    // A pseudo-terminal has eight data bits and no parity bit, whatever is asked for.
    EXPECT_EQ(set.c_cflag & (PARODD | CSTOPB), tcflag_t{PARODD | CSTOPB});
    EXPECT_EQ(set.c_lflag & (ECHO | ICANON), tcflag_t{ECHO});
    m_port->setParity(3);
    EXPECT_EQ(m_port->parity(), 0U);

    closePort();
    const termios after = m_terminal.lineSettings();
    EXPECT_TRUE(after.c_iflag == before.c_iflag && after.c_oflag == before.c_oflag &&
                after.c_cflag == before.c_cflag && after.c_lflag == before.c_lflag);
    EXPECT_EQ(outputSpeed(m_terminal.master()), 54321U);
}

TEST_F(SerialPortTest, AChangeOfFlowControlClosesThePortAndAppliesAtTheNextOpening)
{
    openPort();
    m_port->setUsesRTSCTSFlowControl(true);
    m_delegate.expect({"closed"});
    openPort();
    EXPECT_TRUE(m_terminal.lineSettings().c_cflag & CRTSCTS);
}

TEST_F(SerialPortTest, APortInUseCannotBeOpenedAgain)
{
    openPort();
    RecordingDelegate otherDelegate;
    const auto other = ORSSerialPort::serialPortWithDevice(m_terminal.device());
    other->setDelegate(&otherDelegate);
    other->open();
    EXPECT_FALSE(other->isOpen());
    otherDelegate.expect({"error EBUSY"});
    m_terminal.send("still mine");
    m_delegate.expect({"data still mine"});
    closePort();
    other->open();
    otherDelegate.expect(m_opened);
}

TEST_F(SerialPortTest, AFailedOpeningIsReportedWithItsErrno)
{
    for (const auto &[path, error] :
         {std::pair("/dev/null", "error ENOTTY"), {"/nowhere", "error ENOENT"}}) {
        const auto broken = ORSSerialPort::serialPortWithDevice(m_terminal.device(path));
        broken->setDelegate(&m_delegate);
        broken->open();
        EXPECT_FALSE(broken->isOpen());
        m_delegate.expect({error});
    }
}

TEST_F(SerialPortTest, OpeningFailsWithoutAThread)
{
    {
        const ThreadShortage shortage;
        m_port->open();
        EXPECT_FALSE(m_port->isOpen());
        m_delegate.expect({"error EAGAIN"});
    }
    openPort();
}

TEST_F(SerialPortTest, OpeningClosingAndMissingModemLinesAreReportedOnce)
{
    EXPECT_TRUE(m_port->close());
    openPort();
    m_port->open();
    m_port->setRTS(true);
    m_port->setDTR(true);
    runEventLoopFor(milliseconds(100)); // ten times the interval of the pin polling
    EXPECT_TRUE(m_delegate.take().isEmpty());
    closePort();
    EXPECT_TRUE(m_port->close());
    runEventLoopFor(milliseconds(50));
    EXPECT_TRUE(m_delegate.take().isEmpty());
    openPort();
}

TEST_F(SerialPortTest, BytesArriveInOrderInBothDirections)
{
    openPort();
    QByteArray bytes(200000, Qt::Uninitialized); // more than the line takes at once
    std::iota(bytes.begin(), bytes.end(), '\0');
    std::jthread device([&] { m_terminal.send(bytes); });
    EXPECT_TRUE(eventually([&] { return m_delegate.contains("data " + bytes); }));
    EXPECT_TRUE(m_port->sendData({}));

    const QByteArray others(bytes.size(), 'x');
    std::jthread one([&] { EXPECT_TRUE(m_port->sendData(bytes)); });
    std::jthread other([&] { EXPECT_TRUE(m_port->sendData(others)); });
    const QByteArray both = m_terminal.take(2 * bytes.size());
    EXPECT_TRUE(both == bytes + others || both == others + bytes) << "a block was split";
}

TEST_F(SerialPortTest, PacketsAreReportedAfterTheirBytes)
{
    const auto descriptor = std::make_shared<const ORSSerialPacketDescriptor>(
        ORSSerialPacketDescriptor::PrefixSuffix{"!", ";"}, 8);
    m_port->startListeningForPacketsMatchingDescriptor(descriptor);
    openPort();
    m_terminal.send("x!a;y!b;");
    m_delegate.expect({"data x!a;y!b;", "packet !a;", "packet !b;"});
    m_port->stopListeningForPacketsMatchingDescriptor(descriptor);
    EXPECT_TRUE(m_port->packetDescriptors().isEmpty());
    m_terminal.send("!c;");
    m_delegate.expect({"data !c;"});
}

TEST_F(SerialPortTest, UnpluggingIsReportedAsErrorRemovalAndCloseAndThePortOpensAgain)
{
    const QTemporaryDir directory;
    const QString link = directory.filePath("usbserial-1");
    m_port = ORSSerialPort::serialPortWithDevice(m_terminal.device(link));
    m_port->setDelegate(&m_delegate);
    m_delegate.onEvent = [&](const QByteArray &event) {
        if (event == "error ENXIO") {
            EXPECT_FALSE(holdsTerminal()) << "its name is kept from the device";
        }
    };
    for (int turn = 0; turn < 2; ++turn) {
        ASSERT_TRUE(QFile::link(m_terminal.path(), link));
        openPort();
        EXPECT_TRUE(holdsTerminal());
        m_terminal.unplug();
        m_delegate.expect({"error ENXIO", "removed", "closed"});
        EXPECT_FALSE(m_port->isOpen());
        ASSERT_TRUE(QFile::remove(link));
        m_terminal = TestTerminal();
    }
    const auto before = processorTime();
    runEventLoopFor(milliseconds(500));
    EXPECT_LT(processorTime() - before, milliseconds(50)) << "a thread spins";
}

TEST_F(SerialPortTest, ABlockedWriteEndsWhenThePortClosesOrIsUnplugged)
{
    for (const bool unplugged : {false, true}) {
        openPort();
        bool sent = true;
        std::thread sender([&] { sent = m_port->sendData(QByteArray(4 << 20, 'x')); });
        EXPECT_TRUE(eventually([this] {
            int waiting = 0;
            return ::ioctl(m_terminal.master(), FIONREAD, &waiting) == 0 && waiting > 0;
        }));
        const auto begin = Clock::now();
        if (unplugged)
            m_terminal.unplug();
        else
            m_port->close();
        EXPECT_LT(Clock::now() - begin, milliseconds(500));
        sender.join();
        EXPECT_TRUE(eventually([&] { return m_delegate.contains("closed"); }));
        EXPECT_LT(Clock::now() - begin, std::chrono::seconds(3));
        EXPECT_FALSE(sent || m_port->sendData("x"));
        const QByteArrayList told = m_delegate.take();
        EXPECT_EQ(told.count("removed"), unplugged ? 1 : 0);
        EXPECT_TRUE(unplugged || told.size() == 1) << told.join(", ").data();
    }
}

TEST_F(SerialPortTest, ThePortMadeFirstForAPathIsTheExistingOne)
{
    auto other = ORSSerialPort::serialPortWithDevice(m_terminal.device());
    EXPECT_TRUE(other->isEqual(*m_port) && other->hash() == m_port->hash());
    EXPECT_EQ(ORSSerialPort::existingPortWithPath(m_terminal.path()), m_port.get());
    m_port.reset();
    EXPECT_EQ(ORSSerialPort::existingPortWithPath(m_terminal.path()), other.get());
    other.reset();
    EXPECT_EQ(ORSSerialPort::existingPortWithPath(m_terminal.path()), nullptr);
}

} // namespace
} // namespace vorn
