#include "update/FirmwareImage.h"

#include "platform/FileDescriptor.h"

#include <QFile>

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <cstring>
#include <limits>
#include <new>

namespace vorn {
namespace {

struct OpenImage
{
    FileDescriptor fd;
    qint64 size = 0;
};

std::variant<OpenImage, ImageError> openImage(const QString &path)
{
    using Kind = ImageError::Kind;
    OpenImage image{FileDescriptor(
        ::open(QFile::encodeName(path).constData(), O_RDONLY | O_NONBLOCK | O_NOCTTY | O_CLOEXEC))};
    struct stat status
    {
    };
    if (!image.fd.isValid() || ::fstat(image.fd.get(), &status) != 0)
        return ImageError{Kind::Unreadable, errno, path};
    if (!S_ISREG(status.st_mode))
        return ImageError{Kind::Unreadable, S_ISDIR(status.st_mode) ? EISDIR : EINVAL, path};
    if (status.st_size == 0)
        return ImageError{Kind::Empty, 0, path};
    if (status.st_size > std::numeric_limits<qint32>::max())
        return ImageError{Kind::TooLong, 0, path};
    image.size = status.st_size;
    return image;
}

} // namespace

QString ImageError::description() const
{
    switch (kind) {
    case Kind::Empty:
        return QStringLiteral("The firmware file %1 is empty").arg(path);
    case Kind::TooLong:
        return QStringLiteral("The firmware file %1 is too large for a device").arg(path);
    case Kind::Unreadable:
        break;
    }
    return QStringLiteral("The firmware file %1 cannot be read: %2")
        .arg(path, QString::fromLocal8Bit(std::strerror(code)));
}

std::variant<std::monostate, ImageError> checkFirmwareImage(const QString &path)
{
    const auto image = openImage(path);
    if (const auto *error = std::get_if<ImageError>(&image))
        return *error;
    return std::monostate();
}

std::variant<QByteArray, ImageError> readFirmwareImage(const QString &path)
{
    auto opened = openImage(path);
    if (const auto *error = std::get_if<ImageError>(&opened))
        return *error;
    const auto &image = std::get<OpenImage>(opened);

    QByteArray bytes;
    try {
        bytes = QByteArray(image.size, Qt::Uninitialized);
    } catch (const std::bad_alloc &) {
        return ImageError{ImageError::Kind::Unreadable, ENOMEM, path};
    }
    qint64 count = 0;
    while (count < image.size) {
        const ssize_t got =
            ::read(image.fd.get(), bytes.data() + count, static_cast<size_t>(image.size - count));
        if (got < 0 && errno == EINTR)
            continue;
        // A file that shrinks while it is read is not the file that was chosen.
        if (got <= 0)
            return ImageError{ImageError::Kind::Unreadable, got < 0 ? errno : EIO, path};
        count += got;
    }
    return bytes;
}

} // namespace vorn
