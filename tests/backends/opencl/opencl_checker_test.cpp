// The kernel under a checker that simulates a device and reports races, reads of what was never
// written and accesses past an array, each with its source line.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>
#include <iterator>

#include "backends/kernels/embedded.h"
#include "tests/backends/opencl/child.h"

namespace {

using testing::HasSubstr;
using testing::IsEmpty;

constexpr char CHECKER[] = "/usr/lib/oclgrind/liboclgrind-rt-icd.so";

// The simulated device alone, behind the test layer.
child::Environment checker(const std::string& settings) {
    const std::string vendors = child::scratchFile("checker.icd");
    std::ofstream(vendors) << CHECKER << "\n";
    child::Environment environment = child::layer(settings);
    environment["OCL_ICD_VENDORS"] = vendors;
    environment["OCLGRIND_DATA_RACES"] = "1";
    environment["OCLGRIND_UNINITIALIZED"] = "1";
    environment["OCLGRIND_CHECK_API"] = "1";
    environment["OCLGRIND_MAX_ERRORS"] = "3";
    environment["OCLGRIND_LOG"] = child::scratchFile("complaints");
    return environment;
}

std::string readFile(const std::string& path) {
    std::ifstream file(path);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

// What the checker says about these commands.
std::string complaints(const std::string& commands, const std::string& settings) {
    const auto run = child::run(commands, checker(settings));
    EXPECT_EQ(run.status, 0) << run.out << run.err;
    EXPECT_THAT(run.callLog, HasSubstr("clEnqueueReadBuffer"));
    return readFile(child::scratchFile("complaints"));
}

// Commands that draw the single-precision text with one place changed.
std::string changedText(const std::string& from, const std::string& to) {
    std::string text = kernel_single_embedded;
    const auto at = text.find(from);
    EXPECT_NE(at, std::string::npos) << from;
    if (at != std::string::npos) text.replace(at, from.size(), to);
    const std::string path = child::scratchFile("changed.cl");
    std::ofstream(path) << text;
    return "size 64x32 iters 5 text " + path + " frame";
}

class Checked : public testing::Test {
  protected:
    void SetUp() override {
        if (!std::ifstream(CHECKER)) GTEST_SKIP() << "oclgrind is not installed";
    }
};

// Commands that draw a small picture by every rule, and by a number that is none.
std::string everyRule(const std::string& precision) {
    std::string commands =
        precision + " size 16x16 iters 4 view -2,2,-1.5,1.5 c 0.6,1.1 texts setup";
    for (int type = 0; type <= 14; ++type) commands += " type " + std::to_string(type) + " frame";
    return commands;
}

TEST_F(Checked, EveryRuleIsCleanInSinglePrecision) {
    EXPECT_THAT(complaints(everyRule("single"), ""), IsEmpty());
}

TEST_F(Checked, EveryRuleIsCleanInDoublePrecision) {
    EXPECT_THAT(complaints(everyRule("double"), ""), IsEmpty());
}

TEST_F(Checked, RulesOfSumsAndProductsAreTheCpusToTheByte) {
    const auto run = child::run("size 16x16 exact", checker(""));
    EXPECT_THAT(child::linesThatStart(run.out, "different "), IsEmpty());
    EXPECT_EQ(child::linesThatStart(run.out, "same ").size(), 26u) << run.out << run.err;
}

struct Groups {
    const char* label;
    const char* settings;  // of the layer
};

class CheckedGroups : public Checked, public testing::WithParamInterface<Groups> {};

TEST_P(CheckedGroups, AreCleanInSinglePrecision) {
    EXPECT_THAT(complaints("size 64x32 iters 4 texts setup frame", GetParam().settings), IsEmpty());
}

TEST_P(CheckedGroups, AreCleanInDoublePrecision) {
    EXPECT_THAT(complaints("double size 64x32 iters 4 texts setup frame", GetParam().settings),
                IsEmpty());
}

const Groups groups[] = {
    {"SixteenBySixteen", ""},         {"OneByOne", "items=1"},
    {"EightByFour", "local=8x4"},     {"ThirtyTwoByTwo", "local=32x2"},
    {"TwoByThirtyTwo", "local=2x32"}, {"SixtyFourByEight", "local=64x8"},
};

INSTANTIATE_TEST_SUITE_P(Each, CheckedGroups, testing::ValuesIn(groups),
                         [](const auto& test) { return std::string(test.param.label); });

TEST_F(Checked, SizesThatSixteenDoesNotDivideAreClean) {
    EXPECT_THAT(complaints("size 40x24 iters 5 texts setup frame", "items=1"), IsEmpty());
}

TEST_F(Checked, WorkItemsOutsideThePictureAreClean) {
    // The range stays what it is; the kernel is told of a smaller picture by a changed text.
    const auto commands = changedText("int inside = x < width && y < height;",
                                      "int inside = x < width - 9 && y < height - 5;");
    EXPECT_THAT(complaints(commands, ""), IsEmpty());
}

// The checker is worth its name: it sees the faults that the kernel must not have.
TEST_F(Checked, StagingALargeGroupWouldBeSeen) {
    const auto commands = changedText(
        "int staged = get_local_size(0) <= 16 && get_local_size(1) "
        "<= 16;",
        "int staged = 1;");
    EXPECT_THAT(complaints(commands, "local=2x32"), HasSubstr("exceeds static array size"));
}

TEST_F(Checked, ABarrierThatSomeWorkItemsMissWouldBeSeen) {
    const auto commands = changedText("    barrier(CLK_LOCAL_MEM_FENCE);",
                                      "    if (get_local_id(0) < 7) barrier(CLK_LOCAL_MEM_FENCE);");
    EXPECT_THAT(complaints(commands, ""), HasSubstr("divergence"));
}

}  // namespace
