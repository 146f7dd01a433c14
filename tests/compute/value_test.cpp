// Counts and smooth values are what their definition says, for every rule.
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <complex>
#include <limits>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "compute/formulas.h"
#include "compute/value_tile.h"
#include "tests/compute/value_support.h"

namespace {

using value_test::catalogueView;
using value_test::View;
using Wide = std::complex<long double>;

struct Numbers {
    int count = -77;
    double value = -77;
};

// The numbers of the first pixel of a view, which lies at its corner.
template <class T>
Numbers cornerOf(const View& v) {
    Numbers out;
    std::int32_t count = 0;
    renderValuesScalar(
        ValueTile<T>{0, 0, 1, 1, 1, 1, static_cast<T>(v.xMin), static_cast<T>(v.xMax),
                     static_cast<T>(v.yMin), static_cast<T>(v.yMax), static_cast<T>(v.cx),
                     static_cast<T>(v.cy), static_cast<T>(v.limit), v.maxIters, &count, &out.value,
                     0, 0, 1},
        v.type);
    out.count = count;
    return out;
}

Numbers numbersAt(View v, double x, double y) {
    v.xMin = x;
    v.yMin = y;
    return cornerOf<double>(v);
}

View squaring(double limit) {
    View v;
    v.type = 1;  // Julia with c = 0
    v.limit = limit;
    return v;
}

TEST(SmoothValue, OfAMagnitudeHalfwayBetweenInLogarithmsIsHalfwayBetweenTheSteps) {
    const Numbers at = numbersAt(squaring(64), 2, 0);  // |z|^2: 4, 16, 256
    EXPECT_EQ(at.count, 1);
    EXPECT_NEAR(at.value, 0.5, 1e-15);
}

TEST(SmoothValue, OfAMagnitudeThatWasTheLimitIsTheStepBefore) {
    const Numbers at = numbersAt(squaring(16), 2, 0);
    EXPECT_EQ(at.count, 1);
    EXPECT_EQ(at.value, 0.0);
}

TEST(SmoothValue, CountsTheOrbitsStartAsStepMinusOne) {
    const Numbers at = numbersAt(squaring(8), 2, 0);
    EXPECT_EQ(at.count, 0);
    EXPECT_NEAR(at.value, -0.5, 1e-15);
}

TEST(SmoothValue, OfAnOrbitFromZeroThatEscapesAtOnceIsZero) {
    View v;
    const Numbers at = numbersAt(v, 3, 0);  // no logarithm of 0: the quotient is not a number
    EXPECT_EQ(at.count, 0);
    EXPECT_EQ(at.value, 0.0);
}

TEST(SmoothValue, OfAnOrbitThatStartsBeyondTheLimitIsZero) {
    const Numbers at = numbersAt(squaring(4), 3, 0);
    EXPECT_EQ(at.count, 0);
    EXPECT_EQ(at.value, 0.0);
}

TEST(SmoothValue, OfAnInfiniteMagnitudeIsTheStepBefore) {
    const Numbers at = numbersAt(squaring(1e200), 1e90, 0);  // |z|^2: 1e180, infinity
    EXPECT_EQ(at.count, 0);
    EXPECT_EQ(at.value, -1.0);
}

TEST(SmoothValue, TakesALimitThatIsNoWholeNumber) {
    EXPECT_EQ(numbersAt(squaring(4.5), 1.5, 0).count, 0);  // |z|^2: 2.25, 5.06
    EXPECT_EQ(numbersAt(squaring(5.25), 1.5, 0).count, 1);
}

TEST(SmoothValue, OfAPixelThatStaysIsNone) {
    const Numbers at = numbersAt(squaring(4), 0.5, 0);
    EXPECT_EQ(at.count, 768);
    EXPECT_TRUE(std::isnan(at.value));
}

TEST(SmoothValue, IsNotAskedForWhereThePointerIsNull) {
    std::int32_t count = -77;
    double value = -77;
    ValueTile<double> tile{0, 0, 1, 1, 1, 1, 2, 3, 0, 1, 0, 0, 64, 10, &count, nullptr, 0, 0, 1};
    renderValues(tile, 1);
    EXPECT_EQ(count, 1);
    tile.counts = nullptr;
    tile.values = &value;
    renderValues(tile, 1);
    EXPECT_NEAR(value, 0.5, 1e-15);
}

TEST(ATile, LiesAtItsPlaceInItsRows) {
    constexpr int STRIDE = 7, ROWS = 4;
    const View v = squaring(64);
    std::vector<std::int32_t> counts(STRIDE * ROWS, -77);
    std::vector<double> values(STRIDE * ROWS, -77);
    renderValuesScalar(ValueTile<double>{2, 3, 5, 6, 9, 8, 1, 3, 0, 2, v.cx, v.cy, v.limit,
                                         v.maxIters, counts.data(), values.data(), 1, 2, STRIDE},
                       v.type);
    for (int y = 0; y < ROWS; ++y) {
        for (int x = 0; x < STRIDE; ++x) {
            const auto at = static_cast<std::size_t>(y * STRIDE + x);
            const bool inside = x >= 1 && x < 4 && y >= 1;
            const Numbers expected =
                inside ? numbersAt(v, 1 + (x + 1) * 2.0 / 9, (y + 2) * 2.0 / 8) : Numbers{};
            EXPECT_EQ(counts[at], expected.count) << x << " " << y;
            EXPECT_NEAR(values[at], expected.value, 1e-12) << x << " " << y;
        }
    }
}

// The counts of a picture of 6 x 4 pixels, two pixels of room around it, after this tile.
std::vector<std::int32_t> countsOfTile(int type, int xStart, int yStart, int xEnd, int yEnd) {
    std::vector<std::int32_t> counts(10 * 8, -77);
    renderValuesScalar(ValueTile<double>{xStart, yStart, xEnd, yEnd, 6, 4, 0, 3, 0, 2, 0, 0, 4, 9,
                                         counts.data(), nullptr, -2, -2, 10},
                       type);
    return counts;
}

TEST(ATile, IsClippedToThePicture) {
    const auto whole = countsOfTile(1, 0, 0, 6, 4);
    EXPECT_EQ(std::count(whole.begin(), whole.end(), -77), 80 - 24);
    EXPECT_EQ(countsOfTile(1, -2, 0, 6, 4), whole);
    EXPECT_EQ(countsOfTile(1, 0, -2, 6, 4), whole);
    EXPECT_EQ(countsOfTile(1, 0, 0, 8, 4), whole);
    EXPECT_EQ(countsOfTile(1, 0, 0, 6, 6), whole);
}

TEST(ATile, UnderAnUnknownRuleStaysEverywhere) {
    const auto counts = countsOfTile(99, 1, 2, 5, 4);
    for (int y = -2; y < 6; ++y) {
        for (int x = -2; x < 8; ++x) {
            const bool inside = x >= 1 && x < 5 && y >= 2 && y < 4;
            const auto at = static_cast<std::size_t>((y + 2) * 10 + x + 2);
            EXPECT_EQ(counts[at], inside ? 9 : -77) << x << ' ' << y;
        }
    }
    View v = squaring(4);
    v.type = 99;
    EXPECT_TRUE(std::isnan(numbersAt(v, 3, 0).value));
}

TEST(SmoothValue, HasNoStepsWhereNoneIsAllowed) {
    View v = squaring(4);
    for (const int limit : {0, -1, -5}) {
        v.maxIters = limit;
        EXPECT_EQ(numbersAt(v, 3, 0).count, 0) << limit;
        EXPECT_TRUE(std::isnan(numbersAt(v, 3, 0).value)) << limit;
    }
}

// Two thousand million steps take ten seconds and would leave a count.
TEST(ALongOrbit, IsGivenUpInWork) {
    std::int32_t count = -77;
    std::atomic<bool> stop{false};
    std::thread stopper([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(20));
        stop = true;
    });
    renderValuesScalar(
        ValueTile<double>{0,      0,       1, 1, 1, 1,    -1.9,
                          -1.8,   0,       0, 0, 0, 4,    std::numeric_limits<int>::max(),
                          &count, nullptr, 0, 0, 1, &stop},
        0);
    stopper.join();
    EXPECT_EQ(count, -77);
}

// The catalogue's views with both precisions, on a grid of points.
class EveryRule : public testing::TestWithParam<std::size_t> {
  protected:
    // Calls check(view) with a view of one pixel at each point of the grid.
    template <class Check>
    void forEachPoint(bool doublePrecision, Check&& check) const {
        constexpr int SIDE = 60;
        View v = catalogueView(GetParam(), doublePrecision);
        const View whole = v;
        for (int i = 0; i < SIDE * SIDE; ++i) {
            v.xMin = whole.xMin + (i % SIDE + 0.37) / SIDE * (whole.xMax - whole.xMin);
            v.yMin = whole.yMin + (i / SIDE + 0.41) / SIDE * (whole.yMax - whole.yMin);
            check(v);
        }
    }
};

template <class T>
int formulaCount(const View& v) {
    int count = 0;
    visitRule(v.type, [&](auto rule) {
        count = pixelCount<decltype(rule)>(
            0, 0, 1, 1, static_cast<T>(v.xMin), static_cast<T>(v.xMax), static_cast<T>(v.yMin),
            static_cast<T>(v.yMax), static_cast<T>(v.cx), static_cast<T>(v.cy),
            static_cast<T>(v.limit), v.maxIters);
    });
    return count;
}

TEST_P(EveryRule, CountsAsTheFormulasDoUpToTheLimit) {
    for (const int maxIters : {0, 1, 2, 3, 5, 40}) {
        forEachPoint(true, [&](View v) {
            v.maxIters = maxIters;
            ASSERT_EQ(cornerOf<double>(v).count, std::min(formulaCount<double>(v), maxIters)) << v;
            ASSERT_EQ(cornerOf<float>(v).count, std::min(formulaCount<float>(v), maxIters)) << v;
        });
    }
}

TEST_P(EveryRule, HasAValueBetweenTheStepBeforeAndTheCount) {
    forEachPoint(false, [&](const View& v) {
        const Numbers at = cornerOf<float>(v);
        if (at.count == v.maxIters) {
            ASSERT_TRUE(std::isnan(at.value)) << v;
        } else {
            ASSERT_GE(at.value, at.count - 1) << v;
            ASSERT_LE(at.value, at.count) << v;
        }
    });
}

// The rules once more, in extended precision and written without those of the program.
Wide wideStep(int type, Wide z, Wide c) {
    const long double x = z.real(), y = z.imag();
    const Wide w = c * z;
    switch (type) {
        case 2:
            return std::sin(z) + c;
        case 3:
            return std::cos(z) + c;
        case 4:
            return std::sinh(z) + c;
        case 5:
            return std::cosh(z) + c;
        case 6:
            return x >= 0 ? c * (z - 1.0L) : c * (z + 1.0L);
        case 7:
            return w.imag() >= 0 ? w - c : w + c;
        case 8:
            return {x * x - y * y - 1 + c.real() * x, 2 * x * y};
        case 9:
            return {y <= 0.5L && x > 0.5L ? 2 * x - 1 : 2 * x, y > 0.5L ? 2 * y - 1 : 2 * y};
        case 10:
            return c * z * (1.0L - z);
        case 11:
            return z * (5.0L + z * z * (-20.0L + z * z * 16.0L)) + c;
        case 12:
            return 12.0L + z * z * (-48.0L + 16.0L * z * z);
        case 13:
            return -1.0L + z * (12.0L + z * (-30.0L + 20.0L * z));
        default:
            return z * z + c;
    }
}

struct WideNumbers {
    int count = 0;
    long double value = 0;
};

WideNumbers wideNumbers(const View& v, Wide p) {
    const bool fromZero = v.type == 0 || (v.type >= 2 && v.type <= 5);
    const bool pixelConstant = fromZero || v.type >= 11;
    Wide z = fromZero ? Wide(0) : p;
    const Wide c = pixelConstant ? p : Wide(v.cx, v.cy);
    long double before = std::norm(z);
    for (int n = 0; n < v.maxIters; ++n) {
        z = wideStep(v.type, z, c);
        const long double after = std::norm(z);
        if (after > v.limit) {
            const long double limit = std::log(static_cast<long double>(v.limit));
            const long double q = (limit - std::log(before)) / (std::log(after) - std::log(before));
            return {n, n - 1 + (q >= 0 && q <= 1 ? q : 1.0L)};
        }
        before = after;
    }
    return {v.maxIters, std::numeric_limits<long double>::quiet_NaN()};
}

// Where an orbit magnifies what it starts from so much that the roundings of double show, extended
// precision has another value. A point that is 2^-49 off tells.
TEST_P(EveryRule, HasTheValueOfExtendedPrecision) {
    int escaped = 0, compared = 0;
    forEachPoint(true, [&](const View& v) {
        const Wide p(v.xMin, v.yMin);
        const WideNumbers truth = wideNumbers(v, p);
        if (truth.count == v.maxIters) return;
        ++escaped;
        const WideNumbers beside = wideNumbers(v, p * Wide(1 + 0x1p-49L, 0x1p-49L));
        if (!(std::fabs(beside.value - truth.value) < 1e-11L)) return;
        ++compared;
        const Numbers at = cornerOf<double>(v);
        ASSERT_EQ(at.count, truth.count) << v;
        const long double size = std::max(std::fabs(truth.value), 1.0L);  // a value may be 0
        ASSERT_LE(std::fabs(at.value - truth.value), 1e-9L * size) << v;
    });
    EXPECT_GE(compared, escaped * 3 / 4);
    EXPECT_GE(compared, 200);
}

// |z|^2 after each of two steps, in the arithmetic of the picture.
template <class T>
void lastMagnitudes(const View& v, int count, T& before, T& after) {
    visitRule(v.type, [&](auto rule) {
        using R = decltype(rule);
        const cpuComplex<T> p{static_cast<T>(v.xMin), static_cast<T>(v.yMin)};
        const cpuComplex<T> c = R::constant == Constant::pixel
                                    ? p
                                    : cpuComplex<T>{static_cast<T>(v.cx), static_cast<T>(v.cy)};
        cpuComplex<T> z = R::start == Start::pixel ? p : cpuComplex<T>{T(0), T(0)};
        after = magnitudeSquared(z);
        for (int n = 0; n <= count; ++n) {
            z = R::step(z, c);
            before = after;
            after = magnitudeSquared(z);
        }
    });
}

TEST_P(EveryRule, TakesTheMagnitudesOfThePicturesPrecision) {
    int compared = 0;
    forEachPoint(false, [&](const View& v) {
        const Numbers at = cornerOf<float>(v);
        if (at.count == v.maxIters) return;
        float before = 0, after = 0;
        lastMagnitudes<float>(v, at.count, before, after);
        const long double from = std::log(static_cast<long double>(before));
        const long double to = std::log(static_cast<long double>(after));
        const long double q = (std::log(static_cast<long double>(v.limit)) - from) / (to - from);
        if (!(q >= 0 && q <= 1)) return;
        ++compared;
        ASSERT_NEAR(at.value, static_cast<double>(at.count - 1 + q), 1e-9) << v;
    });
    EXPECT_GE(compared, 200);
}

// Values of doubles use all their bits, save under the trigonometric rules.
TEST_P(EveryRule, HasValuesOf32BitsUnderTrigonometricRulesInDouble) {
    int escaped = 0, cut = 0;
    const auto count = [&](double value) {
        if (!(std::fabs(value) < 1e9)) return;
        int exponent;
        const double units = std::ldexp(std::frexp(value, &exponent), 32);
        ++escaped;
        cut += units == std::floor(units);
    };
    const int type = catalogueView(GetParam(), true).type;
    const bool trigonometric = type >= 2 && type <= 5;
    forEachPoint(true, [&](const View& v) { count(cornerOf<double>(v).value); });
    EXPECT_EQ(cut == escaped, trigonometric) << cut << " of " << escaped;
    escaped = cut = 0;
    forEachPoint(false, [&](const View& v) { count(cornerOf<float>(v).value); });
    EXPECT_LT(cut, escaped);
}

// Points of the plane without a pattern, the same on every machine.
class Uniform {
  public:
    double between(double low, double high) {
        return low + (high - low) * static_cast<double>(generator()) / 4294967296.0;
    }

  private:
    std::mt19937 generator{20260303};
};

// Two points as close as doubles allow, on either side of the border between two counts.
struct Border {
    double x0, y0, x1, y1;
    Numbers first, second;
};

Border narrowed(const View& v, Border b) {
    for (int i = 0; i < 60; ++i) {
        const double x = 0.5 * (b.x0 + b.x1), y = 0.5 * (b.y0 + b.y1);
        const Numbers middle = numbersAt(v, x, y);
        if (middle.count == b.first.count) {
            b.x0 = x, b.y0 = y, b.first = middle;
        } else {
            b.x1 = x, b.y1 = y, b.second = middle;
        }
    }
    return b;
}

// Whether the lower of the two counts ends there because |z|^2 passes the limit. Else the rule
// itself jumps between the points, as Barnsley's do on a line.
bool isAtTheLimit(View v, const Border& b) {
    const int count = std::min(b.first.count, b.second.count);
    double before, first, second;
    v.xMin = b.x0, v.yMin = b.y0;
    lastMagnitudes(v, count, before, first);
    v.xMin = b.x1, v.yMin = b.y1;
    lastMagnitudes(v, count, before, second);
    return std::fabs(first - v.limit) < 1e-6 * v.limit &&
           std::fabs(second - v.limit) < 1e-6 * v.limit;
}

TEST_P(EveryRule, HasContinuousValuesWhereTheCountChanges) {
    const View v = catalogueView(GetParam(), true);
    Uniform uniform;
    int crossed = 0;
    for (int segment = 0; segment < 200; ++segment) {
        const double x0 = uniform.between(v.xMin, v.xMax), x1 = uniform.between(v.xMin, v.xMax);
        const double y0 = uniform.between(v.yMin, v.yMax), y1 = uniform.between(v.yMin, v.yMax);
        constexpr int STEPS = 300;
        double x = x0, y = y0;
        Numbers last = numbersAt(v, x, y);
        for (int i = 1; i <= STEPS; ++i) {
            const double nextX = x0 + (x1 - x0) * i / STEPS, nextY = y0 + (y1 - y0) * i / STEPS;
            const Numbers next = numbersAt(v, nextX, nextY);
            if (std::abs(next.count - last.count) == 1 && std::max(next.count, last.count) < 12) {
                const Border b = narrowed(v, {x, y, nextX, nextY, last, next});
                if (std::abs(b.first.count - b.second.count) == 1 && isAtTheLimit(v, b)) {
                    ++crossed;
                    ASSERT_NEAR(b.first.value, b.second.value, 1e-5)
                        << v << ' ' << b.x0 << ' ' << b.y0;
                }
            }
            x = nextX, y = nextY, last = next;
        }
    }
    EXPECT_GE(crossed, 50);
}

INSTANTIATE_TEST_SUITE_P(Values, EveryRule,
                         testing::Values(0, 1, 2, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15, 16, 17),
                         [](const auto& view) { return "View" + std::to_string(view.param); });

}  // namespace
