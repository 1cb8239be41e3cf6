#pragma once

#include <QString>

namespace vorn {

// What went wrong, as facts; a front end chooses the words. `Kind` is an enumeration of a room's
// own whose first value, None, means that nothing did.
template <typename Kind>
struct Failure
{
    Kind kind{};
    // The number that goes with the kind, an errno or a status; 0 where it has none.
    int code = 0;
    // What it happened to, as it stands: a path, a name, a header's value. Never a sentence.
    QString text{};

    explicit operator bool() const { return kind != Kind{}; }
};

} // namespace vorn
