#include "tests/backends/thread_watch.h"

#include <dlfcn.h>
#include <pthread.h>
#include <time.h>

namespace test_support {
namespace {

thread_local ThreadWatch* watch = nullptr;

void writeDown(const timespec& length) {
    watch->sleeps.push_back(std::chrono::seconds(length.tv_sec) +
                            std::chrono::nanoseconds(length.tv_nsec));
    watch->duringSleep(static_cast<int>(watch->sleeps.size()));
}

void changeTime(timespec& time) {
    constexpr long SECOND = 1'000'000'000;
    const auto told = watch->clock(std::chrono::nanoseconds(time.tv_sec * SECOND + time.tv_nsec));
    time.tv_sec = told.count() / SECOND;
    time.tv_nsec = told.count() % SECOND;
}

}  // namespace

ThreadWatch::ThreadWatch() {
    watch = this;
}

ThreadWatch::~ThreadWatch() {
    watch = nullptr;
}

}  // namespace test_support

// The sanitizers' functions of those names, where one is linked: it must hear of every lock, and
// the stand-ins below hide them.
extern "C" [[gnu::weak]] int __interceptor_pthread_mutex_trylock(pthread_mutex_t*);
extern "C" [[gnu::weak]] int __interceptor_clock_gettime(clockid_t, timespec*);
extern "C" [[gnu::weak]] int __interceptor_nanosleep(const timespec*, timespec*);

extern "C" int pthread_mutex_trylock(pthread_mutex_t* lock) {
    using Function = int (*)(pthread_mutex_t*);
    static const auto original =
        __interceptor_pthread_mutex_trylock
            ? &__interceptor_pthread_mutex_trylock
            : reinterpret_cast<Function>(dlsym(RTLD_NEXT, "pthread_mutex_trylock"));
    if (test_support::watch != nullptr) {
        test_support::watch->beforeTryLock(++test_support::watch->lockAttempts);
    }
    return original(lock);
}

extern "C" int nanosleep(const timespec* length, timespec* left) {
    using Function = int (*)(const timespec*, timespec*);
    static const auto original = __interceptor_nanosleep
                                     ? &__interceptor_nanosleep
                                     : reinterpret_cast<Function>(dlsym(RTLD_NEXT, "nanosleep"));
    if (test_support::watch == nullptr) return original(length, left);
    test_support::writeDown(*length);
    return 0;
}

extern "C" int clock_gettime(clockid_t clock, timespec* time) {
    using Function = int (*)(clockid_t, timespec*);
    static const auto original =
        __interceptor_clock_gettime ? &__interceptor_clock_gettime
                                    : reinterpret_cast<Function>(dlsym(RTLD_NEXT, "clock_gettime"));
    const int result = original(clock, time);
    if (test_support::watch == nullptr || clock != CLOCK_MONOTONIC) return result;
    test_support::changeTime(*time);
    return result;
}

// What a library built otherwise may call for the same.
extern "C" int clock_nanosleep(clockid_t clock, int flags, const timespec* length, timespec* left) {
    using Function = int (*)(clockid_t, int, const timespec*, timespec*);
    static const auto original = reinterpret_cast<Function>(dlsym(RTLD_NEXT, "clock_nanosleep"));
    if (test_support::watch == nullptr) return original(clock, flags, length, left);
    test_support::writeDown(*length);
    return 0;
}
