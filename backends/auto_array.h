#pragma once

#include <cstddef>
#include <memory>
#include <new>
#include <type_traits>

// Bytes that pass between the cores as one.
inline constexpr std::size_t CACHE_LINE = 64;

// Gives back what makeArray allocated.
struct FreeArray {
    template <class T>
    void operator()(T* array) const {
        ::operator delete[](array, std::align_val_t{CACHE_LINE});
    }
};

// Owner of a heap array: freed when the owner goes or takes another array.
template <class T>
using auto_array = std::unique_ptr<T[], FreeArray>;

// `count` zeros that begin on a cache line and share none of their lines with anything that another
// thread may write. Throws std::bad_alloc without memory.
template <class T>
auto_array<T> makeArray(std::size_t count) {
    static_assert(std::is_trivial_v<T> && CACHE_LINE % sizeof(T) == 0);
    const std::size_t wholeLines = (count * sizeof(T) + CACHE_LINE - 1) & ~(CACHE_LINE - 1);
    T* const array = static_cast<T*>(::operator new[](wholeLines, std::align_val_t{CACHE_LINE}));
    std::uninitialized_value_construct_n(array, count);
    return auto_array<T>(array);
}
