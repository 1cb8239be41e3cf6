#pragma once

#include "platform/Failure.h"

namespace vorn {

// What kept an archive, or one entry of it, from being listed or unpacked whole.
enum class ArchiveFailureKind {
    None,
    NoArchive,  // nothing is open, or it has no first entry
    BadEntry,   // damaged, encrypted without the right password, or of an unknown method
    TooLarge,   // the archive claims more bytes than its limits allow
    Outside,    // the entry's path leaves the destination
    NameTaken,  // a folder stands where the entry's file belongs, or a file where its folder does
    NotRead,    // errno; the archive itself
    NotWritten, // errno
};

// `text` is the entry's name, or the destination when the whole archive does not fit there.
using ArchiveFailure = Failure<ArchiveFailureKind>;

} // namespace vorn
