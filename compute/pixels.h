// Sizes of the image and of a palette, and the rule that turns a count into a pixel. Plain
// functions of their arguments; any thread may call them.
#pragma once

#include <cstddef>

inline constexpr int PALETTE_ENTRIES = 768;
inline constexpr std::size_t PALETTE_BYTES = 4u * PALETTE_ENTRIES;

// Writes the four bytes (red, green, blue, alpha) of a pixel with iteration count n >= 0. A count
// that reached limit is opaque black; any other takes palette entry n mod 768 with alpha 255.
// palette: 768 entries of four bytes, the fourth is never read.
inline void colourPixel(unsigned char* pixel, int n, int limit, const unsigned char* palette) {
    if (n >= limit) {
        pixel[0] = pixel[1] = pixel[2] = 0;
    } else {
        const unsigned char* entry = palette + 4 * (n % PALETTE_ENTRIES);
        pixel[0] = entry[0];
        pixel[1] = entry[1];
        pixel[2] = entry[2];
    }
    pixel[3] = 255;
}
