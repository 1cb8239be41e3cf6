#pragma once

#include <QtGlobal>

namespace vorn {

// What an archive may ask for at most. A few kilobytes can claim thousands of gigabytes; an archive
// that claims more than this is refused before anything of it is written.
struct ArchiveLimits
{
    // Nine times the 2,200 files of the largest package known: each entry costs an inode and time
    // however small it is.
    static constexpr quint64 kMaxEntries = 20'000;
    // One firmware image is below 2 GiB (its length travels as a signed 32-bit number), and
    // packages unpack to some hundred megabytes.
    static constexpr quint64 kMaxBytesOnDisk = quint64{2} << 30;
    // Everything unpacked to memory is held at once, beside the rest of the program.
    static constexpr quint64 kMaxBytesInMemory = quint64{512} << 20;

    quint64 entries = kMaxEntries;
    quint64 bytesOnDisk = kMaxBytesOnDisk;
    quint64 bytesInMemory = kMaxBytesInMemory;
};

} // namespace vorn
