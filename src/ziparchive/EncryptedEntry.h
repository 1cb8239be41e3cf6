#pragma once

#include "ziparchive/TraditionalCipher.h"

#include <QByteArrayView>

#include <minizip/unzip.h>
#include <zlib.h>

#include <memory>
#include <span>

namespace vorn {

// Reads one encrypted entry: takes the raw bytes from minizip, decrypts and inflates them, and
// computes their CRC, as minizip does for plain entries.
class EncryptedEntry
{
public:
    // Null when the entry is too short or the password wrong (its check byte misses one wrong
    // password in 256). `handle` has the entry open in raw mode and outlives this object.
    static std::unique_ptr<EncryptedEntry> open(unzFile handle, const unz_file_info64 &info,
                                                QByteArrayView password);
    EncryptedEntry(const EncryptedEntry &) = delete;
    EncryptedEntry &operator=(const EncryptedEntry &) = delete;
    ~EncryptedEntry();

    // The number of bytes read, 0 at the end, or a negative minizip or zlib code.
    int read(std::span<char> target);
    // False when all of it was read and its CRC is wrong.
    bool isIntact() const { return m_sizeLeft > 0 || m_crc == m_expectedCrc; }

private:
    EncryptedEntry(unzFile handle, const unz_file_info64 &info, QByteArrayView password);
    int readDecrypted(std::span<char> target);
    int readDeflated(std::span<char> target);

    unzFile m_handle;
    TraditionalCipher m_cipher;
    quint64 m_packedLeft;
    quint64 m_sizeLeft;
    uLong m_expectedCrc;
    uLong m_crc = crc32(0, nullptr, 0);
    bool m_isDeflated;
    z_stream m_stream = {};
    std::array<char, 4096> m_packed = {};
};

} // namespace vorn
