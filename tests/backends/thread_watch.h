// What a thread asks of the system, seen from the thread itself: how long it means to sleep and
// when it tries for a lock. A test that runs a worker on its own thread so sees each step of it,
// whatever else the machine does.
#pragma once

#include <chrono>
#include <functional>
#include <vector>

namespace test_support {

// While it lives, sleeps of the thread that made it end at once and are written down. Other threads
// sleep as ever. One at a time on each thread.
class ThreadWatch {
  public:
    ThreadWatch();
    ~ThreadWatch();
    ThreadWatch(const ThreadWatch&) = delete;
    ThreadWatch& operator=(const ThreadWatch&) = delete;

    // What happens meanwhile; called with the number of the sleep, from 1.
    std::function<void(int)> duringSleep = [](int) {};

    // What happens just before the thread tries for a lock without waiting for it; called with the
    // number of the attempt, from 1.
    std::function<void(int)> beforeTryLock = [](int) {};

    // What the thread reads on its steady clock; as given, the true time.
    std::function<std::chrono::nanoseconds(std::chrono::nanoseconds)> clock =
        [](std::chrono::nanoseconds time) { return time; };

    // The lengths asked for.
    std::vector<std::chrono::nanoseconds> sleeps;

    int lockAttempts = 0;
};

}  // namespace test_support
