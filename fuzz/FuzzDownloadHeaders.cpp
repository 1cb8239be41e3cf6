// What the download makes of a server's headers and of the server's own name. The input is four
// lines: Content-Disposition, Content-Length, the path of the address, the host.

#include "firmware/PackageLocation.h"
#include "firmware/ResponseHeaders.h"
#include "fuzz/Fuzzing.h"

using vorn::require;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    QList<QByteArray> lines = vorn::FuzzInput(data, size).rest().toByteArray().split('\n');
    lines.resize(4);

    vorn::UrlResponse response;
    response.contentDisposition = lines[0];
    response.url = QUrl(QStringLiteral("https://host"));
    response.url.setPath(u'/' + QString::fromUtf8(lines[2]), QUrl::TolerantMode);
    const QString filename = vorn::suggestedFilename(response);
    require(!filename.contains(u'/') && !filename.contains(u'\\'));
    const QString folder = vorn::folderNameFor(filename);
    if (!folder.isEmpty()) {
        require(filename.startsWith(folder) && !folder.contains(u'.'));
        require(!folder.trimmed().isEmpty());
        for (const QChar c : filename)
            require(c.unicode() >= 0x20 && c.unicode() != 0x7F);
    }

    const qint64 length = vorn::expectedLength(lines[1]);
    require(length >= 0 && (length == 0 || lines[1].contains(QByteArray::number(length))));

    if (const auto location = vorn::PackageLocation::onHost(QString::fromUtf8(lines[3]))) {
        const QUrl url = location->url();
        require(url.scheme() == u"https" && !url.host().isEmpty() && url.userInfo().isEmpty());
        require(url.path() == u"/software/VornUpdate2.zip" && !url.hasQuery());
    }
    return 0;
}
