#pragma once

#include <QByteArray>
#include <QString>

#include <variant>

namespace vorn {

// Why a file cannot serve as a firmware image.
struct ImageError
{
    enum class Kind { Unreadable, Empty, TooLong };
    Kind kind = Kind::Unreadable;
    int code = 0; // errno, when unreadable
    QString path;

    // One line for the log or for the user.
    QString description() const;
};

// The whole file's bytes: 1 to 2^31 - 1 of them, the lengths that the protocol can announce. The
// content is not judged. Never waits, also not for a pipe.
std::variant<QByteArray, ImageError> readFirmwareImage(const QString &path);

// Whether the file could be read just now, without reading it; nothing when it could.
std::variant<std::monostate, ImageError> checkFirmwareImage(const QString &path);

} // namespace vorn
