#include "ziparchive/ArchiveReader.h"

#include <QLoggingCategory>

#include <algorithm>
#include <limits>

namespace vorn {

namespace {

Q_LOGGING_CATEGORY(logArchive, "vorn.ziparchive")

constexpr uLong kEncryptedFlag = 1U << 0;
constexpr uLong kPatchFlag = 1U << 5;
constexpr uLong kStrongEncryptionFlag = 1U << 6;
constexpr uLong kUtf8Flag = 1U << 11;
constexpr uLong kMaskedDirectoryFlag = 1U << 13;
// In place of a size that is in a zip64 field.
constexpr ZPOS64_T kUnknownSize = 0xFFFFFFFF;
// An entry's header in the directory, before its name, extra field and comment.
constexpr ZPOS64_T kDirectoryHeaderSize = 46;

ArchiveReader::Opened refuse(ArchiveReader::Opened result, const QByteArray &name,
                             const char *reason)
{
    qCWarning(logArchive) << "Entry" << name << "rejected:" << reason;
    return result;
}

} // namespace

std::unique_ptr<ArchiveReader> ArchiveReader::open(const QString &path, int &error)
{
    auto file = ArchiveFile::open(path, error);
    if (!file)
        return nullptr;
    zlib_filefunc64_def functions = file->minizipFunctions();
    Handle handle(unzOpen2_64(nullptr, &functions));
    error = file->error();
    if (!handle)
        return nullptr;
    return std::unique_ptr<ArchiveReader>(new ArchiveReader(std::move(file), std::move(handle)));
}

ArchiveReader::ArchiveReader(std::unique_ptr<ArchiveFile> file, Handle handle)
    : m_file(std::move(file)), m_handle(std::move(handle))
{
}

quint64 ArchiveReader::entryCount() const
{
    unz_global_info64 info = {};
    unzGetGlobalInfo64(m_handle.get(), &info);
    return info.number_entry;
}

int ArchiveReader::goToFirstEntry(quint64 maxEntries)
{
    if (entryCount() > maxEntries || (m_dataEnds.empty() && !survey())) {
        qCWarning(logArchive,
                  "Archive rejected: its directory does not hold %llu entries, or too many",
                  entryCount());
        m_dataEnds.clear();
    }
    m_index = 0;
    return unzGoToFirstFile(m_handle.get());
}

// The checks that need all entries, while minizip sees one at a time. False when the directory
// holds fewer or more entries than its end record says.
bool ArchiveReader::survey()
{
    unzFile handle = m_handle.get();
    unz_file_info64 info = {};
    std::vector<quint64> starts;
    m_totalSize = 0;
    int result = unzGoToFirstFile(handle);
    for (; result == UNZ_OK; result = unzGoToNextFile(handle)) {
        unzGetCurrentFileInfo64(handle, &info, nullptr, 0, nullptr, 0, nullptr, 0);
        if (info.uncompressed_size < kUnknownSize)
            m_totalSize += info.uncompressed_size;
        int method = 0;
        unzOpenCurrentFile2(handle, &method, nullptr, 1);
        starts.push_back(unzGetCurrentFileZStreamPos64(handle)); // 0 when it cannot be opened
        unzCloseCurrentFile(handle);
    }
    const ZPOS64_T behindLast = unzGetOffset64(handle) + kDirectoryHeaderSize + info.size_filename +
                                info.size_file_extra + info.size_file_comment;
    if (result != UNZ_END_OF_LIST_OF_FILE || unzSetOffset64(handle, behindLast) == UNZ_OK)
        return false;

    // Data end where the next entry's begin. Entries with the same data get no room at all.
    std::vector<quint64> sorted = starts;
    std::sort(sorted.begin(), sorted.end());
    sorted.push_back(std::numeric_limits<quint64>::max());
    for (const quint64 start : starts) {
        const auto [first, next] = std::equal_range(sorted.begin(), sorted.end(), start);
        m_dataEnds.push_back(next - first > 1 ? start : *next);
    }
    return true;
}

int ArchiveReader::goToNextEntry()
{
    ++m_index;
    return unzGoToNextFile(m_handle.get());
}

bool ArchiveReader::isEncrypted() const
{
    return (m_info.flag & kEncryptedFlag) != 0;
}

ArchiveReader::Opened ArchiveReader::openEntry()
{
    closeEntry();
    if (const Opened result = examineEntry(); result != Opened::Yes)
        return result;

    int method = 0;
    const int result = isEncrypted() ? unzOpenCurrentFile2(m_handle.get(), &method, nullptr, 1)
                                     : unzOpenCurrentFile(m_handle.get());
    if (result != UNZ_OK)
        return refuse(Opened::No, m_entry.name, "damaged header");
    if (unzGetCurrentFileZStreamPos64(m_handle.get()) + m_info.compressed_size >
        m_dataEnds[m_index]) {
        closeEntry();
        return refuse(Opened::No, m_entry.name, "its data overlap another entry's");
    }
    m_sizeRead = 0;
    return Opened::Yes;
}

ArchiveReader::Opened ArchiveReader::examineEntry()
{
    m_entry = {};
    if (unzGetCurrentFileInfo64(m_handle.get(), &m_info, m_nameBuffer.data(), m_nameBuffer.size(),
                                nullptr, 0, nullptr, 0) != UNZ_OK)
        return Opened::No;
    m_entry = {.name =
                   QByteArray(m_nameBuffer.data(), static_cast<qsizetype>(m_info.size_filename)),
               .isUtf8 = (m_info.flag & kUtf8Flag) != 0,
               .size = m_info.uncompressed_size,
               .date = m_info.tmu_date};

    if (m_index >= m_dataEnds.size())
        return Opened::BadInformation;
    if (m_entry.name.contains('\0'))
        return refuse(Opened::BadInformation, m_entry.name, "NUL in its name");
    if (m_info.compressed_size >= kUnknownSize || m_info.uncompressed_size >= kUnknownSize)
        return refuse(Opened::BadInformation, m_entry.name, "zip64 size");
    const quint64 header = isEncrypted() ? TraditionalCipher::kHeaderSize : 0;
    if (m_info.compression_method == 0 &&
        m_info.compressed_size != m_info.uncompressed_size + header)
        return refuse(Opened::BadInformation, m_entry.name, "its sizes do not match");
    if (m_info.compression_method != 0 && m_info.compression_method != Z_DEFLATED)
        return refuse(Opened::No, m_entry.name, "unsupported compression method");
    if ((m_info.flag & kMaskedDirectoryFlag) != 0)
        return refuse(Opened::No, m_entry.name, "encrypted directory");
    return Opened::Yes;
}

bool ArchiveReader::unlock(const std::optional<QByteArray> &password)
{
    if ((m_info.flag & (kPatchFlag | kStrongEncryptionFlag)) != 0) {
        refuse(Opened::No, m_entry.name, "unsupported encryption or patch data");
        return false;
    }
    if (!isEncrypted())
        return true;
    if (password)
        m_encrypted = EncryptedEntry::open(m_handle.get(), m_info, *password);
    if (!m_encrypted)
        refuse(Opened::No, m_entry.name, "password missing or wrong, or data damaged");
    return m_encrypted != nullptr;
}

int ArchiveReader::readEntry(std::span<char> target)
{
    const int count = m_encrypted ? m_encrypted->read(target)
                                  : unzReadCurrentFile(m_handle.get(), target.data(),
                                                       static_cast<unsigned>(target.size()));
    if (count > 0)
        m_sizeRead += static_cast<quint64>(count);
    if (count == 0 && m_sizeRead < m_entry.size)
        return UNZ_BADZIPFILE;
    return count;
}

int ArchiveReader::closeEntry()
{
    const auto encrypted = std::move(m_encrypted);
    const int result = unzCloseCurrentFile(m_handle.get());
    return encrypted && !encrypted->isIntact() ? UNZ_CRCERROR : result;
}

bool ArchiveReader::close()
{
    closeEntry();
    return unzClose(m_handle.release()) == UNZ_OK;
}

} // namespace vorn
