#include "serial/PinPoll.h"

#include "platform/GlobalQueue.h"

#include <sys/ioctl.h>

#include <array>
#include <cerrno>
#include <chrono>

namespace vorn {
namespace {

constexpr std::chrono::milliseconds kInterval{10};

struct InputPin
{
    int mask;
    std::atomic<bool> ORSSerialPortPrivate::*state;
    void (ORSSerialPort::*changed)();
};
// In the order in which their changes are reported.
constexpr std::array kInputPins{
    InputPin{TIOCM_CTS, &ORSSerialPortPrivate::cts, &ORSSerialPort::CTSChanged},
    InputPin{TIOCM_DSR, &ORSSerialPortPrivate::dsr, &ORSSerialPort::DSRChanged},
    InputPin{TIOCM_CAR, &ORSSerialPortPrivate::dcd, &ORSSerialPort::DCDChanged},
};

class PinPoll
{
public:
    PinPoll(std::shared_ptr<ORSSerialPortPrivate> port, std::shared_ptr<SerialTerminal> terminal)
        : m_port(std::move(port)), m_terminal(std::move(terminal))
    {
    }

    static void post(GlobalQueue::Clock::time_point when, const std::shared_ptr<PinPoll> &poll)
    {
        GlobalQueue::instance().postAt(when, [poll] {
            const auto begin = GlobalQueue::Clock::now();
            if (poll->readLines())
                post(begin + kInterval, poll);
        });
    }

private:
    bool readLines();
    void reportChanges(int lines);

    const std::shared_ptr<ORSSerialPortPrivate> m_port;
    const std::shared_ptr<SerialTerminal> m_terminal;
    int m_lines = -1; // as polled last (TIOCM_*)
    int m_unconfirmedError = 0;
};

// False when there is nothing more to poll.
bool PinPoll::readLines()
{
    int error = 0;
    const std::optional<int> lines = m_terminal->modemLines(error);
    if (m_terminal->isCloseRequested())
        return false;
    if (lines) {
        if (const int unconfirmed = std::exchange(m_unconfirmedError, 0); unconfirmed != 0)
            m_port->notifyDelegateOfPosixError(unconfirmed);
        reportChanges(*lines);
        return true;
    }
    // A single failed USB transfer yields EIO, too. If the device is really gone, the next request
    // fails as well, or the reading thread sees the hang-up first.
    if (error == EIO && m_unconfirmedError == 0) {
        m_unconfirmedError = error;
        return true;
    }
    if (meansDeviceGone(error)) {
        m_terminal->requestCloseOfGoneDevice(error);
        return false;
    }
    m_port->notifyOfModemLineError(*m_terminal, error);
    return !meansNoModemLines(error);
}

// Posted without waiting: a busy main thread must not delay the next poll.
void PinPoll::reportChanges(int lines)
{
    if (std::exchange(m_lines, lines) == lines)
        return;
    MainQueue::instance().post([port = m_port, terminal = m_terminal, lines] {
        if (port->openTerminal() != terminal)
            return; // closed meanwhile, and perhaps opened again with a poll of its own
        for (const InputPin &pin : kInputPins) {
            const bool isOn = (lines & pin.mask) != 0;
            if (((*port).*pin.state).exchange(isOn) != isOn)
                port->emitOnMain(pin.changed);
        }
    });
}

} // namespace

void startPinPoll(std::shared_ptr<ORSSerialPortPrivate> port,
                  std::shared_ptr<SerialTerminal> terminal)
{
    PinPoll::post(GlobalQueue::Clock::now(),
                  std::make_shared<PinPoll>(std::move(port), std::move(terminal)));
}

} // namespace vorn
