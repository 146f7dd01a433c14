// What NumPy files begin with: version 1.0 of their format, arrays of rows.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

#include "render/geometry.h"

namespace render {

enum class NumberKind { counts, values };  // int32, float64

// Bytes of one number.
std::size_t numberBytes(NumberKind kind);

// The head of a file of shape (height, width), numbers in the order of this machine's bytes.
std::string npyHead(Size size, NumberKind kind);

// What such a head says.
struct NpyShape {
    Size size;
    NumberKind kind = NumberKind::counts;
    std::size_t length = 0;  // bytes of the head
};

// That of a file that begins with these bytes, at least LONGEST_NPY_HEAD or all of the file;
// nothing where npyHead() writes no such head.
inline constexpr std::size_t LONGEST_NPY_HEAD = 192;
std::optional<NpyShape> readNpyHead(std::string_view bytes);

// Whether a file that begins with these bytes is one for NumPy, of whatever version.
bool isNpy(std::string_view bytes);

}  // namespace render
