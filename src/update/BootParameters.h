#pragma once

#include <QtGlobal>

#include <array>
#include <chrono>
#include <cstddef>
#include <span>

namespace vorn {

// How a family of models receives its image.
struct DeviceFamily
{
    // The family covers the model codes from this one up to the next family's first.
    qint32 firstModel;
    // The flash address of the image, sent in the download header.
    quint32 loadAddress;
    // Image bytes per data frame: 1 to 254, since a frame's count byte includes itself.
    qsizetype imageBytesPerFrame;
};

// In ascending order of first model. To support another family, add a row.
inline constexpr std::array kDeviceFamilies{
    DeviceFamily{.firstModel = 0, .loadAddress = 0x08001800, .imageBytesPerFrame = 250},
};

// The parameters of an exchange that the protocol leaves open.
struct BootParameters
{
    // Bits per second on the line; 8 data bits, no parity, 1 stop bit.
    quint32 baudRate;
    // One is selected by the model code that the device reports.
    std::span<const DeviceFamily> families;
    // Index of the byte in the answer to the connect command that holds the version, which is the
    // model code.
    std::size_t versionByte;
    // Devices with this model code and above erase their flash after the header and acknowledge the
    // end of the erase.
    qint32 firstErasingModel;

    // How long RTS is high, which holds the device in reset, and how long the boot loader then gets
    // to start before the first byte is sent.
    std::chrono::milliseconds resetPulse;
    std::chrono::milliseconds bootLoaderStart;
    // How long the device may take to answer: normally, and while it may be erasing (from the
    // header until the first data frame is released).
    std::chrono::milliseconds answerLimit;
    std::chrono::milliseconds eraseLimit;
    // How late the rest of the connect answer may arrive after its first bytes when the line splits
    // it.
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
