#pragma once

#include "firmware/PackageProblem.h"

#include <filesystem>

namespace vorn {

class StagingFolder;

// Gives what was unpacked into a staging folder its place in the caches directory:
//
// - The folder that the package is named after replaces the one that stands there; when the package
//   holds no such folder, the one that stands there goes all the same.
// - "VornUpdate2", where the package has another name, replaces the one that stands there and keeps
//   those of its files that the package does not have.
// - Whatever else the package holds is put beside them and replaces files of the same name.
//
// A folder changes in one step, by a rename, once all of it is on the disk. When anything cannot
// get its place because a file stands where a folder belongs, or the other way round, nothing
// changes. May be called on any thread. `packageFolder` is the name of the folder that the package
// is named after.
PackageProblem publishPackage(const StagingFolder &staging,
                              const std::filesystem::path &packageFolder);

} // namespace vorn
