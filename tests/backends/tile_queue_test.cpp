// The queue by itself: its order, and where in memory its tiles lie.
#include "backends/tile_queue.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <vector>

namespace {

params numbered(int number) {
    return {number, 0, 0, 0, 0, 0, 0, 0, 0, 0};
}

void push(TileQueue& queue, int from, int to) {
    for (int number = from; number < to; ++number) queue.push_back(numbered(number));
}

// The numbers of the next tiles, taken away.
std::vector<int> take(TileQueue& queue, std::size_t count) {
    std::vector<int> taken;
    for (; taken.size() < count; queue.pop_front()) taken.push_back(queue.front().xStart);
    return taken;
}

std::vector<int> numbers(int from, int to) {
    std::vector<int> all;
    for (int number = from; number < to; ++number) all.push_back(number);
    return all;
}

TEST(TileQueue, IsEmptyAtFirst) {
    const TileQueue queue;
    EXPECT_TRUE(queue.empty());
    EXPECT_EQ(queue.size(), 0u);
}

TEST(TileQueue, GivesTilesBackInTheOrderInWhichTheyCame) {
    TileQueue queue;
    push(queue, 0, 5000);
    EXPECT_EQ(queue.size(), 5000u);
    EXPECT_EQ(queue[4321].xStart, 4321);
    EXPECT_EQ(queue.back().xStart, 4999);
    EXPECT_EQ(take(queue, 5000), numbers(0, 5000));
    EXPECT_TRUE(queue.empty());
}

TEST(TileQueue, KeepsTheOrderWhenTilesComeWhileOthersAreTaken) {
    TileQueue queue;
    std::vector<int> taken;
    for (int number = 0; number < 20000; number += 5) {
        push(queue, number, number + 5);
        for (const int one : take(queue, 3)) taken.push_back(one);
    }
    for (const int one : take(queue, queue.size())) taken.push_back(one);
    EXPECT_EQ(taken, numbers(0, 20000));
}

TEST(TileQueue, KeepsAllWhoseEndsMeetTheEndOfTheMemory) {
    for (const int left : {0, 1, 511, 512, 513, 1023, 1024}) {
        TileQueue queue;
        push(queue, 0, 1024);
        take(queue, static_cast<std::size_t>(1024 - left));
        push(queue, 1024, 3000);
        EXPECT_EQ(take(queue, queue.size()), numbers(1024 - left, 3000)) << left;
    }
}

TEST(TileQueue, HoldsEachFrameInTheSameMemory) {
    TileQueue queue;
    queue.reserve(65536);
    push(queue, 0, 65536);
    const params* const memory = queue.begin();
    for (const int tiles : {70, 65536, 40000, 65536}) {
        take(queue, queue.size());
        push(queue, 0, tiles);
        EXPECT_EQ(queue.begin(), memory) << tiles;
    }
}

TEST(TileQueue, AllocatesNothingUpToTheTilesItMadeRoomFor) {
    TileQueue queue;
    queue.reserve(77088);
    push(queue, 0, 1);
    const params* const memory = queue.begin();
    push(queue, 1, 77088);
    EXPECT_EQ(queue.begin(), memory);
}

TEST(TileQueue, AllocatesNothingWhereThereIsRoomAlready) {
    TileQueue queue;
    queue.reserve(4000);
    push(queue, 0, 1);
    const params* const memory = queue.begin();
    queue.reserve(4000);
    EXPECT_EQ(queue.begin(), memory);
}

TEST(TileQueue, KeepsWhatWaitsWhenItMakesRoom) {
    TileQueue queue;
    push(queue, 0, 1000);
    take(queue, 10);
    queue.reserve(4000);
    EXPECT_EQ(take(queue, queue.size()), numbers(10, 1000));
}

TEST(TileQueue, IsEmptyWhenItIsCleared) {
    TileQueue queue;
    push(queue, 0, 100);
    queue.clear();
    EXPECT_TRUE(queue.empty());
    push(queue, 7, 8);
    EXPECT_EQ(take(queue, 1), numbers(7, 8));
}

TEST(TileQueue, HasEachTileInOneCacheLine) {
    TileQueue queue;
    push(queue, 0, 3000);
    for (const params& tile : queue) {
        ASSERT_EQ(reinterpret_cast<std::uintptr_t>(&tile) % CACHE_LINE, 0u);
    }
}

}  // namespace
