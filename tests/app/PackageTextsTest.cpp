#include "app/PackageTexts.h"

#include "tests/support/QtPrinting.h"

#include <gtest/gtest.h>

using namespace vorn;

namespace {

TEST(PackageTextsTest, ProgressIsAFigureInPercentWhereTheLengthIsKnown)
{
    EXPECT_EQ(texts::packageProgress(42, 100), "Prompt:Progress42%");
    EXPECT_EQ(texts::packageProgress(2, 3), "Prompt:Progress67%");
    EXPECT_EQ(texts::packageProgress(42, 0), "Prompt:Progress--%");
}

TEST(PackageTextsTest, ADescriptionEscapesTheControlCharactersOfAServersName)
{
    EXPECT_EQ(description({PackageProblemKind::BadArchive, 0, "a\x1b[31m\n.bin"}),
              R"("a\u001B[31m\n.bin": the package is damaged)");
    EXPECT_EQ(description({PackageProblemKind::HttpStatus, 404, {}}),
              "the server responded with HTTP status 404");
}

} // namespace
