// Packed bands, joined, are one stream that zlib unpacks to the rows.
#include <gtest/gtest.h>
#include <zlib.h>

#include <random>
#include <set>
#include <string>
#include <vector>

#include "render/deflate.h"
#include "render/encoder.h"
#include "render/row_filter.h"

namespace {

using render::BandPacker;
using render::Compression;

constexpr std::size_t PIXEL = 3;

enum class Content { flat, noisy, smooth };

std::string rowsOf(Content content, std::size_t width, std::size_t height) {
    std::mt19937 random(7);
    std::string rows;
    for (std::size_t y = 0; y < height; ++y) {
        rows += '\0';
        for (std::size_t i = 0; i < PIXEL * width; ++i) {
            const std::size_t smooth = (i / PIXEL + y) / 2;
            rows += static_cast<char>(content == Content::flat    ? 17
                                      : content == Content::noisy ? random() & 0xff
                                                                  : smooth & 0xff);
        }
    }
    return rows;
}

// What zlib makes of a whole stream; its checksum is zlib's business too.
std::string unpacked(const std::string& stream, std::size_t length) {
    std::string bytes(length + 1, '\0');
    uLongf size = bytes.size();
    if (uncompress(reinterpret_cast<Bytef*>(bytes.data()), &size,
                   reinterpret_cast<const Bytef*>(stream.data()), stream.size()) != Z_OK) {
        return "no stream";
    }
    bytes.resize(size);
    return bytes;
}

// The rows behind the filters, by the definition of each.
std::string unfiltered(std::string rows, std::size_t rowBytes) {
    const auto at = [&](std::size_t y, std::size_t i) {
        return i == 0 || i > rowBytes ? 0 : int{static_cast<unsigned char>(rows[y * rowBytes + i])};
    };
    for (std::size_t y = 0; y * rowBytes < rows.size(); ++y) {
        const int filter = rows[y * rowBytes];
        rows[y * rowBytes] = '\0';
        for (std::size_t i = 1; i < rowBytes; ++i) {
            const int a = i > PIXEL ? at(y, i - PIXEL) : 0, b = y > 0 ? at(y - 1, i) : 0;
            const int c = i > PIXEL && y > 0 ? at(y - 1, i - PIXEL) : 0;
            const int p = a + b - c, pa = std::abs(p - a), pb = std::abs(p - b),
                      pc = std::abs(p - c);
            const int paeth = pa <= pb && pa <= pc ? a : pb <= pc ? b : c;
            const int predictions[] = {0, a, b, (a + b) / 2, paeth};
            rows[y * rowBytes + i] = static_cast<char>(at(y, i) + predictions[filter]);
        }
    }
    return rows;
}

using Case = std::tuple<Content, Compression>;
class Bands : public testing::TestWithParam<Case> {};

// The rows of bands behind their filters; a band is filtered as if nothing were above it.
std::string unfilteredBands(const std::string& rows, const std::vector<std::size_t>& heights,
                            std::size_t rowBytes) {
    std::string plain;
    std::size_t start = 0;
    for (const std::size_t height : heights) {
        plain += unfiltered(rows.substr(start, height * rowBytes), rowBytes);
        start += height * rowBytes;
    }
    return plain;
}

TEST_P(Bands, JoinedAreOneStreamOfTheRows) {
    const auto [content, compression] = GetParam();
    BandPacker packer;
    std::string stream(render::streamHead(compression)), rows;
    std::uint32_t adler = 1;
    for (const std::size_t height : {16u, 1u, 50u}) {
        const std::size_t width = 211;
        const std::string band = rowsOf(content, width, height);
        const auto packed = packer.pack(band, 1 + PIXEL * width, PIXEL, compression);
        EXPECT_EQ(packed.length, band.size());
        stream += packed.blocks;
        adler = render::joinAdler(adler, packed.adler, packed.length);
        rows += band;
    }
    stream += render::streamTail(adler);
    const std::string back = unpacked(stream, rows.size());
    ASSERT_EQ(back.size(), rows.size());
    EXPECT_TRUE(compression == Compression::small || back == rows);
    EXPECT_EQ(unfilteredBands(back, {16, 1, 50}, 1 + PIXEL * 211), rows);
}

INSTANTIATE_TEST_SUITE_P(Contents, Bands,
                         testing::Combine(testing::Values(Content::flat, Content::noisy,
                                                          Content::smooth),
                                          testing::Values(Compression::fast, Compression::small)));

TEST(DitheredBands, JoinedAreOneStreamOfTheRows) {
    for (const Content content : {Content::flat, Content::noisy, Content::smooth}) {
        for (const std::size_t width : {1u, 2u, 211u}) {
            BandPacker packer;
            std::string stream(render::streamHead(Compression::fast)), rows;
            std::uint32_t adler = 1;
            for (const std::size_t height : {16u, 1u, 50u}) {
                const std::string band = rowsOf(content, width, height);
                const auto packed = packer.packDithered(band, 1 + PIXEL * width, PIXEL);
                EXPECT_EQ(packed.length, band.size());
                stream += packed.blocks;
                adler = render::joinAdler(adler, packed.adler, packed.length);
                rows += band;
            }
            stream += render::streamTail(adler);
            const std::string back = unpacked(stream, rows.size());
            ASSERT_EQ(back.size(), rows.size());
            EXPECT_EQ(unfilteredBands(back, {16, 1, 50}, 1 + PIXEL * width), rows);
        }
    }
}

TEST(APacker, GivesTheSameBlocksWhateverItPackedBefore) {
    const std::string rows = rowsOf(Content::noisy, 100, 16);
    for (const auto compression : {Compression::fast, Compression::small}) {
        BandPacker fresh, used;
        used.pack(rowsOf(Content::smooth, 900, 64), 2701, PIXEL, compression);
        EXPECT_EQ(used.pack(rows, 301, PIXEL, compression).blocks,
                  fresh.pack(rows, 301, PIXEL, compression).blocks);
    }
}

TEST(SmoothRows, PackSmallerWithFilters) {
    BandPacker packer;
    const std::string rows = rowsOf(Content::smooth, 500, 32);
    const auto fast = packer.pack(rows, 1501, PIXEL, Compression::fast).blocks.size();
    EXPECT_LT(packer.pack(rows, 1501, PIXEL, Compression::small).blocks.size(), fast);
}

// Hills of every kind, so that each filter is the best one somewhere.
TEST(FilteredRows, HoldTheRowsWhicheverFilterEachHas) {
    constexpr std::size_t WIDTH = 60, HEIGHT = 400, ROW = 1 + PIXEL * WIDTH;
    std::mt19937 random(3);
    std::string rows(ROW * HEIGHT, '\0');
    for (std::size_t y = 0; y < HEIGHT; ++y) {
        for (std::size_t i = 1; i < ROW; ++i) {
            const char left = i > PIXEL ? rows[y * ROW + i - PIXEL] : '\0';
            const char above = y > 0 ? rows[(y - 1) * ROW + i] : '\0';
            const char corner = i > PIXEL && y > 0 ? rows[(y - 1) * ROW + i - PIXEL] : '\0';
            const int kinds[] = {0, left, above, (left + above) / 2, left + above - corner};
            rows[y * ROW + i] = static_cast<char>(kinds[y % 5] + static_cast<int>(random() % 3));
        }
    }
    const std::string filtered = render::filterRows(rows, ROW, PIXEL);
    std::set<char> filters;
    for (std::size_t y = 0; y < HEIGHT; ++y) filters.insert(filtered[y * ROW]);
    EXPECT_EQ(filters.size(), 5u);
    EXPECT_EQ(unfiltered(filtered, ROW), rows);
}

TEST(BandsOfAPicture, CoverItFromTopToBottom) {
    for (const render::Size size : {render::Size{1, 1},
                                    {1, 65535},
                                    {65535, 1},
                                    {65535, 65535},
                                    {1920, 1080},
                                    {256, 256},
                                    {97, 53}}) {
        int next = 0;
        const int count = render::bandCount(size);
        for (int band = 0; band < count; ++band) {
            const auto rows = render::bandRows(size, band);
            ASSERT_EQ(rows.first, next);
            ASSERT_GT(rows.count(), 0);
            next = rows.end;
        }
        EXPECT_EQ(next, size.height);
    }
}

}  // namespace
