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
// In the order in which their changes are told.
constexpr std::array kInputPins{
    InputPin{TIOCM_CTS, &ORSSerialPortPrivate::cts, &ORSSerialPort::CTSChanged},
    InputPin{TIOCM_DSR, &ORSSerialPortPrivate::dsr, &ORSSerialPort::DSRChanged},
    InputPin{TIOCM_CAR, &ORSSerialPortPrivate::dcd, &ORSSerialPort::DCDChanged},
};

} // namespace

PinPoll::PinPoll(std::shared_ptr<ORSSerialPortPrivate> port,
                 std::shared_ptr<SerialTerminal> terminal)
    : m_port(std::move(port)), m_terminal(std::move(terminal))
{
}

void PinPoll::start()
{
    GlobalQueue::instance().postAfter({}, [self = shared_from_this()] { self->poll(); });
}

void PinPoll::poll()
{
    const auto begin = GlobalQueue::Clock::now();
    if (readLines())
        GlobalQueue::instance().postAt(begin + kInterval,
                                       [self = shared_from_this()] { self->poll(); });
}

// False when there is nothing more to poll.
bool PinPoll::readLines()
{
    int error = 0;
    const std::optional<int> lines = m_terminal->modemLines(error);
    if (m_terminal->isCloseRequested())
        return false;
    if (lines) {
        if (const int onceOnly = std::exchange(m_unconfirmedError, 0); onceOnly != 0)
            m_port->notifyDelegateOfPosixError(onceOnly);
        tellChanges(*lines);
        return true;
    }
    // A single failed USB transfer gives EIO, too. When the device is really gone, the next request
    // fails as well, or the thread that reads sees the hang-up first.
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

// Not waited for: a busy main thread must not delay the next poll.
void PinPoll::tellChanges(int lines)
{
    if (std::exchange(m_lines, lines) == lines)
        return;
    MainQueue::instance().post([port = m_port, terminal = m_terminal, lines] {
        if (port->openTerminal() != terminal)
            return; // closed meanwhile, and maybe open again with news of its own
        for (const InputPin &pin : kInputPins) {
            const bool isOn = (lines & pin.mask) != 0;
            if (((*port).*pin.state).exchange(isOn) != isOn)
                port->emitOnMain(pin.changed);
        }
    });
}

} // namespace vorn
