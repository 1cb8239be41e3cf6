#pragma once

#include "platform/FileDescriptor.h"
#include "ziparchive/OutputFile.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <memory>
#include <optional>

namespace vorn {

// A folder to unpack into. Whatever an entry is called, and whatever stands in the folder (also
// when others change it meanwhile), nothing outside of it is touched: every part of a path is taken
// from the folder before it by descriptor, and a symbolic link on the way is not followed. The way
// to the folder itself may lead through links.
class SafeDestination
{
public:
    // The parts of an entry's path below the destination, without "." and empty ones.
    using Parts = QList<QByteArray>;

    // Nothing when `name` leads out of the folder it counts from: "..", absolute, a drive letter.
    // A ".." that stays inside is resolved.
    static std::optional<Parts> partsOf(const QString &name);

    explicit SafeDestination(const QString &path);

    // Opens the destination, which must exist by now; false (with errno set) when that fails.
    bool open();
    // Makes the folder below the destination and those on the way to it, and goes there.
    Place enter(const Parts &folder);
    // A file in the folder last entered with success. The object is to be gone before the next
    // enter().
    std::unique_ptr<OutputFile> file(const QByteArray &name) const;

private:
    int current() const { return m_folder.isValid() ? m_folder.get() : m_root.get(); }

    QByteArray m_path;
    FileDescriptor m_root;
    // The folder last entered, and its path; none when that is the destination itself.
    FileDescriptor m_folder;
    Parts m_parts;
};

} // namespace vorn
