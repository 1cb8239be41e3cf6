#pragma once

#include "platform/FileDescriptor.h"

#include <QByteArray>
#include <QByteArrayView>

#include <chrono>
#include <optional>

namespace vorn {

// Where a name in a folder stands in the way of a file of that name, or does not.
enum class Place {
    Free,        // nothing, or a file that may be replaced
    Outside,     // a symbolic link: the way leads out of the folder
    Occupied,    // something of another kind: a folder for a file, a file for a folder
    Unreachable, // no permission, no space, name too long, a device...; errno says which
};

// One file being written. It appears under its name only when commit() succeeds, at once and whole;
// until then its bytes are under a hidden name in the same folder, which is removed when the object
// goes. What stood under the name before stays untouched until the commit replaces it.
class OutputFile
{
public:
    // Takes `name` in the folder `folder`, a descriptor that stays open while this object writes.
    OutputFile(int folder, QByteArray name) : m_folder(folder), m_name(std::move(name)) {}
    OutputFile(const OutputFile &) = delete;
    OutputFile &operator=(const OutputFile &) = delete;
    ~OutputFile() { discard(); }

    // Whether something stands under the name.
    bool exists() const;
    Place open();
    // False when the bytes cannot be written (no space, say).
    bool write(QByteArrayView bytes);
    // Ends the file and gives it its name. A date that cannot be set is only logged.
    bool commit(const std::optional<std::chrono::system_clock::time_point> &date);

private:
    bool openTemporary();
    bool flush();
    void discard();

    int m_folder;
    QByteArray m_name;
    QByteArray m_temporaryName;
    FileDescriptor m_fd;
    QByteArray m_buffer;
};

} // namespace vorn
