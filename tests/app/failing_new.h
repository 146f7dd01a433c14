// operator new of the test program, which fails once when a test wants it to. Built with a
// sanitizer, the program has that of the sanitizer, which never does.
#pragma once

#include <atomic>

inline constexpr long NONE_FAILS = -1;

// Counted down by each allocation with operator new; the one that finds 0 throws. Written by the
// test's thread, any thread.
extern std::atomic<long> allocationsUntilOneFails;
