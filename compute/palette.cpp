#include "compute/palette.h"

#include <cstdlib>
#include <cstring>
#include <iostream>

auto_array<unsigned char> tempColours;
auto_array<unsigned char> badAssColourPalette;
std::atomic<unsigned char*> cpuPalette{nullptr};

namespace {

// Random colours; filled by the first InitColours(0), never again. GLUT thread writes.
unsigned char fixedColours[PALETTE_BYTES];

// The generator is never seeded, so the "random" colours are the same on every run.
void fillRandom(unsigned char* table) {
    for (int n = 0; n < PALETTE_ENTRIES; ++n) {
        for (int channel = 0; channel < 3; ++channel) {
            table[4 * n + channel] = static_cast<unsigned char>(std::rand() & 0xff);
        }
    }
}

// Green, blue, then red ramps of 256 entries, each starting again from black.
void fillCycle(unsigned char* table) {
    for (int n = 0; n < PALETTE_ENTRIES; ++n) {
        const auto level = static_cast<unsigned char>(n & 0xff);
        table[4 * n] = n >= 512 ? level : 0;
        table[4 * n + 1] = n < 256 ? level : 0;
        table[4 * n + 2] = n >= 256 && n < 512 ? level : 0;
    }
}

void applyPalette(int type) {
    InitColours(type);
    if (cpuPalette == nullptr) InitColours(0);
    std::memcpy(badAssColourPalette.get(), cpuPalette, PALETTE_BYTES);
}

}  // namespace

void InitColours(int type) {
    static bool bColoursInitialised = false;
    if (type == 1) {
        cpuPalette = tempColours.get();
        fillCycle(tempColours.get());
    } else if (type == 0) {
        cpuPalette = fixedColours;
        if (!bColoursInitialised) {
            bColoursInitialised = true;
            fillRandom(fixedColours);
        }
    }
    std::memcpy(badAssColourPalette.get(), tempColours.get(), PALETTE_BYTES);
}

PaletteChange updatePalette(int type) {
    static bool bInitColours = false;
    static std::int32_t oldPaletteType = 0;
    if (!bInitColours) {
        bInitColours = true;
        applyPalette(type);
        oldPaletteType = type;
        return PaletteChange::first;
    }
    if (oldPaletteType == type) return PaletteChange::none;
    oldPaletteType = type;
    std::cout << "Palette has changed" << std::endl;
    applyPalette(type);
    return PaletteChange::changed;
}
