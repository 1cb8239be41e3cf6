#pragma once

#include "ziparchive/ArchiveFailure.h"

#include <QByteArrayView>
#include <QString>

#include <chrono>
#include <optional>
#include <utility>

namespace vorn {

// What a sink is told of an entry.
struct EntryHead
{
    // Components separated by "/"; a folder's name ends in "/".
    QString name;
    std::optional<std::chrono::system_clock::time_point> date;

    bool isFolder() const { return name.endsWith(u'/'); }
};

// Destination of an archive's entries. For each entry: begin(), then write() for each piece until
// it returns false, then end().
class EntrySink
{
public:
    EntrySink() = default;
    EntrySink(const EntrySink &) = delete;
    EntrySink &operator=(const EntrySink &) = delete;
    virtual ~EntrySink() = default;

    // Called once, before the first entry, with the size of all entries together. A failure ends
    // the walk.
    virtual ArchiveFailure prepare(quint64 bytes) = 0;
    // False: skip the entry without reading it.
    virtual bool begin(const EntryHead &entry) = 0;
    // Takes a piece, which is empty at the entry's end. False: no more of this entry.
    virtual bool write(QByteArrayView bytes) = 0;
    // `isIntact`: every piece was written and the data passed its CRC check.
    virtual void end(bool isIntact) = 0;

    // Why the current entry was not written, once; asked after each of the three calls above.
    ArchiveFailure takeFailure() { return std::exchange(m_failure, {}); }

protected:
    ArchiveFailure m_failure;
};

} // namespace vorn
