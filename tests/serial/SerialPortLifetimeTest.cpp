#include "tests/serial/SerialPortFixture.h"

#include <thread>

namespace vorn {
namespace {

using SerialPortLifetimeTest = SerialPortFixture;

TEST_F(SerialPortLifetimeTest, ADelegateMayCloseThePortWhileItOpensAndOpenItWhenItHearsOfItsEnd)
{
    bool opensAgain = false;
    delegate.onEvent = [&](const QByteArray &event) {
        if (event == "error ENOTTY" && !opensAgain)
            port->close();
        if (event == "closed" && !std::exchange(opensAgain, true))
            port->open();
    };
    port->open();
    delegate.expect({"error ENOTTY", "opened", "closed", "error ENOTTY", "opened"});
    terminal.send("x");
    delegate.expect({"data x"});
}

TEST_F(SerialPortLifetimeTest, ADelegateMayLetGoOfThePortInEveryEvent)
{
    for (const QByteArray last :
         {"error ENOTTY", "opened", "data x", "error ENXIO", "removed", "closed"}) {
        terminal = TestTerminal();
        port = ORSSerialPort::serialPortWithDevice(terminal.device());
        port->setDelegate(&delegate);
        delegate.onEvent = [&](const QByteArray &event) {
            if (event == last)
                port.reset();
        };
        port->open();
        terminal.send("x");
        EXPECT_TRUE(eventually([&] { return !port || delegate.contains("data x"); }));
        if (port)
            terminal.unplug();
        EXPECT_TRUE(eventually([&] { return !port; })) << last.constData();
        EXPECT_TRUE(eventually([&] { return !holdsTerminal(terminal.path()); }));
        EXPECT_EQ(delegate.take().last(), last);
    }
}

TEST_F(SerialPortLifetimeTest, AnObserverMayLetGoOfThePort)
{
    QObject::connect(port.get(), &ORSSerialPort::lineSettingsChanged, qApp, [&] { port.reset(); });
    port->setBaudRate(1200);
    EXPECT_EQ(port, nullptr);
}

TEST_F(SerialPortLifetimeTest, ADelegateMayLetGoOfThePortWhenToldOfItsRemoval)
{
    delegate.onEvent = [&](const QByteArray &) { port.reset(); };
    port->cleanupAfterSystemRemoval();
    EXPECT_EQ(port, nullptr);
    delegate.expect({"removed"});
}

TEST_F(SerialPortLifetimeTest, NothingReachesADelegateThatIsGone)
{
    auto shortLived = std::make_unique<RecordingDelegate>();
    port->setDelegate(shortLived.get());
    shortLived->onEvent = [](const QByteArray &event) { EXPECT_EQ(event, "error ENOTTY"); };
    port->open(); // its word of it is on the way now
    shortLived.reset();
    EXPECT_EQ(port->delegate(), nullptr);
    terminal.send("x");
    terminal.unplug();
    EXPECT_TRUE(eventually([&] { return !port->isOpen(); }));
}

template <typename Delegate>
concept CanBeSet = requires(ORSSerialPort &port, Delegate *delegate)
{
    port.setDelegate(delegate);
};

TEST_F(SerialPortLifetimeTest, ADelegateOfTheRequiredMethodAloneIsEnough)
{
    // Behind a pointer to the base class nobody sees what a delegate implements.
    static_assert(CanBeSet<RecordingDelegate> && !CanBeSet<ORSSerialPortDelegate>);
    struct final : ORSSerialPortDelegate
    {
        void serialPortWasRemovedFromSystem(ORSSerialPort &) override { ++removals; }
        int removals = 0;
    } required;
    port->setDelegate(&required);
    port->open();
    terminal.send("x");
    terminal.unplug();
    EXPECT_TRUE(eventually([&] { return !port->isOpen(); }));
    EXPECT_EQ(required.removals, 1);
}

TEST_F(SerialPortLifetimeTest, APortLetGoOfOnAnyThreadClosesItsTerminal)
{
    openPort();
    std::thread([owner = std::move(port)]() mutable { owner.reset(); }).join();
    EXPECT_TRUE(eventually([&] { return !holdsTerminal(terminal.path()); }));
}

} // namespace
} // namespace vorn
