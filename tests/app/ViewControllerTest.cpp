// The whole window on simulated devices, pressed through its own controls.
#include "simulator/PackageServer.h"
#include "tests/app/WindowRig.h"

#include <QClipboard>
#include <QFile>

#include <fcntl.h>
#include <sys/file.h>
#include <termios.h>

#include <atomic>

namespace vorn {
namespace {

// A terminal that does not close: the port's thread waits in its tcsetattr().
std::atomic<bool> holdClosing = false;
// Who runs the program.
std::atomic<uid_t> user = 1000;

TEST_F(WindowTest, WithoutADeviceOrFirmwareEveryPressSaysWhatIsMissing)
{
    QDir(firmwareFolder()).removeRecursively();
    show();
    EXPECT_EQ(titles(devices), QStringList{"No device selected"});
    EXPECT_EQ(connection->text(), "Prompt:No device selected");
    EXPECT_EQ(openButton->text(), "Open");
    EXPECT_EQ(firmware->count(), 0);
    EXPECT_FALSE(downloadButton->isEnabled());
    EXPECT_FALSE(downloadButton->toolTip().isEmpty());
    EXPECT_TRUE(explains("connection", "Plug in"));
    EXPECT_TRUE(
        eventually([&] { return explains("firmware", "no package server is configured"); }));

    press(openButton);
    EXPECT_EQ(connection->text(), "Prompt:No device selected");
    press(updateButton);
    EXPECT_EQ(status->text(), "Prompt:No device selected");
    EXPECT_TRUE(explains("update", "Plug in"));
}

TEST_F(WindowTest, RootIsWarnedUntilThereIsAnythingElseToSay)
{
    for (const uid_t each : {uid_t{0}, uid_t{1000}}) {
        user = each;
        show();
        EXPECT_EQ(explains("update", "runs as root"), each == 0);
        EXPECT_TRUE(explains("connection", "Plug in"));
        press(updateButton);
        EXPECT_TRUE(explains("update", "Plug in"));
        controller.reset();
        window.showUpdateDetails({});
    }
}

TEST_F(WindowTest, AnUpdateFromTheButtonsPutsTheChosenFileIntoTheDevice)
{
    ASSERT_NO_FATAL_FAILURE(plugIn());
    EXPECT_EQ(titles(devices), QStringList(2, "usbserial-one"));
    press(updateButton);
    EXPECT_EQ(status->text(), "Prompt:Device not opened");
    EXPECT_TRUE(explains("update", "is not open"));

    ASSERT_TRUE(eventually([&] { return firmware->count() == 3; }));
    open();
    EXPECT_EQ(openButton->text(), "Close");
    EXPECT_TRUE(window.findChild<QLabel *>("connectionDetails")->text().isEmpty());
    ASSERT_TRUE(eventually([&] { return titles(firmware) == kTitles; }));
    press(updateButton);
    EXPECT_EQ(status->text(), "Prompt:No firmware selected");
    choose();
    writeFirmware(kImage, 0);
    press(updateButton);
    ASSERT_TRUE(eventually(
        [&] { return status->text() == "Prompt:Firmware update failed,please try again"; }));
    EXPECT_FALSE(controller->serialPort()->RTS());
    EXPECT_EQ(device->report().exchanges, 1); // the version query

    writeFirmware(kImage, image.size());
    press(updateButton);
    press(updateButton); // does nothing more
    ASSERT_TRUE(
        eventually([&] { return status->text() == "Prompt:100% progress,successfully update"; }));
    EXPECT_EQ(progress->value(), 100);
    EXPECT_EQ(device->report().image, image);
    EXPECT_EQ(device->report().updates, 1);
    EXPECT_EQ(device->report().exchanges, 2);
    EXPECT_EQ(device->report().errors, QStringList());
    EXPECT_TRUE(explains("update", "KiB/s"));

    press(window.findChild<QPushButton *>("logButton"));
    press(window.findChild<QPushButton *>("logCopyButton"));
    const auto copied = [] { return QGuiApplication::clipboard()->text(); };
    ASSERT_TRUE(eventually([&] { return !copied().isEmpty(); }));
    for (const char *part :
         {"Device: usbserial-one", "Send the image: OK", "Update: OK", "RTS high"})
        EXPECT_TRUE(copied().contains(part)) << part;
    EXPECT_FALSE(copied().contains(QDir::homePath() + '/'));

    EXPECT_EQ(status->tone(), StatusTone::Good);
    press(updateButton);
    ASSERT_TRUE(eventually([&] { return status->tone() == StatusTone::Neutral; }));
    EXPECT_EQ(progress->value(), 0);
    ASSERT_TRUE(eventually([&] { return status->tone() == StatusTone::Good; }));

    press(openButton);
    ASSERT_TRUE(eventually(
        [&] { return connection->text() == "Prompt:usbserial-one Selected,close successfully"; }));
    EXPECT_EQ(openButton->text(), "Open");
    EXPECT_FALSE(controller->serialPort()->isOpen());

    // A later failure does not stand beside the success.
    device->setFaults({{.step = BootStep::Sync, .kind = FaultKind::Silence}});
    open();
    ASSERT_TRUE(eventually([&] { return says(status, "please try again"); }));
    EXPECT_TRUE(explains("update", "did not report its model"));
    EXPECT_EQ(progress->value(), 0);
}

TEST_F(WindowTest, AfterACablePulledOutDuringAnUpdateTheNextOneSucceeds)
{
    ASSERT_NO_FATAL_FAILURE(openAndChoose("frame:3=unplug,times=1"));
    press(updateButton);
    ASSERT_TRUE(eventually([&] { return says(connection, "No device selected"); }));
    ASSERT_TRUE(eventually(
        [&] { return status->text() == "Prompt:Firmware update failed,please try again"; }));
    EXPECT_EQ(openButton->text(), "Open");
    EXPECT_TRUE(explains("update", "updated again"));

    ASSERT_TRUE(device->replug());
    ASSERT_TRUE(eventually([&] { return says(connection, "not opened"); }));
    press(updateButton);
    EXPECT_TRUE(explains("update", "is not open"));
    open();
    ASSERT_TRUE(eventually([&] { return device->report().exchanges == 3; }));
    ASSERT_TRUE(eventually([&] { return firmware->currentIndex() == 0; })); // filled again
    EXPECT_TRUE(explains("update", "updated again"));
    choose();
    press(updateButton);
    ASSERT_TRUE(eventually([&] { return says(status, "successfully update"); }));
    EXPECT_EQ(device->report().image, image);
}

TEST_F(WindowTest, ClosingTheDeviceDuringAnUpdateAsksFirst)
{
    ASSERT_NO_FATAL_FAILURE(openAndChoose("frame:20=silence,times=1"));
    press(updateButton);
    ASSERT_TRUE(eventually([&] { return device->report().downloadFrames == 20; }));
    press(openButton);
    ASSERT_TRUE(question() && question()->isVisible());
    EXPECT_TRUE(controller->serialPort()->isOpen());
    confirm();
    ASSERT_TRUE(eventually([&] { return says(connection, "close successfully"); }));
    ASSERT_TRUE(eventually([&] { return says(status, "please try again"); }));
    EXPECT_EQ(openButton->text(), "Open");
    EXPECT_LT(progress->value(), 100);
    EXPECT_EQ(status->tone(), StatusTone::Bad);
}

TEST_F(WindowTest, ClosingTheWindowDuringAnUpdateAsksFirst)
{
    ASSERT_NO_FATAL_FAILURE(openAndChoose("frame:20=silence,times=2"));
    const auto closeDuringUpdate = [&] {
        press(updateButton);
        ASSERT_TRUE(eventually([&] { return says(status, "progress,updating"); }));
        EXPECT_FALSE(window.close());
        ASSERT_TRUE(question() && question()->isVisible());
    };
    // The question stays when the update ends, and then the window closes without one.
    ASSERT_NO_FATAL_FAILURE(closeDuringUpdate());
    ASSERT_TRUE(eventually([&] { return says(status, "please try again"); }));
    ASSERT_TRUE(question() && question()->isVisible());
    QTest::keyClick(question()->focusWidget(), Qt::Key_Return);
    EXPECT_TRUE(window.isVisible());

    ASSERT_NO_FATAL_FAILURE(closeDuringUpdate());
    confirm();
    EXPECT_FALSE(window.isVisible());
}

TEST_F(WindowTest, OtherDevicesThatComeAndGoWaitForTheEndOfTheUpdate)
{
    const auto devicesAre = [](const char *one, const char *two) {
        const auto ports = ORSSerialPortManager::sharedSerialPortManager().availablePorts();
        return ports.size() == 2 && ports[0]->name() == one && ports[1]->name() == two;
    };
    auto goes = std::make_unique<SimulatedDevice>(deviceNamed("goes"));
    ASSERT_TRUE(goes->start());
    ASSERT_NO_FATAL_FAILURE(openAndChoose("erase=late:1600"));
    press(updateButton);
    ASSERT_TRUE(eventually([&] { return progress->maximum() == 0; })); // it erases
    EXPECT_FALSE(updateButton->isEnabled());
    EXPECT_TRUE(eventually([&] { return explains("update", "Waiting for the device to erase"); }));
    goes.reset();
    SimulatedDevice comes(deviceNamed("comes"));
    ASSERT_TRUE(comes.start());
    ASSERT_TRUE(eventually([&] { return devicesAre("usbserial-one", "comes"); }));
    EXPECT_TRUE(says(connection, "opened successfully"));
    ASSERT_TRUE(eventually([&] { return says(status, "successfully update"); }));
    EXPECT_EQ(device->report().image, image);
    EXPECT_TRUE(eventually([&] { return says(connection, "not opened"); }));
}

TEST_F(WindowTest, TheFirstOfTwoDevicesIsChosen)
{
    SimulatedDevice first(deviceNamed("usbserial-a"));
    ASSERT_TRUE(first.start());
    const auto &manager = ORSSerialPortManager::sharedSerialPortManager();
    ASSERT_TRUE(eventually([&] { return manager.availablePorts().size() == 1; }));
    SimulatedDevice second(deviceNamed("usbserial-b"));
    ASSERT_TRUE(second.start());
    ASSERT_TRUE(eventually([&] { return manager.availablePorts().size() == 2; }));
    show();
    EXPECT_EQ(titles(devices), QStringList(2, "usbserial-a"));
    EXPECT_EQ(controller->serialPort()->name(), "usbserial-a");
    EXPECT_TRUE(explains("connection", "usbserial-b is plugged in, too"));
}

TEST_F(WindowTest, APortThatDoesNotOpenOrCloseAsToldSaysSo)
{
    ASSERT_NO_FATAL_FAILURE(plugIn());
    {
        const FileDescriptor other(
            ::open(QFile::encodeName(device->slavePath()).constData(), O_RDWR | O_NOCTTY));
        ASSERT_EQ(::flock(other.get(), LOCK_EX | LOCK_NB), 0);
        press(openButton);
        EXPECT_EQ(connection->text(),
                  "Prompt:usbserial-one Selected,failed to open,please try again");
        EXPECT_TRUE(eventually([&] { return explains("connection", "in use by"); }));
        EXPECT_EQ(openButton->text(), "Open");
    }
    open();
    auto &manager = ORSSerialPortManager::sharedSerialPortManager();
    manager.systemWillSleep();
    ASSERT_TRUE(eventually([&] { return says(connection, "usbserial-one Selected,not opened"); }));
    EXPECT_EQ(openButton->text(), "Open");
    manager.systemDidWake();
    ASSERT_TRUE(eventually([&] { return says(connection, "opened successfully"); }));
    EXPECT_EQ(openButton->text(), "Close");
    press(updateButton);
    EXPECT_EQ(status->text(), "Prompt:No firmware selected");

    holdClosing = true;
    press(openButton);
    ASSERT_TRUE(
        eventually([&] { return says(connection, "usbserial-one Selected,closeing failed"); }));
    EXPECT_EQ(openButton->text(), "Close");
    holdClosing = false;
    holdClosing.notify_all();
    EXPECT_TRUE(eventually([&] { return says(connection, "close successfully"); }));
}

TEST_F(WindowTest, ASilentDeviceTakesNoChoiceAway)
{
    ASSERT_NO_FATAL_FAILURE(plugIn());
    device->setFaults({{.step = BootStep::Sync, .kind = FaultKind::Silence}});
    ASSERT_TRUE(eventually([&] { return firmware->count() == 3; }));
    firmware->clear(); // so that the filling half a second after the opening shows
    open();
    ASSERT_TRUE(eventually([&] { return firmware->count() == 3; }));
    firmware->setFocus();
    QTest::keyClick(firmware, Qt::Key_Down);
    const QString chosen = firmware->currentText();
    EXPECT_NE(chosen, kTitles.front());
    ASSERT_TRUE(eventually([&] { return says(status, "please try again"); })); // the query's end
    runEventLoopFor(100ms);
    EXPECT_EQ(firmware->currentText(), chosen);
}

TEST_F(WindowTest, TheDownloadButtonReplacesTheFirmwareThatAKilledProgramHadSetAside)
{
    const QString leftover = cachesDirectory() + "/.VornUpdate2-staging-a";
    ASSERT_TRUE(QDir().mkpath(leftover + "/set-aside"));
    ASSERT_TRUE(QDir().rename(firmwareFolder(), leftover + "/set-aside/VornUpdate2"));
    PackageAnswer answer;
    answer.package = makeArchive({{"VornUpdate2/", {}}, {"VornUpdate2/VORN-2.bin", "2"}});
    PackageServer server(answer);
    ASSERT_TRUE(server.start());
    packages = PackageLocation::onHost(server.host()).value();
    ASSERT_FALSE(packages.addCertificates(server.authorityFile()));
    show();
    EXPECT_TRUE(eventually([&] { return firmware->findText(kImage) > 0; }));
    EXPECT_FALSE(QFile::exists(leftover));
    ASSERT_TRUE(downloadButton->isEnabled());
    press(downloadButton);
    ASSERT_TRUE(eventually(
        [&] { return choice->text() == "Prompt:Successfully downloaded the latest firmware"; }));
    EXPECT_EQ(choice->tone(), StatusTone::Good);
    EXPECT_TRUE(explains("firmware", "KiB/s"));
    EXPECT_TRUE(eventually([&] { return firmware->findText(kImage) < 0; }));
    EXPECT_EQ(titles(firmware), (QStringList{"No firmware selected", "VORN-2.bin"}));
}

TEST_F(WindowTest, ADeviceThatTellsItsModelLateGetsItsListLate)
{
    DeviceOptions options = deviceNamed("usbserial-one");
    options.modelCode = 2;
    options.answerDelay = 300ms; // sync and connect together take longer than the first filling
    ASSERT_NO_FATAL_FAILURE(plugIn(options));
    open();
    EXPECT_TRUE(eventually([&] {
        return titles(firmware) == QStringList{"No firmware selected", kOtherModelsImage};
    }));
}

TEST_F(WindowTest, AnotherDeviceThatComesClosesTheOpenPortAndKeepsTheButton)
{
    ASSERT_NO_FATAL_FAILURE(plugIn());
    open();
    const ORSSerialPortPtr port = controller->serialPort();
    SimulatedDevice other(deviceNamed("x"));
    ASSERT_TRUE(other.start());
    ASSERT_TRUE(eventually([&] { return says(connection, "usbserial-one Selected,not opened"); }));
    ASSERT_TRUE(eventually([&] { return !port->isOpen(); }));
    EXPECT_EQ(openButton->text(), "Close");
    EXPECT_TRUE(explains("connection", "although the button reads"));
    press(openButton);
    EXPECT_FALSE(port->isOpen());
    EXPECT_EQ(titles(devices), QStringList(2, "usbserial-one"));
}

} // namespace
} // namespace vorn

// Names that the linker's --wrap gives.
// NOLINTBEGIN(bugprone-reserved-identifier,readability-identifier-naming)
extern "C" {
int __real_tcsetattr(int fd, int actions, const termios *settings);
int __wrap_tcsetattr(int fd, int actions, const termios *settings)
{
    vorn::holdClosing.wait(true);
    return __real_tcsetattr(fd, actions, settings);
}
uid_t __wrap_geteuid()
{
    return vorn::user;
}
}
// NOLINTEND(bugprone-reserved-identifier,readability-identifier-naming)
