#include "GlutMenu/FieldView.h"

#include <algorithm>
#include <cmath>
#include <vector>

#include "GlutMenu/Font.h"
#include "GlutMenu/Truncate.h"

namespace GlutMenu {

namespace {

// Left edge of every glyph and the right edge of the last, in the units of the stroke font.
std::vector<int> GlyphEdges(const std::string& text) {
    std::vector<int> edges = {0};
    edges.reserve(text.size() + 1);
    for (const char c : text) edges.push_back(edges.back() + StrokeUnits(c));
    return edges;
}

// Units that fit into so many pixels. Rounded, because the last glyph of a field that its text just
// fills would be lost otherwise.
int UnitsWithin(float pixels) {
    return std::max(Truncate(std::round(pixels / CGlutMenu::font_scale_x)), 0);
}

}  // namespace

Part PartInSight(const std::string& text, std::size_t cursor, float room) {
    const std::vector<int> edges = GlyphEdges(text);
    const int units = UnitsWithin(room);
    const auto at_cursor = edges.begin() + static_cast<std::ptrdiff_t>(cursor);
    const int hidden = std::clamp(*at_cursor - units / 2, 0, std::max(edges.back() - units, 0));
    const auto first = std::lower_bound(edges.begin(), at_cursor, hidden);
    // In 64 bits: a window of no width lets any number of units fit.
    const auto fits = [&](int edge) { return static_cast<long long>(edge) - *first <= units; };
    const auto last = std::partition_point(first, edges.end(), fits) - 1;
    return {static_cast<std::size_t>(first - edges.begin()),
            static_cast<std::size_t>(last - first)};
}

std::string Beginning(const std::string& text, float room) {
    return text.substr(0, PartInSight(text, 0, room).length);
}

}  // namespace GlutMenu
