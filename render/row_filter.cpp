#include "render/row_filter.h"

#include <algorithm>
#include <cstdlib>
#include <limits>

namespace render {
namespace {

// The byte to the left of the one in work, the one above it, and the one above the left one.
struct Neighbours {
    int left, above, corner;
};

int paeth(const Neighbours& n) {
    const int toLeft = std::abs(n.above - n.corner);
    const int toAbove = std::abs(n.left - n.corner);
    const int toCorner = std::abs(n.left + n.above - 2 * n.corner);
    if (toLeft <= toAbove && toLeft <= toCorner) return n.left;
    return toAbove <= toCorner ? n.above : n.corner;
}

int predict(int filter, const Neighbours& n) {
    switch (filter) {
        case 1:
            return n.left;
        case 2:
            return n.above;
        case 3:
            return (n.left + n.above) / 2;
        case 4:
            return paeth(n);
        default:
            return 0;
    }
}

// Filters one row into `out`; `above` is empty in the first row. Returns the sum of absolute
// values.
std::size_t filterRow(int filter, std::string_view row, std::string_view above,
                      std::size_t bytesPerPixel, char* out) {
    std::size_t sum = 0;
    const auto at = [](std::string_view bytes, std::size_t i) {
        return int{static_cast<unsigned char>(bytes[i])};
    };
    out[0] = static_cast<char>(filter);
    for (std::size_t i = 1; i < row.size(); ++i) {
        const bool hasLeft = i > bytesPerPixel, hasAbove = !above.empty();
        const Neighbours n{hasLeft ? at(row, i - bytesPerPixel) : 0, hasAbove ? at(above, i) : 0,
                           hasLeft && hasAbove ? at(above, i - bytesPerPixel) : 0};
        const auto rest = static_cast<signed char>(at(row, i) - predict(filter, n));
        out[i] = static_cast<char>(rest);
        sum += static_cast<std::size_t>(std::abs(int{rest}));
    }
    return sum;
}

}  // namespace

std::string filterRows(std::string_view rows, std::size_t rowBytes, std::size_t bytesPerPixel) {
    std::string filtered(rows.size(), '\0'), attempt(rowBytes, '\0');
    for (std::size_t start = 0; start < rows.size(); start += rowBytes) {
        const auto above =
            start == 0 ? std::string_view() : rows.substr(start - rowBytes, rowBytes);
        std::size_t least = std::numeric_limits<std::size_t>::max();
        for (int filter = 0; filter < 5; ++filter) {
            const std::size_t sum = filterRow(filter, rows.substr(start, rowBytes), above,
                                              bytesPerPixel, attempt.data());
            if (sum >= least) continue;
            least = sum;
            filtered.replace(start, rowBytes, attempt);
        }
    }
    return filtered;
}

void subtractLeft(std::string_view rows, std::size_t rowBytes, std::size_t bytesPerPixel,
                  std::string& filtered) {
    constexpr char SUB = 1;
    filtered.resize(rows.size());
    for (std::size_t start = 0; start < rows.size(); start += rowBytes) {
        const char* const row = rows.data() + start;
        char* const out = filtered.data() + start;
        out[0] = SUB;
        const std::size_t first = std::min(rowBytes, 1 + bytesPerPixel);
        std::copy(row + 1, row + first, out + 1);
        for (std::size_t i = first; i < rowBytes; ++i) {
            out[i] = static_cast<char>(row[i] - row[i - bytesPerPixel]);
        }
    }
}

}  // namespace render
