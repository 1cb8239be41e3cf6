#include "platform/NotificationCenter.h"
#include "serial/ORSSerialPortManager.h"
#include "tests/serial/RecordingDelegate.h"
#include "tests/support/TestRegistry.h"
#include "tests/support/TestTerminal.h"

#include <QProcess>

#include <gmock/gmock.h>

namespace vorn {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

SerialDeviceHandle deviceAt(const char *path)
{
    SerialDevice device;
    device.calloutDevice = QString::fromLatin1(path);
    return std::make_shared<SerialDevice>(device);
}

// There is one manager in a process, so the tests share it and its registry, whose devices at the
// start are A and B; each test leaves it so.
class SerialPortManagerTest : public testing::Test
{
protected:
    static inline const SerialDeviceHandle kA = deviceAt("A");
    static inline const SerialDeviceHandle kB = deviceAt("B");
    static inline const SerialDeviceHandle kC = deviceAt("C");

    static TestRegistry &registry()
    {
        static TestRegistry *const installed = [] {
            auto own = std::make_unique<TestRegistry>(TestRegistry::Devices{kA, kB});
            TestRegistry *const borrowed = own.get();
            SerialDeviceRegistry::setSystem(std::move(own));
            return borrowed;
        }();
        return *installed;
    }

    static std::vector<std::string> paths(const ORSSerialPortList &ports)
    {
        std::vector<std::string> all;
        for (const ORSSerialPortPtr &port : ports)
            all.push_back(port->path().toStdString());
        return all;
    }
    std::vector<std::string> available() const { return paths(m_manager.availablePorts()); }
    ORSSerialPortPtr portAt(const QString &path) const
    {
        for (const ORSSerialPortPtr &port : m_manager.availablePorts()) {
            if (port->path() == path)
                return port;
        }
        return nullptr;
    }

    void SetUp() override
    {
        ASSERT_THAT(available(), ElementsAre("A", "B"));
        const auto keep = [this](const QString &name, const QString &key) {
            NotificationCenter::defaultCenter().addObserver(
                &m_observer, name, [this, key](const QVariantMap &userInfo) {
                    m_told.append(userInfo.value(key).value<ORSSerialPortList>());
                });
        };
        keep(ORSSerialPortWasConnectedNotification, ORSConnectedSerialPortsKey);
        keep(ORSSerialPortWasDisconnectedNotification, ORSDisconnectedSerialPortsKey);
    }
    // The ports of the one notification since the last time.
    ORSSerialPortList takeTold()
    {
        EXPECT_EQ(m_told.size(), 1);
        return std::exchange(m_told, {}).value(0);
    }

    ORSSerialPortManager &m_manager = (registry(), ORSSerialPortManager::sharedSerialPortManager());
    QList<ORSSerialPortList> m_told;
    QObject m_observer;
};

TEST_F(SerialPortManagerTest, ABatchIsToldAsOneAndListedBehindTheOthersUnlessItIsListedAlready)
{
    registry().plug({kC, deviceAt("D")});
    EXPECT_THAT(available(), ElementsAre("A", "B", "C", "D"));
    const ORSSerialPortList connected = takeTold();
    EXPECT_THAT(paths(connected), ElementsAre("C", "D"));
    registry().plug({deviceAt("C")});
    EXPECT_THAT(takeTold(), IsEmpty());
    EXPECT_THAT(available(), ElementsAre("A", "B", "C", "D"));
    EXPECT_EQ(connected.first(), portAt("C")) << "the very ports that are listed are told";
    registry().unplug({deviceAt("D"), kC});
    EXPECT_THAT(available(), ElementsAre("A", "B"));
    EXPECT_THAT(paths(takeTold()), ElementsAre("D", "C"));
}

TEST_F(SerialPortManagerTest, ARemovalIsToldWithNewPortsAlsoOfADeviceThatWasNeverListed)
{
    const ORSSerialPortPtr listed = portAt("B");
    RecordingDelegate delegate;
    listed->setDelegate(&delegate);
    registry().unplug({kB, deviceAt("Z")});
    EXPECT_THAT(available(), ElementsAre("A"));
    const ORSSerialPortList disconnected = takeTold();
    EXPECT_THAT(paths(disconnected), ElementsAre("B", "Z"));
    EXPECT_NE(disconnected.first(), listed);
    EXPECT_TRUE(disconnected.first()->isEqual(*listed));
    EXPECT_THAT(delegate.take(), IsEmpty()) << "the listed port itself hears of it by its line";
    registry().plug({kB});
}

TEST_F(SerialPortManagerTest, OpenPortsAreClosedForSleepAndOpenedAgainInThatOrder)
{
    const TestTerminal first;
    const TestTerminal second;
    const TestRegistry::Devices devices{first.device(), second.device()};
    registry().plug(devices);
    QByteArrayList opened;
    std::array<RecordingDelegate, 2> delegates;
    for (size_t i = 0; i < 2; ++i) {
        const ORSSerialPortPtr port = portAt(devices.at(qsizetype(i))->calloutDevice);
        port->setDelegate(&delegates[i]);
        port->open();
        delegates[i].expect({"error ENOTTY", "opened"});
        delegates[i].onEvent = [&opened, i](const QByteArray &event) {
            if (event == "opened")
                opened += QByteArray::number(int(i));
        };
    }
    m_manager.systemWillSleep();
    delegates[0].expect({"closed"});
    delegates[1].expect({"closed"});
    EXPECT_THAT(paths(m_manager.portsToReopenAfterSleep()),
                ElementsAre(first.path().toStdString(), second.path().toStdString()));
    m_manager.systemDidWake();
    EXPECT_THAT(m_manager.portsToReopenAfterSleep(), IsEmpty());
    EXPECT_TRUE(eventually([&] { return opened.size() == 2; }));
    EXPECT_EQ(opened, QByteArrayList({"0", "1"}));
    registry().unplug(devices);
}

// A program of its own ends in each of the ways that a program may, with its port open.
class ExitWithOpenPortTest : public testing::TestWithParam<const char *>
{
};

TEST_P(ExitWithOpenPortTest, PutsTheLineBackAndEndsInPeace)
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
    EXPECT_EQ(terminal.lineSettings().c_cflag, before.c_cflag);
}

INSTANTIATE_TEST_SUITE_P(Ways, ExitWithOpenPortTest,
                         testing::Values("return", "exit", "without-manager"), [](const auto &way) {
                             return QByteArray(way.param).replace('-', '_').toStdString();
                         });

} // namespace
} // namespace vorn
