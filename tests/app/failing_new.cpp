#include "tests/app/failing_new.h"

#include <cstdlib>
#include <new>

std::atomic<long> allocationsUntilOneFails{NONE_FAILS};

#ifndef NO_OTHER_NEW

void* operator new(std::size_t size) {
    const bool fails =
        allocationsUntilOneFails != NONE_FAILS && allocationsUntilOneFails.fetch_sub(1) == 0;
    void* memory = fails ? nullptr : std::malloc(size == 0 ? 1 : size);
    if (memory == nullptr) throw std::bad_alloc();
    return memory;
}

void operator delete(void* memory) noexcept {
    std::free(memory);
}

void operator delete(void* memory, std::size_t) noexcept {
    std::free(memory);
}

#endif
