// Modem lines and output queue of an adapter, which a pseudo-terminal does not have: ioctl() below
// answers in the adapter's place.
#include "tests/serial/SerialPortFixture.h"

#include <gmock/gmock.h>

#include <linux/serial.h>
#include <sys/ioctl.h>
#include <sys/syscall.h>

#include <atomic>
#include <cstdarg>
#include <limits>
#include <thread>

namespace {

struct Adapter
{
    std::atomic<int> lines = TIOCM_DTR | TIOCM_RTS; // the kernel raises both when a terminal opens
    std::vector<int> linesSet;                      // by each TIOCMSET; main thread only
    std::atomic<int> polls = 0;
    std::atomic<int> failures = 0; // how many more polls fail, and with which error
    std::atomic<int> error = 0;
    std::atomic<bool> hangs = false; // then polls do not return
    std::atomic<bool> isHung = false;
    // How many more queries report output in the driver, and then in the adapter. Below 0, each
    // query of the driver does, and is counted downwards.
    std::atomic<int> inDriver = 0;
    std::atomic<int> inAdapter = 0;
    std::atomic<int> serialFlags = 0;

    // 0 or an errno; -1 for a request that the pseudo-terminal answers.
    int answer(unsigned long request, void *argument)
    {
        const auto number = static_cast<int *>(argument);
        const auto serial = static_cast<serial_struct *>(argument);
        switch (request) {
        case TIOCMGET:
            ++polls;
            while ((isHung = hangs.load()))
                std::this_thread::sleep_for(std::chrono::milliseconds(1));
            *number = lines;
            return failures > 0 && failures-- > 0 ? error.load() : 0;
        case TIOCMSET:
            linesSet.push_back(lines = *number);
            return 0;
        case TIOCOUTQ:
            *number = inDriver < 0 ? 1 : inDriver.load();
            inDriver -= inDriver == 0 ? 0 : 1;
            return 0;
        case TIOCSERGETLSR:
            *number = inAdapter > 0 && inAdapter-- > 0 ? 0 : TIOCSER_TEMT;
            return 0;
        case TIOCGSERIAL:
            *serial = {};
            serial->flags = serialFlags;
            return 0;
        case TIOCSSERIAL:
            serialFlags = serial->flags;
            return 0;
        default:
            return -1;
        }
    }
};

std::atomic<Adapter *> plugged = nullptr;

} // namespace

// In place of the C library's.
extern "C" int ioctl(int descriptor, unsigned long request, ...) noexcept
{
    va_list arguments;
    va_start(arguments, request);
    void *const argument = va_arg(arguments, void *);
    va_end(arguments);
    Adapter *const adapter = plugged;
    const int error = adapter ? adapter->answer(request, argument) : -1;
    if (error < 0)
        return static_cast<int>(::syscall(SYS_ioctl, descriptor, request, argument));
    errno = error;
    return error == 0 ? 0 : -1;
}

namespace vorn {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;
using testing::ElementsAre;

class ModemLines : public SerialPortFixture
{
protected:
    void SetUp() override
    {
        SerialPortFixture::SetUp();
        m_opened = {"opened"};
        m_delegate.hangsUp = false;
        plugged = &m_adapter;
    }
    void TearDown() override
    {
        m_port->close();
        EXPECT_TRUE(eventually([&] { return !m_port->isOpen(); }));
        plugged = nullptr;
    }

    Adapter m_adapter;
};

TEST_F(ModemLines, BothOutputsAreSetAtOnceWhenThePortOpensAndEachWhenItChanges)
{
    m_adapter.lines = TIOCM_DTR | TIOCM_RTS | TIOCM_CTS;
    m_port->setDTR(true);
    openPort();
    m_port->setRTS(true);
    m_port->setRTS(true);
    m_port->setRTS(false);
    m_port->setDTR(false);
    EXPECT_THAT(m_adapter.linesSet,
                ElementsAre(TIOCM_DTR | TIOCM_CTS, TIOCM_DTR | TIOCM_CTS | TIOCM_RTS,
                            TIOCM_DTR | TIOCM_CTS, TIOCM_CTS));
    EXPECT_TRUE(m_delegate.take().isEmpty());
}

TEST_F(ModemLines, EachInputChangeIsSignalledOnTheMainThread)
{
    QByteArrayList seen;
    const auto observe = [&](auto changed, auto isOn, const char *name) {
        QObject::connect(m_port.get(), changed, m_port.get(), [&, isOn, name] {
            EXPECT_TRUE(MainQueue::instance().isCurrent());
            seen += QByteArray(name) + ((*m_port.*isOn)() ? "+" : "-");
        });
    };
    observe(&ORSSerialPort::CTSChanged, &ORSSerialPort::CTS, "CTS");
    observe(&ORSSerialPort::DSRChanged, &ORSSerialPort::DSR, "DSR");
    observe(&ORSSerialPort::DCDChanged, &ORSSerialPort::DCD, "DCD");
    openPort();
    const struct
    {
        int lines;
        QByteArrayList changes;
    } rows[] = {
        {TIOCM_CAR | TIOCM_DSR | TIOCM_CTS, {"CTS+", "DSR+", "DCD+"}},
        {TIOCM_CAR | TIOCM_CTS | TIOCM_RI, {"DSR-"}},
        {0, {"CTS-", "DCD-"}},
        {TIOCM_DSR, {"DSR+"}},
    };
    for (const auto &row : rows) {
        m_adapter.lines = row.lines;
        EXPECT_TRUE(eventually([&] { return seen.size() >= row.changes.size(); }));
        EXPECT_EQ(std::exchange(seen, {}), row.changes);
    }
}

TEST_F(ModemLines, InputsArePolledEvery10Milliseconds)
{
    openPort();
    auto fastest = Clock::duration::max(); // of some turns, since a busy machine delays polls
    for (int turn = 0; turn < 10 && fastest > milliseconds(500); ++turn) {
        m_adapter.polls = 0;
        const auto begin = Clock::now();
        EXPECT_TRUE(eventually([&] { return m_adapter.polls >= 21; }));
        fastest = std::min(fastest, Clock::now() - begin);
    }
    EXPECT_GE(fastest, milliseconds(190));
    EXPECT_LE(fastest, milliseconds(500));
}

TEST_F(ModemLines, AFailedPollOfAGoneDeviceClosesThePort)
{
    for (const int error : {ENXIO, EIO, ENODEV}) {
        openPort();
        m_adapter.error = error;
        m_adapter.failures = std::numeric_limits<int>::max();
        m_delegate.expect({QByteArray("error ") + ::strerrorname_np(error), "removed", "closed"});
        m_adapter.failures = 0;
    }
}

TEST_F(ModemLines, ASingleFailedTransferIsNotARemoval)
{
    openPort();
    m_adapter.error = EIO;
    m_adapter.failures = 1;
    m_delegate.expect({"error EIO"});
    m_adapter.lines = TIOCM_CTS;
    EXPECT_TRUE(eventually([&] { return m_port->CTS(); }));
    EXPECT_TRUE(m_port->isOpen());
}

// The kernel waits up to 5 s for an adapter that does not answer.
TEST_F(ModemLines, APollThatHangsDelaysNoBytesAndTheTerminalIsNotClosedUnderIt)
{
    openPort();
    m_adapter.hangs = true;
    EXPECT_TRUE(eventually([&] { return m_adapter.isHung.load(); }));
    m_terminal.send("x");
    m_delegate.expect({"data x"});
    m_port->close();
    runEventLoopFor(milliseconds(20));
    EXPECT_TRUE(holdsTerminal());
    m_adapter.hangs = false;
    m_delegate.expect({"closed"});
}

TEST_F(ModemLines, ClosingWaitsForOutputWhileItMovesAndRestoresTheLatency)
{
    openPort();
    EXPECT_EQ(m_adapter.serialFlags, ASYNC_LOW_LATENCY);
    m_adapter.inDriver = 300; // at 5 ms each, longer than the second that it may stand still
    m_adapter.inAdapter = 4;
    m_port->close();
    m_delegate.expect({"closed"});
    EXPECT_EQ(m_adapter.inDriver + m_adapter.inAdapter, 0);
    EXPECT_EQ(m_adapter.serialFlags, 0);
}

TEST_F(ModemLines, ClosingWaitsASecondForOutputThatDoesNotMove)
{
    openPort();
    m_adapter.inDriver = -1;
    const auto begin = Clock::now();
    m_port->close();
    EXPECT_TRUE(eventually([&] { return m_adapter.inDriver < -1; }));
    EXPECT_TRUE(m_port->isOpen());
    m_port->setRTS(true); // does not block
    EXPECT_LT(Clock::now() - begin, milliseconds(500));
    m_delegate.expect({"closed"});
    EXPECT_GE(Clock::now() - begin, milliseconds(1000));
    EXPECT_LT(Clock::now() - begin, milliseconds(5000));
}

} // namespace
} // namespace vorn
