#include "frac/formula_names.h"

#include <algorithm>
#include <array>

namespace {

constexpr std::array<std::string_view, 14> FORMULAS = {
    "mandelbrot",
    "julia",
    "sine",
    "cosine",
    "hyperbolic-sine",
    "hyperbolic-cosine",
    "barnsley-1",
    "barnsley-2",
    "barnsley-3",
    "barnsley-sierpinski",
    "dragon",
    "chebyshev-t5",
    "hermite-h4",
    "legendre-p3",
};
constexpr std::array<std::string_view, 2> PALETTES = {"random", "rgb"};

}  // namespace

std::span<const std::string_view> formulaNames() {
    return FORMULAS;
}

std::span<const std::string_view> paletteNames() {
    return PALETTES;
}

std::optional<std::string_view> nameOf(std::span<const std::string_view> names,
                                       std::int32_t number) {
    const auto index = static_cast<std::uint32_t>(number);  // what is negative is past the end
    return index < names.size() ? std::optional(names[index]) : std::nullopt;
}

std::optional<std::int32_t> numberOf(std::span<const std::string_view> names,
                                     std::string_view name) {
    const auto place = std::find(names.begin(), names.end(), name);
    if (place == names.end()) return {};
    return static_cast<std::int32_t>(place - names.begin());
}
