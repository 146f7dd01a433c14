// The vector renderer draws the scalar renderer's picture where a single unit in the last place
// decides, on every instruction set.
#include <gtest/gtest.h>
#include <sys/mman.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <set>
#include <string>
#include <vector>

#include "compute/pixels.h"
#include "compute/tile_renderer.h"
#include "tests/compute/boundary_views.h"
#include "tests/compute/count_palette.h"
#include "tests/compute/vector_support.h"

namespace {

using vector_test::allTargets;
using vector_test::allTargetsAgree;
using vector_test::Random;
using vector_test::View;

// How many views of each rule and precision: a few by default, as many as TESSARY_BOUNDARY_VIEWS
// says.
int boundaryViews() {
    const char* asked = std::getenv("TESSARY_BOUNDARY_VIEWS");
    return asked != nullptr ? std::atoi(asked) : 250;
}

class EveryRule : public testing::TestWithParam<int> {
  protected:
    const int type = GetParam();
};

TEST_P(EveryRule, IsDrawnToTheByteWhereOneUnitDecides) {
    Random random(static_cast<std::uint32_t>(2026 + type));
    const int count = boundaryViews();
    for (int i = 0; i < count; ++i) {
        for (const bool doublePrecision : {false, true}) {
            ASSERT_TRUE(allTargetsAgree(vector_test::boundaryView(random, type, doublePrecision),
                                        "boundary"))
                << "view " << i;
        }
    }
}

// Without room for a decision of the vectors: above their limit, and in overflowing functions.
TEST_P(EveryRule, IsDrawnToTheByteAmongTheLargestNumbers) {
    for (const int maxSize : {89999, 90000, 90001, 360001, 1000000, 100000000, INT_MAX}) {
        for (const double reach : {299.0, 301.0, 640.0, 720.0, 1100.0, 3000.0, 45000.0}) {
            View v;
            v.type = type;
            v.xMin = v.yMin = -reach;
            v.xMax = v.yMax = reach;
            v.maxSize = maxSize;
            v.maxIters = 12;
            v.width = v.height = 24;
            for (const bool doublePrecision : {false, true}) {
                v.doublePrecision = doublePrecision;
                EXPECT_TRUE(allTargetsAgree(v, "largest"));
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Boundary, EveryRule, testing::Range(0, 14));

// The counts of a picture that are not the iteration limit, mod 768.
std::set<int> countsOf(View v) {
    std::set<int> counts;
    auto palette = countPalette();
    std::vector<unsigned char> picture(static_cast<std::size_t>(4 * v.width * v.height));
    threadScalar<double>(0, 0, v.width, v.height, v.width, v.height, v.xMin, v.xMax, v.yMin, v.yMax,
                         v.cx, v.cy, v.maxSize, v.maxIters, picture.data(), palette.data(), v.type);
    for (std::size_t at = 0; at < picture.size(); at += 4) counts.insert(countOf(&picture[at]));
    return counts;
}

// Beside a parabolic point, where counts grow without a bound and leave none out.
View besideParabolicPoint(int type, double from, double to) {
    View v;
    v.type = type;
    v.xMin = from;
    v.xMax = to;
    v.yMin = v.yMax = 0;
    v.width = 256;
    v.height = 2;
    return v;
}

class WhereThePaletteWraps : public testing::TestWithParam<View> {};

TEST_P(WhereThePaletteWraps, EveryIterationLimitIsDrawnToTheByte) {
    View v = GetParam();
    v.doublePrecision = true;
    v.maxIters = 772;
    const std::set<int> counts = countsOf(v);
    for (const int count : {765, 766, 767, 0, 1, 2}) {  // 768 to 770 start over
        EXPECT_TRUE(counts.contains(count)) << count;
    }
    for (const int limit : {766, 767, 768, 769, 770, 771, 1536}) {
        v.maxIters = limit;
        for (const bool doublePrecision : {false, true}) {
            v.doublePrecision = doublePrecision;
            EXPECT_TRUE(allTargetsAgree(v, "wrap"));
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Boundary, WhereThePaletteWraps,
                         testing::Values(besideParabolicPoint(0, 0.25001607928, 0.25001720208),
                                         besideParabolicPoint(4, 0.00015002795, 0.00015786685),
                                         besideParabolicPoint(5, -0.53281728888, -0.53281570664)),
                         [](const testing::TestParamInfo<View>& view) {
                             return "Rule" + std::to_string(view.param.type);
                         });

// A pixel of a picture that is wider or higher than memory, in a mapping that only the pages it
// touches take up.
class Mapping {
  public:
    explicit Mapping(std::size_t pixels)
        : size(4 * pixels),
          start(mmap(nullptr, size, PROT_READ | PROT_WRITE,
                     MAP_PRIVATE | MAP_ANONYMOUS | MAP_NORESERVE, -1, 0)) {}
    ~Mapping() {
        if (good()) munmap(start, size);
    }
    Mapping(const Mapping&) = delete;
    Mapping& operator=(const Mapping&) = delete;

    bool good() const { return start != MAP_FAILED; }
    unsigned char* bytes() const { return static_cast<unsigned char*>(start); }

  private:
    std::size_t size;
    void* start;
};

struct Size {
    int width, height;
};

class LargestPicture : public testing::TestWithParam<Size> {};

TEST_P(LargestPicture, IsDrawnToTheByteAtItsCornersAndInItsMiddle) {
    const int width = GetParam().width, height = GetParam().height;
    const Mapping actual(std::size_t{1} * static_cast<unsigned>(width) *
                         static_cast<unsigned>(height));
    const Mapping expected(std::size_t{1} * static_cast<unsigned>(width) *
                           static_cast<unsigned>(height));
    if (!actual.good() || !expected.good()) GTEST_SKIP() << "no room for so large a mapping";
    auto palette = countPalette();
    for (int type = 0; type < 14; ++type) {
        for (const vector_control::Target& target : allTargets()) {
            const vector_test::ForcedTarget forced(target.bit);
            for (const double place : {0.0, 0.5, 1.0}) {
                constexpr int SPAN = 21;
                const auto from = [&](int size) {
                    return static_cast<int>(place * std::max(size - SPAN, 0));
                };
                const int x0 = from(width), y0 = from(height);
                const int x1 = std::min(width - x0, SPAN) + x0,
                          y1 = std::min(height - y0, SPAN) + y0;
                const auto draw = [&](auto&& render, const Mapping& to) {
                    render(x0, y0, x1, y1, width, height, -1.5, 0.4, -1.1, 0.3, 0.4, 0.2, 4, 50,
                           to.bytes(), palette.data(), type);
                };
                draw(threadCPU<double>, actual);
                draw(threadScalar<double>, expected);
                for (int y = y0; y < y1; ++y) {
                    const std::size_t row =
                        4 * (static_cast<std::size_t>(y) * static_cast<unsigned>(width) +
                             static_cast<unsigned>(x0));
                    EXPECT_EQ(std::memcmp(actual.bytes() + row, expected.bytes() + row,
                                          4 * static_cast<std::size_t>(x1 - x0)),
                              0)
                        << "type " << type << " at (" << x0 << ", " << y << ") on " << target.name;
                }
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Boundary, LargestPicture,
                         testing::Values(Size{INT_MAX, 1}, Size{1, INT_MAX}, Size{INT_MAX, 3},
                                         Size{1 << 30, 2}, Size{46341, 46341}),
                         [](const testing::TestParamInfo<Size>& size) {
                             return std::to_string(size.param.width) + "x" +
                                    std::to_string(size.param.height);
                         });

}  // namespace
