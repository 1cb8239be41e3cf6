#include "app/StatusTexts.h"

#include "tests/support/QtPrinting.h"

#include <gtest/gtest.h>

namespace vorn {
namespace {

using Kind = UpdateFailureKind;

const QString kFailed = "Prompt:Firmware update failed,please try again";
const QString kNoResponse = "Prompt:Device does not respond during firmware update";
const QString kEraseFailed =
    "Prompt:Failed to erase the fixed phone of the device ,please try again";

TEST(StatusTexts, AnUpdateThatFailsShowsTheTextsOfItsStep)
{
    struct Row
    {
        UpdateStep step;
        QStringList unanswered;
        QStringList refused;
    };
    const std::vector<Row> rows{
        {UpdateStep::Synchronize, {kFailed, kNoResponse}, {kNoResponse}},
        {UpdateStep::Connect, {kFailed}, {}},
        {UpdateStep::QueryVersion, {kFailed, kFailed}, {kFailed}},
        {UpdateStep::Download, {kFailed}, {}},
        {UpdateStep::Erase, {kEraseFailed}, {}},
        {UpdateStep::Release, {kFailed}, {}},
        {UpdateStep::Data, {kFailed}, {}},
        {UpdateStep::Finish, {kFailed}, {}},
    };
    for (const Row &row : rows) {
        SCOPED_TRACE(static_cast<int>(row.step));
        UpdateResult result;
        result.step = row.step;
        for (const auto &[kind, shown] : {std::pair(Kind::TimedOut, row.unanswered),
                                          {Kind::PortClosed, row.unanswered},
                                          {Kind::Refused, row.refused}}) {
            result.failure.kind = kind;
            EXPECT_EQ(texts::ofUpdateEnd(result), shown);
            EXPECT_EQ(texts::ofVersionQueryEnd(result),
                      kind == Kind::Refused ? QStringList() : QStringList{kFailed});
        }
    }
    UpdateResult image;
    image.step = UpdateStep::ReadImage;
    image.failure = {Kind::NoImageChosen, 0, {}};
    EXPECT_EQ(texts::ofUpdateEnd(image), QStringList{"Prompt:No firmware selected"});
    image.failure = {Kind::ImageEmpty, 0, "x"};
    EXPECT_EQ(texts::ofUpdateEnd(image), QStringList{kFailed});
}

TEST(StatusTexts, PackageProgressIsAFigureInPercentWhereTheLengthIsKnown)
{
    EXPECT_EQ(texts::ofPackageProgress(42, 100), "Prompt:Progress42%");
    EXPECT_EQ(texts::ofPackageProgress(2, 3), "Prompt:Progress67%");
    EXPECT_EQ(texts::ofPackageProgress(42, 0), "Prompt:Progress--%");
}

} // namespace
} // namespace vorn
