#include "cli/Output.h"

#include "app/ProgressTexts.h"
#include "app/SharedOptions.h"

#include <cerrno>
#include <cstring>

namespace vorn {

Step stepOf(UpdateStep step)
{
    const auto word = [step] {
        switch (step) {
        case UpdateStep::Synchronize:
            return "synchronize";
        case UpdateStep::Connect:
            return "connect";
        case UpdateStep::QueryVersion:
            return "query-version";
        case UpdateStep::ReadImage:
            return "read-image";
        case UpdateStep::Download:
            return "download";
        case UpdateStep::Erase:
            return "erase";
        case UpdateStep::Release:
            return "release";
        case UpdateStep::Data:
            return "data";
        case UpdateStep::Finish:
            break;
        }
        return "finish";
    };
    return {word(), titleOfStep(step)};
}

ExitCode exitCodeAfterOutput(ExitCode code, int error)
{
    // A reader that has seen enough is no failure.
    if (error == 0 || error == EPIPE)
        return code;
    print(stderr, QCoreApplication::translate("Output", "The output cannot be written: %1.")
                          .arg(QString::fromLocal8Bit(std::strerror(error))) +
                      u'\n');
    return code == kDone ? kOutputLost : code;
}

QString Output::failureText(const Outcome &outcome)
{
    QString text = outcome.why.terminalText();
    if (!outcome.advice.isEmpty())
        text += u' ' + outcome.advice;
    return outcome.device.isEmpty() ? text : outcome.device + QStringLiteral(": ") + text;
}

} // namespace vorn
