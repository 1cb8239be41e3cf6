#pragma once

#include "update/UpdateResult.h"

#include <QString>

#include <array>
#include <cstdio>
#include <map>
#include <string>

namespace vorn {

inline const char *nameOf(UpdateFailureKind ending)
{
    constexpr std::array kNames{"success",     "no image chosen", "image unreadable",
                                "image empty", "image too long",  "no image for the model",
                                "wrong model", "refused",         "timed out",
                                "port closed", "interrupted",     "abandoned"};
    return kNames.at(static_cast<std::size_t>(ending));
}

// How often each fault struck, and how often each ending came.
struct Tally
{
    qint64 runs = 0;
    std::map<std::string, qint64> faults;
    std::map<std::string, qint64> endings;

    void operator+=(const Tally &other)
    {
        runs += other.runs;
        for (const auto &[name, count] : other.faults)
            faults[name] += count;
        for (const auto &[name, count] : other.endings)
            endings[name] += count;
    }
    void print() const
    {
        for (const auto *table : {&faults, &endings}) {
            std::printf("  %s\n", table == &faults ? "faults" : "endings");
            for (const auto &[name, count] : *table)
                std::printf("    %-24s %10lld\n", name.c_str(), count);
        }
    }
};

} // namespace vorn
