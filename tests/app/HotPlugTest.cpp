// The window on adapters that udev knows.
#include "app/ViewController.h"
#include "platform/UdevDeviceRegistry.h"
#include "tests/support/Eventually.h"
#include "tests/support/MockedUdev.h"
#include "window/MainWindow.h"

#include <gtest/gtest.h>

namespace vorn {
namespace {

TEST(HotPlug, AnAdaptersComingAndGoingReachesTheWindow)
{
    MockedUdev udev;
    const QByteArray present = udev.plug({"1-1", "A1"}, {"ttyUSB0"});
    SerialDeviceRegistry::setSystem(std::make_unique<UdevDeviceRegistry>());
    MainWindow window;
    ViewController controller(window, PackageLocation());
    controller.viewDidLoad();
    const auto *devices = window.findChild<QComboBox *>("deviceList_1010");
    const auto *connection = window.findChild<QLabel *>("connectText_1001");
    EXPECT_EQ(connection->text(), "Prompt:usbserial-A1 Selected,not opened");
    EXPECT_EQ(controller.serialPort()->path(), "/dev/ttyUSB0");

    udev.unplug("1-1", {present});
    EXPECT_TRUE(eventually([&] { return connection->text() == "Prompt:No device selected"; }));
    EXPECT_EQ(devices->count(), 1);

    // The same adapter under another node keeps its name.
    const QByteArray again = udev.plug({"1-1", "A1"}, {"ttyUSB1"});
    EXPECT_TRUE(eventually(
        [&] { return connection->text() == "Prompt:usbserial-A1 Selected,not opened"; }));
    EXPECT_EQ(devices->itemText(1), "usbserial-A1");
    EXPECT_EQ(controller.serialPort()->path(), "/dev/ttyUSB1");
    udev.unplug("1-1", {again});
}

} // namespace
} // namespace vorn
