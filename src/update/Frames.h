#pragma once

#include <QByteArray>
#include <QByteArrayView>

namespace vorn {

// The frames of the boot loader protocol; docs/protocol.md shows an exchange.
//
// A frame is a count byte N (the number of bytes that the checksum covers, the count included), the
// body of N - 1 bytes, and the XOR of those N bytes. Numbers in a body are big-endian.

// Sent on its own, unframed, right after the reset pulse on RTS.
inline constexpr quint8 SyncByte = 0xF4;
// First byte of an answer: the device is ready or has accepted the last frame.
inline constexpr quint8 AckByte = 0xAF;
// First byte of an answer: the device has refused.
inline constexpr quint8 NakByte = 0xFC;

// XOR of the first `len` bytes; 0 if there are none.
quint8 dataChecksumappendLen(QByteArrayView data, qsizetype len);

QByteArray CmdConnect();
QByteArray CmdQueryVersion();
QByteArray CmdDownload();
// Announces an image of `imageLength` bytes for that flash address.
QByteArray DownloadHeader(quint32 loadAddress, quint32 imageLength);
// A full data frame with the family's number of image bytes, at most 254.
QByteArray DataFrame(QByteArrayView imageBytes);
// The rest of the image after the full data frames; possibly empty.
QByteArray LastDataFrame(QByteArrayView imageBytes);

} // namespace vorn
