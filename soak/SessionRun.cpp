#include "soak/SessionRun.h"

#include "soak/Surroundings.h"
#include "tests/support/Eventually.h"
#include "tests/support/PatientParameters.h"
#include "tests/support/TestImage.h"

#include <thread>

namespace vorn {

using namespace std::chrono_literals;
using Kind = UpdateFailureKind;

// Something that the device does wrong, and the end of the update. A time-out takes its time, so
// those come seldom.
struct DeviceFault
{
    const char *name;
    FaultKind kind;
    Kind ending;
    int weight;
};

namespace {

constexpr std::array kDeviceFaults{
    DeviceFault{"refusal", FaultKind::Refuse, Kind::Refused, 10},
    DeviceFault{"device stopped for a while", FaultKind::Late, Kind::None, 20},
    DeviceFault{"answer doubled in one chunk", FaultKind::Duplicate, Kind::None, 10},
    DeviceFault{"unplugged at a step", FaultKind::Unplug, Kind::PortClosed, 10},
    DeviceFault{"silence", FaultKind::Silence, Kind::TimedOut, 1},
    DeviceFault{"garbage", FaultKind::Garbage, Kind::TimedOut, 1},
};

struct FaultStep
{
    BootStep device;
    UpdateStep step;
};
constexpr std::array kFaultSteps{
    FaultStep{BootStep::Sync, UpdateStep::Synchronize},
    FaultStep{BootStep::Connect, UpdateStep::Connect},
    FaultStep{BootStep::Version, UpdateStep::QueryVersion},
    FaultStep{BootStep::Download, UpdateStep::Download},
    FaultStep{BootStep::Ready, UpdateStep::Release},
    FaultStep{BootStep::Frame, UpdateStep::Data},
    FaultStep{BootStep::Last, UpdateStep::Finish},
};

} // namespace

const std::vector<SessionRun::Disturbance> SessionRun::kDisturbances{
    {"undisturbed", Kind::None, &SessionRun::nothing},
    {"main thread stalled", Kind::None, &SessionRun::stall},
    {"second start", Kind::None, &SessionRun::startAgain},
    {"closed and opened", Kind::PortClosed, &SessionRun::closeAndOpen},
    {"replugged at any time", Kind::PortClosed, &SessionRun::replug},
    {"interrupted", Kind::Interrupted, &SessionRun::interrupt},
    {"session ended", Kind::PortClosed, &SessionRun::endSession},
    {"session destroyed", Kind::Abandoned, &SessionRun::destroy},
};

DeviceOptions SessionRun::randomDevice()
{
    DeviceOptions options;
    options.directory = m_folder.path();
    options.name = QStringLiteral("usbserial-soak");
    options.modelCode = below(10);
    options.eraseTime = std::chrono::milliseconds(below(4) == 0 ? below(40) : 0);
    if (below(4) == 0)
        options.connectPieces = {1, 2};
    options.joinEraseAnswers = below(4) == 0;
    m_story += QStringLiteral("model %1").arg(options.modelCode);
    return options;
}

void SessionRun::openSession()
{
    if (!m_session) {
        SerialDevice record;
        record.calloutDevice = m_device.path();
        record.ttyDevice = QStringLiteral("usbserial-soak");
        m_port = ORSSerialPort::serialPortWithDevice(std::make_shared<SerialDevice>(record));
        m_session = std::make_unique<DeviceSession>(m_port, *this, patientParameters());
    }
    if (m_session->isOpen())
        return;
    m_queryEnded = false;
    // An earlier session's port may still be closing.
    expect(eventually([this] { return m_session->open(); }), "opening");
}

// Nobody waits for the query's last answer. A reset would silence a real device, but this one has
// no modem lines and must not answer after the update's sync byte. It may have answered already.
void SessionRun::awaitQuery()
{
    expect(eventually([this] { return m_queryEnded; }), "the end of the version query");
    eventually([this] { return m_session->lastHeard() > m_versionHeard; }, 1s);
}

void SessionRun::startUpdate()
{
    m_image = imageOf(1 + below(below(4) == 0 ? 60'000 : 3'000));
    m_isIdle = false;
    m_queryEnded = true; // or taken over from
    m_session->startUpdate([image = m_image](qint32) { return FirmwareImage{image, {}}; });
    m_transcript = m_session->transcript();
}

const DeviceFault *SessionRun::breakDevice()
{
    if (below(2) == 0)
        return nullptr;
    int weights = 0;
    for (const DeviceFault &fault : kDeviceFaults)
        weights += fault.weight;
    const DeviceFault *fault = kDeviceFaults.data();
    for (int weight = below(weights); weight >= fault->weight; ++fault)
        weight -= fault->weight;
    const FaultStep &at = kFaultSteps[static_cast<std::size_t>(below(kFaultSteps.size()))];
    m_faultStep = at.step;
    if (m_image.size() < 250 && at.device == BootStep::Frame)
        return nullptr;
    m_story += QStringLiteral("%1 at device step %2")
                   .arg(QLatin1String(fault->name))
                   .arg(static_cast<int>(at.device));
    m_device.setFaults({{.step = at.device,
                         .kind = fault->kind,
                         .frame = at.device == BootStep::Frame ? 1 : 0,
                         .delay = std::chrono::milliseconds(100 + below(400))}});
    return fault;
}

void SessionRun::stall()
{
    std::this_thread::sleep_for(std::chrono::milliseconds(30 + below(200)));
}

void SessionRun::startAgain()
{
    if (m_session->isUpdating())
        m_session->startUpdate([](qint32) { return FirmwareImage{imageOf(77), {}}; });
}

void SessionRun::closeAndOpen()
{
    m_opensAgain = m_session->isOpen();
    m_session->close();
}

void SessionRun::replug()
{
    m_device.unplug();
    m_isSpent = true;
    expect(m_device.replug(), "plugging in again");
}

void SessionRun::expect(bool isRight, const QString &what)
{
    if (!isRight && m_complaint.isEmpty())
        m_complaint = what;
}

QString SessionRun::run(Tally &tally)
{
    expect(m_device.start(), "plugging in");
    const QString terminal = m_device.slavePath();
    const auto settings = lineSettings(terminal);
    const std::ptrdiff_t open = descriptors();
    openSession();
    // Else the update takes over from the query.
    const bool afterQuery = below(4) != 0;
    if (afterQuery)
        awaitQuery();
    const int updatesBefore = m_device.report().updates;
    m_story += afterQuery ? "after the query" : "during the query";

    const auto &disturbance = kDisturbances[static_cast<std::size_t>(
        below(4) == 0 ? 0 : below(static_cast<int>(kDisturbances.size())))];
    const std::chrono::milliseconds when(below(3) == 0 ? 0 : below(70));
    m_story +=
        QStringLiteral("%1 after %2 ms").arg(QLatin1String(disturbance.name)).arg(when.count());
    startUpdate();
    m_story += QStringLiteral("%1 bytes").arg(m_image.size());
    const DeviceFault *fault = afterQuery ? breakDevice() : nullptr;
    runEventLoopFor(when);
    if (m_session)
        (this->*disturbance.happen)();
    checkEnd(fault, disturbance, updatesBefore);

    ++tally.runs;
    ++tally.faults[disturbance.name];
    if (fault)
        ++tally.faults[fault->name];
    ++tally.endings[m_results.empty() ? "no word, as it must" : nameOf(m_results[0].failure.kind)];

    m_device.setFaults({});
    if (!m_device.report().plugged)
        replug();
    if (m_complaint.isEmpty())
        checkRecovery();

    const std::weak_ptr<ORSSerialPort> port = m_port;
    m_session.reset();
    m_port.reset();
    expect(eventually([&] { return port.expired(); }), "nobody's holding the port");
    expect(eventually([&] { return descriptors() <= open; }), "no descriptor's being left");
    if (m_device.slavePath() == terminal) {
        const auto after = lineSettings(terminal);
        expect(settings && after && isSame(*settings, *after), "the line's old settings");
    }
    return m_complaint;
}

void SessionRun::checkEnd(const DeviceFault *fault, const Disturbance &disturbance,
                          int updatesBefore)
{
    if (disturbance.ending != Kind::Abandoned)
        expect(eventually([this] { return !m_results.empty(); }, 60s), "an end");
    expect(eventually([this] {
               return !m_port->RTS() && (m_isIdle || !m_session || !m_session->isUpdating());
           }),
           "RTS low in the end");
    const DeviceReport report = m_device.report();
    const bool isUpdated = report.updates > updatesBefore && report.image == m_image;
    expect(report.errors.isEmpty(), "a device without objections: " + report.errors.join(u';'));
    if (m_results.empty())
        return;
    const UpdateResult &result = m_results.front();
    const QString end = QStringLiteral(" (%1, step %2)")
                            .arg(QLatin1String(nameOf(result.failure.kind)))
                            .arg(static_cast<int>(result.step));
    expect(m_results.size() == 1, "one end" + end);
    const Kind natural = fault ? fault->ending : Kind::None;
    const bool isDisturbed = disturbance.ending != Kind::None;
    expect(result.failure.kind == natural ||
               (isDisturbed && result.failure.kind == disturbance.ending),
           "another ending" + end);
    expect(!result.succeeded() || isUpdated, "no success without the image in the device" + end);
    expect(isDisturbed || result.succeeded() == isUpdated, "success" + end);
    // What has not been read is lost when the device is unplugged.
    if (natural != Kind::None && natural != Kind::PortClosed && !isDisturbed)
        expect(result.step == m_faultStep, "another step" + end);
}

// Whatever happened: the next update succeeds.
void SessionRun::checkRecovery()
{
    expect(eventually([this] { return !m_opensAgain && (!m_isClosing || !m_session->isOpen()); }),
           "the end of closing");
    const bool isFresh = !m_session || m_isSpent || below(2) == 0;
    if (isFresh)
        m_session.reset();
    openSession();
    if (!isFresh || below(2) == 0)
        awaitQuery();
    m_results.clear();
    startUpdate();
    expect(eventually([this] { return !m_results.empty(); }, 60s), "an end of the next update");
    if (m_results.empty())
        return;
    const UpdateResult &result = m_results.front();
    expect(result.succeeded() && m_device.report().image == m_image,
           QStringLiteral("success of the next update (%1, step %2, frame %3 of %4; %5)")
               .arg(QLatin1String(nameOf(result.failure.kind)))
               .arg(static_cast<int>(result.step))
               .arg(result.frame)
               .arg(result.frames)
               .arg(m_device.report().errors.join(u';')));
    expect(eventually([this] { return m_isIdle && !m_port->RTS(); }), "RTS low after it");
}

} // namespace vorn
