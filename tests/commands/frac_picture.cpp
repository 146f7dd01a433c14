// Evaluates one entry of a catalogue pixel by pixel and writes it to standard output as a PPM of
// 2048 x 2048, for windowed tests to hold the screen against.
//   frac_picture FILE INDEX single|double
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <thread>
#include <vector>

#include "backends/palette.h"
#include "compute/saturate.h"
#include "compute/tile_renderer.h"
#include "frac/byte_reader.h"
#include "frac/frac_record.h"

namespace {

constexpr int SIDE = 2048;

fractal readEntry(const char* path, int index) {
    ByteReader reader(path);
    std::optional<fractal> entry;
    for (int i = 0; i <= index; ++i) entry = decodeRecord(reader);
    if (!entry) std::exit(1);
    return *entry;
}

unsigned char* palette(int type) {
    tempColours = makeArray<unsigned char>(PALETTE_BYTES);
    badAssColourPalette = makeArray<unsigned char>(PALETTE_BYTES);
    updatePalette(type);
    return badAssColourPalette.get();
}

template <class T>
void evaluate(const fractal& entry, unsigned char* colours, unsigned char* picture) {
    constexpr int BANDS = 64;
    std::atomic<int> next = 0;
    const auto work = [&] {
        for (int band = next++; band < BANDS; band = next++) {
            threadScalar<T>(
                0, band * SIDE / BANDS, SIDE, (band + 1) * SIDE / BANDS, SIDE, SIDE,
                static_cast<T>(entry.xMin), static_cast<T>(entry.xMax), static_cast<T>(entry.yMin),
                static_cast<T>(entry.yMax), static_cast<T>(entry.cx), static_cast<T>(entry.cy),
                truncateToInt(entry.maxSize), entry.maxIters, picture, colours, entry.fractalType);
        }
    };
    std::vector<std::jthread> threads;
    for (unsigned i = 0; i < std::max(1u, std::thread::hardware_concurrency()); ++i) {
        threads.emplace_back(work);
    }
}

void writePpm(const unsigned char* picture) {
    std::string bytes = "P6\n" + std::to_string(SIDE) + " " + std::to_string(SIDE) + "\n255\n";
    for (std::size_t i = 0; i < std::size_t{SIDE} * SIDE; ++i) {
        bytes.append(reinterpret_cast<const char*>(picture + 4 * i), 3);
    }
    std::fwrite(bytes.data(), 1, bytes.size(), stdout);
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 4) return 1;
    const fractal entry = readEntry(argv[1], std::atoi(argv[2]));
    unsigned char* colours = palette(entry.paletteType);
    std::vector<unsigned char> picture(std::size_t{SIDE} * SIDE * 4);
    if (std::string(argv[3]) == "double") {
        evaluate<double>(entry, colours, picture.data());
    } else {
        evaluate<float>(entry, colours, picture.data());
    }
    writePpm(picture.data());
}
