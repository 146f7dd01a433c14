#include "compute/pixels.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

using Table = std::vector<unsigned char>;

TEST(ColourPixel, BlackAtTheLimitAndPastIt) {
    Table palette(PALETTE_BYTES, 200);
    unsigned char pixel[4] = {1, 2, 3, 4};
    colourPixel(pixel, 10, 10, palette.data());
    EXPECT_EQ(Table(pixel, pixel + 4), (Table{0, 0, 0, 255}));
    pixel[0] = 9;
    colourPixel(pixel, 11, 10, palette.data());
    EXPECT_EQ(Table(pixel, pixel + 4), (Table{0, 0, 0, 255}));
}

TEST(ColourPixel, CountsZeroAnd768ShareAColour) {
    Table palette(PALETTE_BYTES, 0);
    palette[0] = 10, palette[1] = 20, palette[2] = 30, palette[3] = 40;
    for (const int count : {0, 768, 1536}) {
        unsigned char pixel[4] = {1, 2, 3, 4};
        colourPixel(pixel, count, 5000, palette.data());
        EXPECT_EQ(Table(pixel, pixel + 4), (Table{10, 20, 30, 255})) << count;
    }
}

}  // namespace
