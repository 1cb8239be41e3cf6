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
    for (const char *last :
         {"error ENOTTY", "opened", "data x", "error ENXIO", "removed", "closed"}) {
        SCOPED_TRACE(last);
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
        EXPECT_TRUE(eventually([&] { return !m_port; }));
        EXPECT_TRUE(eventually([&] { return !holdsTerminal(); }));
        EXPECT_TRUE(m_delegate.take().endsWith(last));
    }
}

TEST_F(SerialPortLifetimeTest, ThePortMayBeReleasedDuringACall)
{
    QObject::connect(m_port.get(), &ORSSerialPort::lineSettingsChanged, qApp,
                     [&] { m_port.reset(); });
    m_port->setBaudRate(1200);
    EXPECT_EQ(m_port, nullptr);
}

TEST_F(SerialPortLifetimeTest, ADestroyedDelegateIsNotCalled)
{
    auto shortLived = std::make_unique<RecordingDelegate>();
    m_port->setDelegate(shortLived.get());
    m_port->open(); // "opened" is queued now
    shortLived.reset();
    EXPECT_EQ(m_port->delegate(), nullptr);
    m_terminal.send("x");
    m_terminal.unplug();
    EXPECT_TRUE(eventually([&] { return !m_port->isOpen(); }));
}

TEST_F(SerialPortLifetimeTest, APortReleasedOnAnyThreadClosesItsTerminal)
{
    openPort();
    std::thread([owner = std::move(m_port)]() mutable { owner.reset(); }).join();
    EXPECT_TRUE(eventually([&] { return !holdsTerminal(); }));
}

} // namespace
} // namespace vorn
