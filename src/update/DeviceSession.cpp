#include "update/DeviceSession.h"

#include "platform/MainQueue.h"
#include "serial/LineSpeed.h"
#include "serial/SerialTerminal.h"
#include "update/FirmwareImage.h"
#include "update/PortLine.h"
#include "update/ReceiveBuffer.h"
#include "update/RecordingLine.h"

#include <algorithm>
#include <utility>

namespace vorn {
namespace {

// A port that takes longer to close is reported; closing goes on.
constexpr std::chrono::seconds kCloseLimit{2};

} // namespace

// Forwards a sequence's notifications from its thread to the session on the main thread, unless the
// sequence has been abandoned by then. A session abandons its sequence when it is destroyed, so the
// buffer also says whether the session still exists.
class DeviceSession::Relay final : public UpdateObserver
{
public:
    Relay(DeviceSession *session, std::shared_ptr<ReceiveBuffer> buffer)
        : m_session(session), m_buffer(std::move(buffer))
    {
    }

    void targetVersionDidArrive(qint32 targetVersion) override
    {
        MainQueue::instance().post([*this, targetVersion] {
            if (DeviceSession *session = current())
                session->m_observer.targetVersionDidArrive(targetVersion);
        });
    }
    void updateDidProgress(const UpdateProgress &progress) override
    {
        const auto tell = [*this, progress] {
            if (DeviceSession *session = current()) {
                session->noteProgress(progress);
                session->m_observer.updateDidProgress(progress);
            }
        };
        // A percentage is shown before the update continues; a step that only waits for the device
        // does not have to wait for the window.
        if (progress.step == UpdateStep::Data)
            MainQueue::instance().postAndWait(tell);
        else
            MainQueue::instance().post(tell);
    }
    void updateDidEnd(const UpdateResult &result) override
    {
        MainQueue::instance().postAndWait([&] {
            if (DeviceSession *session = current())
                session->sequenceDidEnd(result);
        });
    }

    void lineIsFree() const
    {
        MainQueue::instance().post([*this] {
            if (DeviceSession *session = current())
                session->m_observer.deviceDidBecomeIdle();
        });
    }

private:
    DeviceSession *current() const { return m_buffer->isAbandoned() ? nullptr : m_session; }

    DeviceSession *m_session;
    std::shared_ptr<ReceiveBuffer> m_buffer;
};

DeviceSession::DeviceSession(ORSSerialPortPtr port, DeviceSessionObserver &observer,
                             const BootParameters &parameters)
    : m_port(std::move(port)), m_observer(observer), m_parameters(parameters),
      m_buffer(std::make_shared<ReceiveBuffer>())
{
    m_port->setDelegate(this);
    m_closeLimit.setSingleShot(true);
    m_closeLimit.setInterval(kCloseLimit);
    m_closeLimit.callOnTimeout([this] { m_observer.deviceDoesNotClose(); });
}

DeviceSession::~DeviceSession()
{
    letGoOfPort();
}

bool DeviceSession::hasItsSpeed() const
{
    const int terminal = m_port->fileDescriptor(); // 0 when it has closed meanwhile
    const std::uint32_t speed = terminal == 0 ? 0 : outputSpeed(terminal);
    return speed == 0 || isCloseTo(speed, m_parameters.baudRate);
}

bool DeviceSession::open()
{
    m_portError = 0;
    // A port that is still closing would look like one that has just opened.
    if (m_isOpen || m_port->isOpen())
        return false;
    const Lifetime::Token alive = lifetime();
    endSequence();
    // The observer may have destroyed the session or opened it in response.
    if (alive.expired())
        return false;
    if (m_isOpen)
        return true;
    const ORSSerialPortPtr port = m_port;
    port->setBaudRate(m_parameters.baudRate);
    port->open();
    if (alive.expired() || !port->isOpen())
        return false;
    m_isOpen = true;
    getTargetVersion();
    return true;
}

void DeviceSession::close()
{
    if (!isOpen())
        return;
    m_closing = true;
    m_port->close();
    if (!m_closeLimit.isActive())
        m_closeLimit.start();
}

void DeviceSession::end()
{
    letGoOfPort();
    endSequence();
}

void DeviceSession::interrupt()
{
    m_buffer->abandon();
    // Behind the sequence, which sends nothing more once its frame is out.
    m_sequences.post([this, port = m_port, token = lifetime()] {
        port->setRTS(false);
        MainQueue::instance().post(token, [this, token] {
            endSequence(UpdateFailureKind::Interrupted);
            if (!token.expired())
                close();
        });
    });
}

void DeviceSession::endSequence(UpdateFailureKind why)
{
    m_buffer->abandon();
    if (m_running == Running::Nothing)
        return;
    UpdateResult result;
    result.failure.kind = why;
    result.step = m_progress.step;
    result.frame = m_progress.frame;
    result.frames = m_progress.frames;
    // The header may follow the download command before that is told.
    result.mayBeErased = m_running == Running::Update && m_progress.step >= UpdateStep::Download;
    const auto now = Clock::now();
    result.waited = std::chrono::duration_cast<std::chrono::milliseconds>(
        now - std::max(m_stepBegan, m_lastHeard));
    result.elapsed = std::chrono::duration_cast<std::chrono::milliseconds>(now - m_sequenceBegan);
    sequenceDidEnd(result);
}

void DeviceSession::noteProgress(const UpdateProgress &progress)
{
    if (progress.step != m_progress.step)
        m_stepBegan = Clock::now();
    m_progress = progress;
}

void DeviceSession::letGoOfPort()
{
    m_buffer->abandon();
    m_closeLimit.stop();
    m_isOpen = false;
    // Unless another session has the port by now.
    if (m_port->delegate() == this) {
        m_port->setDelegate(nullptr);
        m_port->close();
    }
}

void DeviceSession::getTargetVersion()
{
    runSequence(Running::VersionQuery, [parameters = m_parameters](DeviceLine &line, Relay &relay) {
        queryTargetVersion(line, parameters, relay);
    });
}

void DeviceSession::startUpdate(const QString &imagePath)
{
    startUpdate([imagePath](qint32) { return readFirmwareImage(imagePath); });
}

void DeviceSession::startUpdate(ImageReader readImage)
{
    if (isUpdating())
        return;
    m_portError = 0;
    runSequence(Running::Update, [readImage = std::move(readImage),
                                  parameters = m_parameters](DeviceLine &line, Relay &relay) {
        runUpdate(line, readImage, parameters, relay);
    });
}

void DeviceSession::runSequence(Running which, Sequence sequence)
{
    m_buffer->abandon();
    m_buffer = std::make_shared<ReceiveBuffer>();
    if (!m_isOpen)
        m_buffer->portDidClose();
    m_running = which;
    m_progress = {};
    m_sequenceBegan = m_stepBegan = Clock::now();
    m_hasUpdated = m_hasUpdated || which == Running::Update;
    const auto transcript = std::make_shared<Transcript>();
    if (m_hasUpdated == (which == Running::Update))
        m_transcript = transcript;
    m_sequences.post([port = m_port, buffer = m_buffer, transcript, sequence = std::move(sequence),
                      relay = Relay(this, m_buffer)]() mutable {
        if (buffer->isAbandoned())
            return;
        PortLine portLine(port, buffer);
        RecordingLine line(portLine, *transcript);
        sequence(line, relay);
        relay.lineIsFree();
    });
}

void DeviceSession::sequenceDidEnd(UpdateResult result)
{
    // What could not be sent is not answered either.
    if (result.failure.kind == UpdateFailureKind::TimedOut ||
        result.failure.kind == UpdateFailureKind::PortClosed)
        result.failure.code = m_portError;
    const Running ended = std::exchange(m_running, Running::Nothing);
    if (ended == Running::Update)
        m_observer.updateDidEnd(result);
    else
        m_observer.versionQueryDidEnd(result);
}

void DeviceSession::serialPortWasRemovedFromSystem(ORSSerialPort &) {}

void DeviceSession::serialPortDidReceiveData(ORSSerialPort &, const QByteArray &data)
{
    m_lastHeard = Clock::now();
    m_buffer->receive(data);
}

void DeviceSession::serialPortDidEncounterError(ORSSerialPort &, const ORSSerialPortError &error)
{
    if (!m_port->isOpen() || !meansNoModemLines(error.code))
        m_portError = error.code;
    m_observer.deviceDidReportError(error);
}

void DeviceSession::serialPortWasOpened(ORSSerialPort &)
{
    if (!m_isOpen && m_port->isOpen()) {
        m_isOpen = true;
        m_observer.deviceDidReopen();
    }
}

void DeviceSession::serialPortWasClosed(ORSSerialPort &)
{
    // A close that an earlier session requested, or one that was followed by an open.
    if (!m_isOpen || m_port->isOpen())
        return;
    m_buffer->portDidClose();
    m_closeLimit.stop();
    m_isOpen = false;
    m_observer.deviceDidClose(std::exchange(m_closing, false));
}

} // namespace vorn
