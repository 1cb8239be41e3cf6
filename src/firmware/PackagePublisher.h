#pragma once

#include "firmware/PackageProblem.h"

#include <filesystem>

namespace vorn {

class StagingFolder;

// Moves what was unpacked into a staging folder to its place in the caches directory:
//
// - The folder that the package is named after, `packageFolder`, replaces the existing one. When
//   the package has no such folder, the existing one is removed all the same.
// - "VornUpdate2" in a package of another name replaces the existing one, and takes over those of
//   its files that the package does not have.
// - Anything else in the package is dropped.
//
// Besides "VornUpdate2", only a folder that was published by this function is replaced or removed;
// when any other thing is in the way, nothing changes and the package fails with Conflict. A folder
// is exchanged in one step, by a rename, once all of it is on the disk. Any thread.
PackageProblem publishPackage(const StagingFolder &staging,
                              const std::filesystem::path &packageFolder);

} // namespace vorn
