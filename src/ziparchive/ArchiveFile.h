#pragma once

#include "platform/FileDescriptor.h"

#include <QString>

#include <minizip/ioapi.h>

#include <array>
#include <memory>
#include <span>
#include <vector>

namespace vorn {

// An archive file open for reading by minizip, which reads headers byte by byte and seeks between
// directory and data for each entry; a few cached windows turn that into one sequential read.
class ArchiveFile
{
public:
    // Null when `path` cannot be opened, for the errno in `error`, or is not a regular file.
    static std::unique_ptr<ArchiveFile> open(const QString &path, int &error);

    // The errno of the last read that failed, or 0.
    int error() const { return m_error; }

    // Lets minizip read through this object, which must outlive minizip's handle.
    zlib_filefunc64_def minizipFunctions();

private:
    struct Window
    {
        std::vector<char> bytes;
        quint64 start = 0;
        std::size_t filled = 0;
    };

    ArchiveFile(FileDescriptor fd, quint64 size) : m_fd(std::move(fd)), m_size(size) {}
    const Window &windowAt(quint64 position);
    std::size_t read(std::span<char> target);
    std::size_t readFile(std::span<char> target, quint64 position);

    FileDescriptor m_fd;
    quint64 m_size = 0;
    quint64 m_position = 0;
    int m_error = 0;
    // Each for every sixteenth stretch of the file, so that the directory rarely shares one with
    // the data that are read at the same time.
    std::array<Window, 16> m_windows;
};

} // namespace vorn
