#include "update/Frames.h"

#include <QtEndian>

namespace vorn {
namespace {

QByteArray framed(QByteArrayView body)
{
    QByteArray frame;
    frame.reserve(body.size() + 2);
    frame.append(static_cast<char>(body.size() + 1));
    frame.append(body);
    frame.append(static_cast<char>(dataChecksumappendLen(frame, frame.size())));
    return frame;
}

QByteArray command(quint8 code)
{
    const char body[] = {static_cast<char>(code), static_cast<char>(0xFF - code)};
    return framed(QByteArrayView(body, sizeof body));
}

} // namespace

quint8 dataChecksumappendLen(QByteArrayView data, qsizetype len)
{
    quint8 checksum = 0;
    for (const char byte : data.first(len))
        checksum ^= static_cast<quint8>(byte);
    return checksum;
}

QByteArray CmdConnect()
{
    return command(0x01);
}

QByteArray CmdQueryVersion()
{
    return command(0x02);
}

QByteArray CmdDownload()
{
    return command(0x03);
}

QByteArray DownloadHeader(quint32 loadAddress, quint32 imageLength)
{
    char body[8];
    qToBigEndian(loadAddress, body);
    qToBigEndian(imageLength, body + 4);
    return framed(QByteArrayView(body, sizeof body));
}

QByteArray DataFrame(QByteArrayView imageBytes)
{
    return framed(imageBytes);
}

QByteArray LastDataFrame(QByteArrayView imageBytes)
{
    return framed(imageBytes);
}

} // namespace vorn
