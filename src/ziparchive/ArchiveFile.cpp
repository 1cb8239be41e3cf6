#include "ziparchive/ArchiveFile.h"

#include <QFile>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace vorn {

namespace {

constexpr std::size_t kWindowSize = 4096;

ArchiveFile &fileOf(voidpf self)
{
    return *static_cast<ArchiveFile *>(self);
}

} // namespace

std::unique_ptr<ArchiveFile> ArchiveFile::open(const QString &path, int &error)
{
    error = 0;
    // Non-blocking, so that opening a named pipe returns at once.
    FileDescriptor fd(
        ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    struct stat status = {};
    if (!fd.isValid() || ::fstat(fd.get(), &status) != 0) {
        error = errno;
        return nullptr;
    }
    if (!S_ISREG(status.st_mode))
        return nullptr;
    return std::unique_ptr<ArchiveFile>(
        new ArchiveFile(std::move(fd), static_cast<quint64>(status.st_size)));
}

const ArchiveFile::Window &ArchiveFile::windowAt(quint64 position)
{
    const quint64 number = position / kWindowSize;
    const quint64 start = number * kWindowSize;
    Window &window = m_windows[number % m_windows.size()];
    if (window.filled > 0 && window.start == start)
        return window;
    window.bytes.resize(kWindowSize);
    window.start = start;
    window.filled = readFile(window.bytes, start);
    return window;
}

std::size_t ArchiveFile::readFile(std::span<char> target, quint64 position)
{
    std::size_t done = 0;
    while (done < target.size()) {
        const ssize_t count = ::pread(m_fd.get(), target.data() + done, target.size() - done,
                                      static_cast<off_t>(position + done));
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            m_error = errno;
        if (count <= 0)
            break;
        done += static_cast<std::size_t>(count);
    }
    return done;
}

// At the position, which advances; fewer bytes at the end of the file and after an error.
std::size_t ArchiveFile::read(std::span<char> target)
{
    std::size_t done = 0;
    if (target.size() >= kWindowSize) {
        done = readFile(target, m_position);
        m_position += done;
        return done;
    }
    while (done < target.size() && m_position < m_size) {
        const Window &window = windowAt(m_position);
        const auto offset = static_cast<std::size_t>(m_position - window.start);
        if (offset >= window.filled)
            break;
        const std::size_t count = std::min(target.size() - done, window.filled - offset);
        std::memcpy(target.data() + done, window.bytes.data() + offset, count);
        done += count;
        m_position += count;
    }
    return done;
}

zlib_filefunc64_def ArchiveFile::minizipFunctions()
{
    return {.zopen64_file = [](voidpf self, const void *, int) { return self; },
            .zread_file = [](voidpf self, voidpf, void *buffer, uLong size) -> uLong {
                return fileOf(self).read({static_cast<char *>(buffer), size});
            },
            .zwrite_file = [](voidpf, voidpf, const void *, uLong) { return uLong{0}; },
            .ztell64_file = [](voidpf self, voidpf) -> ZPOS64_T { return fileOf(self).m_position; },
            .zseek64_file =
                [](voidpf self, voidpf, ZPOS64_T offset, int origin) {
                    ArchiveFile &file = fileOf(self);
                    if (origin == ZLIB_FILEFUNC_SEEK_CUR)
                        offset += file.m_position;
                    else if (origin == ZLIB_FILEFUNC_SEEK_END)
                        offset += file.m_size;
                    file.m_position = offset;
                    return 0L;
                },
            .zclose_file = [](voidpf, voidpf) { return 0; },
            .zerror_file = [](voidpf self, voidpf) { return fileOf(self).m_error; },
            .opaque = this};
}

} // namespace vorn
