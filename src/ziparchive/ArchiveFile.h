#pragma once

#include "platform/FileDescriptor.h"

#include <QString>

#include <minizip/ioapi.h>

#include <array>
#include <memory>
#include <span>
#include <vector>

namespace vorn {

// An archive file open for reading, for minizip and CentralDirectory. minizip reads headers byte by
// byte and seeks between directory and data for each entry; a few cached windows turn that into one
// sequential read.
class ArchiveFile
{
public:
    // Null when `path` cannot be opened or is not a regular file.
    static std::unique_ptr<ArchiveFile> open(const QString &path);

    quint64 size() const { return m_size; }
    void seek(quint64 position) { m_position = position; }
    // Reads at the position and advances it; the number of bytes read, fewer than asked at the end
    // of the file or after an error.
    std::size_t read(std::span<char> target);

    // Lets minizip read through this object, which must outlive minizip's handle.
    zlib_filefunc64_def minizipFunctions();

private:
    struct Window
    {
        std::vector<char> bytes;
        quint64 start = 0;
        std::size_t filled = 0;
        quint64 lastUse = 0;
    };

    ArchiveFile(FileDescriptor fd, quint64 size) : m_fd(std::move(fd)), m_size(size) {}
    const Window *windowAt(quint64 position);

    FileDescriptor m_fd;
    quint64 m_size = 0;
    quint64 m_position = 0;
    quint64 m_uses = 0;
    bool m_failed = false;
    // One for the directory, two for data, since an entry may cross from one window to the next.
    std::array<Window, 3> m_windows;
};

} // namespace vorn
