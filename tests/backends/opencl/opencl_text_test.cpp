// The three program texts, as they stand in the binary.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cctype>
#include <sstream>
#include <string>

#include "backends/kernels/embedded.h"
#include "backends/opencl_backend.h"
#include "backends/renderer.h"

namespace {

using testing::HasSubstr;
using testing::Not;

std::string firstLine(const std::string& text) {
    return text.substr(0, text.find('\n'));
}

std::string withoutFirstLine(const std::string& text) {
    return text.substr(text.find('\n'));
}

bool isPartOfAName(char letter) {
    return std::isalnum(static_cast<unsigned char>(letter)) || letter == '_';
}

// The text with every name `from` (not names that contain it) replaced.
std::string renamed(std::string text, const std::string& from, const std::string& to) {
    for (auto at = text.find(from); at != std::string::npos; at = text.find(from, at + 1)) {
        const auto end = at + from.size();
        if (at > 0 && isPartOfAName(text[at - 1])) continue;
        if (end < text.size() && isPartOfAName(text[end])) continue;
        text.replace(at, from.size(), to);
    }
    return text;
}

// The double text said in single precision.
std::string toSingle(std::string text) {
    text = renamed(text, "double", "float");
    for (const std::string name : {"cosC", "sinC", "coshC", "sinhC", "expC"}) {
        text = renamed(text, name + "Double", name + "float");
    }
    return renamed(text, "add(c, h)", "add(h, c)");
}

// The text with every run of white space as one blank.
std::string onOneLine(const std::string& text) {
    std::istringstream words(text);
    std::string flat;
    for (std::string word; words >> word;) flat += word + " ";
    return flat;
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
    EXPECT_EQ(toSingle(kernel_single_embedded), kernel_single_embedded);
}

TEST(KernelText, DoubleNamesNoFloatType) {
    EXPECT_THAT(kernel_double_embedded, Not(HasSubstr("float")));
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

TEST_P(EachText, LetsNoDeviceRoundAProductAndASumOnceFromItsSecondLineOn) {
    EXPECT_EQ(firstLine(text.substr(text.find('\n') + 1)), "#pragma OPENCL FP_CONTRACT OFF");
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
    const std::string number = text.find("CDouble") == std::string::npos ? "float " : "double ";
    std::string arguments = "int width, int height, ";
    for (const char* name : {"xMin", "xMax", "yMin", "yMax", "cx", "cy", "maxSizeSquared"}) {
        arguments += number + name + ", ";
    }
    arguments += "int maxIters, __global uchar *buffer, __global uchar *colourPalette, int type";
    EXPECT_THAT(onOneLine(text), HasSubstr("__kernel void do_work(" + arguments + ")"));
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
