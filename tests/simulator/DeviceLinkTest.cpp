#include "simulator/SimulatedDevice.h"
#include "tests/simulator/TestUpdater.h"

#include <QDir>
#include <QFileInfo>
#include <QTemporaryDir>
#include <QTest>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <vector>

#include <sys/ioctl.h>

namespace vorn::test {
namespace {

class DeviceLink : public testing::Test
{
protected:
    DeviceOptions linked() const
    {
        DeviceOptions options;
        options.directory = m_directory.path();
        options.name = QStringLiteral("usbserial-test");
        return options;
    }
    QString linkPath() const { return m_directory.filePath(QStringLiteral("usbserial-test")); }
    QStringList entries() const
    {
        return QDir(m_directory.path())
            .entryList(QDir::AllEntries | QDir::System | QDir::Hidden | QDir::NoDotAndDotDot);
    }

    QTemporaryDir m_directory;
};

bool hungUp(const TestUpdater &updater)
{
    pollfd fd{updater.descriptor(), 0, 0};
    return ::poll(&fd, 1, 5000) == 1 && (fd.revents & POLLHUP) != 0;
}

TEST_F(DeviceLink, IsThereWhileTheDeviceIs)
{
    {
        SimulatedDevice device(linked());
        ASSERT_TRUE(device.start());
        EXPECT_EQ(device.path(), linkPath());
        EXPECT_EQ(QFile::symLinkTarget(linkPath()), device.slavePath());
        EXPECT_EQ(entries().size(), 1);
        EXPECT_TRUE(TestUpdater(device.path()).update(sampleImage(10), 2));
    }
    EXPECT_EQ(entries(), QStringList());
}

TEST_F(DeviceLink, ReplacesADanglingLinkAndNothingElse)
{
    ASSERT_TRUE(QFile::link(QStringLiteral("/dev/pts/none"), linkPath()));
    EXPECT_TRUE(SimulatedDevice(linked()).start());

    ASSERT_TRUE(QDir(m_directory.path()).mkdir(QStringLiteral("usbserial-test")));
    QString problem;
    EXPECT_FALSE(SimulatedDevice(linked()).start(&problem));
    EXPECT_THAT(problem.toStdString(), testing::HasSubstr("File exists"));
    EXPECT_TRUE(QFileInfo(linkPath()).isDir());
}

TEST_F(DeviceLink, LeavesAnotherDevicesLinkAlone)
{
    SimulatedDevice device(linked());
    ASSERT_TRUE(device.start());
    ASSERT_TRUE(QFile::remove(linkPath()));
    SimulatedDevice successor(linked());
    ASSERT_TRUE(successor.start());
    device.unplug();
    EXPECT_EQ(QFile::symLinkTarget(linkPath()), successor.slavePath());
}

TEST_F(DeviceLink, NeedsSoundOptions)
{
    const auto problemOf = [this](auto change) {
        DeviceOptions options = linked();
        change(options);
        QString problem;
        EXPECT_FALSE(SimulatedDevice(options).start(&problem));
        return problem.toStdString();
    };
    using testing::HasSubstr;
    EXPECT_THAT(problemOf([](auto &o) { o.name = QStringLiteral("a/b"); }), HasSubstr("a/b"));
    EXPECT_THAT(problemOf([](auto &o) { o.name.clear(); }), HasSubstr("belong together"));
    EXPECT_THAT(problemOf([](auto &o) { o.directory += QStringLiteral("/no"); }),
                HasSubstr("No such file"));
    EXPECT_THAT(problemOf([](auto &o) { o.modelCode = 256; }), HasSubstr("255"));
    EXPECT_THAT(problemOf([](auto &o) { o.connectPieces = {3, 2}; }), HasSubstr("four bytes"));
    EXPECT_THAT(problemOf([](auto &o) { o.eraseTime = -1ms; }), HasSubstr("negative"));
    EXPECT_THAT(problemOf([](auto &o) {
                    o.modelCode = 1;
                    o.faults = {{BootStep::Erase, FaultKind::Refuse}};
                }),
                HasSubstr("model code 2"));
}

TEST_F(DeviceLink, GoesWithTheTerminalWhenUnpluggedAndComesBack)
{
    SimulatedDevice device(linked());
    ASSERT_TRUE(device.start());
    const TestUpdater before(device.path());
    ASSERT_EQ(before.ask(Sync), Ack);
    device.unplug();
    EXPECT_EQ(entries(), QStringList());
    EXPECT_TRUE(hungUp(before));
    EXPECT_FALSE(device.report().plugged);

    ASSERT_TRUE(device.replug());
    const TestUpdater after(device.path());
    EXPECT_EQ(after.ask(Connect + Sync), Ack) << "the exchange was forgotten";
    EXPECT_TRUE(after.update(sampleImage(700), 2));
    EXPECT_EQ(device.report().opens, 2);
}

TEST_F(DeviceLink, GoesAtTheFrameOfAFaultAndComesBackInTime)
{
    DeviceOptions options = linked();
    options.faults = {{BootStep::Frame, FaultKind::Unplug, 2, 0, 1}};
    options.replugAfter = 50ms;
    SimulatedDevice device(options);
    ASSERT_TRUE(device.start());
    const TestUpdater before(device.path());
    EXPECT_FALSE(before.update(sampleImage(1000), 2));
    EXPECT_TRUE(hungUp(before));
    EXPECT_EQ(device.report().partialImage, sampleImage(1000).first(500));

    ASSERT_TRUE(device.waitForPlugged(true, 5s));
    EXPECT_TRUE(TestUpdater(device.path()).update(sampleImage(1000), 2));
    EXPECT_EQ(device.report().image, sampleImage(1000));
    EXPECT_EQ(device.report().errorCount, 0);
}

TEST_F(DeviceLink, CanBePulledByAnObserver)
{
    SimulatedDevice device(linked());
    std::vector<DeviceEvent> events;
    device.setObserver([&](const DeviceEvent &event) {
        events.push_back(event);
        if (event.kind == DeviceEvent::Kind::Frame && event.number == 2)
            device.unplug();
    });
    ASSERT_TRUE(device.start());
    const TestUpdater updater(device.path());
    EXPECT_FALSE(updater.update(sampleImage(1000), 2));
    ASSERT_TRUE(device.waitForPlugged(false, 5s));
    EXPECT_TRUE(device.waitForFrame(2, 0ms));
    device.unplug(); // orders the observer's calls before what follows
    using Kind = DeviceEvent::Kind;
    std::vector<Kind> kinds;
    for (const DeviceEvent &event : events)
        kinds.push_back(event.kind);
    EXPECT_THAT(kinds, testing::ElementsAre(Kind::Plugged, Kind::Exchange, Kind::Frame, Kind::Frame,
                                            Kind::Unplugged));
}

TEST_F(DeviceLink, CanBePulledByAnObserverAtOnce)
{
    SimulatedDevice device(linked());
    device.setObserver([&](const DeviceEvent &event) {
        if (event.kind == DeviceEvent::Kind::Plugged)
            device.unplug();
    });
    ASSERT_TRUE(device.start());
    EXPECT_TRUE(device.waitForPlugged(false, 5s));
}

TEST_F(DeviceLink, IsFreshForTheNextProgramWhateverTheLastOneLeft)
{
    SimulatedDevice device(linked());
    ASSERT_TRUE(device.start());
    {
        const TestUpdater rude(device.path());
        ASSERT_EQ(::ioctl(rude.descriptor(), TIOCEXCL), 0);
        rude.send(Sync);
        ASSERT_TRUE(device.waitForExchanges(1, 5s)); // and leaves without reading the answer
    }
    ASSERT_TRUE(QTest::qWaitFor([&] { return !device.report().inUse; }, 5000));
    const TestUpdater next(device.path());
    ASSERT_TRUE(next.isOpen());
    int exclusive = 1;
    ASSERT_EQ(::ioctl(next.descriptor(), TIOCGEXCL, &exclusive), 0);
    EXPECT_EQ(exclusive, 0);
    EXPECT_EQ(next.ask(Sync), Ack);
    EXPECT_EQ(next.receive(1, 50ms), QByteArray()) << "one answer, not the one before";
    EXPECT_EQ(device.report().opens, 2);
}

} // namespace
} // namespace vorn::test
