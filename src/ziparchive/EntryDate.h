#pragma once

#include <minizip/unzip.h>
#include <minizip/zip.h>

#include <chrono>
#include <optional>

namespace vorn {

// Dates of archive entries: local time without a zone, 1980 to 2107, in steps of two seconds.

// 1 January 1980, 00:00 local time.
std::chrono::system_clock::time_point firstEntryDate();

// The time that an entry's date stands for. A field out of range carries over (a 13th month is the
// next January). Nothing when the date has no year or is not a valid time.
std::optional<std::chrono::system_clock::time_point> fromEntryDate(const tm_unz &date);

// The date of `moment`, clamped to the range above. The month counts from 1 although the record's
// counts from 0: archives made here deliberately carry dates one month late.
tm_zip toEntryDate(std::chrono::system_clock::time_point moment);

} // namespace vorn
