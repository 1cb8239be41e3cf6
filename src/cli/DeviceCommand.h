#pragma once

#include "cli/CliOptions.h"
#include "cli/DeviceRuns.h"
#include "platform/QuitSignals.h"

namespace vorn {

// The devices that the window would offer, by their names.
ORSSerialPortList offeredDevices();
// What to do with a device, and what is wrong with the image. Cause::None: nothing is.
DeviceTask taskOf(const CliOptions &options);
Explanation problemOfImage(const CliOptions &options);

// The commands "info" and "update": one run for each device that was named. Main thread only.
class DeviceCommand final : public QuitSignalsObserver, private DeviceRunsObserver
{
public:
    // Options and output outlive the object.
    DeviceCommand(const CliOptions &options, Output &output);

    // Starts the runs; they end the event loop with their exit code. Without any, returns the exit
    // code.
    std::optional<ExitCode> start();

private:
    bool quitSignalDidArrive(int signal) override;
    void allRunsDidEnd() override;
    ORSSerialPortList chosenDevices(Explanation &problem) const;

    const CliOptions &m_options;
    Output &m_output;
    DeviceRuns m_runs;
    bool m_wasWarned = false;
};

} // namespace vorn
