// The calls that set up, launch and release, as a layer beneath the loader sees them.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <fstream>
#include <iterator>

#include "tests/backends/opencl/child.h"
#include "tests/support/sanitized.h"

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::Eq;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::SizeIs;
using testing::StartsWith;

// The calls made after the devices were found, up to the one that starts with `last`.
std::vector<std::string> callsAfterDiscovery(const child::Result& run) {
    auto calls = child::lines(run.callLog);
    const auto first = std::find(calls.begin(), calls.end(), "clGetDeviceInfo 4101 4");
    return {first, calls.end()};
}

std::vector<std::string> callsOf(const std::string& commands, const std::string& settings,
                                 const std::string& name) {
    return child::linesThatStart(child::run(commands, child::layer(settings)).callLog, name);
}

template <class T>
std::string bytesOf(T value) {
    unsigned char bytes[sizeof value];
    std::memcpy(bytes, &value, sizeof value);
    std::string hex;
    for (const unsigned char byte : bytes) {
        char digits[3];
        std::snprintf(digits, sizeof digits, "%02x", byte);
        hex += digits;
    }
    return hex;
}

template <class T>
std::string argument(int index, T value) {
    return "clSetKernelArg " + std::to_string(index) + " " + std::to_string(sizeof value) + " " +
           bytesOf(value);
}

std::string readPicture(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

// The picture that these commands draw in this environment.
std::string drawn(const std::string& commands, const child::Environment& environment) {
    const std::string path = child::scratchFile("picture");
    const auto run = child::run(commands + " save " + path, environment);
    EXPECT_EQ(run.status, 0) << run.out << run.err;
    return readPicture(path);
}

TEST(SetUp, MakesItsCallsInOrder) {
    const auto run = child::run("size 512x256 texts setup", child::layer());
    EXPECT_THAT(
        callsAfterDiscovery(run),
        ElementsAre("clGetDeviceInfo 4101 4", "clCreateContext none 1 none",
                    "clCreateCommandQueue 0", "clCreateBuffer 33 524288", "clCreateBuffer 33 3072",
                    MatchesRegex("clCreateProgramWithSource 1 [0-9]+ #pragma OPENCL "
                                 "EXTENSION cl_khr_fp64: enable"),
                    "clBuildProgram 1 none", "clCreateKernel do_work"));
}

TEST(SetUp, SaysSinglePrecision) {
    EXPECT_THAT(child::run("texts setup", child::layer("long_name=3")).out,
                MatchesRegex("OpenCL single precison on nnn:OpenCL .*\n"));
}

TEST(SetUp, SaysDoublePrecision) {
    EXPECT_THAT(child::run("double texts setup", child::layer("long_name=3")).out,
                MatchesRegex("OpenCL double precison on nnn:OpenCL .*\n"));
}

TEST(SetUp, BuildsApplesTextInDoublePrecision) {
    EXPECT_THAT(callsOf("double texts setup", "", "clCreateProgramWithSource"),
                ElementsAre(HasSubstr("cl_APPLE_fp64_basic_ops")));
}

TEST(SetUp, BuildsTheStoredTextWhenItIsGivenNone) {
    // Texts stored under double precision stay what they are in single precision.
    EXPECT_THAT(callsOf("double texts single setup", "", "clCreateProgramWithSource"),
                ElementsAre(HasSubstr("cl_APPLE_fp64_basic_ops")));
}

TEST(SetUp, AgainWithoutReleaseLosesNothing) {
    const auto run = child::run("texts setup setup release", child::layer());
    EXPECT_THAT(child::linesThatStart(run.callLog, "clReleaseContext"), SizeIs(2));
    EXPECT_THAT(child::linesThatStart(run.callLog, "clReleaseKernel"), SizeIs(2));
}

TEST(SinglePrecisionLaunch, SetsThirteenArgumentsInOrder) {
    const auto calls = callsOf(
        "size 512x256 type 7 iters 99 maxsize 4.5 view -1.1,2.2,-3.3,4.4 c 0.1,0.2 texts setup "
        "frame",
        "", "clSetKernelArg");
    EXPECT_THAT(calls, ElementsAre(argument(0, 512), argument(1, 256), argument(2, -1.1f),
                                   argument(3, 2.2f), argument(4, -3.3f), argument(5, 4.4f),
                                   argument(6, 0.1f), argument(7, 0.2f), argument(8, 4.5f),
                                   argument(9, 99), StartsWith("clSetKernelArg 10 8 "),
                                   StartsWith("clSetKernelArg 11 8 "), argument(12, 7)));
}

TEST(DoublePrecisionLaunch, SetsTheViewAsItIs) {
    const auto calls =
        callsOf("double maxsize 4.5 view -1.1,2.2,-3.3,4.4 c 0.1,0.2 texts setup frame", "",
                "clSetKernelArg");
    ASSERT_THAT(calls, SizeIs(13));
    EXPECT_THAT(
        std::vector<std::string>(calls.begin() + 2, calls.begin() + 9),
        ElementsAre(argument(2, -1.1), argument(3, 2.2), argument(4, -3.3), argument(5, 4.4),
                    argument(6, 0.1), argument(7, 0.2), argument(8, 4.5)));
}

TEST(Launch, LeavesACpuDeviceItsGroupSize) {
    EXPECT_THAT(callsOf("texts setup frame", "type=2", "clEnqueueNDRangeKernel"),
                ElementsAre("clEnqueueNDRangeKernel 2 none 256 256 in none"));
}

TEST(Launch, AsksAGpuForSixteenBySixteen) {
    EXPECT_THAT(callsOf("texts setup frame", "type=4", "clEnqueueNDRangeKernel"),
                ElementsAre("clEnqueueNDRangeKernel 2 none 256 256 in 16 16"));
}

TEST(Launch, AsksADeviceThatIsMoreThanACpuForSixteenBySixteen) {
    EXPECT_THAT(callsOf("texts setup frame", "type=3", "clEnqueueNDRangeKernel"),
                ElementsAre("clEnqueueNDRangeKernel 2 none 256 256 in 16 16"));
}

TEST(Launch, AsksForSingleItemsWhereTheDeviceSaysOne) {
    EXPECT_THAT(callsOf("texts setup frame", "type=4;items=1", "clEnqueueNDRangeKernel"),
                ElementsAre("clEnqueueNDRangeKernel 2 none 256 256 in 1 1"));
}

TEST(Launch, LeavesACpuDeviceItsGroupSizeEvenWhereItSaysOne) {
    EXPECT_THAT(callsOf("texts setup frame", "type=2;items=1", "clEnqueueNDRangeKernel"),
                ElementsAre("clEnqueueNDRangeKernel 2 none 256 256 in none"));
}

TEST(Launch, TakesAnyOtherAnswerForSixteen) {
    EXPECT_THAT(callsOf("texts setup frame", "type=4;items=64", "clEnqueueNDRangeKernel"),
                ElementsAre("clEnqueueNDRangeKernel 2 none 256 256 in 16 16"));
}

TEST(Launch, ReadsTheWholeImageBackBlocking) {
    const auto run = child::run("size 512x256 texts setup frame", child::layer());
    EXPECT_THAT(child::lines(run.callLog).back(), Eq("clEnqueueReadBuffer 1 0 524288"));
}

TEST(Launch, DrawsTheSamePictureInGroupsOfEverySize) {
    const std::string frame = "iters 100 texts setup frame";
    const std::string chosenByRuntime = drawn(frame, child::layer("type=2"));
    EXPECT_EQ(chosenByRuntime.size(), 262144u);
    for (const char* settings :
         {"type=4", "type=4;items=1", "local=32x8", "local=8x32", "local=256x4"}) {
        EXPECT_TRUE(drawn(frame, child::layer(settings)) == chosenByRuntime) << settings;
    }
}

TEST(Launch, DrawsPicturesWhoseSideSixteenDoesNotDivideInSingleItems) {
    const std::string frame = "size 264x280 iters 100 texts setup frame";
    EXPECT_TRUE(drawn(frame, child::layer("type=4;items=1")) ==
                drawn(frame, child::layer("type=2")));
}

TEST(Upload, WritesTheWholePaletteBlocking) {
    EXPECT_THAT(callsOf("texts setup upload", "", "clEnqueueWriteBuffer"),
                ElementsAre("clEnqueueWriteBuffer 1 0 3072"));
}

TEST(Upload, ChangesTheColoursOfTheNextFrame) {
    EXPECT_TRUE(drawn("texts setup frame palette 0 upload frame", {}) ==
                drawn("palette 0 texts setup frame", {}));
}

TEST(Upload, IsNeededForNewColours) {
    EXPECT_TRUE(drawn("texts setup frame palette 0 frame", {}) == drawn("texts setup frame", {}));
}

TEST(Release, MakesItsCallsInOrder) {
    const auto calls = callsAfterDiscovery(child::run("texts setup release", child::layer()));
    ASSERT_THAT(calls, SizeIs(16));
    EXPECT_THAT(std::vector<std::string>(calls.begin() + 8, calls.end()),
                ElementsAre("clFlush", "clFinish", "clReleaseKernel", "clReleaseProgram",
                            "clReleaseMemObject", "clReleaseMemObject", "clReleaseCommandQueue",
                            "clReleaseContext"));
}

TEST(Release, TwiceIsHarmless) {
    const auto run = child::run("texts setup release release", child::layer());
    EXPECT_THAT(child::linesThatStart(run.callLog, "clReleaseContext"), SizeIs(1));
    EXPECT_EQ(run.status, 0);
}

TEST(Release, BeforeSetUpDoesNothing) {
    const auto run = child::run("release", child::layer());
    EXPECT_THAT(child::linesThatStart(run.callLog, "clRelease"), IsEmpty());
    EXPECT_EQ(run.status, 0);
}

TEST(Release, FindsTheKernelAfterThePrecisionWasFlippedWithoutSetUp) {
    EXPECT_THAT(callsOf("texts setup double release", "", "clReleaseKernel"), SizeIs(1));
}

TEST(SwitchingPrecision, DrawsTheOtherPrecision) {
    // A view so narrow that single precision sees one point.
    const std::string view =
        "iters 3000 view -0.74364388703,-0.74364388702,0.1318259042,0.1318259043 ";
    EXPECT_TRUE(drawn(view + "texts setup frame precision frame", {}) ==
                drawn(view + "double texts setup frame", {}));
    EXPECT_FALSE(drawn(view + "texts setup frame", {}) ==
                 drawn(view + "double texts setup frame", {}));
}

TEST(SwitchingPrecision, DrawsSinglePrecisionAgain) {
    EXPECT_TRUE(drawn("texts setup frame precision frame precision frame", {}) ==
                drawn("texts setup frame", {}));
}

TEST(SwitchingDevice, DrawsOnTheOtherDevice) {
    const child::Environment twoDevices = {{"POCL_DEVICES", "pthread basic"}};
    EXPECT_TRUE(drawn("texts setup switch 1 frame", twoDevices) ==
                drawn("texts setup frame", twoDevices));
}

TEST(SwitchingDevice, SaysWhichDeviceIsInUse) {
    auto environment = child::layer();
    environment["POCL_DEVICES"] = "pthread basic";
    const auto run = child::run("texts setup switch 1", environment);
    EXPECT_THAT(child::lines(run.out),
                ElementsAre(MatchesRegex("OpenCL single precison on (basic|cpu-minimal)-.*"),
                            MatchesRegex("OpenCL single precison on (pthread|cpu)-[^m].*")));
}

// A quarter of the switches. Sanitizers make each many times slower, and look at what happens in
// one, not at how often.
constexpr int quarter = SANITIZED ? 25 : 250;

// Every kind of handle, over a thousand switches of device and precision.
TEST(AThousandSwitches, LoseNoHandle) {
    const std::string times = " repeat " + std::to_string(quarter) + " ";
    auto environment = child::layer();
    environment["POCL_DEVICES"] = "pthread basic";
    const auto run = child::run("texts setup" + times + "precision" + times + "switch 1" + times +
                                    "switch 0" + times + "precision frame release",
                                environment);
    ASSERT_EQ(run.status, 0) << run.err;
    const auto count = [&](const char* call) {
        return child::linesThatStart(run.callLog, call).size();
    };
    ASSERT_EQ(count("clCreateContext"), 4u * quarter + 1u);
    EXPECT_EQ(count("clReleaseContext"), count("clCreateContext"));
    EXPECT_EQ(count("clReleaseCommandQueue"), count("clCreateCommandQueue"));
    EXPECT_EQ(count("clReleaseMemObject"), count("clCreateBuffer"));
    EXPECT_EQ(count("clReleaseProgram"), count("clCreateProgramWithSource"));
    EXPECT_EQ(count("clReleaseKernel"), count("clCreateKernel"));
}

}  // namespace
