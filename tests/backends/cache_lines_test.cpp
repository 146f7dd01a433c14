// Where the pool's words and the picture lie in memory. What lies beside them in the program is
// read from the program itself, by tests/house/test_cache_lines.py.
#include <gtest/gtest.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <new>

#include "backends/auto_array.h"
#include "backends/worker_pool.h"
#include "tests/support/backend_globals.h"

// The sanitizers suffer no other operator new beside their own.
#ifndef NO_OTHER_NEW
namespace {
std::size_t bytesAskedFor = 0;  // by whoever asked last
}
void* operator new[](std::size_t bytes, std::align_val_t alignment) {
    bytesAskedFor = bytes;
    if (void* const memory = std::aligned_alloc(static_cast<std::size_t>(alignment), bytes)) {
        return memory;
    }
    throw std::bad_alloc();
}
void operator delete[](void* memory, std::align_val_t) noexcept {
    std::free(memory);
}
#endif

namespace {

std::uintptr_t address(const void* place) {
    return reinterpret_cast<std::uintptr_t>(place);
}

std::uintptr_t lineOf(const void* place) {
    return address(place) / CACHE_LINE;
}

TEST(CacheLines, TheLockTheCountAndTheEndsOfTheQueueShareOne) {
    const unsigned char* const queue = reinterpret_cast<const unsigned char*>(&workQ);
    EXPECT_EQ(lineOf(&task_count), lineOf(&mutex));
    EXPECT_EQ(lineOf(reinterpret_cast<const unsigned char*>(&mutex) + sizeof mutex - 1),
              lineOf(&mutex));
    EXPECT_EQ(lineOf(queue), lineOf(&mutex));
    EXPECT_EQ(lineOf(queue + 2 * sizeof(params*) - 1), lineOf(&mutex));
}

// Its first words are the two that change when a tile is taken.
TEST(CacheLines, TakingATileChangesNothingElseInTheQueue) {
    test_support::clearQueue();
    for (int tile = 0; tile < 3; ++tile) workQ.push_back({});
    unsigned char before[sizeof workQ], after[sizeof workQ];
    std::memcpy(before, static_cast<const void*>(&workQ), sizeof workQ);
    workQ.pop_front();
    std::memcpy(after, static_cast<const void*>(&workQ), sizeof workQ);
    for (std::size_t at = 2 * sizeof(params*); at < sizeof workQ; ++at) {
        EXPECT_EQ(after[at], before[at]) << at;
    }
    test_support::clearQueue();
}

TEST(CacheLines, AnArrayBeginsOnOneAndEndsWithOne) {
    for (const std::size_t bytes : {1u, 63u, 64u, 65u, 3072u, 100000u}) {
        const auto array = makeArray<unsigned char>(bytes), next = makeArray<unsigned char>(1);
        EXPECT_EQ(address(array.get()) % CACHE_LINE, 0u) << bytes;
        EXPECT_NE(lineOf(&array[bytes - 1]), lineOf(next.get())) << bytes;
    }
}

#ifndef NO_OTHER_NEW
template <class T>
void expectWholeLines(std::size_t count) {
    const auto array = makeArray<T>(count);
    EXPECT_EQ(bytesAskedFor % CACHE_LINE, 0u) << count;
    EXPECT_GE(bytesAskedFor, count * sizeof(T)) << count;
    EXPECT_LT(bytesAskedFor, count * sizeof(T) + CACHE_LINE) << count;
}

TEST(CacheLines, AnArrayTakesAsManyAsItNeeds) {
    for (const std::size_t count : {1u, 15u, 16u, 17u, 63u, 64u, 65u, 1000u}) {
        expectWholeLines<unsigned char>(count);
        expectWholeLines<std::uint32_t>(count);
    }
}
#endif

TEST(CacheLines, AnArrayIsAllZerosAlsoWhereMemoryIsUsedAgain) {
    constexpr std::size_t BYTES = 5000;
    for (int use = 0; use < 3; ++use) {
        const auto array = makeArray<unsigned char>(BYTES);
        for (std::size_t at = 0; at < BYTES; ++at) ASSERT_EQ(array[at], 0) << at;
        std::memset(array.get(), 0xA5, BYTES);
    }
}

}  // namespace
