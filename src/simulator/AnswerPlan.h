#pragma once

#include "simulator/BootLoader.h"
#include "simulator/DeviceOptions.h"

#include <array>
#include <chrono>
#include <cstdint>
#include <initializer_list>
#include <optional>
#include <vector>

namespace vorn {

// One write of the device, or its unplugging.
struct Answer
{
    std::array<std::uint8_t, 8> bytes{};
    std::size_t length = 0;
    std::chrono::nanoseconds after{0}; // from the end of the frame that it answers
    bool releases = false;             // lets the other side send its next frame
    bool completes = false;            // ends an update
    bool unplugs = false;              // pulls the cable instead of writing
};

// Chooses the device's answers to what its boot loader has received: the right ones, or those that
// a fault puts in their place. Counts how often each fault's step was reached.
class AnswerPlan
{
public:
    explicit AnswerPlan(const DeviceOptions &options);

    void setFaults(const std::vector<Fault> &faults);
    // Appends the answers to the event, in the order of their times.
    void answer(const BootEvent &event, std::vector<Answer> &answers);

private:
    struct CountedFault
    {
        Fault fault;
        int reached = 0;
    };
    std::optional<Fault> faultAt(BootStep step, int frame);
    void answerConnect(std::vector<Answer> &answers);
    void answerHeader(std::vector<Answer> &answers);
    // Appends the right answer or the fault's; false when nothing must follow.
    bool add(std::vector<Answer> &answers, Answer right, const std::optional<Fault> &fault) const;
    Answer acknowledgement(std::chrono::nanoseconds after) const;

    DeviceOptions m_options;
    std::vector<CountedFault> m_faults;
};

} // namespace vorn
