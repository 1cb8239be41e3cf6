#pragma once

#include "simulator/BootLoader.h"
#include "simulator/DeviceOptions.h"

#include <QByteArray>

#include <chrono>
#include <optional>
#include <vector>

namespace vorn {

// One write of the device, or its unplugging.
struct Answer
{
    QByteArray bytes{};
    std::chrono::nanoseconds after{0}; // from the end of the frame that it answers
    bool releases = false;             // lets the other side send its next frame
    bool completes = false;            // ends an update
    bool unplugs = false;              // pulls the cable instead of writing
};

// Chooses the device's answers to its boot loader's events: the right ones, or what a fault
// replaces them with. Counts how often each fault's step was reached.
class AnswerPlan
{
public:
    explicit AnswerPlan(const DeviceOptions &options) : m_options(options)
    {
        setFaults(options.faults);
    }

    // Replaces the faults and restarts their counts.
    void setFaults(const std::vector<Fault> &faults);
    // The answers to the event, in the order of their times.
    std::vector<Answer> answersTo(const BootEvent &event);

private:
    struct CountedFault
    {
        Fault fault;
        int reached = 0;
    };
    std::optional<Fault> faultAt(BootStep step, int frame = 0);
    std::vector<Answer> answersToConnect();
    std::vector<Answer> answersToHeader();
    Answer acknowledgement() const;

    DeviceOptions m_options;
    std::vector<CountedFault> m_faults;
};

} // namespace vorn
