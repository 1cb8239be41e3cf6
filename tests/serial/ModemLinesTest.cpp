#include "tests/serial/RecordingDelegate.h"

#include <gmock/gmock.h>

#include <mutex>
#include <vector>

#include <linux/serial.h>
#include <sys/ioctl.h>

// GLib's names collide with Qt's keywords.
#undef signals
#include <umockdev.h>

namespace vorn {
namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;
using testing::ElementsAre;

// A serial adapter with modem lines: a mocked device node whose ioctls this object answers, on a
// thread of the test bed's own.
class MockedAdapter
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
    MockedAdapter(const MockedAdapter &) = delete;
    MockedAdapter &operator=(const MockedAdapter &) = delete;

    static SerialDeviceHandle device()
    {
        SerialDevice device;
        device.calloutDevice = "/dev/ttyUSB0";
        return std::make_shared<SerialDevice>(device);
    }

    // The modem lines (TIOCM_*) as the adapter has them.
    void setInputs(int lines)
    {
        locked([&] { m_lines = lines; });
    }
    // The lines of each TIOCMSET so far.
    std::vector<int> takeSettings()
    {
        std::vector<int> taken;
        locked([&] { taken.swap(m_settings); });
        return taken;
    }
    // From now on the lines cannot be read.
    void fail(int error)
    {
        locked([&] { m_error = error; });
    }
    // So many times more it is told that output has not left the driver, the adapter.
    void holdOutput(int inDriver, int inAdapter)
    {
        locked([&] { m_inDriver = inDriver, m_inAdapter = inAdapter; });
    }
    int timesAskedForOutput()
    {
        int times = 0;
        locked([&] { times = m_timesAsked; });
        return times;
    }
    int serialFlags()
    {
        int flags = 0;
        locked([&] { flags = m_serial.flags; });
        return flags;
    }

private:
    template <typename Job>
    void locked(Job job)
    {
        const std::lock_guard lock(m_mutex);
        job();
    }

    static gboolean handle(UMockdevIoctlBase *, UMockdevIoctlClient *client, gpointer self)
    {
        return static_cast<MockedAdapter *>(self)->answer(client);
    }

    // The memory that the ioctl's argument points to.
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
        int error = 0;
        int result = 0;
        switch (umockdev_ioctl_client_get_request(client)) {
        case TIOCMGET:
            error = m_error;
            if (error == 0)
                put(client, m_lines);
            break;
        case TIOCMSET:
            m_lines = get<int>(client);
            m_settings.push_back(m_lines);
            break;
        case TIOCOUTQ:
            ++m_timesAsked;
            put(client, m_inDriver > 0 ? m_inDriver-- : 0);
            break;
        case TIOCSERGETLSR:
            ++m_timesAsked;
            put<unsigned>(client, m_inAdapter-- > 0 ? 0 : TIOCSER_TEMT);
            break;
        case TIOCGSERIAL:
            put(client, m_serial);
            break;
        case TIOCSSERIAL:
            m_serial = get<serial_struct>(client);
            break;
        default: // the pseudo-terminal behind the node answers
            result = umockdev_ioctl_client_execute(client, &error, nullptr);
        }
        umockdev_ioctl_client_complete(client, error == 0 ? result : -1, error);
        return TRUE;
    }

    std::mutex m_mutex;
    int m_lines = TIOCM_DTR | TIOCM_RTS; // as the system raises them when it opens a terminal
    std::vector<int> m_settings;
    int m_error = 0;
    int m_inDriver = 0;
    int m_inAdapter = 0;
    int m_timesAsked = 0;
    serial_struct m_serial{};

    const std::unique_ptr<UMockdevTestbed, decltype(&g_object_unref)> m_testbed{
        umockdev_testbed_new(), &g_object_unref};
    const std::unique_ptr<UMockdevIoctlBase, decltype(&g_object_unref)> m_ioctls{
        umockdev_ioctl_base_new(), &g_object_unref};
};

class ModemLinesTest : public testing::Test
{
protected:
    void SetUp() override { port->setDelegate(&delegate); }
    void TearDown() override
    {
        port->close();
        EXPECT_TRUE(eventually([&] { return !port->isOpen(); }));
    }
    void openPort()
    {
        port->open();
        delegate.expect({"opened"});
    }

    MockedAdapter adapter;
    ORSSerialPortPtr port = ORSSerialPort::serialPortWithDevice(MockedAdapter::device());
    RecordingDelegate delegate;
};

TEST_F(ModemLinesTest, BothOutputsAreSetAtOnceWhenThePortOpensAndEachWhenItChanges)
{
    adapter.setInputs(TIOCM_DTR | TIOCM_RTS | TIOCM_CTS);
    port->setDTR(true);
    openPort();
    EXPECT_THAT(adapter.takeSettings(), ElementsAre(TIOCM_DTR | TIOCM_CTS));
    port->setRTS(true);
    port->setRTS(true);
    port->setRTS(false);
    port->setDTR(false);
    EXPECT_THAT(adapter.takeSettings(),
                ElementsAre(TIOCM_DTR | TIOCM_CTS | TIOCM_RTS, TIOCM_DTR | TIOCM_CTS, TIOCM_CTS));
    EXPECT_TRUE(delegate.take().isEmpty());
}

TEST_F(ModemLinesTest, ObserversSeeEachInputChangeOnTheMainThread)
{
    QByteArrayList seen;
    const auto observe = [&](auto changed, auto isOn, const char *name) {
        QObject::connect(port.get(), changed, port.get(), [&seen, port = port.get(), isOn, name] {
            EXPECT_TRUE(MainQueue::instance().isCurrent());
            seen += QByteArray(name) + ((port->*isOn)() ? "+" : "-");
        });
    };
    observe(&ORSSerialPort::CTSChanged, &ORSSerialPort::CTS, "CTS");
    observe(&ORSSerialPort::DSRChanged, &ORSSerialPort::DSR, "DSR");
    observe(&ORSSerialPort::DCDChanged, &ORSSerialPort::DCD, "DCD");
    const auto expectSeen = [&](int lines, const QByteArrayList &expected) {
        adapter.setInputs(lines);
        EXPECT_TRUE(eventually([&] { return seen.size() >= expected.size(); }));
        EXPECT_EQ(std::exchange(seen, {}), expected);
    };
    openPort();
    expectSeen(TIOCM_CAR | TIOCM_DSR | TIOCM_CTS, {"CTS+", "DSR+", "DCD+"});
    expectSeen(TIOCM_CAR | TIOCM_CTS | TIOCM_RI, {"DSR-"});
    expectSeen(0, {"CTS-", "DCD-"});
    expectSeen(TIOCM_DSR, {"DSR+"});
}

TEST_F(ModemLinesTest, LinesThatCannotBeReadForTheDeviceIsGoneEndThePort)
{
    for (const auto &[error, name] : {std::pair(ENXIO, "error ENXIO"), std::pair(EIO, "error EIO"),
                                      std::pair(ENODEV, "error ENODEV")}) {
        openPort();
        adapter.fail(error);
        delegate.expect({name, "removed", "closed"});
        adapter.fail(0);
    }
}

TEST_F(ModemLinesTest, LowLatencyIsAskedForWhileThePortIsOpen)
{
    openPort();
    EXPECT_EQ(adapter.serialFlags(), ASYNC_LOW_LATENCY);
    port->close();
    delegate.expect({"closed"});
    EXPECT_EQ(adapter.serialFlags(), 0);
}

TEST_F(ModemLinesTest, ClosingWaitsForOutputToLeaveTheDriverAndTheAdapter)
{
    openPort();
    adapter.holdOutput(3, 4);
    port->close();
    delegate.expect({"closed"});
    EXPECT_EQ(adapter.timesAskedForOutput(), 3 + 2 * (4 + 1));
}

TEST_F(ModemLinesTest, ClosingGivesOutputThatNeverLeavesASecond)
{
    openPort();
    adapter.holdOutput(1000000, 0);
    const auto begin = Clock::now();
    port->close();
    EXPECT_TRUE(port->isOpen());
    port->setRTS(true); // waits for nothing
    EXPECT_LT(Clock::now() - begin, milliseconds(500));
    delegate.expect({"closed"});
    EXPECT_GE(Clock::now() - begin, milliseconds(1000));
    EXPECT_LT(Clock::now() - begin, milliseconds(5000));
}

} // namespace
} // namespace vorn
