// The plain scalar renderer is the last target, whatever instruction sets the build knows and the
// machine has. Built a second time for machines that all have vectors, and run a second time on a
// processor that has none of use.
#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "compute/vector_renderer.h"
#include "tests/compute/count_palette.h"

namespace {

using vector_control::Target;
using vector_control::targets;

class Forced {
  public:
    explicit Forced(std::int64_t bit) { vector_control::forceTarget(bit); }
    ~Forced() { vector_control::forceTarget(0); }
    Forced(const Forced&) = delete;
    Forced& operator=(const Forced&) = delete;
};

// Whether vectors take a tile on.
bool vectorsRender() {
    auto palette = countPalette();
    std::vector<unsigned char> picture(4 * 8 * 8);
    const VectorTile<double> tile{
        0, 0, 8, 8, 8, 8, -2, 2, -2, 2, 0, 0, 4, 20, picture.data(), palette.data()};
    return renderWithVectors(tile, 0);
}

TEST(VectorTargets, EndWithTheScalarRenderer) {
    const std::vector<Target> all = targets();
    ASSERT_FALSE(all.empty());
    EXPECT_EQ(all.back().name, "scalar");
    EXPECT_EQ(std::count_if(all.begin(), all.end(),
                            [](const Target& target) { return target.name == "scalar"; }),
              1);
}

TEST(VectorTargets, AreTheSameWhicheverIsForced) {
    const std::vector<Target> all = targets();
    for (const Target& target : all) {
        EXPECT_NE(target.bit, 0);
        vector_control::forceTarget(target.bit);
        vector_control::forceTarget(0);
        EXPECT_EQ(targets().size(), all.size()) << target.name;
    }
}

TEST(VectorTargets, RenderWithVectorsAllButTheLast) {
    for (const Target& target : targets()) {
        const Forced forced(target.bit);
        EXPECT_EQ(vectorsRender(), target.name != "scalar") << target.name;
        EXPECT_EQ(vector_control::usesVectors(), target.name != "scalar") << target.name;
    }
}

TEST(VectorTargets, GiveTheBestOneBack) {
    const bool best = vectorsRender();
    { const Forced forced(targets().back().bit); }
    EXPECT_EQ(vectorsRender(), best);
    EXPECT_EQ(best, targets().size() > 1);
}

}  // namespace
