// Gradients from texts and files.
#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <optional>

#include "render/failure.h"
#include "render/gradient.h"

namespace render {
namespace {

constexpr std::size_t MOST_SEGMENTS = 4096;
constexpr std::string_view GIMP_MARK = "GIMP Gradient";

std::string numberText(double value) {
    std::array<char, 32> room{};
    return {room.data(), std::to_chars(room.data(), room.data() + room.size(), value).ptr};
}

// A decimal number that begins a text, which loses it.
std::optional<double> takeNumber(std::string_view& text) {
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || !std::isfinite(value)) return {};
    text.remove_prefix(static_cast<std::size_t>(end - text.data()));
    return value;
}

void skipBlanks(std::string_view& text) {
    text.remove_prefix(std::min(text.find_first_not_of(" \t\r\n"), text.size()));
}

// "#000764 0, #206bcb 0.16": reads it from left to right.
class StopReader {
  public:
    explicit StopReader(std::string_view text) : all(text), rest(text) {}

    std::vector<Gradient::Stop> read() {
        std::vector<Gradient::Stop> stops;
        for (;;) {
            stops.push_back({0, colour()});
            stops.back().place = place(stops);
            if (stops.size() > MOST_SEGMENTS) refuse("no more stops");
            skipBlanks(rest);
            if (rest.empty()) return stops;
            if (rest.front() != ',') refuse("a comma or the end");
            rest.remove_prefix(1);
        }
    }

  private:
    Levels colour() {
        skipBlanks(rest);
        const auto found = readColourText(rest.substr(0, 7));
        if (!found) refuse("a colour such as #206bcb");
        rest.remove_prefix(7);
        return {(*found)[0] / 255.0, (*found)[1] / 255.0, (*found)[2] / 255.0};
    }

    // stops: the last one has no place yet.
    double place(const std::vector<Gradient::Stop>& stops) {
        const bool parted = !rest.empty() && (rest.front() == ' ' || rest.front() == '\t');
        const std::string_view before = rest;
        skipBlanks(rest);
        const std::string_view start = rest;
        const auto value = parted ? takeNumber(rest) : std::nullopt;
        if (!parted) rest = before;
        if (!value || *value < 0 || *value > 1) refuseAt(start, "a place from 0 to 1");
        if (stops.size() > 1 && *value < stops[stops.size() - 2].place) {
            refuseAt(start, "a place not before " + numberText(stops[stops.size() - 2].place));
        }
        return *value + 0.0;  // 0 rather than -0
    }

    [[noreturn]] void refuse(const std::string& expected) const { refuseAt(rest, expected); }

    [[noreturn]] void refuseAt(std::string_view where, const std::string& expected) const {
        const std::string_view passed = all.substr(0, all.size() - where.size());
        const auto column = 1 + std::count_if(passed.begin(), passed.end(),
                                              [](char c) { return (c & 0xc0) != 0x80; });
        throw Failure("column " + std::to_string(column) + ": expected " + expected);
    }

    const std::string_view all;
    std::string_view rest;
};

std::string textOf(const std::vector<Gradient::Stop>& stops) {
    std::string text;
    for (const Gradient::Stop& stop : stops) {
        Colour colour{};
        for (std::size_t c = 0; c < 3; ++c) {
            colour[c] = static_cast<unsigned char>(std::lround(stop.colour[c] * 255));
        }
        text += (text.empty() ? "" : ", ") + colourText(colour) + " " + numberText(stop.place);
    }
    return text;
}

Gradient fromStops(const std::vector<Gradient::Stop>& stops) {
    return {stops, textOf(stops)};
}

// The lines of a GIMP gradient.
class GimpReader {
  public:
    explicit GimpReader(std::string_view text) : rest(text) {}

    Gradient read() {
        if (next() != GIMP_MARK) refuse("\"GIMP Gradient\"");
        std::string_view line = next();
        if (line.starts_with("Name:")) line = next();
        const auto count = takeNumber(line);
        if (!count || *count < 1 || *count > MOST_SEGMENTS || *count != std::floor(*count)) {
            refuse("the number of segments, 1 to " + std::to_string(MOST_SEGMENTS));
        }
        std::vector<Segment> segments;
        segments.reserve(static_cast<std::size_t>(*count));
        for (int n = 0; n < *count; ++n)
            segments.push_back(segment(n == 0 ? 0 : segments.back().right));
        if (segments.back().right != 1) refuse("a last segment that ends at 1");
        return {segments, textOf(segments)};
    }

  private:
    static constexpr std::size_t NUMBERS = 11;
    static constexpr double NEAR = 1e-5;  // GIMP rounds its places to six digits

    std::string_view next() {
        ++number;
        const std::size_t end = std::min(rest.find('\n'), rest.size());
        std::string_view line = rest.substr(0, end);
        rest.remove_prefix(std::min(end + 1, rest.size()));
        while (!line.empty() && (line.back() == '\r' || line.back() == ' ')) line.remove_suffix(1);
        return line;
    }

    Segment segment(double begin) {
        std::string_view line = next();
        std::array<double, NUMBERS> values{};
        for (double& value : values) {
            skipBlanks(line);
            const auto read = takeNumber(line);
            if (!read) refuse("a segment of eleven numbers and two kinds");
            value = *read;
        }
        Segment made;
        made.left = begin;
        made.middle = values[1];
        made.right = std::abs(values[2] - 1) < NEAR ? 1 : values[2];
        if (std::abs(values[0] - begin) > NEAR) refuse("a segment that begins where the last ends");
        if (!(made.left <= made.middle && made.middle <= made.right && made.right <= 1)) {
            refuse("a middle between the ends, up to 1");
        }
        made.blending = static_cast<Segment::Blending>(kind(line, 5));
        made.colouring = static_cast<Segment::Colouring>(kind(line, 2));
        made.from = colour(&values[3], optionalKind(line));
        made.to = colour(&values[7], optionalKind(line));
        return made;
    }

    int kind(std::string_view& line, int most) {
        skipBlanks(line);
        const auto value = takeNumber(line);
        if (!value || *value < 0 || *value > most || *value != std::floor(*value)) {
            refuse("a kind from 0 to " + std::to_string(most));
        }
        return static_cast<int>(*value);
    }

    int optionalKind(std::string_view& line) {
        skipBlanks(line);
        return line.empty() ? 0 : kind(line, 4);
    }

    // kind: 0 the colour itself, 1 and 2 GIMP's foreground, 3 and 4 its background, which are black
    // and white as GIMP starts.
    Levels colour(const double* values, int kind) {
        if (kind > 0) return kind <= 2 ? Levels{0, 0, 0} : Levels{1, 1, 1};
        for (int c = 0; c < 3; ++c) {
            if (values[c] < 0 || values[c] > 1) refuse("levels from 0 to 1");
        }
        return {values[0], values[1], values[2]};
    }

    static std::string textOf(const std::vector<Segment>& segments) {
        std::string text = std::string(GIMP_MARK) + "\n" + std::to_string(segments.size()) + "\n";
        for (const Segment& s : segments) {
            for (const double value : {s.left, s.middle, s.right, s.from[0], s.from[1], s.from[2],
                                       1.0, s.to[0], s.to[1], s.to[2], 1.0}) {
                text += numberText(value) + " ";
            }
            text += std::to_string(static_cast<int>(s.blending)) + " " +
                    std::to_string(static_cast<int>(s.colouring)) + "\n";
        }
        return text;
    }

    [[noreturn]] void refuse(const std::string& expected) const {
        throw Failure("line " + std::to_string(number) + ": expected " + expected);
    }

    std::string_view rest;
    int number = 0;  // of the line read last, from 1
};

std::string contentOf(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::string text{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    if (!file || text.empty()) throw Failure(path + ": cannot be read, or is empty");
    return text;
}

Gradient fromMap(const std::vector<Colour>& colours) {
    std::vector<Gradient::Stop> stops;
    const auto count = static_cast<double>(colours.size());
    stops.reserve(colours.size());
    for (const Colour& c : colours) {
        stops.push_back({static_cast<double>(stops.size()) / count,
                         {c[0] / 255.0, c[1] / 255.0, c[2] / 255.0}});
    }
    return fromStops(stops);
}

std::string listOfNames() {
    std::string list;
    for (const std::string& name : gradientNames()) list += name + ", ";
    return list;
}

}  // namespace

std::optional<Colour> readColourText(std::string_view text) {
    if (text.size() != 7 || text.front() != '#') return {};
    Colour colour{};
    for (std::size_t c = 0; c < 3; ++c) {
        const std::string_view digits = text.substr(1 + 2 * c, 2);
        const auto [end, error] = std::from_chars(digits.data(), digits.data() + 2, colour[c], 16);
        if (error != std::errc() || end != digits.data() + 2) return {};
    }
    return colour;
}

std::string colourText(const Colour& colour) {
    constexpr std::string_view DIGITS = "0123456789abcdef";
    std::string text = "#";
    for (const unsigned char level : colour) {
        text += DIGITS[level >> 4U];
        text += DIGITS[level & 15U];
    }
    return text;
}

Gradient readGradient(const std::string& text) {
    if (const auto stops = builtInGradient(text); !stops.empty()) {
        return fromStops(StopReader(stops).read());
    }
    if (text.starts_with(GIMP_MARK)) return GimpReader(text).read();
    if (text.find_first_of("#, ") == std::string::npos) {
        throw Failure("expected " + listOfNames() +
                      "a .map or .ggr file or stops such as \"#000764 0, #206bcb 0.16\", not '" +
                      text + "'");
    }
    return fromStops(StopReader(text).read());
}

bool isGradientFile(std::string_view text) {
    return text.size() > 4 && (text.ends_with(".map") || text.ends_with(".ggr"));
}

Gradient readGradientFile(const std::string& path) {
    if (path.ends_with(".map")) return fromMap(readMap(path).colours);
    const std::string text = contentOf(path);
    try {
        return GimpReader(text).read();
    } catch (const Failure& failure) {
        throw Failure(path + ": " + failure.what());
    }
}

}  // namespace render
