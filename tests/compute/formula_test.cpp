#include "compute/formulas.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>
#include <string>
#include <vector>

#include "compute/complex.h"
#include "compute/rounded_trig.h"
#include "tests/support/reference_fractal.h"

namespace {

using test_support::referenceCount;
using test_support::ReferenceView;

template <class T>
using Formula = int (*)(int, int, int, int, T, T, T, T, T, T, T, int);

template <class T>
struct Named {
    int type;
    const char* name;
    Formula<T> count;
};

template <class T>
const std::vector<Named<T>>& formulas() {
    static const std::vector<Named<T>> all = {
        {1, "julia", juliaCPU<T>},
        {2, "sin", sinCPU<T>},
        {3, "cos", cosCPU<T>},
        {4, "sinh", sinhCPU<T>},
        {5, "cosh", coshCPU<T>},
        {6, "barnsley1", barnsley1CPU<T>},
        {7, "barnsley2", barnsley2CPU<T>},
        {8, "barnsley3", barnsley3CPU<T>},
        {9, "barnsleySierpinski", barnsleySierpinskiCPU<T>},
        {10, "dragon", dragonCPU<T>},
        {11, "chebyshev", chebyshevCPU<T>},
        {12, "hermite", hermiteCPU<T>},
        {13, "legendre", legendreCPU<T>},
    };
    return all;
}

// Everything a rule takes besides the pixel; small numbers that are exact in both precisions.
struct Where {
    double re = 0, im = 0;  // the pixel's point
    double cx = 0, cy = 0;
    double limit = 4;
    int maxIters = 50;
};

// The count at a point: pixel (0, 0) lies at the lower corner of the view.
template <class T>
int countAt(Formula<T> formula, const Where& w) {
    return formula(0, 0, 16, 16, static_cast<T>(w.re), static_cast<T>(w.re + 1),
                   static_cast<T>(w.im), static_cast<T>(w.im + 1), static_cast<T>(w.cx),
                   static_cast<T>(w.cy), static_cast<T>(w.limit), w.maxIters);
}

template <class T>
class FormulaTest : public testing::Test {};

using Precisions = testing::Types<float, double>;
TYPED_TEST_SUITE(FormulaTest, Precisions);

// Each part is a product in double, whatever the precision of the argument, rounded once.
TYPED_TEST(FormulaTest, TheComplexFunctionsRoundProductsOfDoubles) {
    std::mt19937 random(5);
    std::uniform_real_distribution<TypeParam> parts(-4, 4);
    const auto is = [](const cpuComplex<TypeParam>& z, double r, double i) {
        return z.r == static_cast<TypeParam>(r) && z.i == static_cast<TypeParam>(i);
    };
    for (int n = 0; n < 1000; ++n) {
        const cpuComplex<TypeParam> a{parts(random), parts(random)};
        const SineCosine r = sineCosine(a.r), hr = hyperbolicSineCosine(a.r);
        const SineCosine j = sineCosine(a.i), hj = hyperbolicSineCosine(a.i);
        EXPECT_PRED3(is, sinC(a), r.sine * hj.cosine, r.cosine * hj.sine);
        EXPECT_PRED3(is, cosC(a), r.cosine * hj.cosine, -(r.sine * hj.sine));
        EXPECT_PRED3(is, sinhC(a), hr.sine * j.cosine, hr.cosine * j.sine);
        EXPECT_PRED3(is, coshC(a), hr.cosine * j.cosine, hr.sine * j.sine);
    }
}

TYPED_TEST(FormulaTest, ComplexNumbersAreAddedAndSubtractedPartByPart) {
    const cpuComplex<TypeParam> a{5, 7}, b{2, 11}, sum = a + b, difference = a - b;
    EXPECT_EQ(sum.r, 7);
    EXPECT_EQ(sum.i, 18);
    EXPECT_EQ(difference.r, 3);
    EXPECT_EQ(difference.i, -4);
}

TYPED_TEST(FormulaTest, NoIterationsAllowedGivesZeroForAllButJulia) {
    for (const auto& f : formulas<TypeParam>()) {
        if (f.type == 1) continue;
        EXPECT_EQ(countAt(f.count, {.re = 0.1, .im = 0.1, .maxIters = 0}), 0) << f.name;
        EXPECT_EQ(countAt(f.count, {.re = 0.1, .im = 0.1, .maxIters = -5}), 0) << f.name;
    }
}

TYPED_TEST(FormulaTest, JuliaTakesOneStepEvenWhenNoneIsAllowed) {
    EXPECT_EQ(countAt(juliaCPU<TypeParam>, {.re = 3, .maxIters = 0}), 0);
    EXPECT_EQ(countAt(juliaCPU<TypeParam>, {.re = 0.5, .maxIters = 0}), 1);
}

TYPED_TEST(FormulaTest, JuliaWithANegativeLimitReturnsZero) {
    EXPECT_EQ(countAt(juliaCPU<TypeParam>, {.re = 0.5, .maxIters = -1}), 0);
    EXPECT_EQ(countAt(juliaCPU<TypeParam>, {.re = 3, .maxIters = -7}), 0);
    EXPECT_EQ(
        countAt(juliaCPU<TypeParam>, {.re = 0.5, .maxIters = std::numeric_limits<int>::min()}), 0);
}

TYPED_TEST(FormulaTest, AnOrbitThatStaysReturnsTheLimitAndJuliaOneMore) {
    // A comparison with NaN is false, so an orbit of NaN stays under every rule.
    const double nan = std::numeric_limits<double>::quiet_NaN();
    for (const auto& f : formulas<TypeParam>()) {
        const int expected = f.type == 1 ? 51 : 50;
        EXPECT_EQ(countAt(f.count, {.re = nan, .im = nan, .cx = nan, .cy = nan}), expected)
            << f.name;
    }
}

TYPED_TEST(FormulaTest, JuliaThatStaysReturnsOneMoreThanTheLimit) {
    EXPECT_EQ(countAt(juliaCPU<TypeParam>, {.re = 0.5, .maxIters = 10}), 11);
}

TYPED_TEST(FormulaTest, TheEscapeTestIsStrict) {
    // 2 squared is 4, whose squared magnitude is 16; the step after that escapes.
    EXPECT_EQ(countAt(juliaCPU<TypeParam>, {.re = 2, .limit = 15}), 0);
    EXPECT_EQ(countAt(juliaCPU<TypeParam>, {.re = 2, .limit = 16}), 1);
    // 2 (1 - 2) = -2, then -2 (1 + 2) = -6.
    EXPECT_EQ(countAt(dragonCPU<TypeParam>, {.re = 2, .cx = 1, .limit = 3}), 0);
    EXPECT_EQ(countAt(dragonCPU<TypeParam>, {.re = 2, .cx = 1, .limit = 4}), 1);
}

TYPED_TEST(FormulaTest, SineAndHyperbolicSineStayAtTheOrigin) {
    EXPECT_EQ(countAt(sinCPU<TypeParam>, {.limit = 0}), 50);
    EXPECT_EQ(countAt(sinhCPU<TypeParam>, {.limit = 0}), 50);
}

TYPED_TEST(FormulaTest, CosineAndHyperbolicCosineLeaveTheOrigin) {
    EXPECT_EQ(countAt(cosCPU<TypeParam>, {.limit = 0}), 0);
    EXPECT_EQ(countAt(coshCPU<TypeParam>, {.limit = 0}), 0);
    EXPECT_EQ(countAt(cosCPU<TypeParam>, {.limit = 1}), 50);
}

TYPED_TEST(FormulaTest, TrigonometricRulesStartAtZeroAndAddThePoint) {
    // sin 0 + 2i = 2i, then sin 2i + 2i = (2 + sinh 2) i.
    EXPECT_EQ(countAt(sinCPU<TypeParam>, {.im = 2}), 1);
    // sinh 0 + 2 = 2, then sinh 2 + 2.
    EXPECT_EQ(countAt(sinhCPU<TypeParam>, {.re = 2}), 1);
    // cosh 0 + 1 = 2, then cosh 2 + 1.
    EXPECT_EQ(countAt(coshCPU<TypeParam>, {.re = 1}), 1);
    // cos 0 + i = 1 + i with |z|^2 = 2, then cos(1 + i) + i = 0.83 + 0.01 i.
    EXPECT_EQ(countAt(cosCPU<TypeParam>, {.im = 1, .limit = 1}), 0);
    EXPECT_EQ(countAt(cosCPU<TypeParam>, {.im = 1, .limit = 2, .maxIters = 2}), 2);
}

TYPED_TEST(FormulaTest, TrigonometricRulesIgnoreTheConstant) {
    for (const auto& f : formulas<TypeParam>()) {
        if (f.type < 2 || f.type > 5) continue;
        const int plain = countAt(f.count, {.re = 0.7, .im = 0.9});
        EXPECT_EQ(countAt(f.count, {.re = 0.7, .im = 0.9, .cx = 30, .cy = 40}), plain) << f.name;
    }
}

TYPED_TEST(FormulaTest, Barnsley1OnTheAxisSubtractsTheConstant) {
    // c (i - 1) = -2, then c (-2 + 1) = -1 - i, then c (-i) = 1 - i, which is a fixed point. Adding
    // c on the axis would go to 2i and from there to -1 + 3i, outside.
    EXPECT_EQ(countAt(barnsley1CPU<TypeParam>, {.im = 1, .cx = 1, .cy = 1, .limit = 9}), 50);
}

TYPED_TEST(FormulaTest, Barnsley2OnTheAxisSubtractsTheConstant) {
    // w = 0.5 is real: w - 1 = -0.5 stays inside, w + 1 = 1.5 would not.
    EXPECT_GE(countAt(barnsley2CPU<TypeParam>, {.re = 0.5, .cx = 1, .limit = 1}), 1);
}

TYPED_TEST(FormulaTest, Barnsley2TestsTheProductAndNotThePoint) {
    // c z = i (1 - 0.5 i) = 0.5 + i has a positive imaginary part though z has a negative one, so
    // the next point is 0.5 + i - i.
    EXPECT_GE(countAt(barnsley2CPU<TypeParam>, {.re = 1, .im = -0.5, .cy = 1, .limit = 1}), 1);
}

TYPED_TEST(FormulaTest, Barnsley3UsesOnlyTheRealPartOfTheConstant) {
    // 4 - 0 - 1 + 2 cx.
    EXPECT_EQ(countAt(barnsley3CPU<TypeParam>, {.re = 2, .cx = -1.5, .cy = 9, .limit = 0}), 1);
    EXPECT_EQ(countAt(barnsley3CPU<TypeParam>, {.re = 2, .cx = 0.5, .limit = 15}), 0);
    EXPECT_EQ(countAt(barnsley3CPU<TypeParam>, {.re = 2, .cx = 0.5, .limit = 16}), 1);
}

TYPED_TEST(FormulaTest, SierpinskiDoublesThePointWhereNeitherPartIsAboveAHalf) {
    // (0.5, 0.5) goes to (1, 1), that to (2, 1).
    EXPECT_EQ(countAt(barnsleySierpinskiCPU<TypeParam>, {.re = 0.5, .im = 0.5, .limit = 1}), 0);
    EXPECT_EQ(countAt(barnsleySierpinskiCPU<TypeParam>, {.re = 0.5, .im = 0.5, .limit = 2}), 1);
    EXPECT_EQ(countAt(barnsleySierpinskiCPU<TypeParam>, {.re = 0.5, .im = 0.5, .limit = 5}), 2);
}

TYPED_TEST(FormulaTest, SierpinskiTestsTheImaginaryPartFirst) {
    // (0.625, 0.875) goes to (1.25, 0.75), that to (2.5, 0.5); the other order would begin with
    // (0.25, 1.75), outside at once.
    EXPECT_EQ(countAt(barnsleySierpinskiCPU<TypeParam>, {.re = 0.625, .im = 0.875, .limit = 3}), 1);
}

TYPED_TEST(FormulaTest, ChebyshevAddsThePixelsPoint) {
    // 16 - 20 + 5 + 1 = 2, then far away.
    EXPECT_EQ(countAt(chebyshevCPU<TypeParam>, {.re = 1, .limit = 3}), 0);
    EXPECT_EQ(countAt(chebyshevCPU<TypeParam>, {.re = 1, .limit = 4}), 1);
}

TYPED_TEST(FormulaTest, HermiteAddsTwelveAndNothingElse) {
    // 16 - 48 + 12 = -20.
    EXPECT_EQ(countAt(hermiteCPU<TypeParam>, {.re = 1, .limit = 399}), 0);
    EXPECT_EQ(countAt(hermiteCPU<TypeParam>, {.re = 1, .limit = 400}), 1);
    EXPECT_EQ(countAt(hermiteCPU<TypeParam>, {.limit = 143}), 0);
    EXPECT_EQ(countAt(hermiteCPU<TypeParam>, {.limit = 144}), 1);
}

TYPED_TEST(FormulaTest, LegendreKeepsItsOwnPolynomial) {
    // 1 is a fixed point: 20 - 30 + 12 - 1; 0 goes to -1, that to -63.
    EXPECT_EQ(countAt(legendreCPU<TypeParam>, {.re = 1, .limit = 1}), 50);
    EXPECT_EQ(countAt(legendreCPU<TypeParam>, {.limit = 0}), 0);
    EXPECT_EQ(countAt(legendreCPU<TypeParam>, {.limit = 1}), 1);
    EXPECT_EQ(countAt(legendreCPU<TypeParam>, {.limit = 63 * 63}), 2);
}

TYPED_TEST(FormulaTest, ColumnAndRowZeroAreTheMinimaAndTheMaximaAreNotReached) {
    // One Julia step with c = 0 escapes where |p|^4 > limit, which tells points apart.
    const auto count = [](int x, int y) {
        return juliaCPU<TypeParam>(x, y, 4, 4, 0, 4, 0, 4, 0, 0, 80, 1000);
    };
    EXPECT_EQ(count(0, 0), 1001);
    EXPECT_EQ(count(3, 0), 0);  // the point 3, not 4
    EXPECT_EQ(count(0, 3), 0);
    EXPECT_EQ(count(2, 0), 1);  // 2, 4, 16
}

TYPED_TEST(FormulaTest, PixelsOutsideTheImageHavePointsToo) {
    EXPECT_EQ(juliaCPU<TypeParam>(-16, 0, 16, 16, 2, 3, 0, 1, 0, 0, 4, 50), 51);  // the point 1
    EXPECT_EQ(juliaCPU<TypeParam>(32, 0, 16, 16, 0, 1, 0, 1, 0, 0, 15, 50), 0);   // the point 2
}

// A spread of views: ordinary ones, odd image sizes, inverted and far ones.
ReferenceView randomView(std::mt19937& random, int type, bool doublePrecision) {
    const auto between = [&](double low, double high) {
        return std::uniform_real_distribution<double>(low, high)(random);
    };
    ReferenceView v;
    v.type = type;
    v.doublePrecision = doublePrecision;
    v.width = std::uniform_int_distribution<int>(1, 3000)(random);
    v.height = std::uniform_int_distribution<int>(1, 3000)(random);
    const double scale = between(0, 1) < 0.2 ? 1e-5 : 2.0;
    v.xMin = between(-2, 1);
    v.xMax = v.xMin + between(-scale, scale);
    v.yMin = between(-2, 1);
    v.yMax = v.yMin + between(-scale, scale);
    v.cx = between(-1.5, 1.5);
    v.cy = between(-1.5, 1.5);
    v.maxSize = std::uniform_int_distribution<int>(0, 200)(random);
    v.maxIters = std::uniform_int_distribution<int>(-1, 300)(random);
    return v;
}

template <class T>
int countOf(Formula<T> formula, const ReferenceView& v, int x, int y) {
    return formula(x, y, v.width, v.height, static_cast<T>(v.xMin), static_cast<T>(v.xMax),
                   static_cast<T>(v.yMin), static_cast<T>(v.yMax), static_cast<T>(v.cx),
                   static_cast<T>(v.cy), static_cast<T>(v.maxSize), v.maxIters);
}

TYPED_TEST(FormulaTest, EveryFormulaAgreesWithPlainArithmeticInRandomViews) {
    constexpr bool doubles = std::is_same_v<TypeParam, double>;
    for (const auto& f : formulas<TypeParam>()) {
        std::mt19937 random(static_cast<unsigned>(f.type));
        for (int trial = 0; trial < 1000; ++trial) {
            const ReferenceView v = randomView(random, f.type, doubles);
            const int x = std::uniform_int_distribution<int>(0, v.width - 1)(random);
            const int y = std::uniform_int_distribution<int>(0, v.height - 1)(random);
            ASSERT_EQ(countOf(f.count, v, x, y), referenceCount(v, x, y))
                << f.name << " trial " << trial << " pixel " << x << ", " << y;
        }
    }
}

TYPED_TEST(FormulaTest, InfiniteViewsAgreeWithPlainArithmetic) {
    const double inf = std::numeric_limits<double>::infinity();
    const double huge = std::is_same_v<TypeParam, double> ? 1e300 : 1e38;
    for (const auto& f : formulas<TypeParam>()) {
        for (const double bound : {inf, -inf, huge, -huge}) {
            for (const double limit : {4.0, 2147483647.0}) {
                ReferenceView v{.type = f.type,
                                .doublePrecision = std::is_same_v<TypeParam, double>,
                                .width = 8,
                                .height = 8,
                                .xMin = -1,
                                .xMax = bound,
                                .yMin = -1,
                                .yMax = bound,
                                .cx = 0.5,
                                .cy = bound,
                                .maxSize = limit,
                                .maxIters = 20};
                for (int i = 0; i < 8; ++i) {
                    ASSERT_EQ(countOf(f.count, v, i, 3), referenceCount(v, i, 3)) << f.name;
                }
            }
        }
    }
}

// Two thousand million steps: some seconds.
TEST(JuliaAtTheLargestLimit, DoesNotOverflow) {
    const int most = std::numeric_limits<int>::max();
    EXPECT_EQ(countAt(juliaCPU<float>, {.re = 0.5, .maxIters = most}), most);
}

TYPED_TEST(FormulaTest, JuliaAtTheLargestLimitStillEscapes) {
    const int most = std::numeric_limits<int>::max();
    EXPECT_EQ(countAt(juliaCPU<TypeParam>, {.re = 2, .limit = 16, .maxIters = most}), 1);
}

}  // namespace
