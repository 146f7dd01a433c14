#include "compute/palette_tables.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdlib>
#include <vector>

namespace {

using Table = std::vector<unsigned char>;
using Colour = std::array<int, 3>;

Colour entry(const Table& table, std::size_t n) {
    return {table[4 * n], table[4 * n + 1], table[4 * n + 2]};
}

// The low bytes of rand() as a fresh process draws them: unseeded, it behaves as after srand(1).
Table unseededColours() {
    std::srand(1);
    Table table(PALETTE_BYTES, 0);
    for (std::size_t n = 0; n < 768; ++n) {
        for (std::size_t channel = 0; channel < 3; ++channel) {
            table[4 * n + channel] = static_cast<unsigned char>(std::rand() % 256);
        }
    }
    return table;
}

TEST(RandomColours, AreThoseOfAnUnseededGenerator) {
    Table table(PALETTE_BYTES, 0);
    fillRandomColours(table.data());
    EXPECT_EQ(table, unseededColours());
}

TEST(RandomColours, DependOnNothingThatWasDrawnBefore) {
    Table first(PALETTE_BYTES, 0), second(PALETTE_BYTES, 0);
    fillRandomColours(first.data());
    std::srand(7);
    std::rand();
    fillRandomColours(second.data());
    EXPECT_EQ(second, first);
}

// A table with a page of the same bytes behind it.
Table withCanaries(void (*fill)(unsigned char*)) {
    Table table(PALETTE_BYTES + 4096, 0xA5);
    fill(table.data());
    return {table.begin() + PALETTE_BYTES, table.end()};
}

TEST(Tables, EndWhereTheyEnd) {
    EXPECT_EQ(withCanaries(fillRandomColours), Table(4096, 0xA5));
    EXPECT_EQ(withCanaries(fillCycleColours), Table(4096, 0xA5));
}

TEST(RandomColours, LeaveTheProcesssOwnGeneratorAlone) {
    std::srand(7);
    const int expected = std::rand();
    std::srand(7);
    Table table(PALETTE_BYTES, 0);
    fillRandomColours(table.data());
    EXPECT_EQ(std::rand(), expected);
}

TEST(RandomColours, AreRedGreenAndBlueInTheOrderDrawn) {
    Table table(PALETTE_BYTES, 0);
    fillRandomColours(table.data());
    EXPECT_EQ(entry(table, 0), (Colour{103, 198, 105}));
    EXPECT_EQ(entry(table, 1), (Colour{115, 81, 255}));
}

TEST(CycleColours, RunGreenBlueRed) {
    Table table(PALETTE_BYTES, 9);
    fillCycleColours(table.data());
    EXPECT_EQ(entry(table, 0), (Colour{0, 0, 0}));
    EXPECT_EQ(entry(table, 255), (Colour{0, 255, 0}));
    EXPECT_EQ(entry(table, 256), (Colour{0, 0, 0}));
    EXPECT_EQ(entry(table, 511), (Colour{0, 0, 255}));
    EXPECT_EQ(entry(table, 512), (Colour{0, 0, 0}));
    EXPECT_EQ(entry(table, 767), (Colour{255, 0, 0}));
}

TEST(PaletteTables, LeaveEveryFourthByteAlone) {
    for (const auto fill : {fillRandomColours, fillCycleColours}) {
        Table table(PALETTE_BYTES, 42);
        fill(table.data());
        for (std::size_t n = 0; n < 768; ++n) ASSERT_EQ(table[4 * n + 3], 42) << n;
    }
}

}  // namespace
