#include "firmware/ResponseHeaders.h"

#include "firmware/PackageLocation.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>

using namespace vorn;

namespace {

TEST(ResponseHeadersTest, OnlyAPlainNumberIsAnExpectedLength)
{
    EXPECT_EQ(expectedLength("1234"), 1234);
    EXPECT_EQ(expectedLength(" 77\t"), 77);
    EXPECT_EQ(expectedLength("9223372036854775807"), 9223372036854775807);
    for (const QByteArray &header : QByteArray("|9223372036854775808|-5|+5|12 bytes").split('|'))
        EXPECT_EQ(expectedLength(header), 0) << header.constData();
}

TEST(ResponseHeadersTest, ASuggestedNameIsReducedToAFileName)
{
    struct Case
    {
        QByteArray disposition;
        QByteArray url;
        QString filename;
        QString folder; // empty: refused
    };
    const QByteArray url = "https://host/software/VornUpdate2.zip";
    const Case cases[] = {
        {{}, url, "VornUpdate2.zip", "VornUpdate2"},
        {{}, "https://host/a/b.c.zip?x=/y.zip#z", "b.c.zip", "b"},
        {{}, "https://host", "", ""},
        {"attachment;FileName = other.zip ;size=3", url, "other.zip", "other"},
        {"attachment; filename=\"a b; c.zip\"; x=y", url, "a b; c.zip", "a b; c"},
        {R"(attachment; filename="q\"uote.zip")", url, "q\"uote.zip", "q\"uote"},
        {"attachment; filename=\"open.zip", url, "open.zip", "open"},
        {"attachment; filename=first.zip; filename=second.zip", url, "first.zip", "first"},
        {"attachment; filename=x.zip; filename*=UTF-8'de'f%C3%BCr.zip", url, "für.zip", "für"},
        {"attachment; filename*=iso-8859-1''f%FCr.zip; filename=x.zip", url, "für.zip", "für"},
        {"attachment; filename*=UTF-8''%FF.zip; filename=x.zip", url, "x.zip", "x"},
        {"attachment; filename*=a.zip", url, "VornUpdate2.zip", "VornUpdate2"},
        {"attachment; filename=\"f\xc3\xbcr.zip\"", url, "für.zip", "für"},
        {"attachment; filename=\"f\xfcr.zip\"", url, "für.zip", "für"},
        {R"(attachment; filename="C:\\dir\\x.zip")", url, "x.zip", "x"},
        {"attachment; filename*=UTF-8''..%2F..%2Fx.zip", url, "x.zip", "x"},
        {"attachment; filename=\"dir/\"", url, "", ""},
        {"attachment; filename=\"  .zip\"", url, "  .zip", ""},
        {"attachment; filename*=UTF-8''a%00b.zip", url,
         QString::fromLatin1(QByteArrayView("a\0b.zip", 7)), ""},
        {"attachment; filename*=UTF-8''a.%0Azip", url, "a.\nzip", ""},
        {"attachment; filename=VornUpdate2", url, "VornUpdate2", ""},
    };
    for (const Case &c : cases) {
        UrlResponse response;
        response.url = QUrl(QString::fromLatin1(c.url));
        response.contentDisposition = c.disposition;
        const QString filename = suggestedFilename(response);
        EXPECT_EQ(filename, c.filename) << c.disposition.constData() << " " << c.url.constData();
        EXPECT_EQ(folderNameFor(filename), c.folder) << c.disposition.constData();
    }
}

TEST(PackageLocationTest, AHostIsANameOrAddressWithAnOptionalPort)
{
    for (const char *host : {"packages.example", "127.0.0.1:8443", "[::1]:443"}) {
        const auto location = PackageLocation::onHost(host);
        ASSERT_TRUE(location.has_value()) << host;
        EXPECT_EQ(location->url().toString(QUrl::FullyEncoded),
                  QString("https://%1/software/VornUpdate2.zip").arg(host));
        EXPECT_TRUE(location->isConfigured());
    }
    for (const char *host : {"", "a b", "user@host", "host/", "host?", "host#", "host:", "host:0",
                             "host:70000", ":443", "https://host", "::1"})
        EXPECT_FALSE(PackageLocation::onHost(host).has_value()) << host;
    EXPECT_FALSE(PackageLocation().isConfigured());
}

TEST(PackageLocationTest, AFileWithoutACertificateIsReported)
{
    PackageLocation location;
    const PackageProblem missing = location.addCertificates("/nowhere/ca.pem");
    EXPECT_EQ(missing.kind, PackageProblemKind::FileSystem);
    EXPECT_EQ(missing.code, ENOENT);
    EXPECT_EQ(missing.text, "/nowhere/ca.pem");
    const QTemporaryDir folder;
    const QString pipe = folder.filePath("pipe");
    ASSERT_EQ(::mkfifo(qPrintable(pipe), 0600), 0);
    for (const QString &path : {folder.path(), pipe, QStringLiteral("/dev/null")})
        EXPECT_EQ(location.addCertificates(path).kind, PackageProblemKind::NoCertificates);
    EXPECT_TRUE(location.certificates().isEmpty());
}

} // namespace
