#include "firmware/PackageProblem.h"

#include <cerrno>
#include <system_error>

namespace vorn {

PackageProblem PackageProblem::fromErrno(int error, const QString &path)
{
    const bool isFull = error == ENOSPC || error == EDQUOT;
    const std::string reason = std::generic_category().message(error);
    return {isFull ? Kind::NoSpace : Kind::FileSystem,
            QStringLiteral("%1: %2").arg(path, QString::fromStdString(reason)), error};
}

} // namespace vorn
