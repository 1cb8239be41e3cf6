#include "simulator/DeviceLink.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <unistd.h>

#include <cerrno>
#include <system_error>

namespace vorn {

DeviceLink::DeviceLink(QString path, QString target)
    : m_path(std::move(path)), m_target(std::move(target))
{
}

DeviceLink::~DeviceLink()
{
    if (!m_path.isEmpty() && QFile::symLinkTarget(m_path) == m_target)
        ::unlink(QFile::encodeName(m_path).constData());
}

std::optional<DeviceLink> DeviceLink::create(const QString &directory, const QString &name,
                                             const QString &target, QString *problem)
{
    const QString path = QDir(QDir(directory).absolutePath()).filePath(name);
    const QByteArray encoded = QFile::encodeName(path);
    const QFileInfo present(path);
    if (present.isSymLink() && !present.exists())
        ::unlink(encoded.constData());
    if (::symlink(QFile::encodeName(target).constData(), encoded.constData()) != 0) {
        const std::error_code error(errno, std::generic_category());
        *problem = QStringLiteral("%1: %2").arg(path, QString::fromStdString(error.message()));
        return std::nullopt;
    }
    return DeviceLink(path, target);
}

} // namespace vorn
