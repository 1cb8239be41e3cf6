#include "ziparchive/FolderSink.h"

#include "ziparchive/ZipArchiveLog.h"
#include "ziparchive/ZipFileManager.h"

#include <QFile>

#include <cerrno>
#include <cstring>

namespace vorn {

namespace {

constexpr auto kNotWritten = "Failed to open output file for writing";

QString joined(const QString &path, const SafeDestination::Parts &parts)
{
    QString result = path;
    for (const QByteArray &part : parts) {
        if (!result.isEmpty() && !result.endsWith(u'/'))
            result += u'/';
        result += QFile::decodeName(part);
    }
    return result;
}

} // namespace

FolderSink::FolderSink(const ZipFileManager &fileManager, Options options)
    : m_fileManager(fileManager), m_options(std::move(options)), m_destination(m_options.path)
{
}

std::optional<QString> FolderSink::objectionTo(quint64 bytes)
{
    if (bytes > m_options.maxBytes) {
        qCWarning(zipArchiveLog, "The archive claims %llu bytes, more than the %llu allowed", bytes,
                  m_options.maxBytes);
        return QStringLiteral("Error occurs");
    }
    const QString folder = m_options.path.isEmpty() ? QStringLiteral(".") : m_options.path;
    // A destination that cannot be made or opened shows when files are to be written in it.
    if (!m_fileManager.createDirectoryAtPath(folder) || !m_destination.open())
        return std::nullopt;
    const auto available = m_fileManager.availableBytesAtPath(folder);
    if (available && bytes > *available) {
        qCWarning(zipArchiveLog, "The archive needs %llu bytes, and %llu are free", bytes,
                  *available);
        return QString::fromLatin1(kNotWritten);
    }
    return std::nullopt;
}

bool FolderSink::begin(const EntryHead &entry)
{
    m_output.reset();
    m_isFolder = entry.isFolder;
    m_date = entry.date;
    auto parts = SafeDestination::partsOf(entry.name);
    if (!parts) {
        m_fullPath = entry.name;
        reportNotWritten(Place::Outside);
        return false;
    }
    m_fullPath = joined(m_options.path, *parts);
    m_name = entry.isFolder || parts->isEmpty() ? QByteArray() : parts->takeLast();
    m_folderPlace = m_destination.enter(*parts);
    m_errno = errno;
    if (m_folderPlace == Place::Outside) {
        reportNotWritten(Place::Outside);
        return false;
    }
    return true;
}

bool FolderSink::write(QByteArrayView bytes)
{
    if (m_isFolder)
        return true;
    if (!m_output && !openOutput())
        return false;
    if (m_output->write(bytes))
        return true;
    reportNotWritten(Place::Unreachable);
    return false;
}

bool FolderSink::openOutput()
{
    // The entry's name is the destination's own, or a folder on its way could not be made.
    Place place = m_name.isEmpty() ? Place::Occupied : m_folderPlace;
    errno = m_errno;
    if (place == Place::Free) {
        auto output = m_destination.file(m_name);
        if (m_options.mayReplace && output->exists() && !m_options.mayReplace(m_fullPath))
            return false;
        place = output->open();
        if (place == Place::Free) {
            m_output = std::move(output);
            return true;
        }
    }
    reportNotWritten(place);
    return false;
}

void FolderSink::end(bool isIntact)
{
    const auto output = std::move(m_output);
    if (!output || !isIntact)
        return;
    if (output->commit(m_date))
        m_options.written(m_fullPath);
    else
        reportNotWritten(Place::Unreachable);
}

void FolderSink::reportNotWritten(Place place)
{
    const char *const reason = place == Place::Outside    ? "its path leads out of the destination"
                               : place == Place::Occupied ? "something of another kind is there"
                                                          : std::strerror(errno);
    // Quoted and escaped: the name is the archive's.
    qCWarning(zipArchiveLog) << "Not written:" << m_fullPath << reason;
    // A name taken by a folder (or, for a folder, by a file) leaves the result as it is.
    m_hasFailed = m_hasFailed || place != Place::Occupied;
    m_options.report(QString::fromLatin1(kNotWritten));
}

} // namespace vorn
