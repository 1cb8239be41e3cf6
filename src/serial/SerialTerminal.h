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

// One opened terminal, from its opening to the end of its closing. Its descriptor is never used
// after it was closed, nor closed while a call uses it, so that no late call meets a descriptor
// that the system has given to somebody else. Results are 0 or an errno; all methods but open() and
// close() may be called from any thread.
class SerialTerminal
{
public:
    // Opens the path for reading and writing, for this process alone (EBUSY when another has it),
    // remembers the line's attributes and asks the driver for low latency.
    int open(const QString &path);
    // The descriptor's number, which stays the same after closing.
    int descriptor() const { return m_number; }

    // On a terminal that closes, these change nothing and succeed: its line is being put back.
    int applySettings(const LineSettings &settings);
    // Sets the two output lines with one call and leaves the others.
    int setModemLines(bool rts, bool dtr);
    // The state of all modem lines (TIOCM_*), or nothing and errno in `error`.
    std::optional<int> modemLines(int &error);
    // True at the first call only: that the terminal has no modem lines is told once.
    bool noteMissingModemLines() { return !m_modemLinesMissing.exchange(true); }
    // Writes everything, waiting for room as long as it takes; ECANCELED when closing began first.
    int writeAll(QByteArrayView bytes);

    // Asks the thread that reads to close; wakes it and everybody who waits in writeAll().
    void requestClose();
    bool isCloseRequested() const { return m_closeRequested.load(); }
    // The same because the device is gone, as a call said with this errno.
    void requestCloseOfGoneDevice(int error);
    // That errno; 0 as long as the device is there.
    int goneError() const { return m_goneError.load(); }
    // Readable once closing was requested.
    int closeEvent() const { return m_closeEvent.descriptor(); }

    // Puts the line back and closes the descriptor. Output may leave as long as it moves, and for a
    // second more; none is waited for when the device is gone. For the one thread that reads.
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
    // Held shared by everybody who uses the descriptor, and alone by the one who closes it. Users
    // only ever try for it: closing may take long, and nobody is to wait for that.
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
