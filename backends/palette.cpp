#include "backends/palette.h"

#include <cstring>
#include <iostream>

#include "compute/palette_tables.h"

auto_array<unsigned char> tempColours;
auto_array<unsigned char> badAssColourPalette;
std::atomic<unsigned char*> cpuPalette{nullptr};

namespace {

// Random colours; filled by the first InitColours(0), never again. GLUT thread writes.
unsigned char fixedColours[PALETTE_BYTES];

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
        fillCycleColours(tempColours.get());
    } else if (type == 0) {
        cpuPalette = fixedColours;
        if (!bColoursInitialised) {
            bColoursInitialised = true;
            // The same on every run: libraries that draw from the process's own generator before
            // the first frame, as some GL drivers do, must not choose our colours.
            fillRandomColours(fixedColours);
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
