#include "platform/UdevDeviceRegistry.h"

#include "tests/platform/RegistryWatcher.h"
#include "tests/support/MockedUdev.h"

#include <gmock/gmock.h>

#include <dlfcn.h>
#include <sys/socket.h>

namespace {

bool overrunsMonitor = false;

} // namespace

// The monitor's buffer overruns: what waits in it is lost.
extern "C" ssize_t recvmsg(int socket, msghdr *message, int flags)
{
    using Call = ssize_t (*)(int, msghdr *, int);
    static const auto original = reinterpret_cast<Call>(::dlsym(RTLD_NEXT, "recvmsg"));
    if (!std::exchange(overrunsMonitor, false))
        return original(socket, message, flags);
    while (original(socket, message, flags | MSG_DONTWAIT) > 0)
        continue;
    errno = ENOBUFS;
    return -1;
}

namespace vorn {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class UdevDeviceRegistryTest : public testing::Test, protected MockedUdev
{
};

TEST_F(UdevDeviceRegistryTest, EachKindOfPortHasItsName)
{
    plug({"1-1", "TWO"}, {"ttyUSB0", 0, 0}); // one port on each of two interfaces
    plug({"1-1", "TWO"}, {"ttyUSB1", 1, 0});
    plug({"1-2", "FOUR"}, {"ttyUSB2", 0, 0}); // two ports on one interface
    plug({"1-2", "FOUR"}, {"ttyUSB3", 0, 1});
    plug({"1-3.4", ""}, {"ttyUSB4"});
    plug({"2-1", "SAME"}, {"ttyUSB5"});
    plug({"2-2", "SAME"}, {"ttyUSB6"});
    plug({"2-3", "SAME", "cdc_acm"}, {"ttyACM0"}); // another kind, so another name
    plug({"3-1", "../a b\t\x01"}, {"ttyUSB7"});
    plug({"3-2", "\u00dc\u202e<b>\xff\xfe"}, {"ttyUSB8"});
    plug({"3-3", "\x7f\x7f///"}, {"ttyUSB9"}); // nothing is left of it: the place tells
    EXPECT_THAT(namesOf(UdevDeviceRegistry().devices()),
                testing::UnorderedElementsAre(
                    "usbserial-TWO-0", "usbserial-TWO-1", "usbserial-FOUR-0", "usbserial-FOUR-1",
                    "usbserial-1-3.4", "usbserial-2-1", "usbserial-2-2", "usbmodem-SAME",
                    "usbserial-.._a_b__", "usbserial-\u00dc__b___", "usbserial-3-3"));
}

TEST_F(UdevDeviceRegistryTest, TheFirstPortOfAnAdapterIsNumberedBeforeTheOthersExist)
{
    UdevDeviceRegistry registry;
    RegistryWatcher watcher(registry);
    const auto describe = [&](const QByteArray &place, const QByteArray &interfaces) {
        QByteArray bytes = QByteArray::fromHex("1201000200000040030410600007010203010902"
                                               "370002010080 2d" +
                                               interfaces);
        m_adapters[place] = add("usb", place, {}, {}, {{"DEVTYPE", "usb_device"}});
        umockdev_testbed_set_attribute_binary(
            m_testbed.get(), m_adapters[place].constData(), "descriptors",
            reinterpret_cast<guint8 *>(bytes.data()), static_cast<gint>(bytes.size()));
    };
    // Two vendor-specific interfaces, each with an end point.
    describe("1-1", "090400000 1ffffff00 07058102000200 0904010001ffffff00 07058302000200");
    plug({"1-1", "TWO"}, {"ttyUSB0"});
    // Control and data interface are one CDC-ACM port; mass storage beside it is none.
    describe("1-2", "0904000001020201000904010002 0a0000000904020002080650000904020102 08065000");
    plug({"1-2", "ONE", "cdc_acm"}, {"ttyACM0"});
    EXPECT_EQ(watcher.take(1), Batches({{"+usbserial-TWO-0", "+usbmodem-ONE"}}));
}

TEST_F(UdevDeviceRegistryTest, OnlyTerminalsWithHardwareAreListedAlsoWhereUdevsRulesDoNotRun)
{
    add("tty", "tty1", {}, {}, {{"DEVNAME", "/dev/tty1"}}); // no parent: a console
    const QByteArray board = add("platform", "serial8250", {}, {}, {});
    add("tty", "ttyS0", board, {{"type", "0\n"}}, {{"DEVNAME", "/dev/ttyS0"}});
    add("tty", "ttyS1", board, {{"type", "4\n"}}, {{"DEVNAME", "/dev/ttyS1"}});
    const auto devices = UdevDeviceRegistry().devices();
    ASSERT_THAT(namesOf(devices), ElementsAre("ttyS1"));
    EXPECT_EQ(devices.first()->dialinDevice, "/dev/ttyS1");
    const QByteArray device =
        add("usb", "1-1", {}, {{"serial", "A 9\n"}}, {{"DEVTYPE", "usb_device"}});
    const QByteArray port = add("usb-serial", "ttyUSB0", device, {}, {});
    add("tty", "ttyUSB0", port, {}, {{"DEVNAME", "/dev/ttyUSB0"}});
    EXPECT_THAT(namesOf(UdevDeviceRegistry().devices()),
                testing::UnorderedElementsAre("ttyS1", "usbserial-A_9"));
}

TEST_F(UdevDeviceRegistryTest, HotPlugIsToldInOneBatchPerWakeUp)
{
    UdevDeviceRegistry registry;
    RegistryWatcher watcher(registry);
    const QByteArray a = plug({"1-1", "A"}, {"ttyUSB0"});
    const QByteArray b = plug({"1-2", "B"}, {"ttyUSB1"});
    EXPECT_EQ(watcher.take(1), Batches({{"+usbserial-A", "+usbserial-B"}}));
    const auto told = watcher.last();
    EXPECT_EQ(registry.devices(), told);

    umockdev_testbed_uevent(m_testbed.get(), a.constData(), "change"); // as by `udevadm trigger`
    unplug("1-1", {a});
    unplug("1-2", {b});
    EXPECT_EQ(watcher.take(1), Batches({{"-usbserial-A", "-usbserial-B"}}));
    EXPECT_EQ(watcher.last(), told) << "a removed device is told with the record it came with";
    EXPECT_THAT(registry.devices(), IsEmpty());
}

TEST_F(UdevDeviceRegistryTest, APortReplacedWithinOneWakeUpIsRemovedAndThenAdded)
{
    QByteArray tty = plug({"1-1", "A"}, {"ttyUSB0"});
    UdevDeviceRegistry registry;
    RegistryWatcher watcher(registry);
    for (const char *node : {"ttyUSB0", "ttyUSB1"}) { // at the same node or at another one
        unplug("1-1", {tty});
        const QByteArray flicker = plug({"1-9", "X"}, {"ttyUSB9"});
        unplug("1-9", {flicker}); // gone before anybody was told
        tty = plug({"1-1", "A"}, {node});
        EXPECT_EQ(watcher.take(2), Batches({{"-usbserial-A"}, {"+usbserial-A"}}));
        EXPECT_EQ(watcher.last().first()->calloutDevice, QString("/dev/") + node);
    }
}

TEST_F(UdevDeviceRegistryTest, LostEventsAreMadeUpFor)
{
    const QByteArray a = plug({"1-1", "A"}, {"ttyUSB0"});
    UdevDeviceRegistry registry;
    RegistryWatcher watcher(registry);
    unplug("1-1", {a});
    plug({"1-2", "B"}, {"ttyUSB1"});
    overrunsMonitor = true;
    EXPECT_EQ(watcher.take(2), Batches({{"-usbserial-A"}, {"+usbserial-B"}}));
    plug({"1-3", "C"}, {"ttyUSB2"});
    EXPECT_EQ(watcher.take(1), Batches({{"+usbserial-C"}}));
    EXPECT_EQ(namesOf(registry.devices()), QStringList({"usbserial-B", "usbserial-C"}));
}

TEST_F(UdevDeviceRegistryTest, AnAdapterIsNamedAfterItsSerialNumberAndASecondOneDoesNotRenameIt)
{
    plug({"1-1", "SAME"}, {"ttyUSB0"});
    UdevDeviceRegistry registry;
    ASSERT_THAT(namesOf(registry.devices()), ElementsAre("usbserial-SAME"));
    EXPECT_EQ(registry.devices().first()->clientType, "IOSerialStream");
    EXPECT_EQ(registry.devices().first()->dialinDevice,
              "/dev/serial/by-id/usb-Maker_Model_SAME-if00-port0");
    RegistryWatcher watcher(registry);
    plug({"1-2", "SAME"}, {"ttyUSB1"});
    EXPECT_EQ(watcher.take(1), Batches({{"+usbserial-1-2"}}));
    EXPECT_EQ(watcher.last().first()->dialinDevice,
              "/dev/serial/by-path/pci-0000:00:14.0-usb-0:1-2:1.0-port0")
        << "the link by serial number leads to one of the two only";
    EXPECT_THAT(namesOf(registry.devices()), ElementsAre("usbserial-SAME", "usbserial-1-2"));
}

} // namespace
} // namespace vorn
