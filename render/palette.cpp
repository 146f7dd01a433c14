#include "render/palette.h"

#include <charconv>
#include <fstream>
#include <optional>
#include <string_view>

#include "compute/palette_tables.h"
#include "render/failure.h"

namespace render {
namespace {

constexpr std::string_view BLANKS = " \t\r\f\v";

// Takes the next word off the front of `line`; empty at its end.
std::string_view takeWord(std::string_view& line) {
    line.remove_prefix(std::min(line.find_first_not_of(BLANKS), line.size()));
    const std::string_view word = line.substr(0, line.find_first_of(BLANKS));
    line.remove_prefix(word.size());
    return word;
}

std::optional<unsigned char> readLevel(std::string_view word) {
    unsigned char level = 0;
    const char* end = word.data() + word.size();
    const auto [stop, error] = std::from_chars(word.data(), end, level);
    if (error != std::errc() || stop != end) return {};
    return level;
}

std::optional<Colour> readColour(std::string_view line) {
    Colour colour{};
    for (unsigned char& channel : colour) {
        const auto level = readLevel(takeWord(line));
        if (!level) return {};
        channel = *level;
    }
    return colour;
}

bool isSkipped(std::string_view line) {
    const std::string_view word = takeWord(line);
    return word.empty() || word.front() == '#' || word.front() == ';';
}

}  // namespace

Palette builtInPalette(std::int32_t paletteType) {
    Palette palette;
    if (paletteType == 1) {
        fillCycleColours(palette.table.data());
    } else {
        fillRandomColours(palette.table.data());
    }
    return palette;
}

Palette paletteOf(std::vector<Colour> colours) {
    Palette palette;
    for (std::size_t n = 0; n < PALETTE_ENTRIES; ++n) {
        const Colour& colour = colours[n % colours.size()];
        std::copy(colour.begin(), colour.end(), palette.table.begin() + 4 * n);
    }
    palette.colours = std::move(colours);
    return palette;
}

Palette readMap(const std::string& path) {
    std::ifstream file(path);
    if (!file) throw Failure(path + ": cannot be read");
    std::vector<Colour> colours;
    std::string line;
    for (int number = 1; std::getline(file, line); ++number) {
        if (isSkipped(line)) continue;
        const auto colour = readColour(line);
        const std::string place = path + ":" + std::to_string(number) + ": ";
        if (!colour) throw Failure(place + "no colour of three numbers from 0 to 255");
        if (colours.size() == PALETTE_ENTRIES) throw Failure(place + "more than 768 colours");
        colours.push_back(*colour);
    }
    if (file.bad() || !file.eof()) throw Failure(path + ": cannot be read");
    if (colours.empty()) throw Failure(path + ": no colours");
    return paletteOf(std::move(colours));
}

}  // namespace render
