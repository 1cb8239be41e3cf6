#include "ziparchive/OutputFile.h"

#include <QLoggingCategory>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <tuple>
#include <utility>

namespace vorn {

namespace {

Q_LOGGING_CATEGORY(logArchive, "vorn.ziparchive")

constexpr qsizetype kBufferSize = 65536;
// How many temporary files left behind by killed processes are stepped over.
constexpr int kTemporaryNames = 1000;

std::optional<struct stat> statusOf(int folder, const QByteArray &name)
{
    struct stat status = {};
    if (::fstatat(folder, name.constData(), &status, AT_SYMLINK_NOFOLLOW) != 0)
        return std::nullopt;
    return status;
}

ArchiveFailure notWritten()
{
    return {.kind = ArchiveFailureKind::NotWritten, .code = errno};
}

timespec timespecOf(std::chrono::system_clock::time_point moment)
{
    return {.tv_sec = std::chrono::system_clock::to_time_t(moment), .tv_nsec = 0};
}

} // namespace

bool OutputFile::exists() const
{
    return statusOf(m_folder, m_name).has_value();
}

ArchiveFailure OutputFile::open()
{
    const auto existing = statusOf(m_folder, m_name);
    if (!existing && errno != ENOENT)
        return notWritten();
    if (existing && S_ISLNK(existing->st_mode))
        return {.kind = ArchiveFailureKind::Outside};
    if (existing && S_ISDIR(existing->st_mode))
        return {.kind = ArchiveFailureKind::NameTaken};
    if (existing && !S_ISREG(existing->st_mode))
        return {.kind = ArchiveFailureKind::NotWritten, .code = EEXIST};
    // rename() ignores the write protection of the file that it replaces; this does not.
    if (existing && ::faccessat(m_folder, m_name.constData(), W_OK, AT_EACCESS) != 0)
        return notWritten();

    if (!openTemporary())
        return notWritten();
    if (existing)
        std::ignore = ::fchmod(m_fd.get(), existing->st_mode & 0777);
    m_buffer.reserve(kBufferSize);
    return {};
}

bool OutputFile::openTemporary()
{
    for (int i = 0; i < kTemporaryNames; ++i) {
        const QByteArray name = ".unpacking-" + QByteArray::number(i);
        m_fd = FileDescriptor(
            ::openat(m_folder, name.constData(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
        if (m_fd.isValid()) {
            m_temporaryName = name;
            return true;
        }
        if (errno != EEXIST)
            return false;
    }
    return false;
}

bool OutputFile::write(QByteArrayView bytes)
{
    if (m_buffer.size() + bytes.size() > kBufferSize && !flush())
        return false;
    m_buffer.append(bytes);
    return true;
}

bool OutputFile::flush()
{
    QByteArrayView left = m_buffer;
    while (!left.isEmpty()) {
        const ssize_t count =
            ::write(m_fd.get(), left.data(), static_cast<std::size_t>(left.size()));
        if (count < 0 && errno == EINTR)
            continue;
        if (count < 0)
            return false;
        left = left.sliced(count);
    }
    m_buffer.resize(0);
    return true;
}

bool OutputFile::commit(const std::optional<std::chrono::system_clock::time_point> &date)
{
    if (!flush())
        return false;
    if (date) {
        const timespec times[2] = {{.tv_sec = 0, .tv_nsec = UTIME_OMIT}, timespecOf(*date)};
        if (::futimens(m_fd.get(), times) != 0)
            qCWarning(logArchive, "Failed to set attributes");
    }
    if (m_fd.reset() != 0 ||
        ::renameat(m_folder, m_temporaryName.constData(), m_folder, m_name.constData()) != 0)
        return false;
    m_temporaryName.clear();
    return true;
}

void OutputFile::discard()
{
    if (!m_temporaryName.isEmpty())
        ::unlinkat(m_folder, m_temporaryName.constData(), 0);
}

} // namespace vorn
