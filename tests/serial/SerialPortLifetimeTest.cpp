#include "tests/serial/SerialPortFixture.h"

#include <atomic>
#include <thread>
#include <vector>

namespace vorn {
namespace {

using std::chrono::milliseconds;

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

TEST_F(SerialPortLifetimeTest, ADelegateOfTheRequiredMethodAloneIsEnough)
{
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

// For the sanitizers: every operation from several threads at once.
TEST_F(SerialPortLifetimeTest, ThreadsThatDoEverythingAtOnceLeaveAPortThatWorks)
{
    std::atomic<bool> stop = false;
    const std::vector<std::function<void(int)>> operations{
        [&](int) { port->open(); },
        [&](int turn) { turn % 8 == 0 ? port->close() : port->sendData("some bytes"); },
        [&](int turn) {
            port->setRTS(turn % 2 == 0), port->setBaudRate(turn % 3 ? 9600 : 2000000);
        },
        [&](int turn) {
            port->setUsesRTSCTSFlowControl(turn % 64 == 0), port->setParity(turn % 2 == 0 ? 1 : 2);
        },
        [&](int) { terminal.take(), std::ignore = ::write(terminal.master(), "answer", 6); },
    };
    std::vector<std::thread> threads;
    threads.reserve(operations.size());
    for (const auto &operation : operations) {
        threads.emplace_back([&] {
            for (int turn = 0; !stop; ++turn) {
                operation(turn);
                std::this_thread::yield();
            }
        });
    }
    runEventLoopFor(milliseconds(2000));
    stop = true;
    for (std::thread &thread : threads)
        thread.join();

    port->close();
    EXPECT_TRUE(eventually([&] { return delegate.contains("closed") && !port->isOpen(); }));
    terminal.take();
    port->open();
    EXPECT_TRUE(port->sendData("x"));
    EXPECT_EQ(terminal.take(1), "x");
}

} // namespace
} // namespace vorn
