#pragma once

namespace vorn {

// Ends the process with this code if it still runs in two seconds. Call it when nothing is left to
// do: what follows restores lines and joins threads, which a hung driver, network file system or
// name server would hold up for ever.
void limitExit(int exitCode);

} // namespace vorn
