#include "ziparchive/ArchiveReader.h"

#include "ziparchive/ZipArchiveLog.h"

namespace vorn {

namespace {

constexpr uLong kEncryptedFlag = 1U << 0;
constexpr uLong kPatchFlag = 1U << 5;
constexpr uLong kStrongEncryptionFlag = 1U << 6;
constexpr uLong kUtf8Flag = 1U << 11;
constexpr uLong kMaskedDirectoryFlag = 1U << 13;
// Stands for a size that a zip64 field would tell.
constexpr ZPOS64_T kUnknownSize = 0xFFFFFFFF;

ArchiveReader::Opened refuse(ArchiveReader::Opened result, const QByteArray &name,
                             const char *reason)
{
    qCWarning(zipArchiveLog, "Entry \"%s\": %s", name.toPercentEncoding("/ ").constData(), reason);
    return result;
}

} // namespace

std::unique_ptr<ArchiveReader> ArchiveReader::open(const QString &path)
{
    auto file = ArchiveFile::open(path);
    if (!file)
        return nullptr;
    zlib_filefunc64_def functions = file->minizipFunctions();
    Handle handle(unzOpen2_64(nullptr, &functions));
    if (!handle)
        return nullptr;
    return std::unique_ptr<ArchiveReader>(new ArchiveReader(std::move(file), std::move(handle)));
}

ArchiveReader::ArchiveReader(std::unique_ptr<ArchiveFile> file, Handle handle)
    : m_file(std::move(file)), m_handle(std::move(handle))
{
}

std::optional<quint64> ArchiveReader::entryCount() const
{
    unz_global_info64 info = {};
    if (unzGetGlobalInfo64(m_handle.get(), &info) != UNZ_OK)
        return std::nullopt;
    return info.number_entry;
}

int ArchiveReader::goToFirstEntry(quint64 maxEntries)
{
    QString reason;
    m_directory = CentralDirectory::read(*m_file, maxEntries, reason);
    if (!m_directory)
        qCWarning(zipArchiveLog, "Archive refused: %ls", qUtf16Printable(reason));
    m_index = 0;
    return unzGoToFirstFile(m_handle.get());
}

int ArchiveReader::goToNextEntry()
{
    ++m_index;
    return unzGoToNextFile(m_handle.get());
}

ArchiveReader::Opened ArchiveReader::openEntry(const std::optional<QByteArray> &password)
{
    closeEntry();
    unz_file_info64 info = {};
    if (const Opened result = examineEntry(password, info); result != Opened::Yes)
        return result;

    const bool isEncrypted = (info.flag & kEncryptedFlag) != 0;
    int method = 0;
    const int result = isEncrypted ? unzOpenCurrentFile2(m_handle.get(), &method, nullptr, 1)
                                   : unzOpenCurrentFile(m_handle.get());
    if (result != UNZ_OK)
        return refuse(Opened::No, m_entry.name, "its header is damaged");
    if (!isWithinBounds(info)) {
        closeEntry();
        return refuse(Opened::No, m_entry.name, "its data overlap another entry's");
    }
    if (isEncrypted) {
        m_encrypted = EncryptedEntry::open(m_handle.get(), info, *password);
        if (!m_encrypted) {
            closeEntry();
            return refuse(Opened::No, m_entry.name, "the password is wrong, or its data damaged");
        }
    }
    m_sizeRead = 0;
    return Opened::Yes;
}

ArchiveReader::Opened ArchiveReader::examineEntry(const std::optional<QByteArray> &password,
                                                  unz_file_info64 &info)
{
    if (unzGetCurrentFileInfo64(m_handle.get(), &info, m_nameBuffer.data(), m_nameBuffer.size(),
                                nullptr, 0, nullptr, 0) != UNZ_OK)
        return Opened::No;
    m_entry = {.name = QByteArray(m_nameBuffer.data(), static_cast<qsizetype>(info.size_filename)),
               .isUtf8 = (info.flag & kUtf8Flag) != 0,
               .size = info.uncompressed_size,
               .date = info.tmu_date};

    if (!m_directory || m_index >= m_directory->count() ||
        m_directory->size(m_index) != info.uncompressed_size)
        return Opened::BadInformation;
    if (m_entry.name.contains('\0'))
        return refuse(Opened::BadInformation, m_entry.name, "its name holds a NUL");
    if (info.compressed_size >= kUnknownSize || info.uncompressed_size >= kUnknownSize)
        return refuse(Opened::BadInformation, m_entry.name, "its size needs zip64");
    if (info.compression_method != 0 && info.compression_method != Z_DEFLATED)
        return refuse(Opened::No, m_entry.name, "unknown compression method");
    if ((info.flag & (kPatchFlag | kStrongEncryptionFlag | kMaskedDirectoryFlag)) != 0)
        return refuse(Opened::No, m_entry.name, "unknown kind of encryption or patch");
    const bool isEncrypted = (info.flag & kEncryptedFlag) != 0;
    if (isEncrypted && !password)
        return refuse(Opened::No, m_entry.name, "it is encrypted");
    const quint64 header = isEncrypted ? TraditionalCipher::kHeaderSize : 0;
    if (info.compression_method == 0 && info.compressed_size != info.uncompressed_size + header)
        return refuse(Opened::BadInformation, m_entry.name, "its two sizes disagree");
    return Opened::Yes;
}

bool ArchiveReader::isWithinBounds(const unz_file_info64 &info) const
{
    return unzGetCurrentFileZStreamPos64(m_handle.get()) + info.compressed_size <=
           m_directory->dataEnd(m_index);
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
