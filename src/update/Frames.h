#pragma once

#include <QByteArray>
#include <QByteArrayView>

namespace vorn {

// The frames of the boot loader's protocol; docs/protocol.md shows an exchange.
//
// A frame is a count byte N (the number of bytes that the checksum covers, the count included), the
// body of N - 1 bytes, and the XOR of those N bytes. Numbers in a body are big-endian.

// Sent alone and unframed, right after the pulse on RTS that resets the device.
inline constexpr quint8 SyncByte = 0xF4;
// The device is ready, or has accepted the last frame. First byte of an answer.
inline constexpr quint8 AckByte = 0xAF;
// The device has refused. First byte of an answer.
inline constexpr quint8 NakByte = 0xFC;

// The number of image bytes in a data frame.
inline constexpr qsizetype kDataFrameBytes = 250;
// Where the device's boot loader puts the image in its flash.
inline constexpr quint32 kLoadAddress = 0x08001800;

// The XOR of the first `len` bytes, 0 for none.
quint8 dataChecksumappendLen(QByteArrayView data, qsizetype len);

QByteArray CmdConnect();
QByteArray CmdQueryVersion();
QByteArray CmdDownload();
// Announces an image of that many bytes.
QByteArray DownloadHeader(quint32 imageLength);
// Exactly kDataFrameBytes bytes of the image.
QByteArray DataFrame(QByteArrayView imageBytes);
// What is left of the image behind the data frames: 0 to kDataFrameBytes - 1 bytes.
QByteArray LastDataFrame(QByteArrayView imageBytes);

} // namespace vorn
