#pragma once

#include <minizip/unzip.h>
#include <minizip/zip.h>

#include <chrono>
#include <optional>

namespace vorn {

// The dates of archive entries: local time without a zone, from 1980 to 2107, in steps of two
// seconds.

// 1 January 1980, 00:00 local time.
std::chrono::system_clock::time_point firstEntryDate();

// The moment that an entry's date names. A field out of its range carries over (a 13th month is the
// next January). Nothing when the date has no year or names no moment.
std::optional<std::chrono::system_clock::time_point> fromEntryDate(const tm_unz &date);

// The date of `moment`, with the month counted from 1 although the record counts from 0: archives
// made here carry dates one month late, and are meant to. A moment before or after what a date can
// say becomes the first or the last that it can.
tm_zip toEntryDate(std::chrono::system_clock::time_point moment);

} // namespace vorn
