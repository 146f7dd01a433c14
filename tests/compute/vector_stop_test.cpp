// A tile in work is given up when the stop flag is set, whatever its iteration limit. All limits
// here would keep a renderer busy for minutes.
#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <limits>
#include <string>
#include <thread>
#include <vector>

#include "compute/tile_renderer.h"
#include "tests/compute/vector_support.h"

namespace {

using namespace std::chrono_literals;
using test_support::Picture;
using vector_test::allTargets;
using vector_test::ForcedTarget;

constexpr unsigned char CANARY = 0xA5;

// Pixels on the real axis whose orbits neither escape nor come to rest. Sine has none that the
// certified renderer could not follow; the orbits of the hyperbolic cosine leave its bound soon,
// and each is then counted by itself.
struct Region {
    std::string name;
    int type;
    double xMin, xMax;
    double cx;
};

const std::vector<Region>& regions() {
    static const std::vector<Region> all = {{"mandelbrot", 0, -1.99, -1.9, 0},
                                            {"julia", 1, 0.1, 0.5, -1.9},
                                            {"sine", 2, -0.5, 0.5, 0},
                                            {"hyperbolicCosine", 5, -3.3, -3.2, 0}};
    return all;
}

// A test that hangs ends the process; in order is within milliseconds.
class EndsWithinAMinute {
  public:
    EndsWithinAMinute() { alarm(60); }
    ~EndsWithinAMinute() { alarm(0); }
    EndsWithinAMinute(const EndsWithinAMinute&) = delete;
    EndsWithinAMinute& operator=(const EndsWithinAMinute&) = delete;
};

class StopTest : public testing::TestWithParam<std::string> {
  protected:
    StopTest() { vector_control::detectCycles(false); }
    ~StopTest() override { vector_control::detectCycles(true); }

    template <class T>
    void render(const Region& region, int limit) {
        renderTileUntilStopped<T>(
            {0, 0, WIDTH, HEIGHT, WIDTH, HEIGHT, static_cast<T>(region.xMin),
             static_cast<T>(region.xMax), T(0), T(0), static_cast<T>(region.cx), T(0), T(128),
             limit, picture.bytes.data(), palette.data(), &stop},
            region.type);
    }

    // The whole tile in a precision, with every instruction set, while `meanwhile` runs.
    template <class T, class Meanwhile>
    void renderOnEveryTarget(Meanwhile&& meanwhile) {
        for (const vector_control::Target& target : allTargets()) {
            SCOPED_TRACE(target.name);
            const ForcedTarget forced(target.bit);
            for (const Region& region : regions()) {
                if (region.name != GetParam()) continue;
                const EndsWithinAMinute watch;
                picture = Picture(WIDTH, HEIGHT, CANARY);
                meanwhile([&] { render<T>(region, std::numeric_limits<int>::max()); });
            }
        }
    }

    bool nothingWritten() const {
        return std::all_of(picture.bytes.begin(), picture.bytes.end(),
                           [](unsigned char byte) { return byte == CANARY; });
    }

    static constexpr int WIDTH = 40, HEIGHT = 30;
    Picture picture{WIDTH, HEIGHT, CANARY};
    std::vector<unsigned char> palette = std::vector<unsigned char>(3072, 1);
    std::atomic<bool> stop{false};
};

TEST_P(StopTest, ATileInWorkIsGivenUp) {
    const auto stopLater = [&](auto&& render) {
        stop = false;
        std::thread stopper([&] {
            std::this_thread::sleep_for(20ms);
            stop = true;
        });
        render();
        stopper.join();
        EXPECT_TRUE(nothingWritten());
    };
    renderOnEveryTarget<double>(stopLater);
    renderOnEveryTarget<float>(stopLater);
}

TEST_P(StopTest, ATileIsNotBegunWhenTheFlagIsSet) {
    stop = true;
    const auto renderNow = [&](auto&& render) {
        render();
        EXPECT_TRUE(nothingWritten());
    };
    renderOnEveryTarget<double>(renderNow);
    renderOnEveryTarget<float>(renderNow);
}

TEST_P(StopTest, ATileIsFinishedWhileTheFlagIsNotSet) {
    for (const vector_control::Target& target : allTargets()) {
        const ForcedTarget forced(target.bit);
        for (const Region& region : regions()) {
            if (region.name != GetParam()) continue;
            picture = Picture(WIDTH, HEIGHT, CANARY);
            render<double>(region, 3000);
            for (std::size_t at = 3; at < picture.bytes.size(); at += 4) {
                ASSERT_EQ(picture.bytes[at], 255) << target.name << ' ' << at;
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Everywhere, StopTest,
                         testing::Values("mandelbrot", "julia", "sine", "hyperbolicCosine"),
                         [](const auto& test) { return test.param; });

}  // namespace
