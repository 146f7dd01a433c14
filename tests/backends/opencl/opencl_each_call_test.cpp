// Every call of OpenCL fails in turn, and a device disappears at each: the process goes on, or ends
// with the message and the status that belong to the call.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <optional>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "tests/backends/opencl/child.h"

namespace {

using Calls = std::vector<std::string>;
using testing::EndsWith;

// What the process does about a call that fails: how its output ends and its status.
struct Reaction {
    std::string message;
    int status;
};

std::string nameOf(const std::string& call) {
    return call.substr(0, call.find(' '));
}

std::string wordOf(const std::string& call, int number) {
    std::istringstream words(call);
    std::string word;
    for (int i = 0; i <= number; ++i) words >> word;
    return word;
}

bool isLastArgument(const std::string& call) {
    return nameOf(call) == "clSetKernelArg" && wordOf(call, 1) == "12";
}

bool createsThePalette(const std::string& call) {
    return nameOf(call) == "clCreateBuffer" && wordOf(call, 2) == "3072";
}

// The end of the process because of this very call; none when its status is not looked at.
std::optional<Reaction> endBecauseOf(const std::string& call, const std::string& status) {
    const std::string name = nameOf(call);
    if (name == "clGetPlatformIDs" || name == "clGetDeviceIDs" || name == "clCreateContext") {
        return Reaction{"Could not create context\n", 2};  // without a device there is none
    }
    if (name == "clCreateCommandQueue") return Reaction{"Could not create command queue\n", 3};
    if (name == "clCreateProgramWithSource") {
        return Reaction{"Could not create program from source\n", 4};
    }
    if (name == "clBuildProgram") return Reaction{"\n", 5};  // the log comes last
    if (name == "clCreateKernel") return Reaction{"Could not create kernel\n", 6};
    if (createsThePalette(call)) return Reaction{"Could not create memory buffer\n", 7};
    if (isLastArgument(call)) return Reaction{"Could not set kernel arg\n", 4};
    if (name == "clEnqueueNDRangeKernel") {
        return Reaction{"Could not enqueue task\n" + status + " is the error code.\n", 5};
    }
    if (name == "clEnqueueReadBuffer") {
        return Reaction{"Could not read back buffer\nError code " + status + "\n", 6};
    }
    return {};
}

// What comes of the one call that fails. Nobody looks at the image when it is made, nor at the
// first twelve arguments: the first launch with one missing is refused.
Reaction reactionToOne(const std::string& call) {
    if (const auto end = endBecauseOf(call, "-5")) return *end;
    if (nameOf(call) == "clCreateBuffer") {
        return {"Could not read back buffer\nError code -38\n", 6};
    }
    if (nameOf(call) == "clSetKernelArg") {
        return {"Could not enqueue task\n-52 is the error code.\n", 5};
    }
    return {"", 0};
}

// What comes of all calls failing from the one at `first` on.
Reaction reactionToLoss(const Calls& calls, std::size_t first) {
    for (std::size_t i = first; i < calls.size(); ++i) {
        if (const auto end = endBecauseOf(calls[i], "-2")) return *end;
    }
    return {"", 0};
}

// Two devices, so that there is one to switch to.
child::Environment twoDevices(const std::string& settings) {
    child::Environment environment = child::layer(settings);
    environment["POCL_DEVICES"] = "pthread basic";
    return environment;
}

Calls callsOf(const std::string& commands) {
    const auto run = child::run(commands, twoDevices(""));
    EXPECT_EQ(run.status, 0) << run.out;
    return child::lines(run.callLog);
}

void expectReaction(const std::string& commands, const std::string& settings,
                    const Reaction& expected) {
    const auto run = child::run(commands, twoDevices(settings));
    EXPECT_EQ(run.status, expected.status) << run.out << run.err;
    EXPECT_THAT(run.out, EndsWith(expected.message));
}

constexpr char FIRST_FRAME[] = "texts setup frame";

// A life with the device: what leads up to the calls that are looked at, and these.
struct Life {
    const char* label;
    const char* before;
    const char* commands;
};

const Life lives[] = {
    {"AtTheFirstFrame", "", "texts setup frame release"},
    {"AfterASwitchOfPrecision", FIRST_FRAME, "texts setup frame precision frame release"},
    {"AfterASwitchOfDevice", FIRST_FRAME, "texts setup frame switch 1 frame upload release"},
};

class EachCall : public testing::TestWithParam<Life> {
  protected:
    // Calls already made when those that are looked at begin.
    static std::size_t firstCall() {
        const std::string before = GetParam().before;
        return before.empty() ? 0 : callsOf(before).size();
    }
};

TEST_P(EachCall, ThatFailsHasItsOwnMessageAndStatusOrIsPassedOver) {
    const Calls calls = callsOf(GetParam().commands);
    const std::size_t first = firstCall();
    ASSERT_GT(calls.size(), first + 25);
    for (std::size_t i = first; i < calls.size(); ++i) {
        SCOPED_TRACE("call " + std::to_string(i + 1) + ", " + calls[i]);
        expectReaction(GetParam().commands, "fail=*#" + std::to_string(i + 1) + ":-5",
                       reactionToOne(calls[i]));
    }
}

TEST_P(EachCall, AtWhichTheDeviceDisappearsIsFollowedByTheEndOfTheNextThatIsLookedAt) {
    const Calls calls = callsOf(GetParam().commands);
    for (std::size_t i = firstCall(); i < calls.size(); ++i) {
        SCOPED_TRACE("call " + std::to_string(i + 1) + ", " + calls[i]);
        expectReaction(GetParam().commands, "lost=" + std::to_string(i + 1),
                       reactionToLoss(calls, i));
    }
}

INSTANTIATE_TEST_SUITE_P(Each, EachCall, testing::ValuesIn(lives),
                         [](const auto& test) { return std::string(test.param.label); });

// Keeps every processor busy twice over while it lives.
class BusyProcessors {
  public:
    BusyProcessors() {
        for (unsigned i = 0; i < 2 * std::thread::hardware_concurrency(); ++i) {
            threads.emplace_back([this] {
                while (!ended) {
                }
            });
        }
    }
    ~BusyProcessors() {
        ended = true;
        for (std::thread& thread : threads) thread.join();
    }
    BusyProcessors(const BusyProcessors&) = delete;
    BusyProcessors& operator=(const BusyProcessors&) = delete;

  private:
    std::atomic<bool> ended{false};
    std::vector<std::thread> threads;
};

// What a runtime does when the process exits must not wait for ever for threads of its own, whether
// or not its objects were released, and whatever they were at. A process that hangs is a test that
// ends by its time limit.
TEST(ExitUnderLoad, NeverHangsHoweverTheProcessEnds) {
    const BusyProcessors busy;
    for (int turn = 0; turn < 8; ++turn) {
        EXPECT_EQ(child::run("texts setup frame release").status, 0);
        EXPECT_EQ(child::run("texts setup frame").status, 0);
        EXPECT_EQ(child::run("texts setup").status, 0);
        EXPECT_EQ(
            child::run("texts setup frame frame", child::layer("fail=clEnqueueReadBuffer#2:-5"))
                .status,
            6);
        EXPECT_EQ(
            child::run("texts setup frame frame", child::layer("fail=clEnqueueNDRangeKernel#2:-5"))
                .status,
            5);
    }
}

}  // namespace
