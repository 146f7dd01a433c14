#include "render/npy_encoder.h"

#include <bit>

#include "render/colour_rows.h"

namespace render {
namespace {

template <class Number>
std::string bytesOf(const std::vector<Number>& numbers) {
    return {reinterpret_cast<const char*>(numbers.data()), numbers.size() * sizeof(Number)};
}

}  // namespace

// The head, its length in its bytes 8 and 9, ends with a line feed at a multiple of 64 bytes.
std::string NpyEncoder::head(const Job& job) const {
    constexpr std::size_t MULTIPLE = 64, BEFORE = 10;
    const std::string order = std::endian::native == std::endian::little ? "<" : ">";
    std::string text = "{'descr': '" + order + (values ? "f8" : "i4") +
                       "', 'fortran_order': False, 'shape': (" + std::to_string(job.size.height) +
                       ", " + std::to_string(job.size.width) + "), }";
    while ((BEFORE + text.size() + 1) % MULTIPLE != 0) text += ' ';
    text += '\n';
    std::string head("\x93NUMPY\x01\x00", 8);
    head += static_cast<char>(text.size() & 0xffU);
    head += static_cast<char>(text.size() >> 8U);
    return head + text;
}

EncodedBand NpyEncoder::band(const Job& job, RowRange range, Workshop& workshop) const {
    NumberRows numbers;
    const int first = job.band ? job.band->first : 0;
    computeNumbers(job, {first + range.first, first + range.end}, values, workshop.stop, numbers);
    EncodedBand made;
    made.bytes = values ? bytesOf(numbers.values) : bytesOf(numbers.counts);
    return made;
}

std::string NpyEncoder::tail(std::uint32_t) const {
    return {};
}

}  // namespace render
