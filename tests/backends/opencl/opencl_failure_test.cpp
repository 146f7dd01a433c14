// Every way for a chosen device to fail: the message and the exit status.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tests/backends/opencl/child.h"

namespace {

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;

constexpr char FRAME[] = "texts setup frame";

struct Failure {
    const char* label;
    const char* settings;  // of the layer
    const char* ending;    // of standard output
    int status;
};

class WhenACallFails : public testing::TestWithParam<Failure> {};

TEST_P(WhenACallFails, TheProcessEndsWithItsMessage) {
    const auto run = child::run(FRAME, child::layer(GetParam().settings));
    EXPECT_THAT(run.out, EndsWith(std::string("\n") + GetParam().ending));
}

TEST_P(WhenACallFails, TheProcessEndsWithItsStatus) {
    const auto run = child::run(FRAME, child::layer(GetParam().settings));
    EXPECT_EQ(run.status, GetParam().status) << run.out << run.err;
}

const Failure failures[] = {
    {"Context", "fail=clCreateContext:-6", "Could not create context\n", 2},
    {"CommandQueue", "fail=clCreateCommandQueue:-6", "Could not create command queue\n", 3},
    {"Program", "fail=clCreateProgramWithSource:-6", "Could not create program from source\n", 4},
    {"BuildWithLog", "fail=clBuildProgram:-11;log_size=3",
     "Could not build program\nError code -11\nlll\n", 5},
    {"BuildWithoutLog", "fail=clBuildProgram:-11;log_size=0",
     "Could not build program\nError code -11\nBuild log is NULL\n", 5},
    {"Kernel", "fail=clCreateKernel:-46", "Could not create kernel\n", 6},
    {"PaletteBuffer", "fail=clCreateBuffer#2:-4", "Could not create memory buffer\n", 7},
    {"LastArgument", "fail=clSetKernelArg@12:-51", "Could not set kernel arg\n", 4},
    {"Enqueue", "fail=clEnqueueNDRangeKernel:-54",
     "Could not enqueue task\n-54 is the error code.\n", 5},
    {"ReadBack", "fail=clEnqueueReadBuffer:-5", "Could not read back buffer\nError code -5\n", 6},
};

INSTANTIATE_TEST_SUITE_P(Each, WhenACallFails, testing::ValuesIn(failures),
                         [](const auto& test) { return std::string(test.param.label); });

TEST(ReadBackFailure, WaitsForTheKernelBeforeTheProcessEnds) {
    const auto run = child::run(FRAME, child::layer("fail=clEnqueueReadBuffer:-5"));
    EXPECT_EQ(child::lines(run.callLog).back(), "clFinish");
}

TEST(BuildFailure, ShowsTheCompilersLog) {
    const auto run = child::run(FRAME, child::layer("broken_source"));
    EXPECT_THAT(run.out, AllOf(HasSubstr("\nCould not build program\nError code -11\n"),
                               HasSubstr("this_does_not_exist")));
    EXPECT_EQ(run.status, 5);
}

TEST(BuildFailure, ShowsALogOfAnyLength) {
    const auto run = child::run(FRAME, child::layer("fail=clBuildProgram:-11;log_size=300000"));
    EXPECT_THAT(run.out, EndsWith(std::string(300000, 'l') + "\n"));
}

TEST(BuildFailure, CallsALogThatCannotBeAskedForNull) {
    // The fault is one call alone, so the failed build is a real one here.
    const auto run =
        child::run(FRAME, child::layer("broken_source;fail=clGetProgramBuildInfo:-30"));
    EXPECT_THAT(run.out, EndsWith("Error code -11\nBuild log is NULL\n"));
}

TEST(ImageBuffer, IsNotLookedAtWhenItIsMade) {
    const auto run = child::run("texts setup", child::layer("fail=clCreateBuffer#1:-4"));
    EXPECT_EQ(run.status, 0) << run.out;
}

TEST(ImageBuffer, MissingMakesTheReadBackFail) {
    const auto run = child::run(FRAME, child::layer("fail=clCreateBuffer#1:-4"));
    EXPECT_THAT(run.out, EndsWith("Could not read back buffer\nError code -38\n"));
    EXPECT_EQ(run.status, 6);
}

class EarlierArgument : public testing::TestWithParam<int> {};

TEST_P(EarlierArgument, FailsUnnoticed) {
    // Twice: the first frame sets every argument, the second keeps the old value of the one that
    // fails.
    const auto run =
        child::run("texts setup frame frame",
                   child::layer("fail=clSetKernelArg@" + std::to_string(GetParam()) + "#2:-51"));
    EXPECT_EQ(run.status, 0) << run.out;
}

INSTANTIATE_TEST_SUITE_P(Each, EarlierArgument, testing::Range(0, 12));

TEST(PaletteUpload, FailsUnnoticed) {
    const auto run =
        child::run("texts setup frame upload frame", child::layer("fail=clEnqueueWriteBuffer:-5"));
    EXPECT_EQ(run.status, 0) << run.out;
}

class FailedRelease : public testing::TestWithParam<const char*> {};

TEST_P(FailedRelease, StopsNothing) {
    const auto run = child::run("texts setup frame release",
                                child::layer(std::string("fail=") + GetParam() + ":-5"));
    EXPECT_THAT(run.callLog, HasSubstr("\nclReleaseContext\n"));
    EXPECT_EQ(run.status, 0) << run.out;
}

INSTANTIATE_TEST_SUITE_P(Each, FailedRelease,
                         testing::Values("clFlush", "clFinish", "clReleaseKernel",
                                         "clReleaseProgram", "clReleaseMemObject",
                                         "clReleaseCommandQueue", "clReleaseContext"),
                         [](const auto& test) { return std::string(test.param); });

TEST(SixteenBySixteenGroups, FailOnAPictureTheyDoNotDivide) {
    const auto run = child::run("size 264x256 texts setup frame", child::layer("type=4"));
    EXPECT_THAT(run.out, EndsWith("Could not enqueue task\n-54 is the error code.\n"));
    EXPECT_EQ(run.status, 5);
}

TEST(NoDevice, IsReportedAsAMissingContext) {
    const auto run = child::run(FRAME, {{"OCL_ICD_VENDORS", "/nonexistent"}});
    EXPECT_THAT(run.out, EndsWith("Could not create context\n"));
    EXPECT_EQ(run.status, 2);
}

TEST(NoSetUp, IsReportedAsAFailedArgument) {
    const auto run = child::run("frame");
    EXPECT_EQ(run.out, "Could not set kernel arg\n");
    EXPECT_EQ(run.status, 4);
}

TEST(Success, PrintsNoFailure) {
    const auto run = child::run(FRAME, child::layer());
    EXPECT_THAT(run.out, Not(HasSubstr("Could not")));
    EXPECT_EQ(run.status, 0);
}

}  // namespace
