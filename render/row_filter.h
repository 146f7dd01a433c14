// The filters of PNG rows.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace render {

// `rows` with each row filtered by whichever of the five filters leaves the least sum of absolute
// values, the usual guess at what packs best. rows: each a filter byte 0 and its pixels, `rowBytes`
// with it. The first row is filtered without looking at the row above, which is not there. Any
// thread.
std::string filterRows(std::string_view rows, std::size_t rowBytes, std::size_t bytesPerPixel);

// The same with each row filtered by the first of them, the differences from the pixel to the left.
void subtractLeft(std::string_view rows, std::size_t rowBytes, std::size_t bytesPerPixel,
                  std::string& filtered);

}  // namespace render
