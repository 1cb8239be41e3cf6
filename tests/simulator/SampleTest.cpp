#include "simulator/SampleFirmware.h"
#include "simulator/StoredZip.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>

namespace vorn::test {
namespace {

TEST(SampleFirmware, HasImagesForEveryFamilyAndIsAlwaysTheSame)
{
    for (const SampleRelease release : {SampleRelease::Installed, SampleRelease::Latest}) {
        QStringList families;
        for (const SampleImage &image : sampleFirmware(release)) {
            families.append(image.name.section(u'-', 0, 0));
            EXPECT_TRUE(image.name.endsWith(QLatin1String(".bin")));
            EXPECT_TRUE(image.bytes.size() >= 40'000 && image.bytes.size() <= 120'000);
        }
        families.removeDuplicates();
        EXPECT_THAT(families, testing::UnorderedElementsAre("VORN_I", "VORN", "VORN_PLATINA"));
    }
    EXPECT_EQ(sampleFirmware(SampleRelease::Latest)[0].bytes,
              sampleFirmware(SampleRelease::Installed)[1].bytes)
        << "the image that both releases hold";
}

TEST(SampleFirmware, IsWrittenIntoANewFolder)
{
    const QTemporaryDir home;
    const QString folder = home.filePath(QStringLiteral("cache/VornUpdate2"));
    QString problem;
    ASSERT_TRUE(writeSampleFirmware(folder, &problem)) << problem.toStdString();
    for (const SampleImage &image : sampleFirmware(SampleRelease::Installed)) {
        QFile file(QDir(folder).filePath(image.name));
        ASSERT_TRUE(file.open(QIODevice::ReadOnly));
        EXPECT_EQ(file.readAll(), image.bytes);
    }
    EXPECT_FALSE(writeSampleFirmware(QStringLiteral("/proc/none"), &problem));
    EXPECT_THAT(problem.toStdString(), testing::HasSubstr("/proc/none"));
}

TEST(SamplePackage, IsUnpackedByAnotherTool)
{
    const QTemporaryDir home;
    QFile file(home.filePath(QStringLiteral("package.zip")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    ASSERT_EQ(file.write(samplePackage()), samplePackage().size());
    file.close();
    const QString unzip = QStringLiteral("unzip -q %1 -d %2").arg(file.fileName(), home.path());
    ASSERT_EQ(std::system(unzip.toLocal8Bit().constData()), 0);
    const QDir folder(home.filePath(QStringLiteral("VornUpdate2")));
    const std::vector<SampleImage> images = sampleFirmware(SampleRelease::Latest);
    EXPECT_EQ(folder.entryList(QDir::Files).size(), static_cast<qsizetype>(images.size()));
    for (const SampleImage &image : images) {
        QFile unpacked(folder.filePath(image.name));
        ASSERT_TRUE(unpacked.open(QIODevice::ReadOnly));
        EXPECT_EQ(unpacked.readAll(), image.bytes);
    }
}

} // namespace
} // namespace vorn::test
