// The gradients that are built in: each a turn that ends where it begins.
#include <algorithm>
#include <array>
#include <utility>

#include "render/gradient.h"

namespace render {
namespace {

// The last two are for eyes that tell few hues apart: lightness alone rises to the middle and falls
// behind it, and the hues are blue and yellow, or blue and orange, which most of them tell apart.
constexpr std::array<std::pair<std::string_view, std::string_view>, 8> LIBRARY = {{
    {"tide", "#071a3d 0, #155a9c 0.16, #8fd3e8 0.33, #fdf6e0 0.47, #e9a23b 0.64, #8c2f39 0.82"},
    {"ember", "#0b0710 0, #5a1026 0.2, #c8321f 0.38, #f79a2b 0.54, #fff3c4 0.68, #7d3a5c 0.86"},
    {"meadow", "#0d2b1d 0, #2f7d43 0.22, #b9d66a 0.42, #fbf7c8 0.55, #6fb7a5 0.74, #1c4f63 0.9"},
    {"dusk", "#1a1037 0, #5b2a86 0.2, #d0568c 0.4, #ffc29b 0.56, #f7f0ea 0.66, #6c7fc9 0.85"},
    {"glacier", "#062a33 0, #1d7a8c 0.25, #a6e3e0 0.45, #ffffff 0.56, #9db4d6 0.74, #3b4a7a 0.9"},
    {"grey", "#000000 0, #ffffff 0.5"},
    {"beacon",
     "#001338 0, #2b4f8f 0.18, #6d7a8c 0.3, #b5a46a 0.39, #ffe14d 0.46, #fffbe0 0.5, #ffe14d 0.54, "
     "#b5a46a 0.61, #6d7a8c 0.7, #2b4f8f 0.82"},
    {"harbour", "#101c3a 0, #2f6bb0 0.2, #9cc7e6 0.36, #fff7e8 0.5, #f0a860 0.66, #8a4a16 0.84"},
}};

}  // namespace

const std::vector<std::string>& gradientNames() {
    static const std::vector<std::string> NAMES = [] {
        std::vector<std::string> names;
        names.reserve(LIBRARY.size());
        for (const auto& entry : LIBRARY) names.emplace_back(entry.first);
        return names;
    }();
    return NAMES;
}

std::string_view builtInGradient(std::string_view name) {
    const auto* found = std::find_if(LIBRARY.begin(), LIBRARY.end(),
                                     [&](const auto& entry) { return entry.first == name; });
    return found == LIBRARY.end() ? std::string_view() : found->second;
}

}  // namespace render
