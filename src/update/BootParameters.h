#pragma once

#include <QtGlobal>

#include <array>
#include <chrono>
#include <cstddef>
#include <span>

namespace vorn {

// How the models of a family take their image.
struct DeviceFamily
{
    // The family is the models of this code and above, up to the next family's first.
    qint32 firstModel;
    // The flash address that the image is loaded to, sent in the download header.
    quint32 loadAddress;
    // Image bytes in a data frame: 1 to 254, since a frame's count byte counts itself too.
    qsizetype imageBytesPerFrame;
};

// By first model, ascending. A further family is one more row.
inline constexpr std::array kDeviceFamilies{
    DeviceFamily{.firstModel = 0, .loadAddress = 0x08001800, .imageBytesPerFrame = 250},
};

// The numbers of an exchange with a boot loader that the protocol leaves open.
struct BootParameters
{
    // Bits per second on the line; 8 data bits, no parity, 1 stop bit.
    quint32 baudRate;
    // One of them is chosen when the device has told its model code.
    std::span<const DeviceFamily> families;
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

    constexpr const DeviceFamily &familyOf(qint32 modelCode) const
    {
        const DeviceFamily *found = &families.front();
        for (const DeviceFamily &family : families)
            if (family.firstModel <= modelCode)
                found = &family;
        return *found;
    }
};

inline constexpr BootParameters kVornBoot{
    .baudRate = 2'000'000,
    .families = kDeviceFamilies,
    .versionByte = 3,
    .firstErasingModel = 2,
    .resetPulse = std::chrono::milliseconds(10),
    .bootLoaderStart = std::chrono::milliseconds(10),
    .answerLimit = std::chrono::seconds(5),
    .eraseLimit = std::chrono::seconds(30),
    .answerGap = std::chrono::milliseconds(20),
};

} // namespace vorn
