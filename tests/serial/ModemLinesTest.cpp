#include "tests/serial/RecordingDelegate.h"
#include "tests/support/MockedUdev.h"

#include <gmock/gmock.h>

#include <linux/serial.h>
#include <sys/ioctl.h>

#include <atomic>
#include <limits>
#include <mutex>

namespace vorn {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;
using testing::ElementsAre;

// A serial adapter with modem lines: a mocked device node whose ioctls this object answers on a
// thread of the test bed.
class MockedAdapter : MockedUdev
{
public:
    MockedAdapter()
    {
        g_signal_connect(m_ioctls.get(), "handle-ioctl", G_CALLBACK(&MockedAdapter::handle), this);
        EXPECT_TRUE(umockdev_testbed_add_from_string(
            m_testbed.get(), "P: /devices/ttyUSB0\nN: ttyUSB0\nE: SUBSYSTEM=tty\n", nullptr));
        EXPECT_TRUE(umockdev_testbed_attach_ioctl(m_testbed.get(), "/dev/ttyUSB0", m_ioctls.get(),
                                                  nullptr));
    }
    ~MockedAdapter() { umockdev_testbed_detach_ioctl(m_testbed.get(), "/dev/ttyUSB0", nullptr); }

    static SerialDeviceHandle device()
    {
        SerialDevice device;
        device.calloutDevice = "/dev/ttyUSB0";
        return std::make_shared<SerialDevice>(device);
    }

    // TIOCM_*; the system raises DTR and RTS when it opens a terminal.
    std::atomic<int> lines = TIOCM_DTR | TIOCM_RTS;
    // How many more times reading the lines fails, and with which error.
    std::atomic<int> failures = 0;
    std::atomic<int> error = 0;
    // How many more queries report output in the driver (every query, if it stands still) and in
    // the adapter.
    std::atomic<int> inDriver = 0;
    std::atomic<bool> standsStill = false;
    std::atomic<int> inAdapter = 0;
    std::atomic<int> outputQueries = 0;
    std::atomic<int> serialFlags = 0;

    // The lines of each TIOCMSET so far.
    std::vector<int> takeSettings()
    {
        const std::lock_guard lock(m_mutex);
        return std::exchange(m_settings, {});
    }

private:
    static gboolean handle(UMockdevIoctlBase *, UMockdevIoctlClient *client, gpointer self)
    {
        return static_cast<MockedAdapter *>(self)->answer(client);
    }

    // The memory to which the ioctl's argument points.
    template <typename Record>
    static std::unique_ptr<UMockdevIoctlData, decltype(&g_object_unref)>
    memory(UMockdevIoctlClient *client)
    {
        UMockdevIoctlData *argument = umockdev_ioctl_client_get_arg(client);
        return {umockdev_ioctl_data_resolve(argument, 0, sizeof(Record), nullptr), &g_object_unref};
    }
    template <typename Record>
    static void put(UMockdevIoctlClient *client, Record record)
    {
        umockdev_ioctl_data_update(memory<Record>(client).get(), 0,
                                   reinterpret_cast<guint8 *>(&record), sizeof record);
    }
    template <typename Record>
    static Record get(UMockdevIoctlClient *client)
    {
        Record record;
        std::memcpy(&record, memory<Record>(client)->data, sizeof record);
        return record;
    }

    gboolean answer(UMockdevIoctlClient *client)
    {
        const std::lock_guard lock(m_mutex);
        int failure = 0;
        int result = 0;
        switch (umockdev_ioctl_client_get_request(client)) {
        case TIOCMGET:
            if (failures > 0) {
                --failures;
                failure = error;
            } else
                put<int>(client, lines);
            break;
        case TIOCMSET:
            lines = get<int>(client);
            m_settings.push_back(lines);
            break;
        case TIOCOUTQ:
            ++outputQueries;
            put(client, standsStill ? inDriver.load() : inDriver > 0 ? inDriver-- : 0);
            break;
        case TIOCSERGETLSR:
            ++outputQueries;
            put<unsigned>(client, inAdapter-- > 0 ? 0 : TIOCSER_TEMT);
            break;
        case TIOCGSERIAL: {
            serial_struct serial{};
            serial.flags = serialFlags;
            put(client, serial);
            break;
        }
        case TIOCSSERIAL:
            serialFlags = get<serial_struct>(client).flags;
            break;
        default: // the pseudo-terminal behind the node answers
            result = umockdev_ioctl_client_execute(client, &failure, nullptr);
        }
        umockdev_ioctl_client_complete(client, failure == 0 ? result : -1, failure);
        return TRUE;
    }

    std::mutex m_mutex;
    std::vector<int> m_settings;
    const std::unique_ptr<UMockdevIoctlBase, decltype(&g_object_unref)> m_ioctls{
        umockdev_ioctl_base_new(), &g_object_unref};
};

class ModemLinesTest : public testing::Test
{
protected:
    void SetUp() override { m_port->setDelegate(&m_delegate); }
    void TearDown() override
    {
        m_port->close();
        EXPECT_TRUE(eventually([&] { return !m_port->isOpen(); }));
    }
    void openPort()
    {
        m_port->open();
        m_delegate.expect({"opened"});
    }

    MockedAdapter m_adapter;
    ORSSerialPortPtr m_port = ORSSerialPort::serialPortWithDevice(MockedAdapter::device());
    RecordingDelegate m_delegate;
};

TEST_F(ModemLinesTest, BothOutputsAreSetAtOnceWhenThePortOpensAndEachWhenItChanges)
{
    m_adapter.lines = TIOCM_DTR | TIOCM_RTS | TIOCM_CTS;
    m_port->setDTR(true);
    openPort();
    EXPECT_THAT(m_adapter.takeSettings(), ElementsAre(TIOCM_DTR | TIOCM_CTS));
    m_port->setRTS(true);
    m_port->setRTS(true);
    m_port->setRTS(false);
    m_port->setDTR(false);
    EXPECT_THAT(m_adapter.takeSettings(),
                ElementsAre(TIOCM_DTR | TIOCM_CTS | TIOCM_RTS, TIOCM_DTR | TIOCM_CTS, TIOCM_CTS));
    EXPECT_TRUE(m_delegate.take().isEmpty());
}

TEST_F(ModemLinesTest, ObserversSeeEachInputChangeOnTheMainThread)
{
    QByteArrayList seen;
    const auto observe = [&](auto changed, auto isOn, const char *name) {
        QObject::connect(m_port.get(), changed, m_port.get(),
                         [&seen, port = m_port.get(), isOn, name] {
                             EXPECT_TRUE(MainQueue::instance().isCurrent());
                             seen += QByteArray(name) + ((port->*isOn)() ? "+" : "-");
                         });
    };
    observe(&ORSSerialPort::CTSChanged, &ORSSerialPort::CTS, "CTS");
    observe(&ORSSerialPort::DSRChanged, &ORSSerialPort::DSR, "DSR");
    observe(&ORSSerialPort::DCDChanged, &ORSSerialPort::DCD, "DCD");
    const auto expectSeen = [&](int lines, const QByteArrayList &expected) {
        m_adapter.lines = lines;
        EXPECT_TRUE(eventually([&] { return seen.size() >= expected.size(); }));
        EXPECT_EQ(std::exchange(seen, {}), expected);
    };
    openPort();
    expectSeen(TIOCM_CAR | TIOCM_DSR | TIOCM_CTS, {"CTS+", "DSR+", "DCD+"});
    expectSeen(TIOCM_CAR | TIOCM_CTS | TIOCM_RI, {"DSR-"});
    expectSeen(0, {"CTS-", "DCD-"});
    expectSeen(TIOCM_DSR, {"DSR+"});
}

TEST_F(ModemLinesTest, AFailedPollOfAGoneDeviceClosesThePort)
{
    for (const int error : {ENXIO, EIO, ENODEV}) {
        openPort();
        m_adapter.error = error;
        m_adapter.failures = std::numeric_limits<int>::max();
        m_delegate.expect({QByteArray("error ") + ::strerrorname_np(error), "removed", "closed"});
        m_adapter.failures = 0;
    }
}

TEST_F(ModemLinesTest, ASingleFailedTransferIsNotARemoval)
{
    openPort();
    m_adapter.error = EIO;
    m_adapter.failures = 1;
    m_delegate.expect({"error EIO"});
    m_adapter.lines = TIOCM_CTS;
    EXPECT_TRUE(eventually([&] { return m_port->CTS(); }));
    EXPECT_TRUE(m_port->isOpen());
}

TEST_F(ModemLinesTest, ClosingWaitsForOutputWhileItMovesAndRestoresTheLatency)
{
    openPort();
    EXPECT_EQ(m_adapter.serialFlags, ASYNC_LOW_LATENCY);
    m_adapter.inDriver = 300; // at 5 ms each, longer than the second that it may stand still
    m_adapter.inAdapter = 4;
    m_port->close();
    m_delegate.expect({"closed"});
    EXPECT_EQ(m_adapter.outputQueries, 300 + 2 * (4 + 1));
    EXPECT_EQ(m_adapter.serialFlags, 0);
}

TEST_F(ModemLinesTest, ClosingWaitsASecondForOutputThatDoesNotMove)
{
    openPort();
    m_adapter.inDriver = 1;
    m_adapter.standsStill = true;
    const auto begin = Clock::now();
    m_port->close();
    EXPECT_TRUE(m_port->isOpen());
    m_port->setRTS(true); // does not block
    EXPECT_LT(Clock::now() - begin, milliseconds(500));
    m_delegate.expect({"closed"});
    EXPECT_GE(Clock::now() - begin, milliseconds(1000));
    EXPECT_LT(Clock::now() - begin, milliseconds(5000));
}

} // namespace
} // namespace vorn
