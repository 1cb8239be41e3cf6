#include "ziparchive/EntryDate.h"

#include <algorithm>
#include <ctime>

namespace vorn {

namespace {

using std::chrono::system_clock;

// -1 when `date` is not a valid local time.
std::time_t toTime(const tm_unz &date)
{
    std::tm local = {};
    local.tm_sec = static_cast<int>(date.tm_sec);
    local.tm_min = static_cast<int>(date.tm_min);
    local.tm_hour = static_cast<int>(date.tm_hour);
    local.tm_mday = static_cast<int>(date.tm_mday);
    local.tm_mon = static_cast<int>(date.tm_mon);
    local.tm_year = static_cast<int>(date.tm_year) - 1900;
    local.tm_isdst = -1;
    return std::mktime(&local);
}

system_clock::time_point lastEntryDate()
{
    return system_clock::from_time_t(toTime(
        {.tm_sec = 58, .tm_min = 59, .tm_hour = 23, .tm_mday = 31, .tm_mon = 11, .tm_year = 2107}));
}

} // namespace

system_clock::time_point firstEntryDate()
{
    return system_clock::from_time_t(toTime(
        {.tm_sec = 0, .tm_min = 0, .tm_hour = 0, .tm_mday = 1, .tm_mon = 0, .tm_year = 1980}));
}

std::optional<system_clock::time_point> fromEntryDate(const tm_unz &date)
{
    const std::time_t time = date.tm_year == 0 ? -1 : toTime(date);
    if (time == -1)
        return std::nullopt;
    return system_clock::from_time_t(time);
}

tm_zip toEntryDate(system_clock::time_point moment)
{
    const std::time_t seconds =
        system_clock::to_time_t(std::clamp(moment, firstEntryDate(), lastEntryDate()));
    std::tm local = {};
    ::localtime_r(&seconds, &local);
    return {.tm_sec = static_cast<uInt>(local.tm_sec),
            .tm_min = static_cast<uInt>(local.tm_min),
            .tm_hour = static_cast<uInt>(local.tm_hour),
            .tm_mday = static_cast<uInt>(local.tm_mday),
            .tm_mon = static_cast<uInt>(local.tm_mon + 1),
            .tm_year = static_cast<uInt>(local.tm_year + 1900)};
}

} // namespace vorn
