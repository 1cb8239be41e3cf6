#pragma once

#include "cli/CliOptions.h"
#include "cli/DeviceRuns.h"
#include "cli/StationRecord.h"
#include "platform/Lifetime.h"
#include "platform/QuitSignals.h"

#include <QCoreApplication>

namespace vorn {

// The command "watch": updates each device that the window would offer once per plug-in, until it
// is told to end. Main thread only.
class Station final : public QuitSignalsObserver, private DeviceRunsObserver
{
    Q_DECLARE_TR_FUNCTIONS(Station)
public:
    // Options and output outlive the object.
    Station(const CliOptions &options, Output &output);

    // Checks the image and opens the record. The exit code when it cannot begin.
    std::optional<ExitCode> prepare();
    // Begins with the devices that are there.
    void start();

private:
    bool quitSignalDidArrive(int signal) override;
    void deviceWillShow(Outcome &outcome) override;
    void allRunsDidEnd() override;

    void take(const ORSSerialPortList &ports);
    void begin(const ORSSerialPortPtr &port, const Explanation &problem);
    void end();

    const CliOptions &m_options;
    Output &m_output;
    StationRecord m_record;
    DeviceRuns m_runs;
    int m_refused = 0; // devices whose update could not begin
    bool m_isEnding = false;
    bool m_recordFailed = false;
    QObject m_subscription;
    Lifetime m_lifetime;
};

} // namespace vorn
