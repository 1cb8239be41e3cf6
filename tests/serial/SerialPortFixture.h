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
        port->open();
        EXPECT_TRUE(port->isOpen());
        delegate.expect(kOpened);
    }
    void closePort()
    {
        EXPECT_TRUE(port->close());
        delegate.expect({"closed"});
        EXPECT_FALSE(port->isOpen());
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

    TestTerminal terminal;
    ORSSerialPortPtr port = ORSSerialPort::serialPortWithDevice(terminal.device());
    RecordingDelegate delegate;

    void SetUp() override
    {
        delegate.hangsUp = true;
        port->setDelegate(&delegate);
    }
};

} // namespace vorn
