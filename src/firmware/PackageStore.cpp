#include "firmware/PackageStore.h"

#include "firmware/PackageExtraction.h"
#include "firmware/PackagePublisher.h"
#include "firmware/StagingFolder.h"
#include "platform/Directories.h"
#include "platform/FileDescriptor.h"

#include <QFile>

#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

namespace vorn {

namespace fs = std::filesystem;

namespace {

QString toText(const fs::path &path)
{
    return QFile::decodeName(path.c_str());
}

fs::path toPath(const QString &text)
{
    return QFile::encodeName(text).toStdString();
}

// 0 or an errno.
int writeAll(const fs::path &path, const QByteArray &data)
{
    FileDescriptor file(::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666));
    if (!file.isValid())
        return errno;
    for (qsizetype done = 0; done < data.size();) {
        const ssize_t count = ::write(file.get(), data.constData() + done,
                                      static_cast<std::size_t>(data.size() - done));
        if (count < 0 && errno != EINTR)
            return errno;
        done += std::max<ssize_t>(count, 0);
    }
    if (::fsync(file.get()) != 0 || file.reset() != 0)
        return errno;
    return 0;
}

} // namespace

PackageStore::PackageStore(const QString &suggestedFilename, QString curDirName)
    : m_suggestedFilename(suggestedFilename), m_curDirName(std::move(curDirName))
{
}

PackageStore::~PackageStore() = default;

PackageProblem PackageStore::save(const QByteArray &data)
{
    m_staging = StagingFolder::create();
    if (!m_staging)
        return PackageProblem::fromErrno(errno, cachesDirectory());
    m_archive = m_staging->file("package.zip");
    if (const int error = writeAll(m_archive, data))
        return PackageProblem::fromErrno(error, toText(m_archive));

    // A second name for the saved file, so that what is unpacked is this package even when another
    // one is saved under the name meanwhile. Where a file cannot have two names, it is moved.
    const fs::path place = m_staging->destination() / toPath(m_suggestedFilename);
    const fs::path second = m_staging->file("second-name.zip");
    const bool isLinked = ::link(m_archive.c_str(), second.c_str()) == 0;
    if (::rename((isLinked ? second : m_archive).c_str(), place.c_str()) != 0)
        return PackageProblem::fromErrno(errno, toText(place));
    if (!isLinked)
        m_archive = place;
    return {};
}

PackageProblem PackageStore::install()
{
    // It is removed when this is done, whatever came of it.
    const auto staging = std::exchange(m_staging, nullptr);
    if (!staging)
        return PackageProblem::fromErrno(ENOENT, m_suggestedFilename);
    PackageExtraction extraction(m_curDirName);
    if (!extraction.decompressionFileToPath(toText(staging->content()), toText(m_archive)))
        return extraction.problem();
    return publishPackage(*staging, toPath(m_curDirName));
}

} // namespace vorn
