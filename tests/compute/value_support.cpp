#include "tests/compute/value_support.h"

#include <algorithm>
#include <cstring>

#include "compute/value_tile.h"
#include "tests/compute/vector_support.h"
#include "tests/support/catalogue_table.h"

namespace value_test {
namespace {

using vector_test::allTargets;
using vector_test::ForcedTarget;

// Element 0 of the numbers is one pixel off the picture's corner and rows are wider than it, so
// that a renderer that forgets either is seen.
constexpr int MARGIN = 1, GAP = 3;

template <class T, class Render>
void renderTiles(const View& v, Numbers& out, Render&& render) {
    for (int x = 0; x < v.width; x += v.tileWidth) {
        for (int y = 0; y < v.height; y += v.tileHeight) {
            const ValueTile<T> tile{x,
                                    y,
                                    x + v.tileWidth,
                                    y + v.tileHeight,
                                    v.width,
                                    v.height,
                                    static_cast<T>(v.xMin),
                                    static_cast<T>(v.xMax),
                                    static_cast<T>(v.yMin),
                                    static_cast<T>(v.yMax),
                                    static_cast<T>(v.cx),
                                    static_cast<T>(v.cy),
                                    static_cast<T>(v.limit),
                                    v.maxIters,
                                    out.counts.data(),
                                    out.values.data(),
                                    -MARGIN,
                                    -MARGIN,
                                    v.width + GAP};
            render(tile, v.type);
        }
    }
}

template <class Render>
Numbers numbers(const View& v, Wanted wanted, Render&& render) {
    const auto size =
        static_cast<std::size_t>(v.width + GAP) * static_cast<std::size_t>(v.height + 2 * MARGIN);
    Numbers out{std::vector<std::int32_t>(size, Numbers::CANARY),
                std::vector<double>(size, Numbers::CANARY)};
    const auto renderWanted = [&](auto tile, int type) {
        if (wanted == Wanted::COUNTS) tile.values = nullptr;
        if (wanted == Wanted::VALUES) tile.counts = nullptr;
        render(tile, type);
    };
    if (v.doublePrecision) {
        renderTiles<double>(v, out, renderWanted);
    } else {
        renderTiles<float>(v, out, renderWanted);
    }
    return out;
}

}  // namespace

Numbers vectorNumbers(const View& view, Wanted wanted) {
    return numbers(view, wanted, [](const auto& tile, int type) { renderValues(tile, type); });
}

Numbers scalarNumbers(const View& view, Wanted wanted) {
    return numbers(view, wanted,
                   [](const auto& tile, int type) { renderValuesScalar(tile, type); });
}

testing::AssertionResult sameNumbers(const Numbers& actual, const Numbers& expected, int width) {
    for (std::size_t at = 0; at < expected.counts.size(); ++at) {
        const bool same = actual.counts[at] == expected.counts[at] &&
                          std::memcmp(&actual.values[at], &expected.values[at], 8) == 0;
        if (same) continue;
        const auto row = static_cast<std::size_t>(width + GAP);
        return testing::AssertionFailure()
               << "pixel (" << at % row - MARGIN << ", " << at / row - MARGIN << ") has "
               << actual.counts[at] << ", " << actual.values[at] << " and not "
               << expected.counts[at] << ", " << expected.values[at];
    }
    return testing::AssertionSuccess();
}

testing::AssertionResult allTargetsAgree(const View& view, Wanted wanted) {
    const Numbers expected = scalarNumbers(view, wanted);
    for (const vector_control::Target& target : allTargets()) {
        const ForcedTarget forced(target.bit);
        auto result = sameNumbers(vectorNumbers(view, wanted), expected, view.width);
        if (!result) return result << " on " << target.name << ", " << view;
    }
    return testing::AssertionSuccess();
}

View catalogueView(std::size_t index, bool doublePrecision) {
    const test_support::CatalogueRow& row = test_support::catalogueRows()[index];
    View view;
    view.type = row.type;
    view.doublePrecision = doublePrecision;
    view.xMin = row.xMin;
    view.xMax = row.xMax;
    view.yMin = row.yMin;
    view.yMax = row.yMax;
    view.cx = row.cx;
    view.cy = row.cy;
    const bool raised = row.type <= 1 || row.type >= 11;
    view.limit = raised ? 65536 : row.maxSize;
    view.maxIters = row.maxIters;
    return view;
}

std::ostream& operator<<(std::ostream& out, const View& v) {
    return out << "type " << v.type << (v.doublePrecision ? " double" : " float") << " x " << v.xMin
               << ".." << v.xMax << " y " << v.yMin << ".." << v.yMax << " c (" << v.cx << ", "
               << v.cy << ") iterations " << v.maxIters << " limit " << v.limit << " " << v.width
               << "x" << v.height << " in tiles of " << v.tileWidth << "x" << v.tileHeight;
}

}  // namespace value_test
