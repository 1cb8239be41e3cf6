#include "platform/NotificationCenter.h"
#include "serial/ORSSerialPortManager.h"
#include "tests/serial/SerialPortFixture.h"
#include "tests/support/TestRegistry.h"

#include <QProcess>

#include <array>

namespace vorn {
namespace {

using Devices = SerialDeviceRegistry::Devices;

SerialDeviceHandle deviceAt(const char *path)
{
    SerialDevice device;
    device.calloutDevice = QString::fromLatin1(path);
    return std::make_shared<SerialDevice>(device);
}

QStringList paths(const ORSSerialPortList &ports)
{
    QStringList all;
    for (const ORSSerialPortPtr &port : ports)
        all.append(port->path());
    return all;
}

// There is one manager in a process, so the tests share it and its registry, whose devices at the
// start are A and B; each test restores that.
class SerialPortManagerTest : public testing::Test
{
protected:
    static inline const SerialDeviceHandle kA = deviceAt("A");
    static inline const SerialDeviceHandle kB = deviceAt("B");
    static inline TestRegistry *sharedRegistry = nullptr;

    static void SetUpTestSuite()
    {
        auto registry = std::make_unique<TestRegistry>(Devices{kA, kB});
        sharedRegistry = registry.get();
        SerialDeviceRegistry::setSystem(std::move(registry));
    }
    void SetUp() override
    {
        ASSERT_EQ(available(), (QStringList{"A", "B"}));
        for (const auto &[name, key] :
             {std::pair(ORSSerialPortWasConnectedNotification, ORSConnectedSerialPortsKey),
              {ORSSerialPortWasDisconnectedNotification, ORSDisconnectedSerialPortsKey}})
            NotificationCenter::defaultCenter().addObserver(
                &m_observer, name, [this, itsKey = key](const QVariantMap &userInfo) {
                    m_notified.append(userInfo.value(itsKey).value<ORSSerialPortList>());
                });
    }

    QStringList available() const { return paths(m_manager.availablePorts()); }
    // The ports of the one notification since the last call.
    ORSSerialPortList takeNotified()
    {
        EXPECT_EQ(m_notified.size(), 1);
        return std::exchange(m_notified, {}).value(0);
    }

    ORSSerialPortManager &m_manager = ORSSerialPortManager::sharedSerialPortManager();
    QList<ORSSerialPortList> m_notified;
    QObject m_observer;
};

TEST_F(SerialPortManagerTest, NewDevicesAreNotifiedTogetherAndListedOnceBehindTheOthers)
{
    sharedRegistry->plug({deviceAt("C"), deviceAt("D")});
    EXPECT_EQ(available(), (QStringList{"A", "B", "C", "D"}));
    EXPECT_EQ(takeNotified(), m_manager.availablePorts().sliced(2)) << "the same port objects";
    sharedRegistry->plug({deviceAt("C")});
    EXPECT_EQ(takeNotified(), ORSSerialPortList());
    EXPECT_EQ(available(), (QStringList{"A", "B", "C", "D"}));
    sharedRegistry->unplug({deviceAt("D"), deviceAt("C")});
    EXPECT_EQ(available(), (QStringList{"A", "B"}));
    EXPECT_EQ(paths(takeNotified()), (QStringList{"D", "C"}));
}

TEST_F(SerialPortManagerTest, RemovedDevicesAreNotifiedWithNewPortsEvenIfNeverListed)
{
    const ORSSerialPortPtr listed = m_manager.availablePorts().at(1);
    RecordingDelegate delegate;
    listed->setDelegate(&delegate);
    sharedRegistry->unplug({kB, deviceAt("Z")});
    EXPECT_EQ(available(), QStringList("A"));
    const ORSSerialPortList removed = takeNotified();
    EXPECT_EQ(paths(removed), (QStringList{"B", "Z"}));
    EXPECT_NE(removed.value(0), listed);
    delegate.expect({}); // the port itself learns of it from its line
    sharedRegistry->plug({kB});
}

TEST_F(SerialPortManagerTest, OpenPortsAreClosedForSleepAndOpenedAgainInThatOrder)
{
    const std::array<TestTerminal, 2> terminals;
    const Devices devices{terminals[0].device(), terminals[1].device()};
    sharedRegistry->plug(devices);
    const ORSSerialPortList ports = m_manager.availablePorts().sliced(2);
    ASSERT_EQ(ports.size(), 2);
    QByteArrayList opened;
    std::array<RecordingDelegate, 2> delegates;
    for (size_t i = 0; i < 2; ++i) {
        ports[qsizetype(i)]->setDelegate(&delegates[i]);
        ports[qsizetype(i)]->open();
        delegates[i].expect({"error ENOTTY", "opened"});
        delegates[i].onEvent = [&opened, i](const QByteArray &event) {
            if (event == "opened")
                opened += QByteArray::number(int(i));
        };
    }
    m_manager.systemWillSleep();
    delegates[0].expect({"closed"});
    delegates[1].expect({"closed"});
    EXPECT_EQ(m_manager.portsToReopenAfterSleep(), ports);
    m_manager.systemDidWake();
    EXPECT_EQ(m_manager.portsToReopenAfterSleep(), ORSSerialPortList());
    EXPECT_TRUE(eventually([&] { return opened == QByteArrayList({"0", "1"}); }));
    sharedRegistry->unplug(devices);
}

// Another program ends in each of the ways in which a program may, with its port open.
class ExitWithOpenPortTest : public testing::TestWithParam<const char *>
{
};

TEST_P(ExitWithOpenPortTest, RestoresTheLineAndSucceeds)
{
    const TestTerminal terminal;
    const termios before = terminal.lineSettings();
    QProcess program;
    program.setProcessChannelMode(QProcess::MergedChannels);
    program.start(QStringLiteral(EXIT_WITH_OPEN_PORT),
                  {terminal.path(), QString::fromLatin1(GetParam())});
    EXPECT_EQ(terminal.take(4), "open");
    EXPECT_NE(terminal.lineSettings().c_cflag & CSTOPB, before.c_cflag & CSTOPB);
    terminal.send("x"); // which ends it
    EXPECT_TRUE(program.waitForFinished());
    EXPECT_EQ(program.readAll(), "");
    EXPECT_EQ(program.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(program.exitCode(), 0);
    // Otherwise there is no manager, or no delegate any more.
    EXPECT_EQ(terminal.take(), GetParam() == std::string("exit") ? "removed" : "");
    EXPECT_EQ(terminal.lineSettings().c_cflag, before.c_cflag);
}

INSTANTIATE_TEST_SUITE_P(Ways, ExitWithOpenPortTest,
                         testing::Values("return", "exit", "without-manager"));

} // namespace
} // namespace vorn
