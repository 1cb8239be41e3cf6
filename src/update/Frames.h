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

// The XOR of the first `len` bytes, 0 for none.
quint8 dataChecksumappendLen(QByteArrayView data, qsizetype len);

QByteArray CmdConnect();
QByteArray CmdQueryVersion();
QByteArray CmdDownload();
// Announces an image of that many bytes for that address in the device's flash.
QByteArray DownloadHeader(quint32 loadAddress, quint32 imageLength);
// As many bytes of the image as every data frame of the family carries, at most 254.
QByteArray DataFrame(QByteArrayView imageBytes);
// What is left of the image behind the data frames, possibly nothing.
QByteArray LastDataFrame(QByteArrayView imageBytes);

} // namespace vorn
