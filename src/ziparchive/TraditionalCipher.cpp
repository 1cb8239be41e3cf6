#include "ziparchive/TraditionalCipher.h"

#include <zlib.h>

namespace vorn {

namespace {

// One step of the CRC-32 register. zlib's crc32() inverts it before and after, which the cipher
// does not.
std::uint32_t crcStep(std::uint32_t crc, std::uint32_t byte)
{
    static const z_crc_t *const table = get_crc_table();
    return table[(crc ^ byte) & 0xFF] ^ (crc >> 8);
}

} // namespace

TraditionalCipher::TraditionalCipher(QByteArrayView password)
{
    for (const char byte : password)
        update(static_cast<std::uint8_t>(byte));
}

std::uint8_t TraditionalCipher::nextByte() const
{
    const std::uint32_t value = (m_keys[2] & 0xFFFF) | 2;
    return static_cast<std::uint8_t>((value * (value ^ 1)) >> 8);
}

void TraditionalCipher::update(std::uint8_t plain)
{
    m_keys[0] = crcStep(m_keys[0], plain);
    m_keys[1] = (m_keys[1] + (m_keys[0] & 0xFF)) * 134775813U + 1;
    m_keys[2] = crcStep(m_keys[2], m_keys[1] >> 24);
}

void TraditionalCipher::decrypt(std::span<char> bytes)
{
    for (char &byte : bytes) {
        const auto plain = static_cast<std::uint8_t>(static_cast<std::uint8_t>(byte) ^ nextByte());
        update(plain);
        byte = static_cast<char>(plain);
    }
}

void TraditionalCipher::encrypt(std::span<char> bytes)
{
    for (char &byte : bytes) {
        const auto plain = static_cast<std::uint8_t>(byte);
        byte = static_cast<char>(plain ^ nextByte());
        update(plain);
    }
}

} // namespace vorn
