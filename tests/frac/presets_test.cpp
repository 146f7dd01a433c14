#include "frac/presets.h"

#include <gtest/gtest.h>

#include "tests/support/catalogue_table.h"

namespace {

using test_support::CatalogueRow;

class Presets : public testing::TestWithParam<CatalogueRow> {};

TEST_P(Presets, HoldTheValuesOfTheirRow) {
    const CatalogueRow& row = GetParam();
    const fractal entry = presetEntry(row.type, row.preset);
    EXPECT_EQ(entry.name, row.name);
    EXPECT_EQ(entry.xMax, row.xMax);
    EXPECT_EQ(entry.xMin, row.xMin);
    EXPECT_EQ(entry.yMax, row.yMax);
    EXPECT_EQ(entry.yMin, row.yMin);
    EXPECT_EQ(entry.cx, row.cx);
    EXPECT_EQ(entry.cy, row.cy);
    EXPECT_EQ(entry.fractalType, row.type);
    EXPECT_EQ(entry.maxIters, row.maxIters);
    EXPECT_EQ(entry.maxSize, row.maxSize);
    EXPECT_EQ(entry.paletteType, row.paletteType);
    EXPECT_EQ(entry.fractalID, 0);
}

INSTANTIATE_TEST_SUITE_P(Rows, Presets, testing::ValuesIn(test_support::catalogueRows()),
                         [](const auto& row) { return row.param.label; });

TEST(UnknownFormula, GivesAnEntryOfNothing) {
    for (const int type : {-1, 14, 1 << 30}) {
        const fractal entry = presetEntry(type, 0);
        EXPECT_EQ(entry.name, "") << type;
        EXPECT_EQ(entry.xMax, 0.0) << type;
        EXPECT_EQ(entry.fractalType, 0) << type;
        EXPECT_EQ(entry.maxIters, 0) << type;
    }
}

}  // namespace
