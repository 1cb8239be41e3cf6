#pragma once

namespace vorn {

// What a status line reports, told apart by shape and colour beside its text.
enum class Tone {
    Neutral, // a state or a step under way
    Good,    // something was done
    Bad,     // something failed
};

} // namespace vorn
