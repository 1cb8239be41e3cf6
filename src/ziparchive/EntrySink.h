#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QString>

#include <chrono>
#include <optional>

namespace vorn {

// One entry as a sink meets it.
struct EntryHead
{
    // With "/" between its parts, and at its end when it is a folder.
    QString name;
    bool isFolder = false;
    std::optional<std::chrono::system_clock::time_point> date;
};

// Where the entries of an archive go when it is unpacked. For each entry: begin(), then write() for
// each piece until it says no, then end().
class EntrySink
{
public:
    EntrySink() = default;
    EntrySink(const EntrySink &) = delete;
    EntrySink &operator=(const EntrySink &) = delete;
    virtual ~EntrySink() = default;

    // Asked once, before the first entry: what speaks against taking `bytes` in all, as the text to
    // report; nothing when nothing does.
    virtual std::optional<QString> objectionTo(quint64 bytes) = 0;
    // False: the entry is not wanted, and not even read.
    virtual bool begin(const EntryHead &entry) = 0;
    // Takes a piece, which is empty at the entry's end. False: no more of this entry.
    virtual bool write(QByteArrayView bytes) = 0;
    // The entry is over. `isIntact`: all of it was written, and it is what was packed.
    virtual void end(bool isIntact) = 0;
};

} // namespace vorn
