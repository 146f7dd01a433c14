#include "render/pipeline.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <memory>
#include <numeric>
#include <random>
#include <set>
#include <stdexcept>
#include <string>
#include <thread>

namespace {

using Numbers = render::Pipeline<std::uint64_t>;

TEST(Pieces, ComeInOrderWhateverThreadsMakeThem) {
    for (const int threads : {1, 2, 5, 16}) {
        Numbers pipeline(1000, threads, 7, [] {
            return [](std::uint64_t n) {
                if (n % 3 == 0) std::this_thread::yield();
                return n * n;
            };
        });
        for (std::uint64_t n = 0; n < 1000; ++n) ASSERT_EQ(pipeline.next(), n * n);
    }
}

TEST(Pieces, AreNotMadeFurtherAheadThanAllowed) {
    std::atomic<std::uint64_t> passed{0}, furthest{0};
    Numbers pipeline(500, 4, 3, [&] {
        return [&](std::uint64_t n) {
            const std::uint64_t ahead = n - passed;
            std::uint64_t before = furthest;
            while (ahead > before && !furthest.compare_exchange_weak(before, ahead)) {
            }
            return n;
        };
    });
    for (std::uint64_t n = 0; n < 500; ++n) {
        pipeline.next();
        ++passed;
    }
    // next() allows one more before this test has counted the piece.
    EXPECT_LE(furthest, 3u);
}

std::set<std::string> threadsOfThisProcess() {
    std::set<std::string> names;
    for (const auto& entry : std::filesystem::directory_iterator("/proc/self/task"))
        names.insert(entry.path().filename());
    return names;
}

// No thread ends before the last piece is begun, and only a few are made ahead.
TEST(Pieces, AreMadeByAsManyThreadsAsAreAskedFor) {
    std::thread([] {}).join();  // the thread sanitizer starts one of its own beside the first
    for (const int threads : {1, 2, 5}) {
        const auto before = threadsOfThisProcess();
        const Numbers pipeline(1000, threads, 3, [] { return [](std::uint64_t n) { return n; }; });
        const auto all = threadsOfThisProcess();
        EXPECT_EQ(std::count_if(all.begin(), all.end(),
                                [&](const auto& name) { return before.count(name) == 0; }),
                  threads);
    }
}

TEST(Pieces, AreMadeByAMakerOfEachThreadsOwn) {
    std::atomic<int> makers{0};
    Numbers pipeline(100, 3, 100, [&] {
        ++makers;
        return [owner = std::this_thread::get_id()](std::uint64_t) -> std::uint64_t {
            return owner == std::this_thread::get_id() ? 1 : 0;
        };
    });
    for (int n = 0; n < 100; ++n) EXPECT_EQ(pipeline.next(), 1u);
    EXPECT_LE(makers, 3);
}

TEST(WhatAPieceThrows, ComesInItsPlace) {
    Numbers pipeline(10, 3, 10, [] {
        return [](std::uint64_t n) {
            if (n == 5) throw std::runtime_error("five");
            return n;
        };
    });
    for (std::uint64_t n = 0; n < 5; ++n) EXPECT_EQ(pipeline.next(), n);
    EXPECT_THROW(pipeline.next(), std::runtime_error);
}

TEST(APipeline, MayEndBeforeItsPiecesAreMade) {
    std::atomic<std::uint64_t> made{0};
    {
        Numbers pipeline(1000000, 4, 4, [&] {
            return [&](std::uint64_t n) {
                ++made;
                return n;
            };
        });
        pipeline.next();
    }
    EXPECT_LE(made, 5u);
}

TEST(Pieces, MayBeMovedOnly) {
    render::Pipeline<std::unique_ptr<int>> pipeline(
        3, 2, 2, [] { return [](std::uint64_t n) { return std::make_unique<int>(n); }; });
    EXPECT_EQ(*pipeline.next(), 0);
    EXPECT_EQ(*pipeline.next(), 1);
    EXPECT_EQ(*pipeline.next(), 2);
}

}  // namespace
