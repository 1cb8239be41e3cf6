#include "cli/Output.h"

#include "app/ProgressTexts.h"

namespace vorn {

Step stepOf(UpdateStep step)
{
    switch (step) {
    case UpdateStep::Synchronize:
        return {"synchronize", titleOfStep(step)};
    case UpdateStep::Connect:
        return {"connect", titleOfStep(step)};
    case UpdateStep::QueryVersion:
        return {"query-version", titleOfStep(step)};
    case UpdateStep::ReadImage:
        return {"read-image", titleOfStep(step)};
    case UpdateStep::Download:
        return {"download", titleOfStep(step)};
    case UpdateStep::Erase:
        return {"erase", titleOfStep(step)};
    case UpdateStep::Release:
        return {"release", titleOfStep(step)};
    case UpdateStep::Data:
        return {"data", titleOfStep(step)};
    case UpdateStep::Finish:
        break;
    }
    return {"finish", titleOfStep(step)};
}

QString Output::failureText(const Outcome &outcome)
{
    QString text = outcome.why.terminalText();
    if (!outcome.advice.isEmpty())
        text += u' ' + outcome.advice;
    return outcome.device.isEmpty() ? text : outcome.device + QStringLiteral(": ") + text;
}

} // namespace vorn
