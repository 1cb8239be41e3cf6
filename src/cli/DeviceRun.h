#pragma once

#include "cli/Output.h"
#include "platform/Lifetime.h"
#include "update/DeviceSession.h"

#include <QCoreApplication>
#include <QString>

#include <chrono>

namespace vorn {

class DeviceRun;

class DeviceRunObserver
{
public:
    // The run has ended and its port is closed, or is held by the kernel. It may be destroyed.
    // Called from the event loop.
    virtual void deviceRunDidEnd(const DeviceRun &run, const Outcome &outcome) = 0;

protected:
    ~DeviceRunObserver() = default;
};

// What to do with a device.
struct DeviceTask
{
    bool updates = false; // otherwise only its model is asked for
    QString imagePath{};  // null: the newest file in the firmware folder for the device's model
    bool takesAnyModel = false; // whether the image's name may say another model
    int retries = 0;
    BootParameters parameters = kVornBoot;
};

// One device from open to close. Main thread only.
class DeviceRun final : private DeviceSessionObserver
{
    Q_DECLARE_TR_FUNCTIONS(DeviceRun)
public:
    // Output and observer outlive the run.
    DeviceRun(ORSSerialPortPtr port, const DeviceTask &task, Output &output,
              DeviceRunObserver &observer);

    void start();
    // Ends the run between two frames, or two seconds later when the device accepts no bytes.
    void interrupt();
    // The device was unplugged.
    void portWasRemoved();

    const ORSSerialPortPtr &port() const { return m_session.port(); }

private:
    using Clock = std::chrono::steady_clock;

    // DeviceSessionObserver
    void deviceDidClose(bool onRequest) override;
    void deviceDoesNotClose() override;
    void targetVersionDidArrive(qint32 targetVersion) override;
    void versionQueryDidEnd(const UpdateResult &result) override;
    void updateDidProgress(const UpdateProgress &progress) override;
    void updateDidEnd(const UpdateResult &result) override;
    void deviceDidBecomeIdle() override;

    void openingFailed();
    void startUpdate();
    void showStep(UpdateStep step);
    bool mayRetry(const UpdateResult &result) const;
    void sequenceDidEnd(const Explanation &why);
    void closeWhenIdle();
    void finish();

    const DeviceTask m_task;
    Output &m_output;
    DeviceRunObserver &m_observer;
    Outcome m_outcome;
    std::optional<UpdateStep> m_step;
    Clock::time_point m_began{};
    int m_retried = 0;
    bool m_hasEnded = false; // m_outcome is known
    bool m_isIdle = false;
    bool m_isInterrupted = false;
    bool m_isFinished = false;
    DeviceSession m_session;
    Lifetime m_lifetime;
};

} // namespace vorn
