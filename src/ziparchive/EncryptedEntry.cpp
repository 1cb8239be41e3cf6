#include "ziparchive/EncryptedEntry.h"

#include <algorithm>

namespace vorn {

namespace {

constexpr uLong kSizesFollowData = 1U << 3;

Bytef *zlibBytes(char *bytes)
{
    return reinterpret_cast<Bytef *>(bytes);
}

} // namespace

std::unique_ptr<EncryptedEntry> EncryptedEntry::open(unzFile handle, const unz_file_info64 &info,
                                                     QByteArrayView password)
{
    if (info.compressed_size < TraditionalCipher::kHeaderSize)
        return nullptr;
    std::unique_ptr<EncryptedEntry> entry(new EncryptedEntry(handle, info, password));
    if (entry->m_isDeflated && inflateInit2(&entry->m_stream, -MAX_WBITS) != Z_OK) {
        entry->m_isDeflated = false;
        return nullptr;
    }
    std::array<char, TraditionalCipher::kHeaderSize> header = {};
    if (entry->readDecrypted(header) != static_cast<int>(header.size()))
        return nullptr;
    // The last header byte is a check byte: of the CRC, or of the time when the CRC follows the
    // data.
    const uLong check =
        (info.flag & kSizesFollowData) != 0 ? (info.dosDate >> 8) & 0xFF : (info.crc >> 24) & 0xFF;
    return static_cast<std::uint8_t>(header.back()) == check ? std::move(entry) : nullptr;
}

EncryptedEntry::EncryptedEntry(unzFile handle, const unz_file_info64 &info, QByteArrayView password)
    : m_handle(handle), m_cipher(password), m_packedLeft(info.compressed_size),
      m_sizeLeft(info.uncompressed_size), m_expectedCrc(info.crc),
      m_isDeflated(info.compression_method == Z_DEFLATED)
{
}

EncryptedEntry::~EncryptedEntry()
{
    if (m_isDeflated)
        inflateEnd(&m_stream);
}

int EncryptedEntry::read(std::span<char> target)
{
    target = target.first(static_cast<std::size_t>(std::min<quint64>(target.size(), m_sizeLeft)));
    if (target.empty())
        return 0;
    const int count = m_isDeflated ? readDeflated(target) : readDecrypted(target);
    if (count > 0) {
        m_crc = crc32(m_crc, zlibBytes(target.data()), static_cast<uInt>(count));
        m_sizeLeft -= static_cast<quint64>(count);
    }
    return count;
}

int EncryptedEntry::readDecrypted(std::span<char> target)
{
    const auto wanted = static_cast<unsigned>(std::min<quint64>(target.size(), m_packedLeft));
    const int count = unzReadCurrentFile(m_handle, target.data(), wanted);
    if (count > 0) {
        m_cipher.decrypt(target.first(static_cast<std::size_t>(count)));
        m_packedLeft -= static_cast<quint64>(count);
    }
    return count;
}

int EncryptedEntry::readDeflated(std::span<char> target)
{
    m_stream.next_out = zlibBytes(target.data());
    m_stream.avail_out = static_cast<uInt>(target.size());
    while (m_stream.avail_out > 0) {
        if (m_stream.avail_in == 0 && m_packedLeft > 0) {
            const int count = readDecrypted(m_packed);
            if (count <= 0)
                return count < 0 ? count : UNZ_ERRNO;
            m_stream.next_in = zlibBytes(m_packed.data());
            m_stream.avail_in = static_cast<uInt>(count);
        }
        const int result = inflate(&m_stream, Z_SYNC_FLUSH);
        if (result == Z_STREAM_END)
            break;
        if (result != Z_OK)
            return result < 0 ? result : Z_DATA_ERROR;
    }
    return static_cast<int>(target.size() - m_stream.avail_out);
}

} // namespace vorn
