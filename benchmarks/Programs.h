#pragma once

#include <QString>
#include <QStringList>

#include <sys/types.h>

#include <algorithm>
#include <functional>
#include <optional>
#include <vector>

namespace vorn {

struct ProgramRun
{
    double wall = 0; // seconds, from the start to the end
    double cpu = 0;  // seconds, user and system
    long peakKilobytes = 0;
};

// Starts a program, whose output is dropped; no value when it cannot be started.
std::optional<pid_t> startProgram(const QStringList &command);

// Runs a program to its end; no value unless it ends with 0.
std::optional<ProgramRun> runProgram(const QStringList &command);

// The path of a program that is built beside this one.
QString builtProgram(const QString &name);

// The middle one of at least one value, each seen through the projection.
template <typename Value, typename Projection = std::identity>
auto median(std::vector<Value> values, Projection projection = {})
{
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::ranges::nth_element(values, middle, {}, projection);
    return std::invoke(projection, *middle);
}

} // namespace vorn
