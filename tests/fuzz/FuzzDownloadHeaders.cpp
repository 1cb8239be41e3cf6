// libFuzzer target: what the package download makes of a server's headers. The input is three
// lines: Content-Disposition, Content-Length, and the path of the address.

#include "firmware/ResponseHeaders.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstdlib>

namespace {

void require(bool condition)
{
    if (!condition)
        std::abort();
}

void requireFolderName(const QString &folder)
{
    require(!folder.contains(u'.') && !folder.contains(u'/') && !folder.trimmed().isEmpty());
    require(std::none_of(folder.begin(), folder.end(), [](QChar c) { return c.unicode() < 0x20; }));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    QList<QByteArray> lines =
        QByteArray(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size)).split('\n');
    lines.resize(3);

    vorn::UrlResponse response;
    response.contentDisposition = lines[0];
    response.url.setScheme(QStringLiteral("https"));
    response.url.setHost(QStringLiteral("host"));
    response.url.setPath(u'/' + QString::fromUtf8(lines[2]), QUrl::TolerantMode);

    const QString filename = vorn::suggestedFilename(response);
    require(!filename.contains(u'/') && !filename.contains(u'\\'));
    const QString folder = vorn::folderNameFor(filename);
    if (!folder.isEmpty()) {
        require(filename.startsWith(folder));
        requireFolderName(folder);
    }

    require(vorn::expectedLength(lines[1]) >= 0);
    return 0;
}
