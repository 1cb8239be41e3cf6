#pragma once

#include <QtGlobal>

namespace vorn {

// Limits on what an archive may claim. A few kilobytes can claim terabytes; an archive that claims
// more than this is rejected before any of it is written.
struct ArchiveLimits
{
    // Nine times the 2,200 files of the largest known package: each entry costs an inode and time,
    // however small it is.
    static constexpr quint64 kMaxEntries = 20'000;
    // A firmware image is smaller than 2 GiB (its length is sent as a signed 32-bit number);
    // packages unpack to a few hundred megabytes.
    static constexpr quint64 kMaxBytesOnDisk = quint64{2} << 30;
    // All of it is held in memory at once.
    static constexpr quint64 kMaxBytesInMemory = quint64{512} << 20;

    quint64 entries = kMaxEntries;
    quint64 bytesOnDisk = kMaxBytesOnDisk;
    quint64 bytesInMemory = kMaxBytesInMemory;
};

} // namespace vorn
