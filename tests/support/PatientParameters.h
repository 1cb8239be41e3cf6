#pragma once

#include "update/BootParameters.h"

namespace vorn {

// Limits that only a device that is silent for good reaches: on a busy machine the kernel can hold
// back the bytes of all pseudo-terminals for seconds.
inline BootParameters patientParameters()
{
    using namespace std::chrono_literals;
    BootParameters parameters = kVornBoot;
    parameters.answerLimit = parameters.eraseLimit = 20s;
    parameters.answerGap = 2s;
    return parameters;
}

} // namespace vorn
