#pragma once

#include <QByteArrayView>

#include <array>
#include <cstdint>
#include <span>

namespace vorn {

// The traditional cipher of zip archives (APPNOTE.TXT 6.1), which every zip tool knows. It is weak
// by today's measure and protects nothing against a determined reader; it is here because archives
// use it. One object takes one entry, from its 12-byte header to its end, in order.
class TraditionalCipher
{
public:
    // The encrypted bytes that stand before an entry's data.
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
