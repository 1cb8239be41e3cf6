#include "tests/serial/SerialPortFixture.h"

#include <thread>

namespace vorn {
namespace {

using SerialPortLifetimeTest = SerialPortFixture;

TEST_F(SerialPortLifetimeTest, ADelegateMayCloseAPortThatOpensAndOpenAPortThatCloses)
{
    bool opensAgain = false;
    m_delegate.onEvent = [&](const QByteArray &event) {
        if (event == "error ENOTTY" && !opensAgain)
            m_port->close();
        if (event == "closed" && !std::exchange(opensAgain, true))
            m_port->open();
    };
    m_port->open();
    m_delegate.expect({"error ENOTTY", "opened", "closed", "error ENOTTY", "opened"});
    m_terminal.send("x");
    m_delegate.expect({"data x"});
}

TEST_F(SerialPortLifetimeTest, ADelegateMayReleaseThePortInAnyEvent)
{
    for (const QByteArray last :
         {"error ENOTTY", "opened", "data x", "error ENXIO", "removed", "closed"}) {
        m_terminal = TestTerminal();
        m_port = ORSSerialPort::serialPortWithDevice(m_terminal.device());
        m_port->setDelegate(&m_delegate);
        m_delegate.onEvent = [&](const QByteArray &event) {
            if (event == last)
                m_port.reset();
        };
        m_port->open();
        m_terminal.send("x");
        EXPECT_TRUE(eventually([&] { return !m_port || m_delegate.contains("data x"); }));
        if (m_port)
            m_terminal.unplug();
        EXPECT_TRUE(eventually([&] { return !m_port; })) << last.constData();
        EXPECT_TRUE(eventually([&] { return !holdsTerminal(m_terminal.path()); }));
        EXPECT_EQ(m_delegate.take().last(), last);
    }
}

TEST_F(SerialPortLifetimeTest, ThePortMayBeReleasedDuringACall)
{
    m_delegate.onEvent = [&](const QByteArray &) { m_port.reset(); };
    m_port->cleanupAfterSystemRemoval();
    m_delegate.expect({"removed"});
    EXPECT_EQ(m_port, nullptr);
    m_port = ORSSerialPort::serialPortWithDevice(m_terminal.device());
    QObject::connect(m_port.get(), &ORSSerialPort::lineSettingsChanged, qApp,
                     [&] { m_port.reset(); });
    m_port->setBaudRate(1200);
    EXPECT_EQ(m_port, nullptr);
}

TEST_F(SerialPortLifetimeTest, ADestroyedDelegateIsNotCalled)
{
    auto shortLived = std::make_unique<RecordingDelegate>();
    m_port->setDelegate(shortLived.get());
    shortLived->onEvent = [](const QByteArray &event) { EXPECT_EQ(event, "error ENOTTY"); };
    m_port->open(); // "opened" is queued now
    shortLived.reset();
    EXPECT_EQ(m_port->delegate(), nullptr);
    m_terminal.send("x");
    m_terminal.unplug();
    EXPECT_TRUE(eventually([&] { return !m_port->isOpen(); }));
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
    struct Required final : ORSSerialPortDelegate
    {
        void serialPortWasRemovedFromSystem(ORSSerialPort &) override { ++removals; }
        int removals = 0;
    } required;
    m_port->setDelegate(&required);
    m_port->open();
    m_terminal.send("x");
    m_terminal.unplug();
    EXPECT_TRUE(eventually([&] { return !m_port->isOpen(); }));
    EXPECT_EQ(required.removals, 1);
}

TEST_F(SerialPortLifetimeTest, APortReleasedOnAnyThreadClosesItsTerminal)
{
    openPort();
    std::thread([owner = std::move(m_port)]() mutable { owner.reset(); }).join();
    EXPECT_TRUE(eventually([&] { return !holdsTerminal(m_terminal.path()); }));
}

} // namespace
} // namespace vorn
