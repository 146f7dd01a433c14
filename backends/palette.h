// The two colour tables and the table in force.
#pragma once

#include <atomic>
#include <cstdint>

#include "backends/auto_array.h"
#include "compute/pixels.h"

// RGB-cycle table, PALETTE_BYTES. Allocated at start-up, written by InitColours; GLUT thread
// writes, workers read it through cpuPalette during a frame.
extern auto_array<unsigned char> tempColours;

// Host copy of the palette in force, PALETTE_BYTES; source of the device's palette buffer.
// Allocated at start-up; written and read by the GLUT thread only.
extern auto_array<unsigned char> badAssColourPalette;

// Table that the CPU renderer reads. Switched by the GLUT thread between frames, read by workers
// when they start a tile, no lock. Null only before the first frame.
extern std::atomic<unsigned char*> cpuPalette;

// Makes palette `type` (0 random colours, 1 RGB cycle) the table in force; any other number changes
// neither table nor cpuPalette. Afterwards badAssColourPalette holds the RGB-cycle storage; the
// caller overwrites it with the table in force. GLUT thread; tempColours and badAssColourPalette
// must be allocated.
void InitColours(int type);

// What a frame's palette step found to do.
enum class PaletteChange { first, changed, none };

// Brings the palette in force up to date with `type` and copies it into badAssColourPalette. On the
// first call there is a palette in force afterwards whatever the number (an unknown one gives
// random colours); a change prints "Palette has changed". GLUT thread, once at the start of every
// frame.
PaletteChange updatePalette(int type);
