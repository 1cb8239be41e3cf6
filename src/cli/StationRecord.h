#pragma once

#include "cli/Outcome.h"
#include "platform/FileDescriptor.h"

namespace vorn {

// What a station has done: a JSON object a line, appended to a file. A line is written in one piece
// and is on the disk before append() returns. A new file is for its owner alone; one that is there
// keeps its mode, and a link or pipe that the user names is followed. Both return 0 or an errno.
class StationRecord
{
public:
    int open(const QString &path);
    int append(const Outcome &outcome);

private:
    FileDescriptor m_file;
    bool m_isInsideLine = false; // what another program wrote last is no whole line
};

} // namespace vorn
