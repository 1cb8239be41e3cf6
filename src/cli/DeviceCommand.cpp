#include "cli/DeviceCommand.h"

#include "cli/DeviceChoice.h"

#include <QCoreApplication>

namespace vorn {

DeviceCommand::DeviceCommand(const CliOptions &options, Output &output)
    : m_options(options), m_output(output), m_runs(taskOf(options), output, *this)
{
}

std::optional<ExitCode> DeviceCommand::prepare()
{
    Explanation problem;
    if (m_options.command == CliCommand::Update)
        problem = problemOfImage(m_options);
    if (problem.cause == Cause::None)
        m_ports = chosenDevices(m_options, problem);
    if (problem.cause != Cause::None) {
        m_output.showResult({.why = problem});
        return exitCodeOf(problem);
    }
    return std::nullopt;
}

void DeviceCommand::start()
{
    for (const ORSSerialPortPtr &port : std::as_const(m_ports))
        m_runs.start(port);
}

void DeviceCommand::allRunsDidEnd()
{
    QCoreApplication::exit(m_runs.exitCode());
}

} // namespace vorn
