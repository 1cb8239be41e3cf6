#pragma once

namespace vorn {

// Prints every status text that a window shows from now on, with the time since this call, to the
// standard output. It listens as a screen reader does.
void printStatusTexts();

} // namespace vorn
