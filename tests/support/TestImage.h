#pragma once

#include <QByteArray>

namespace vorn {

// An image of which no two frames are alike.
inline QByteArray imageOf(qsizetype length)
{
    QByteArray image(length, Qt::Uninitialized);
    for (qsizetype i = 0; i < length; ++i)
        image[i] = static_cast<char>(i * 7 + i / 251);
    return image;
}

} // namespace vorn
