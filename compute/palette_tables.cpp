#include "compute/palette_tables.h"

#include <cstdint>
#include <cstdlib>

// rand() and random_r() are one generator; what was never seeded behaves as if seeded with 1 into
// 128 bytes of state.
void fillRandomColours(unsigned char* table) {
    char state[128];
    random_data generator = {};
    initstate_r(1, state, sizeof state, &generator);
    for (int n = 0; n < PALETTE_ENTRIES; ++n) {
        for (int channel = 0; channel < 3; ++channel) {
            std::int32_t number = 0;
            random_r(&generator, &number);
            table[4 * n + channel] = static_cast<unsigned char>(number & 0xff);
        }
    }
}

void fillCycleColours(unsigned char* table) {
    for (int n = 0; n < PALETTE_ENTRIES; ++n) {
        const auto level = static_cast<unsigned char>(n & 0xff);
        table[4 * n] = n >= 512 ? level : 0;
        table[4 * n + 1] = n < 256 ? level : 0;
        table[4 * n + 2] = n >= 256 && n < 512 ? level : 0;
    }
}
