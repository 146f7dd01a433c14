// The three program texts, as they stand in the binary.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <regex>
#include <string>

#include "compute/kernels/embedded.h"
#include "compute/opencl_backend.h"
#include "compute/renderer.h"

namespace {

using testing::HasSubstr;
using testing::Not;

std::string firstLine(const std::string& text) {
    return text.substr(0, text.find('\n'));
}

std::string withoutFirstLine(const std::string& text) {
    return text.substr(text.find('\n'));
}

std::string replaced(const std::string& text, const std::string& pattern, const std::string& by) {
    return std::regex_replace(text, std::regex(pattern), by);
}

// The double text said in single precision.
std::string toSingle(const std::string& text) {
    std::string single = replaced(text, "\\bdouble\\b", "float");
    single = replaced(single, "\\b(cos|sin|cosh|sinh|exp)CDouble\\b", "$1Cfloat");
    return replaced(single, "add\\(c, h\\)", "add(h, c)");
}

class EachText : public testing::TestWithParam<const char*> {
  protected:
    std::string text = GetParam();
};

TEST(KernelText, SingleEnablesFp64ForItsDoubleLiterals) {
    EXPECT_EQ(firstLine(kernel_single_embedded), "#pragma OPENCL EXTENSION cl_khr_fp64: enable");
}

TEST(KernelText, DoubleForMacEnablesApplesExtension) {
    EXPECT_EQ(firstLine(kernel_double_mac_embedded),
              "#pragma OPENCL EXTENSION cl_APPLE_fp64_basic_ops: enable");
}

TEST(KernelText, DoubleEnablesFp64) {
    EXPECT_EQ(firstLine(kernel_double_embedded), "#pragma OPENCL EXTENSION cl_khr_fp64: enable");
}

TEST(KernelText, DoubleTextsDifferInTheirFirstLineOnly) {
    EXPECT_EQ(withoutFirstLine(kernel_double_mac_embedded),
              withoutFirstLine(kernel_double_embedded));
}

TEST(KernelText, SingleDiffersFromDoubleInPrecisionNamesAndOneSumOnly) {
    EXPECT_EQ(toSingle(withoutFirstLine(kernel_double_embedded)),
              withoutFirstLine(kernel_single_embedded));
}

TEST(KernelText, SingleNamesNoDoubleType) {
    EXPECT_FALSE(std::regex_search(kernel_single_embedded, std::regex("\\bdouble\\b|CDouble")));
}

TEST(KernelText, DoubleNamesNoFloatType) {
    EXPECT_FALSE(std::regex_search(kernel_double_embedded, std::regex("\\bfloat\\b|Cfloat")));
}

TEST(KernelText, SingleHasItsComplexFunctions) {
    for (const char* name :
         {"cosCfloat(", "sinCfloat(", "coshCfloat(", "sinhCfloat(", "expCfloat("})
        EXPECT_THAT(kernel_single_embedded, HasSubstr(name));
}

TEST(KernelText, DoubleHasItsComplexFunctions) {
    for (const char* name :
         {"cosCDouble(", "sinCDouble(", "coshCDouble(", "sinhCDouble(", "expCDouble("})
        EXPECT_THAT(kernel_double_mac_embedded, HasSubstr(name));
}

TEST_P(EachText, HasEveryHelper) {
    for (const char* name :
         {"cuComplex setComplex(", " magnitude2(", "cuComplex mult(", "cuComplex mults(",
          "cuComplex pow_int(", "cuComplex add(", "cuComplex subtract(", "cuComplex addScalar(",
          "cuComplex subtractScalar(", "cuComplex negate("})
        EXPECT_THAT(text, HasSubstr(name));
}

TEST_P(EachText, HasEveryRule) {
    for (const char* name : {"mandel", "julia", "sinFractal", "cosFractal", "sinhFractal",
                             "coshFractal", "barnsley1", "barnsley2", "barnsley3",
                             "barnsleySierpinski", "dragon", "chebychev", "hermite", "legendre"})
        EXPECT_THAT(text, HasSubstr("\nint " + std::string(name) +
                                    "(int x, int y, int width, int height, "));
}

TEST_P(EachText, SharesATileOfSixteenBySixteenPixels) {
    EXPECT_THAT(text, HasSubstr("__local uchar localPixels[16][16][4];"));
}

TEST_P(EachText, KeepsNoTokenOfTheSharedSource) {
    EXPECT_THAT(text, Not(HasSubstr("REAL")));
}

TEST_P(EachText, HasTheKernelWithItsArgumentsInOrder) {
    const std::string flat = replaced(text, "\\s+", " ");
    EXPECT_TRUE(std::regex_search(
        flat, std::regex("__kernel void do_work\\(int width, int height, (\\w+) xMin, \\1 xMax, "
                         "\\1 yMin, \\1 yMax, \\1 cx, \\1 cy, \\1 maxSizeSquared, int maxIters, "
                         "__global uchar \\*buffer, __global uchar \\*colourPalette, "
                         "int type\\)")));
}

std::string textName(const testing::TestParamInfo<const char*>& test) {
    const char* names[] = {"Single", "DoubleMac", "Double"};
    return names[test.index];
}

INSTANTIATE_TEST_SUITE_P(All, EachText,
                         testing::Values(kernel_single_embedded, kernel_double_mac_embedded,
                                         kernel_double_embedded),
                         textName);

TEST(LoadKernel, GivesTheSingleTextInSinglePrecision) {
    bDoublePrecision = false;
    EXPECT_EQ(load_kernel(), kernel_single_embedded);
}

TEST(LoadKernel, GivesApplesTextInDoublePrecision) {
    bDoublePrecision = true;
    const std::string text = load_kernel();
    bDoublePrecision = false;
    EXPECT_EQ(text, kernel_double_mac_embedded);
}

}  // namespace
