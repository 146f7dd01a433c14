// Comparing pictures of four bytes a pixel, rows without gaps.
#pragma once

#include <gtest/gtest.h>

#include <cstddef>
#include <string>
#include <vector>

namespace test_support {

struct Picture {
    int width = 0, height = 0;
    std::vector<unsigned char> bytes;  // width * height * 4

    Picture() = default;
    Picture(int w, int h, unsigned char fill)
        : width(w),
          height(h),
          bytes(static_cast<std::size_t>(w) * static_cast<std::size_t>(h) * 4u, fill) {}

    unsigned char* pixel(int x, int y) {
        return bytes.data() + 4 * (static_cast<std::size_t>(y) * static_cast<std::size_t>(width) +
                                   static_cast<std::size_t>(x));
    }
    const unsigned char* pixel(int x, int y) const {
        return const_cast<Picture*>(this)->pixel(x, y);
    }
};

// Fails when any byte differs: names the first differing pixel and leaves <name>.actual.ppm,
// <name>.expected.ppm and <name>.difference.ppm (white where they differ) in the working folder.
testing::AssertionResult samePicture(const Picture& actual, const Picture& expected,
                                     const std::string& name);

}  // namespace test_support
