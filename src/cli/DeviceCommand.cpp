#include "cli/DeviceCommand.h"

#include "cli/DeviceChoice.h"

#include <QCoreApplication>

namespace vorn {

DeviceCommand::DeviceCommand(const CliOptions &options, Output &output)
    : m_options(options), m_output(output), m_runs(taskOf(options), output, *this)
{
}

std::optional<ExitCode> DeviceCommand::start()
{
    Explanation problem;
    if (m_options.command == CliCommand::Update)
        problem = problemOfImage(m_options);
    ORSSerialPortList ports;
    if (problem.cause == Cause::None)
        ports = chosenDevices(m_options, problem);
    if (problem.cause != Cause::None) {
        m_output.showResult({.why = problem});
        return exitCodeOf(problem);
    }
    for (const ORSSerialPortPtr &port : ports)
        m_runs.start(port);
    return std::nullopt;
}

void DeviceCommand::allRunsDidEnd()
{
    QCoreApplication::exit(m_runs.exitCode());
}

} // namespace vorn
