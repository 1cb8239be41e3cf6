#include "platform/PrivateFile.h"

#include <QFile>
#include <QTemporaryFile>

#include <unistd.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

namespace vorn {

QString writePrivateFile(const QString &path, const QByteArray &bytes)
{
    QTemporaryFile file(path + QStringLiteral(".XXXXXX"));
    if (!file.open() || file.write(bytes) != bytes.size() || !file.flush())
        return file.errorString();
    // Not every file system can synchronize.
    if ((::fsync(file.handle()) != 0 && errno != EINVAL) ||
        std::rename(QFile::encodeName(file.fileName()).constData(),
                    QFile::encodeName(path).constData()) != 0)
        return QString::fromLocal8Bit(std::strerror(errno));
    file.setAutoRemove(false);
    return {};
}

} // namespace vorn
