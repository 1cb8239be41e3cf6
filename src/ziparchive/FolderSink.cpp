#include "ziparchive/FolderSink.h"

#include "ziparchive/ZipFileManager.h"

#include <QDir>
#include <QFile>

#include <cerrno>

namespace vorn {

namespace {

using Kind = ArchiveFailureKind;

QString joined(const QString &path, const SafeDestination::Components &components)
{
    QString result = path;
    for (const QByteArray &component : components) {
        if (!result.isEmpty() && !result.endsWith(u'/'))
            result += u'/';
        result += QFile::decodeName(component);
    }
    return result;
}

} // namespace

FolderSink::FolderSink(const ZipFileManager &fileManager, const QString &path, quint64 maxBytes,
                       Question mayReplace, QStringList &written)
    : m_fileManager(fileManager), m_path(path), m_maxBytes(maxBytes),
      m_mayReplace(std::move(mayReplace)), m_written(written), m_destination(path)
{
}

ArchiveFailure FolderSink::prepare(quint64 bytes)
{
    if (bytes > m_maxBytes)
        return {.kind = Kind::TooLarge};
    const QString folder = m_path.isEmpty() ? QStringLiteral(".") : m_path;
    // A destination that cannot be created or opened shows when its first file is opened.
    if (!QDir().mkpath(folder) || !m_destination.open()) {
        m_destinationFailure = {.kind = Kind::NotWritten, .code = errno};
        return {};
    }
    const auto available = m_fileManager.availableBytesAtPath(folder);
    if (available && bytes > *available)
        return {.kind = Kind::NotWritten, .code = ENOSPC, .text = folder};
    return {};
}

bool FolderSink::begin(const EntryHead &entry)
{
    m_output.reset();
    m_entry = entry;
    auto components = SafeDestination::componentsOf(entry.name);
    if (!components)
        return fail({.kind = Kind::Outside});
    m_fullPath = joined(m_path, *components);
    m_fileName = entry.isFolder() || components->isEmpty() ? QByteArray() : components->takeLast();
    m_folderFailure =
        m_destinationFailure ? m_destinationFailure : m_destination.enter(*components);
    return m_folderFailure.kind == Kind::Outside ? fail(m_folderFailure) : true;
}

bool FolderSink::write(QByteArrayView bytes)
{
    if (m_entry.isFolder())
        return true;
    if (!m_output && !openOutput())
        return false;
    return m_output->write(bytes) || fail({.kind = Kind::NotWritten, .code = errno});
}

bool FolderSink::openOutput()
{
    if (m_fileName.isEmpty())
        return fail({.kind = Kind::NameTaken}); // by the destination itself
    if (m_folderFailure)
        return fail(m_folderFailure);
    auto output = m_destination.file(m_fileName);
    if (output->exists() && !m_mayReplace(m_fullPath))
        return false;
    if (const ArchiveFailure failure = output->open())
        return fail(failure);
    m_output = std::move(output);
    return true;
}

void FolderSink::end(bool isIntact)
{
    const auto output = std::move(m_output);
    if (!output || !isIntact)
        return;
    if (output->commit(m_entry.date))
        m_written.append(m_fullPath);
    else
        fail({.kind = Kind::NotWritten, .code = errno});
}

// Always false: the entry is not written.
bool FolderSink::fail(ArchiveFailure failure)
{
    failure.text = m_entry.name;
    m_failure = std::move(failure);
    return false;
}

} // namespace vorn
