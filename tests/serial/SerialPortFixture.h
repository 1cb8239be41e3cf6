#pragma once

#include "tests/serial/RecordingDelegate.h"
#include "tests/support/TestTerminal.h"

#include <filesystem>

namespace vorn {

// A port on a pseudo-terminal, which has no modem lines; that is told at each opening.
class SerialPortFixture : public testing::Test
{
protected:
    static inline const QByteArrayList kOpened{"error ENOTTY", "opened"};

    void openPort()
    {
        m_port->open();
        EXPECT_TRUE(m_port->isOpen());
        m_delegate.expect(kOpened);
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
        std::error_code ended; // a descriptor may be closed while its turn comes
        for (const auto &descriptor : fs::directory_iterator("/proc/self/fd")) {
            const auto target =
                QString::fromStdString(fs::read_symlink(descriptor, ended).string());
            if (target == path || target == path + QStringLiteral(" (deleted)"))
                return true;
        }
        return false;
    }

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
