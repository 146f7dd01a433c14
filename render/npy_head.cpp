#include "render/npy_head.h"

#include <bit>
#include <charconv>

namespace render {
namespace {

constexpr std::string_view MARK = "\x93NUMPY";

// The number that follows the mark, which the text loses with all before it.
std::optional<int> numberAfter(std::string_view& text, std::string_view mark) {
    const std::size_t at = text.find(mark);
    if (at == std::string_view::npos) return {};
    text.remove_prefix(at + mark.size());
    int number = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc()) return {};
    return number;
}

}  // namespace

std::size_t numberBytes(NumberKind kind) {
    return kind == NumberKind::values ? sizeof(double) : sizeof(std::int32_t);
}

// Its length, in its bytes 8 and 9, makes it end with a line feed at a multiple of 64 bytes.
std::string npyHead(Size size, NumberKind kind) {
    constexpr std::size_t MULTIPLE = 64, BEFORE = 10;
    const std::string order = std::endian::native == std::endian::little ? "<" : ">";
    std::string text = "{'descr': '" + order + (kind == NumberKind::values ? "f8" : "i4") +
                       "', 'fortran_order': False, 'shape': (" + std::to_string(size.height) +
                       ", " + std::to_string(size.width) + "), }";
    while ((BEFORE + text.size() + 1) % MULTIPLE != 0) text += ' ';
    text += '\n';
    std::string head = std::string(MARK) + std::string("\x01\x00", 2);
    head += static_cast<char>(text.size() & 0xffU);
    head += static_cast<char>(text.size() >> 8U);
    return head + text;
}

// What is understood is written again, and must be the same: so nothing is overlooked.
std::optional<NpyShape> readNpyHead(std::string_view bytes) {
    std::string_view text = bytes.substr(0, LONGEST_NPY_HEAD);
    const auto height = numberAfter(text, "'shape': (");
    const auto width = numberAfter(text, ", ");
    if (!height || !width) return {};
    for (const NumberKind kind : {NumberKind::counts, NumberKind::values}) {
        const std::string head = npyHead({*width, *height}, kind);
        if (bytes.starts_with(head)) return NpyShape{{*width, *height}, kind, head.size()};
    }
    return {};
}

bool isNpy(std::string_view bytes) {
    return bytes.starts_with(MARK);
}

}  // namespace render
