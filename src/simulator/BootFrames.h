#pragma once

#include <cstdint>

// The boot loader's bytes, from the device's side. The simulator keeps its own copy: a mistake in
// the updater's must not be mirrored here.
namespace vorn::boot {

inline constexpr std::uint8_t Sync = 0xF4;
inline constexpr std::uint8_t Ack = 0xAF;
inline constexpr std::uint8_t Nak = 0xFC;

// A frame: a count byte (itself included), the body, the XOR of the bytes before.
inline constexpr int MaxFrameLength = 256;
inline constexpr int ImageBytesPerFrame = 250;

inline constexpr std::uint8_t CommandCount = 3; // count, code, complement of the code
inline constexpr std::uint8_t HeaderCount = 9;  // count, load address, image length
inline constexpr std::uint32_t LoadAddress = 0x08001800;

// From this model code on, the device erases its flash after the header and acknowledges twice.
inline constexpr int FirstErasingModel = 2;

} // namespace vorn::boot
