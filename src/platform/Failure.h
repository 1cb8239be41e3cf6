#pragma once

#include <QString>

namespace vorn {

// What went wrong, as facts; a front end chooses the words. `Kind` is an enumeration whose first
// value, None, means that nothing went wrong.
template <typename Kind>
struct Failure
{
    Kind kind{};
    // An errno or a status, depending on the kind; 0 if the kind has none.
    int code = 0;
    // What it happened to, verbatim: a path, a name, a header's value. Never a sentence.
    QString text{};

    explicit operator bool() const { return kind != Kind{}; }
};

} // namespace vorn
