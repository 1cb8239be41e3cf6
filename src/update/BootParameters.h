#pragma once

#include <QtGlobal>

#include <chrono>
#include <cstddef>

namespace vorn {

// What is true of one family of devices and not of the protocol that their boot loaders speak. A
// further family is one more constant like kVornBoot.
struct BootParameters
{
    // Bits per second on the line; 8 data bits, no parity, 1 stop bit.
    quint32 baudRate;
    // The flash address that the image is loaded to, sent in the download header.
    quint32 loadAddress;
    // Image bytes in a data frame: 1 to 253, since a frame's count byte covers itself too.
    qsizetype imageBytesPerFrame;
    // The byte of the answer to the connect command that holds the version, which is the model
    // code.
    std::size_t versionByte;
    // Devices of this model code and above erase their flash after the header and say when it is
    // done.
    qint32 firstErasingModel;

    // RTS high, which holds the device in reset; then from RTS low to the first byte, for the boot
    // loader to start.
    std::chrono::milliseconds resetPulse;
    std::chrono::milliseconds bootLoaderStart;
    // How long an ordinary answer may take, and one for which the device may be erasing: from the
    // header until the first data frame is released.
    std::chrono::milliseconds answerLimit;
    std::chrono::milliseconds eraseLimit;
    // How far the rest of a connect answer may lag behind its first bytes when the line cuts it.
    std::chrono::milliseconds answerGap;
};

inline constexpr BootParameters kVornBoot{
    .baudRate = 2'000'000,
    .loadAddress = 0x08001800,
    .imageBytesPerFrame = 250,
    .versionByte = 3,
    .firstErasingModel = 2,
    .resetPulse = std::chrono::milliseconds(10),
    .bootLoaderStart = std::chrono::milliseconds(10),
    .answerLimit = std::chrono::seconds(5),
    .eraseLimit = std::chrono::seconds(30),
    .answerGap = std::chrono::milliseconds(20),
};

} // namespace vorn
