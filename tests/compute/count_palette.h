// A palette that shows which entry a pixel took, so that tests can read counts off a picture.
#pragma once

#include <array>

#include "compute/pixels.h"

using PaletteBytes = std::array<unsigned char, PALETTE_BYTES>;

// Entry n is (n mod 256, n / 256, 77); the fourth byte is one that must never reach a pixel.
inline PaletteBytes countPalette() {
    PaletteBytes palette{};
    for (std::size_t n = 0; n < 768; ++n) {
        palette[4 * n] = static_cast<unsigned char>(n % 256);
        palette[4 * n + 1] = static_cast<unsigned char>(n / 256);
        palette[4 * n + 2] = 77;
        palette[4 * n + 3] = 99;
    }
    return palette;
}

// What a pixel drawn with countPalette says: its count mod 768, or -1 for opaque black.
inline int countOf(const unsigned char* rgba) {
    if (rgba[2] != 77) return -1;
    return rgba[0] + 256 * rgba[1];
}
