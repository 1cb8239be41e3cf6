#pragma once

#include "simulator/SimulatedDevice.h"
#include "soak/Tally.h"
#include "update/DeviceSession.h"

#include <QTemporaryDir>

#include <chrono>
#include <memory>
#include <random>
#include <vector>

namespace vorn {

struct DeviceFault;

// One device and what a user, the system and the device do to it, from plugging in to the closed
// port.
class SessionRun final : public DeviceSessionObserver
{
public:
    explicit SessionRun(unsigned seed) : m_random(seed), m_device(randomDevice()) {}

    // What went wrong first; empty if all was right.
    QString run(Tally &tally);
    QString story() const { return m_story.join(QStringLiteral(", ")); }
    QString transcript() const { return m_transcript ? m_transcript->text() : QString(); }

    // DeviceSessionObserver
    void deviceDidClose(bool) override
    {
        if (std::exchange(m_opensAgain, false))
            m_queryEnded = !m_session->open(); // fails without the device
    }
    void targetVersionDidArrive(qint32) override { m_versionHeard = m_session->lastHeard(); }
    void versionQueryDidEnd(const UpdateResult &) override { m_queryEnded = true; }
    void updateDidEnd(const UpdateResult &result) override { m_results.push_back(result); }
    void deviceDidBecomeIdle() override { m_isIdle = true; }

private:
    using Kind = UpdateFailureKind;
    using Clock = std::chrono::steady_clock;
    struct Disturbance
    {
        const char *name;
        Kind ending; // None: the update goes on
        void (SessionRun::*happen)();
    };
    static const std::vector<Disturbance> kDisturbances;

    int below(int limit) { return static_cast<int>(m_random() % static_cast<unsigned>(limit)); }
    DeviceOptions randomDevice();
    void openSession();
    void awaitQuery();
    void startUpdate();
    const DeviceFault *breakDevice();
    void expect(bool isRight, const QString &what);
    void checkEnd(const DeviceFault *fault, const Disturbance &disturbance, int updatesBefore);
    void checkRecovery();

    void nothing() {}
    void stall();
    void startAgain();
    void closeAndOpen();
    void replug();
    void interrupt()
    {
        m_session->interrupt();
        m_isClosing = true;
    }
    void endSession()
    {
        m_session->end();
        m_isSpent = true;
    }
    void destroy() { m_session.reset(); }

    std::mt19937 m_random;
    QStringList m_story;
    const QTemporaryDir m_folder;
    SimulatedDevice m_device;
    std::unique_ptr<DeviceSession> m_session;
    std::shared_ptr<ORSSerialPort> m_port;
    std::shared_ptr<const Transcript> m_transcript; // of the latest update
    QByteArray m_image;                             // of the latest update
    std::vector<UpdateResult> m_results;
    Clock::time_point m_versionHeard;
    bool m_queryEnded = false;
    bool m_isIdle = false;
    bool m_opensAgain = false;
    bool m_isClosing = false;
    bool m_isSpent = false;   // the session ended for good, or has lost its terminal
    UpdateStep m_faultStep{}; // the update's step that the device's fault strikes
    QString m_complaint;
};

} // namespace vorn
