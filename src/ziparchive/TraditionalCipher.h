#pragma once

#include <QByteArrayView>

#include <array>
#include <cstdint>
#include <span>

namespace vorn {

// The traditional cipher of zip archives (APPNOTE.TXT 6.1), which every zip tool supports. It keeps
// nothing from a determined reader; it is here because archives use it, and because Debian builds
// minizip without it: there, opening an entry with a password fails (UNZ_PARAMERROR), and adding
// one with a password succeeds, but flags the entry as encrypted and writes it in plain text.
//
// One object processes one entry in order, from its 12-byte header to its end.
class TraditionalCipher
{
public:
    // Length of the encryption header before an entry's data.
    static constexpr std::size_t kHeaderSize = 12;

    explicit TraditionalCipher(QByteArrayView password);

    void decrypt(std::span<char> bytes);
    void encrypt(std::span<char> bytes);

private:
    std::uint8_t nextByte() const;
    void update(std::uint8_t plain);

    std::array<std::uint32_t, 3> m_keys = {0x12345678, 0x23456789, 0x34567890};
};

} // namespace vorn
