// How whoever started a computation tells it to give up.
#pragma once

#include <atomic>

// Read only; null means never. Set by any thread, looked at every few thousand steps.
using StopFlag = const std::atomic<bool>*;

// Whether the computation is to give up. What it has written until then need not be ordered with
// anything, and so neither is the look.
inline bool isSet(StopFlag stop) {
    return stop != nullptr && stop->load(std::memory_order_relaxed);
}
