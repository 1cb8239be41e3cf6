#include "firmware/FirmwareLibrary.h"

#include "firmware/FirmwareModels.h"
#include "platform/Directories.h"
#include "platform/MainQueue.h"
#include "tests/support/Eventually.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <fstream>

using namespace vorn;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAreArray;

namespace {

struct FirmwareLibraryTest : testing::Test, FirmwareLibraryObserver
{
    FirmwareLibraryTest() { MainQueue::instance(); }
    ~FirmwareLibraryTest() override { std::filesystem::remove_all(folder); }

    void addFiles(const std::vector<std::string> &names) const
    {
        std::filesystem::create_directories(folder);
        for (const std::string &name : names)
            ASSERT_TRUE(std::ofstream(folder / name).is_open()) << name;
    }
    void firmwareListDidChange(const QStringList &files) override { notified.append(files); }

    // Not a QDir: a name may be no valid text.
    const std::filesystem::path folder =
        QString(cachesDirectory() + u'/' + kFirmwareFolderName).toStdString();
    QList<QStringList> notified;
    FirmwareLibrary library{*this};
};

TEST_F(FirmwareLibraryTest, EachModelCodeSelectsItsFilesInFolderOrder)
{
    addFiles({"VORN_I-1.bin", "VORN-2.bin", "readme.txt", "VORN_I-3.BIN", "VORN_PLATINA-x.bin",
              "bin", ".bin", "VORN_I-", "vorn_i-4.bin", "a.bin.zip", "VORN_I-5.bin",
              "bad-\xff.bin"});
    const QStringList all =
        QString("VORN_I-1.bin VORN-2.bin VORN_PLATINA-x.bin bin .bin vorn_i-4.bin VORN_I-5.bin")
            .split(u' ');
    const QStringList modelI = {"VORN_I-1.bin", "VORN_I-5.bin"};
    const QList<QPair<qint32, QStringList>> expected = {
        {-1, all}, {0, all}, {1, modelI}, {2, modelI}, {8, {"VORN_PLATINA-x.bin"}}, {5, {}}};
    for (const auto &[modelCode, files] : expected) {
        EXPECT_TRUE(library.readFirmWare(modelCode));
        EXPECT_THAT(notified, IsEmpty()) << "not before the event loop";
        MainQueue::instance().drain();
        ASSERT_EQ(notified.size(), 1);
        EXPECT_THAT(notified.takeFirst(), UnorderedElementsAreArray(files)) << modelCode;
    }
    EXPECT_EQ(library.vorn_I_fileArray(),
              firmwareForModel(library.allFileArray().value_or(QStringList()), 1));
    EXPECT_EQ(library.vorn_fileArray(), QStringList(6, "VORN-2.bin")) << "added again by each scan";
}

TEST_F(FirmwareLibraryTest, AMissingOrEmptyFolderLeavesTheListsByPrefixAlone)
{
    EXPECT_FALSE(library.readFirmWare(-1));
    EXPECT_FALSE(library.allFileArray().has_value());

    addFiles({"VORN_I-1.bin", "VORN_PLATINA-1.bin"});
    EXPECT_TRUE(library.readFirmWare(1));
    std::filesystem::remove_all(folder);
    EXPECT_FALSE(library.readFirmWare(1));
    EXPECT_FALSE(library.allFileArray().has_value()) << "missing";

    addFiles({});
    EXPECT_FALSE(library.readFirmWare(1));
    EXPECT_EQ(library.allFileArray(), QStringList()) << "empty";
    EXPECT_THAT(library.vorn_I_fileArray(), ElementsAre("VORN_I-1.bin"));
    EXPECT_THAT(library.vorn_platina_fileArray(), ElementsAre("VORN_PLATINA-1.bin"));

    addFiles({"readme.txt"});
    EXPECT_TRUE(library.readFirmWare(1)) << "an entry was found, although no firmware";
    EXPECT_EQ(library.vorn_I_fileArray() + library.vorn_platina_fileArray(), QStringList());
    MainQueue::instance().drain();
    EXPECT_EQ(notified, (QList<QStringList>{{"VORN_I-1.bin"}, {}}));
}

TEST_F(FirmwareLibraryTest, ABackgroundScanIsDroppedAfterALaterScanOrWithTheLibrary)
{
    addFiles({"VORN_I-1.bin", "VORN_PLATINA-1.bin"});
    library.readFirmWareInBackground(-1);
    library.readFirmWareInBackground(1);
    EXPECT_TRUE(library.readFirmWare(8)); // done before the results of the other two arrive
    {
        FirmwareLibrary shortLived(*this);
        shortLived.readFirmWare(-1);
        shortLived.readFirmWareInBackground(-1);
    }
    runEventLoopFor(std::chrono::milliseconds(50)); // for the results that are to be dropped
    library.readFirmWareInBackground(1);
    EXPECT_TRUE(eventually([&] { return notified.size() >= 2; }));
    EXPECT_EQ(notified, (QList<QStringList>{{"VORN_PLATINA-1.bin"}, {"VORN_I-1.bin"}}));
}

} // namespace
