#include "explorer/catalogue.h"

#include <gmock/gmock.h>

#include <string>

#include "backends/view_state.h"
#include "explorer/window_title.h"
#include "tests/explorer/explorer_test.h"
#include "tests/support/catalogue_table.h"

namespace {

using test_support::CatalogueRow;
using testing::ElementsAre;
using testing::ExitedWithCode;
using testing::HasSubstr;
using testing::StartsWith;

class CatalogueTest : public ExplorerTest {};

class CatalogueTable : public ExplorerTest, public testing::WithParamInterface<CatalogueRow> {};

TEST_P(CatalogueTable, ANewEntryHoldsTheValuesOfItsRow) {
    const CatalogueRow& row = GetParam();
    CreateNewFractal(row.type, row.preset);
    ASSERT_EQ(fractals.size(), 1u);
    const fractal& entry = fractals[0];
    EXPECT_EQ(entry.name, row.name);
    EXPECT_EQ(rectangleOf(entry), (Rectangle{row.xMax, row.xMin, row.yMax, row.yMin}));
    EXPECT_EQ(entry.cx, row.cx);
    EXPECT_EQ(entry.cy, row.cy);
    EXPECT_EQ(entry.fractalType, row.type);
    EXPECT_EQ(entry.maxIters, row.maxIters);
    EXPECT_EQ(entry.maxSize, row.maxSize);
    EXPECT_EQ(entry.paletteType, row.paletteType);
}

TEST_P(CatalogueTable, ANewEntryIsTheLiveView) {
    const CatalogueRow& row = GetParam();
    CreateNewFractal(row.type, row.preset);
    EXPECT_EQ(viewRectangle(), (Rectangle{row.xMax, row.xMin, row.yMax, row.yMin}));
    EXPECT_EQ(cx, row.cx);
    EXPECT_EQ(cy, row.cy);
    EXPECT_EQ(currentFractalType, row.type);
    EXPECT_EQ(maxIters, row.maxIters);
    EXPECT_EQ(maxSize, row.maxSize);
    EXPECT_EQ(paletteType, row.paletteType);
}

TEST_P(CatalogueTable, TheTitleIsThePrefixABlankAndTheName) {
    title = "prefix";
    CreateNewFractal(GetParam().type, GetParam().preset);
    EXPECT_THAT(glut.titles, ElementsAre("prefix " + GetParam().name));
}

INSTANTIATE_TEST_SUITE_P(Rows, CatalogueTable, testing::ValuesIn(test_support::catalogueRows()),
                         [](const auto& row) { return row.param.label; });

TEST_F(CatalogueTest, StartsEmptyWithNothingCurrent) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        std::_Exit(fractals.empty() && currentFractal == -1 && currentFractalType == -1 ? 0 : 1),
        ExitedWithCode(0), "");
}

TEST_F(CatalogueTest, TheFirstEntryOfAProcessHasIdentityZero) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            CreateNewFractal(0, 0);
            std::_Exit(fractals[0].fractalID == 0 && currentFractal == 0 ? 0 : 1);
        },
        ExitedWithCode(0), "");
}

TEST_F(CatalogueTest, EachNewEntryIsAppendedWithTheNextIdentityAndMadeCurrent) {
    CreateNewFractal(0, 0);
    CreateNewFractal(0, 0);
    CreateNewFractal(10, 0);
    ASSERT_EQ(fractals.size(), 3u);
    EXPECT_EQ(fractals[1].fractalID, fractals[0].fractalID + 1);
    EXPECT_EQ(fractals[2].fractalID, fractals[0].fractalID + 2);
    EXPECT_EQ(currentFractal, 2);
}

TEST_F(CatalogueTest, ANewEntryGoesToTheEndWhateverWasCurrent) {
    CreateNewFractal(0, 0);
    CreateNewFractal(2, 0);
    currentFractal = 0;
    CreateNewFractal(3, 0);
    EXPECT_EQ(currentFractal, 2);
    EXPECT_EQ(fractals[2].name, "Cosine");
}

TEST_F(CatalogueTest, ANewEntryOwesOneRender) {
    update_count = 3;
    CreateNewFractal(0, 0);
    EXPECT_EQ(update_count, 4);
}

TEST_F(CatalogueTest, AnyOtherJuliaPresetIsTheDefault) {
    for (const int preset : {0, 5, 99, 104, -1, 1000}) {
        CreateNewFractal(1, preset);
        EXPECT_EQ(fractals.back().cx, -0.8) << preset;
        EXPECT_EQ(fractals.back().cy, 0.156) << preset;
        EXPECT_EQ(fractals.back().paletteType, 1) << preset;
    }
}

TEST_F(CatalogueTest, ThePresetMattersToJuliaAlone) {
    CreateNewFractal(6, 100);
    EXPECT_EQ(fractals[0].cx, 0.6);
    EXPECT_EQ(fractals[0].cy, 1.1);
    EXPECT_EQ(fractals[0].paletteType, 0);
}

TEST_F(CatalogueTest, AnUnknownTypeStillAppendsANamelessEntryAndTakesAnIdentity) {
    CreateNewFractal(0, 0);
    CreateNewFractal(14, 0);
    CreateNewFractal(-1, 0);
    CreateNewFractal(0, 0);
    ASSERT_EQ(fractals.size(), 4u);
    EXPECT_EQ(fractals[1].name, "");
    EXPECT_EQ(fractals[2].name, "");
    EXPECT_EQ(fractals[3].fractalID, fractals[0].fractalID + 3);
}

TEST_F(CatalogueTest, TheEntryIsShownBeforeItIsAppendedAndOutsideBothLocks) {
    std::size_t sizeAtTitle = 99;
    bool locked = true;
    glut.onCall = [&](const std::string&) {
        sizeAtTitle = fractals.size();
        locked = isHeld(mutex) || isHeld(update_lock);
    };
    CreateNewFractal(0, 0);
    EXPECT_EQ(sizeAtTitle, 0u);
    EXPECT_FALSE(locked);
}

TEST_F(CatalogueTest, CreationReportsTheView) {
    CreateNewFractal(0, 0);
    EXPECT_EQ(printed(),
              "Mandelbrot Z-range:(-2.000000, -1.500000)-(2.000000, 1.500000), "
              "c = (0.000000,0.000000), maxIters = 768, maxSize = 4.000000\r\n");
}

TEST_F(CatalogueTest, TheDragonsTitleHasTwoBlanks) {
    title = "Tessary with OpenCL V1.0 :";
    CreateNewFractal(10, 0);
    EXPECT_THAT(glut.titles, ElementsAre("Tessary with OpenCL V1.0 :  Dragon Fractal"));
}

TEST_F(CatalogueTest, MakingAnEntryCurrentOwesNoRenderAndLeavesTheCatalogueAlone) {
    fractal entry = namedEntry("x", 4, {4, 3, 2, 1});
    update_count = 5;
    setCurrentFractal(entry);
    EXPECT_EQ(update_count, 5);
    EXPECT_TRUE(fractals.empty());
    EXPECT_EQ(currentFractal, -1);
    EXPECT_EQ(glut.redisplays, 0);
}

TEST_F(CatalogueTest, MakingAnEntryCurrentCopiesReportsAndThenTitles) {
    fractal entry = namedEntry("name", 4, {4, 3, 2, 1});
    entry.cx = -0.5;
    entry.cy = 1e-7;
    entry.paletteType = 1;
    std::string printedAtTitle;
    glut.onCall = [&](const std::string&) { printedAtTitle = printed(); };
    setCurrentFractal(entry);
    EXPECT_EQ(viewRectangle(), rectangleOf(entry));
    EXPECT_EQ(paletteType, 1);
    EXPECT_EQ(printedAtTitle,
              "name Z-range:(3.000000, 1.000000)-(4.000000, 2.000000), "
              "c = (-0.500000,0.000000), maxIters = 20, maxSize = 4.000000\r\n");
}

TEST_F(CatalogueTest, TheReportTakesTheLiveViewAndTheGivenName) {
    copyToView(namedEntry("ignored", 0, {1, -1, 2, -2}));
    maxSize = 1e10;
    maxIters = -3;
    Report("%s given");
    EXPECT_EQ(printed(),
              "%s given Z-range:(-1.000000, -2.000000)-(1.000000, 2.000000), "
              "c = (0.000000,0.000000), maxIters = -3, maxSize = 10000000000.000000\r\n");
}

TEST_F(CatalogueTest, AVeryLongNameStillGivesATitle) {
    fractal entry = namedEntry(std::string(1000000, 'n'), 0, {1, 0, 1, 0});
    setCurrentFractal(entry);
    ASSERT_EQ(glut.titles.size(), 1u);
    EXPECT_THAT(glut.titles[0], StartsWith(" nnnn"));
}

TEST_F(CatalogueTest, ATenThousandByteNameIsInTheTitleToItsLastByte) {
    const std::string name = "first" + std::string(9991, 'n') + "last";
    fractal entry = namedEntry(name, 0, {1, 0, 1, 0});
    title = "prefix";
    setCurrentFractal(entry);
    EXPECT_THAT(glut.titles, ElementsAre("prefix " + name));
}

TEST_F(CatalogueTest, ATitleIsCutAtAHundredThousandBytes) {
    const std::string longest(100000, 't');
    setWindowTitle(longest);
    setWindowTitle(longest + "more");
    EXPECT_THAT(glut.titles, ElementsAre(longest, longest));
}

TEST(ViewState, AddingAnUpdateNeverOverflows) {
    const test_support::ViewGuard view;
    update_count = 0x7fffffff;
    addUpdate();
    EXPECT_EQ(update_count, 0x7fffffff);
}

}  // namespace
