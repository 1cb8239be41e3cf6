#include "update/FirmwareImage.h"

#include "platform/FileDescriptor.h"

#include <QFile>

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <limits>
#include <new>

namespace vorn {
namespace {

using Kind = UpdateFailureKind;

// Opens the file and tells its size.
UpdateFailure openImage(const QString &path, FileDescriptor &file, qint64 &size)
{
    if (path.isNull())
        return {Kind::NoImageChosen};
    file = FileDescriptor(
        ::open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC));
    struct stat status
    {
    };
    if (!file.isValid() || ::fstat(file.get(), &status) != 0)
        return {Kind::ImageUnreadable, errno, path};
    if (!S_ISREG(status.st_mode))
        return {Kind::ImageUnreadable, S_ISDIR(status.st_mode) ? EISDIR : EINVAL, path};
    if (status.st_size == 0)
        return {Kind::ImageEmpty, 0, path};
    if (status.st_size > std::numeric_limits<qint32>::max())
        return {Kind::ImageTooLong, 0, path};
    size = status.st_size;
    return {};
}

} // namespace

UpdateFailure checkFirmwareImage(const QString &path)
{
    FileDescriptor file;
    qint64 size = 0;
    return openImage(path, file, size);
}

FirmwareImage readFirmwareImage(const QString &path)
{
    FileDescriptor file;
    qint64 size = 0;
    if (UpdateFailure failure = openImage(path, file, size))
        return {{}, failure};
    FirmwareImage image;
    try {
        image.bytes = QByteArray(size, Qt::Uninitialized);
    } catch (const std::bad_alloc &) {
        return {{}, {Kind::ImageUnreadable, ENOMEM, path}};
    }
    qint64 count = 0;
    while (count < size) {
        const ssize_t got =
            ::read(file.get(), image.bytes.data() + count, static_cast<size_t>(size - count));
        if (got < 0 && errno == EINTR)
            continue;
        // A file that shrinks while it is read is not the file that was chosen.
        if (got <= 0)
            return {{}, {Kind::ImageUnreadable, got < 0 ? errno : EIO, path}};
        count += got;
    }
    return image;
}

} // namespace vorn
