#pragma once

#include "platform/FileDescriptor.h"
#include "platform/WakeEvent.h"
#include "serial/LineSettings.h"

#include <QByteArrayView>
#include <QString>

#include <atomic>
#include <chrono>
#include <mutex>
#include <optional>
#include <shared_mutex>

namespace vorn {

// True for the errors of a terminal whose device is gone.
bool meansDeviceGone(int error);
// True for the errors of a terminal that has no modem lines.
bool meansNoModemLines(int error);

// One opened terminal, from opening to closing. Its descriptor is neither used after it was closed
// nor closed while a call uses it, so that no late call uses a number that the system has assigned
// anew. Results are 0 or an errno. All methods but open() and close() may be called from any
// thread.
class SerialTerminal
{
public:
    // Opens the path for reading and writing, for this process alone (EBUSY when another has it),
    // remembers the line's attributes and asks the driver for low latency.
    int open(const QString &path);
    // The descriptor's number, which stays the same after closing.
    int descriptor() const { return m_number; }

    // While the terminal closes, these succeed without effect: the line is being restored.
    int applySettings(const LineSettings &settings);
    // Sets the two output lines with one call and leaves the others.
    int setModemLines(bool rts, bool dtr);
    // The state of all modem lines (TIOCM_*), or nothing and errno in `error`.
    std::optional<int> modemLines(int &error);
    // True at the first call only, since missing modem lines are reported once.
    bool noteMissingModemLines() { return !m_modemLinesMissing.exchange(true); }
    // Writes everything, waiting for room as long as it takes; ECANCELED when closing began first.
    int writeAll(QByteArrayView bytes);

    // Requests the closing by the reading thread; wakes it and all callers in writeAll().
    void requestClose();
    bool isCloseRequested() const { return m_closeRequested.load(); }
    // The same because the device is gone; a call failed with this errno.
    void requestCloseOfGoneDevice(int error);
    // That errno, or 0.
    int goneError() const { return m_goneError.load(); }
    // Readable once closing was requested.
    int closeEvent() const { return m_closeEvent.descriptor(); }

    // Restores the line and closes the descriptor; for the reading thread only. Waits for output
    // until it has not moved for a second, but not at all if the device is gone.
    int close(bool deviceIsGone);

private:
    void lowerLatency();
    void waitForOutput();
    int outputLeft() const;
    void restoreLine();

    // To be held while the descriptor is used; owns nothing once the terminal closes.
    std::shared_lock<std::shared_mutex> use();

    int m_number = 0;
    FileDescriptor m_fd;
    WakeEvent m_closeEvent;
    std::atomic<bool> m_closeRequested = false;
    std::atomic<int> m_goneError = 0;
    std::atomic<bool> m_modemLinesMissing = false;
    // Held shared by users of the descriptor, exclusively while it is closed. Users only try to
    // lock it, since closing may take long.
    std::shared_mutex m_use;
    // From the start of the closing on.
    std::atomic<bool> m_closing = false;
    // Keeps the bytes of one writeAll() together.
    std::mutex m_write;
    termios m_originalAttributes{};
    std::uint32_t m_originalSpeed = 0;
    std::optional<int> m_originalSerialFlags;
};

} // namespace vorn
