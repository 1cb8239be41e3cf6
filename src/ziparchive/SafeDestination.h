#pragma once

#include "platform/FileDescriptor.h"
#include "ziparchive/OutputFile.h"

#include <QByteArray>
#include <QList>
#include <QString>

#include <memory>
#include <optional>

namespace vorn {

// A folder to unpack into. Nothing outside it is ever touched, whatever an entry's name and
// whatever is in the folder, even when other processes change it meanwhile: each path component is
// opened relative to its parent's descriptor, without following symbolic links. The path of the
// folder itself may contain links.
class SafeDestination
{
public:
    // The components of an entry's path below the destination, without "." and empty ones.
    using Components = QList<QByteArray>;

    // Nothing when `name` leaves the destination: by "..", as an absolute path, by a drive letter,
    // or by a U+0000, at which the system's calls would end the name. A ".." that stays inside is
    // resolved.
    static std::optional<Components> componentsOf(const QString &name);

    explicit SafeDestination(const QString &path);

    // Opens the destination, which must exist; false, with errno set, when that fails.
    bool open();
    // Makes `folder` the current folder, creating it and its parents when missing.
    ArchiveFailure enter(const Components &folder);
    // A file in the current folder. It must be destroyed before the next enter().
    std::unique_ptr<OutputFile> file(const QByteArray &name) const;

private:
    int current() const { return m_folder.isValid() ? m_folder.get() : m_root.get(); }

    QByteArray m_path;
    FileDescriptor m_root;
    // The current folder and its path; not valid while that is the destination itself.
    FileDescriptor m_folder;
    Components m_components;
};

} // namespace vorn
