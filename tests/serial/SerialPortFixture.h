#pragma once

#include "tests/serial/RecordingDelegate.h"
#include "tests/support/TestTerminal.h"

#include <filesystem>

namespace vorn {

// A port on a pseudo-terminal.
class SerialPortFixture : public testing::Test
{
protected:
    void openPort()
    {
        m_port->open();
        EXPECT_TRUE(m_port->isOpen());
        m_delegate.expect(m_opened);
    }
    void closePort()
    {
        EXPECT_TRUE(m_port->close());
        m_delegate.expect({"closed"});
        EXPECT_FALSE(m_port->isOpen());
    }

    // True while this process holds the terminal open.
    static bool holdsTerminal(const QString &path)
    {
        namespace fs = std::filesystem;
        std::error_code closedMeanwhile;
        for (const auto &descriptor : fs::directory_iterator("/proc/self/fd")) {
            const auto target =
                QString::fromStdString(fs::read_symlink(descriptor, closedMeanwhile).string());
            if (target == path || target == path + QStringLiteral(" (deleted)"))
                return true;
        }
        return false;
    }

    // A pseudo-terminal has no modem lines, which is reported at each opening.
    QByteArrayList m_opened{"error ENOTTY", "opened"};
    TestTerminal m_terminal;
    ORSSerialPortPtr m_port = ORSSerialPort::serialPortWithDevice(m_terminal.device());
    RecordingDelegate m_delegate;

    void SetUp() override
    {
        m_delegate.hangsUp = true;
        m_port->setDelegate(&m_delegate);
    }
};

} // namespace vorn
