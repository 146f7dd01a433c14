// What must not matter to a deep picture: who renders which part of it, when, and whether somebody
// wanted to stop in between.
#include <gtest/gtest.h>

#include <atomic>
#include <bit>
#include <cmath>
#include <thread>

#include "deep_support.h"
#include "places.h"

namespace {

oracle::View placeNamed(const std::string& name) {
    for (const oracle::Place& place : oracle::places()) {
        if (place.name == name) return place.view;
    }
    throw std::invalid_argument(name);
}

std::vector<std::uint64_t> bitsOf(const std::vector<double>& values) {
    std::vector<std::uint64_t> bits;
    for (const double value : values) bits.push_back(std::bit_cast<std::uint64_t>(value));
    return bits;
}

void expectSame(const Numbers& a, const Numbers& b) {
    EXPECT_EQ(a.counts, b.counts);
    EXPECT_EQ(bitsOf(a.values), bitsOf(b.values));
}

// Copies a part to where it belongs.
void place(Numbers& whole, const Numbers& part, int x, int y) {
    for (int row = 0; row < part.down; ++row) {
        for (int column = 0; column < part.across; ++column) {
            const auto from = static_cast<std::size_t>(row * part.across + column);
            const auto to = static_cast<std::size_t>((y + row) * whole.across + x + column);
            whole.counts[to] = part.counts[from];
            whole.values[to] = part.values[from];
        }
    }
}

class EveryWay : public testing::TestWithParam<const char*> {
  protected:
    oracle::View view = [] {
        oracle::View v = placeNamed(GetParam());
        v.pixelsWide = 61;
        v.pixelsHigh = 43;
        return v;
    }();
};

TEST_P(EveryWay, OfCuttingThePictureGivesTheSameBits) {
    const Numbers whole = renderWhole(view);
    const deep::Picture picture(toDeep(view));
    constexpr int TILES[][2] = {{1, 1}, {7, 5}, {61, 1}, {1, 43}, {16, 16}};
    for (const auto& tile : TILES) {
        Numbers joined = whole;
        joined.counts.assign(whole.counts.size(), UNTOUCHED);
        for (int y = 0; y < 43; y += tile[1]) {
            for (int x = 0; x < 61; x += tile[0]) {
                const int across = std::min(tile[0], 61 - x), down = std::min(tile[1], 43 - y);
                place(joined, renderPart(picture, x, y, across, down), x, y);
            }
        }
        expectSame(whole, joined);
    }
}

TEST_P(EveryWay, OfSharingThePictureGivesTheSameBits) {
    const Numbers whole = renderWhole(view);
    const deep::Picture picture(toDeep(view));
    Numbers joined = whole;
    joined.counts.assign(whole.counts.size(), UNTOUCHED);
    std::atomic<int> next{0};
    std::vector<std::thread> threads;
    for (int k = 0; k < 4; ++k) {
        threads.emplace_back([&] {
            for (int y = next++; y < 43; y = next++) {
                place(joined, renderPart(picture, 0, y, 61, 1), 0, y);
            }
        });
    }
    for (std::thread& thread : threads) thread.join();
    expectSame(whole, joined);
}

TEST_P(EveryWay, OfAskingForOneOfBothGivesTheSameBits) {
    const Numbers whole = renderWhole(view);
    const deep::Picture picture(toDeep(view));
    Numbers apart = whole;
    apart.counts.assign(whole.counts.size(), UNTOUCHED);
    apart.values.assign(whole.values.size(), UNTOUCHED);
    picture.render(0, 0, 61, 43, apart.counts.data(), nullptr, 61);
    picture.render(0, 0, 61, 43, nullptr, apart.values.data(), 61);
    expectSame(whole, apart);
}

INSTANTIATE_TEST_SUITE_P(Deep, EveryWay,
                         testing::Values("spiral-2e-13", "tip-1e-30", "minibrot-inside",
                                         "limit-reached-40", "zero-within-1e-160",
                                         "julia-minibrot-1e-160"));

// Four thousand million pixels, all in the room of one row.
TEST(AStop, EndsWhatWouldTakeHours) {
    oracle::View view = placeNamed("spiral-2e-13");
    view.pixelsWide = view.pixelsHigh = 65535;
    const deep::Picture picture(toDeep(view));
    std::vector<std::int32_t> row(65535);
    std::atomic<bool> stop{false};
    std::thread renderer(
        [&] { picture.render(0, 0, 65535, 65535, row.data(), nullptr, 0, &stop); });
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
    stop = true;
    renderer.join();
}

TEST(AStop, BeforeTheStartWritesNothing) {
    const deep::Picture picture(toDeep(placeNamed("tip-1e-30")));
    std::atomic<bool> stop{true};
    const Numbers part = renderPart(picture, 0, 0, 128, 128, &stop);
    EXPECT_EQ(part.counts, std::vector<std::int32_t>(part.counts.size(), UNTOUCHED));
    EXPECT_EQ(part.values, std::vector<double>(part.values.size(), UNTOUCHED));
}

// Whatever was known by then is right, and the rest untouched.
TEST(AStop, InBetweenLeavesNothingWrong) {
    const oracle::View view = placeNamed("spiral-1e-77");
    const Numbers whole = renderWhole(view);
    const deep::Picture picture(toDeep(view));
    for (int moment = 0; moment < 40; ++moment) {
        std::atomic<bool> stop{false};
        std::thread stopper([&] {
            std::this_thread::sleep_for(std::chrono::microseconds(500 * moment));
            stop = true;
        });
        const Numbers part = renderPart(picture, 0, 0, 128, 128, &stop);
        stopper.join();
        for (std::size_t k = 0; k < part.counts.size(); ++k) {
            if (part.counts[k] == UNTOUCHED) continue;
            ASSERT_EQ(part.counts[k], whole.counts[k]) << k;
            ASSERT_EQ(std::bit_cast<std::uint64_t>(part.values[k]),
                      std::bit_cast<std::uint64_t>(whole.values[k]));
        }
    }
}

// Of ten million steps in 66,000 bits, which take an hour.
TEST(AStop, EndsTheMakingOfAReference) {
    const oracle::View deepest{"-0.75", "1e-12", "1e-20000", "", "", 64, 64, 4, 10000000};
    std::atomic<bool> stop{false};
    std::thread stopper([&] {
        std::this_thread::sleep_for(std::chrono::milliseconds(100));
        stop = true;
    });
    const deep::Picture picture(toDeep(deepest), &stop);
    stopper.join();
    const Numbers part = renderPart(picture, 0, 0, 64, 64, &stop);
    EXPECT_EQ(part.counts, std::vector<std::int32_t>(part.counts.size(), UNTOUCHED));
}

}  // namespace
