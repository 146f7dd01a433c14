// Which devices are found, what is printed about them, and what does not stop the search.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <fstream>

#include "backends/opencl_backend.h"
#include "tests/backends/opencl/child.h"
#include "tests/support/stdout_capture.h"

namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::SizeIs;
using testing::StartsWith;

std::vector<std::string> listed(const child::Environment& environment = {}) {
    return child::lines(child::run("list", environment).out);
}

// Lists that get_list_of_devices fills.
struct Lists {
    std::vector<cl_device_id> ids;
    std::vector<std::string> names;
    std::vector<bool> doubles;
    std::vector<std::uint64_t> kinds;

    void fill(bool print) { get_list_of_devices(ids, names, doubles, kinds, print); }
};

TEST(Discovery, PrintsOneLineForADevice) {
    EXPECT_THAT(listed(), ElementsAre(MatchesRegex(
                              " Device ID: 0 Portable Computing Language Version OpenCL "
                              ".* (pthread|cpu)-.* RAM: [0-9]+ MB, Double Precision: Yes")));
}

TEST(Discovery, PutsTheVersionBeforeTheName) {
    EXPECT_THAT(listed(child::layer("long_name=5")),
                ElementsAre(MatchesRegex(" Device ID: 0 Portable Computing Language Version OpenCL "
                                         "[^:]*PoCL.* nnnnn RAM: .*")));
}

TEST(Discovery, NumbersTwoDevicesFromZero) {
    EXPECT_THAT(listed({{"POCL_DEVICES", "pthread basic"}}),
                ElementsAre(StartsWith(" Device ID: 0 "), StartsWith(" Device ID: 1 ")));
}

TEST(Discovery, FindsNothingWithoutVendors) {
    const auto run = child::run("list", {{"OCL_ICD_VENDORS", "/nonexistent"}});
    EXPECT_THAT(run.out, IsEmpty());
    EXPECT_EQ(run.status, 0) << run.err;
}

TEST(Discovery, PassesAPlatformWithoutDevices) {
    const std::string empty = "/etc/OpenCL/vendors/mesa.icd";
    if (!std::ifstream(empty)) GTEST_SKIP() << "mesa-opencl-icd is not installed";
    // Mesa keeps what it allocated, and unloads the libraries that a suppression could name.
    const auto run =
        child::run("list", {{"OCL_ICD_VENDORS", empty}, {"ASAN_OPTIONS", "detect_leaks=0"}});
    EXPECT_THAT(run.out, IsEmpty());
    EXPECT_EQ(run.status, 0) << run.err;
}

TEST(Discovery, PassesAPlatformThatFailsAndLeavesItsCountAlone) {
    const auto run = child::run("list", {{"POCL_DEVICES", "nosuch"}});
    EXPECT_THAT(run.out, IsEmpty());
    EXPECT_EQ(run.status, 0) << run.err;
}

TEST(Discovery, AsksForCpuGpuAndAccelerator) {
    const auto run = child::run("list", child::layer());
    EXPECT_THAT(child::linesThatStart(run.callLog, "clGetDeviceIDs"),
                testing::Each(StartsWith("clGetDeviceIDs 14 ")));
}

TEST(Discovery, AsksTheWorkItemSizesForTheirSizeOnly) {
    const auto run = child::run("list", child::layer());
    const std::string query = "clGetDeviceInfo " + std::to_string(CL_DEVICE_MAX_WORK_ITEM_SIZES);
    EXPECT_THAT(child::linesThatStart(run.callLog, query), testing::Each(query + " 0"));
}

// A query that fails costs its own value, not the device.
struct FailedQuery {
    const char* label;
    int query;
    const char* rest;  // of the line that lists the device
};

class WhenAQueryFails : public testing::TestWithParam<FailedQuery> {};

TEST_P(WhenAQueryFails, TheDeviceIsListedWithTheRest) {
    const auto lines =
        listed(child::layer("fail=clGetDeviceInfo@" + std::to_string(GetParam().query) + ":-5"));
    EXPECT_THAT(lines, ElementsAre(MatchesRegex(GetParam().rest)));
}

const FailedQuery failedQueries[] = {
    {"Name", CL_DEVICE_NAME, " Device ID: 0 Portable .* Version OpenCL .*  RAM: .*"},
    {"Extensions", CL_DEVICE_EXTENSIONS, " Device ID: 0 .* Double Precision: No"},
    {"Version", CL_DEVICE_VERSION,
     " Device ID: 0 Portable Computing Language Version  (pthread|cpu)-.*"},
    {"Memory", CL_DEVICE_GLOBAL_MEM_SIZE, " Device ID: 0 .* RAM: 0 MB, Double Precision: Yes"},
    {"Type", CL_DEVICE_TYPE, " Device ID: 0 .* Double Precision: Yes"},
    {"ItemSizes", CL_DEVICE_MAX_WORK_ITEM_SIZES, " Device ID: 0 .* Double Precision: Yes"},
};

INSTANTIATE_TEST_SUITE_P(Each, WhenAQueryFails, testing::ValuesIn(failedQueries),
                         [](const auto& test) { return std::string(test.param.label); });

TEST(Discovery, ListsADeviceOfAPlatformWithoutAName) {
    EXPECT_THAT(listed(child::layer("fail=clGetPlatformInfo:-32")),
                ElementsAre(StartsWith(" Device ID: 0  Version OpenCL ")));
}

TEST(Discovery, FindsNothingWhenThePlatformsCannotBeListed) {
    EXPECT_THAT(listed(child::layer("fail=clGetPlatformIDs:-6")), IsEmpty());
}

TEST(Discovery, FindsNothingWhenThePlatformsVanishBetweenTheTwoCalls) {
    // Calls 1 and 2 belong to the silent search that comes first.
    EXPECT_THAT(listed(child::layer("fail=clGetPlatformIDs#4:-6")), IsEmpty());
}

TEST(Discovery, FindsNothingWhenTheDevicesCannotBeListed) {
    EXPECT_THAT(listed(child::layer("fail=clGetDeviceIDs:-1")), IsEmpty());
}

TEST(Discovery, FindsNothingWhenTheDevicesVanishBetweenTheTwoCalls) {
    // Calls 1 and 2 belong to the silent search that comes first.
    EXPECT_THAT(listed(child::layer("fail=clGetDeviceIDs#4:-1")), IsEmpty());
}

TEST(Discovery, SaysNoToDoublesWhereTheExtensionIsMissing) {
    EXPECT_THAT(listed(child::layer("no_fp64")), ElementsAre(EndsWith("Precision: No")));
}

TEST(Discovery, TakesANameOfAnyLength) {
    EXPECT_THAT(listed(child::layer("long_name=200000")),
                ElementsAre(HasSubstr(" " + std::string(200000, 'n') + " RAM: ")));
}

TEST(Discovery, FindsTheExtensionAtTheEndOfAListOfAnyLength) {
    EXPECT_THAT(listed(child::layer("long_extensions=200000")),
                ElementsAre(EndsWith("Precision: Yes")));
}

TEST(Discovery, TakesATextWithoutTerminator) {
    EXPECT_THAT(listed(child::layer("long_name=7;unterminated")),
                ElementsAre(HasSubstr(" nnnnnnn RAM: ")));
}

TEST(Discovery, TakesATextOfSizeZero) {
    EXPECT_THAT(listed(child::layer("empty_text")),
                ElementsAre(AllOf(HasSubstr("  RAM: "), EndsWith("Precision: No"))));
}

TEST(Discovery, KeepsTheFourListsParallel) {
    Lists lists;
    lists.fill(false);
    EXPECT_THAT(lists.names, SizeIs(lists.ids.size()));
    EXPECT_THAT(lists.doubles, SizeIs(lists.ids.size()));
    EXPECT_THAT(lists.kinds, SizeIs(lists.ids.size()));
}

TEST(Discovery, NamesADeviceWithItsVersionBehindAColon) {
    Lists lists;
    lists.fill(false);
    EXPECT_THAT(lists.names, testing::Contains(MatchesRegex("(pthread|cpu)-.*:OpenCL .*")));
}

TEST(Discovery, AppendsToTheListsItIsGiven) {
    Lists lists;
    lists.fill(false);
    const auto once = lists.ids.size();
    lists.fill(false);
    EXPECT_THAT(lists.ids, SizeIs(2 * once));
}

TEST(Discovery, PrintsTheIndexADeviceGetsInTheListGiven) {
    Lists lists;
    lists.ids.resize(3);
    const test_support::StdoutCapture printed;
    lists.fill(true);
    EXPECT_THAT(printed.text(), StartsWith(" Device ID: 3 "));
}

TEST(Discovery, PrintsNothingUnasked) {
    Lists lists;
    const test_support::StdoutCapture printed;
    lists.fill(false);
    EXPECT_THAT(printed.text(), IsEmpty());
}

}  // namespace
