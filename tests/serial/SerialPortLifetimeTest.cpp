#include "tests/serial/SerialPortFixture.h"

#include <thread>

namespace vorn {
namespace {

using SerialPortLifetimeTest = SerialPortFixture;

TEST_F(SerialPortLifetimeTest, ADelegateMayCloseAPortThatOpensAndOpenAPortThatCloses)
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

TEST_F(SerialPortLifetimeTest, ADelegateMayReleaseThePortInAnyEvent)
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

TEST_F(SerialPortLifetimeTest, ThePortMayBeReleasedDuringACall)
{
    delegate.onEvent = [&](const QByteArray &) { port.reset(); };
    port->cleanupAfterSystemRemoval();
    delegate.expect({"removed"});
    EXPECT_EQ(port, nullptr);
    port = ORSSerialPort::serialPortWithDevice(terminal.device());
    QObject::connect(port.get(), &ORSSerialPort::lineSettingsChanged, qApp, [&] { port.reset(); });
    port->setBaudRate(1200);
    EXPECT_EQ(port, nullptr);
}

TEST_F(SerialPortLifetimeTest, ADestroyedDelegateIsNotCalled)
{
    auto shortLived = std::make_unique<RecordingDelegate>();
    port->setDelegate(shortLived.get());
    shortLived->onEvent = [](const QByteArray &event) { EXPECT_EQ(event, "error ENOTTY"); };
    port->open(); // "opened" is queued now
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

TEST_F(SerialPortLifetimeTest, ADelegateNeedsTheRequiredMethodOnly)
{
    // A pointer to the base class does not show what a delegate implements.
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

TEST_F(SerialPortLifetimeTest, APortReleasedOnAnyThreadClosesItsTerminal)
{
    openPort();
    std::thread([owner = std::move(port)]() mutable { owner.reset(); }).join();
    EXPECT_TRUE(eventually([&] { return !holdsTerminal(terminal.path()); }));
}

} // namespace
} // namespace vorn
