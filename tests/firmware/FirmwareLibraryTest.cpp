#include "firmware/FirmwareLibrary.h"

#include "platform/Directories.h"
#include "platform/GlobalQueue.h"
#include "platform/MainQueue.h"

#include <QTest>

#include <gmock/gmock.h>

#include <atomic>
#include <filesystem>
#include <fstream>

using namespace vorn;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAreArray;

namespace {

class FirmwareLibraryTest : public testing::Test
{
protected:
    FirmwareLibraryTest() { MainQueue::instance(); }
    ~FirmwareLibraryTest() override { std::filesystem::remove_all(folder); }

    void addFiles(const std::vector<std::string> &names) const
    {
        std::filesystem::create_directories(folder);
        for (const std::string &name : names)
            ASSERT_TRUE(std::ofstream(folder / name).is_open()) << name;
    }

    // Not through QDir: a name may be no text.
    const std::filesystem::path folder =
        QString(cachesDirectory() + u'/' + firmwareFolderName).toStdString();
    QList<QPair<qint32, QStringList>> refills;
    FirmwareLibrary library{[this](qint32 modelCode, const QStringList &titles) {
        refills.append({modelCode, titles});
    }};
};

TEST_F(FirmwareLibraryTest, EachModelCodeShowsItsOwnFilesInFolderOrder)
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
    for (const auto &[modelCode, titles] : expected) {
        EXPECT_TRUE(library.readFirmWare(modelCode));
        EXPECT_THAT(refills, IsEmpty()) << "the refill is queued, not called at once";
        MainQueue::instance().drain();
        ASSERT_EQ(refills.size(), 1);
        const auto [refilled, shown] = refills.takeFirst();
        EXPECT_EQ(refilled, modelCode);
        EXPECT_THAT(shown, UnorderedElementsAreArray(titles)) << modelCode;
    }
    const QStringList inFolderOrder = library.allFileArray().value();
    QStringList picked = inFolderOrder;
    picked.removeIf([&](const QString &name) { return !modelI.contains(name); });
    EXPECT_EQ(library.vorn_I_fileArray(), picked);
    EXPECT_EQ(library.vorn_fileArray(), QStringList(6, "VORN-2.bin")) << "added again by each scan";
}

TEST_F(FirmwareLibraryTest, AFolderThatYieldsNothingLeavesTheListsByModelAlone)
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
    EXPECT_THAT(library.vorn_I_fileArray(), IsEmpty());
    MainQueue::instance().drain();
    EXPECT_EQ(refills, (QList<QPair<qint32, QStringList>>{{1, {"VORN_I-1.bin"}}, {1, {}}}));
}

TEST_F(FirmwareLibraryTest, ScansOnSeveralThreadsRefillOncePerScanAndNeverAfterTheLibraryIsGone)
{
    addFiles({"VORN_I-1.bin", "VORN-1.bin"});
    constexpr qsizetype jobs = 8;
    constexpr qsizetype scans = 20;
    std::atomic<qsizetype> done = 0;
    for (qsizetype job = 0; job < jobs; ++job) {
        GlobalQueue::instance().post([&] {
            for (qsizetype scan = 0; scan < scans; ++scan)
                library.readFirmWare(2);
            ++done;
        });
    }
    ASSERT_TRUE(QTest::qWaitFor([&] { return done == jobs; }, 30000));
    MainQueue::instance().drain();
    EXPECT_EQ(refills, (QList<QPair<qint32, QStringList>>(jobs * scans, {2, {"VORN_I-1.bin"}})));
    EXPECT_EQ(library.vorn_fileArray().size(), jobs * scans);

    bool called = false;
    std::make_unique<FirmwareLibrary>([&](qint32, const QStringList &) {
        called = true;
    })->readFirmWare(-1);
    MainQueue::instance().drain();
    EXPECT_FALSE(called);
}

} // namespace
