#pragma once

#include "cli/CliOptions.h"
#include "cli/DeviceRuns.h"
#include "platform/QuitSignals.h"

#include <optional>

namespace vorn {

// The commands "info" and "update": one run for each device that was chosen. Main thread only.
class DeviceCommand final : public QuitSignalsObserver, private DeviceRunsObserver
{
public:
    // Options and output outlive the object.
    DeviceCommand(const CliOptions &options, Output &output);

    // Checks the image and chooses the devices. The exit code when there is nothing to start.
    std::optional<ExitCode> prepare();
    // Starts the runs; they end the event loop with their exit code.
    void start();

private:
    bool quitSignalDidArrive(int signal) override { return m_runs.interruptOn(signal); }
    void allRunsDidEnd() override;

    const CliOptions &m_options;
    Output &m_output;
    ORSSerialPortList m_ports;
    DeviceRuns m_runs;
};

} // namespace vorn
