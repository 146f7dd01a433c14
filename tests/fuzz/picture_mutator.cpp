// How inputs of the target `picture` are changed: a chunk of a PNG whose checksum is wrong is not
// looked into, so mostly the checksums are set right again.
#include <zlib.h>

#include <cstdint>

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t most);

namespace {

constexpr std::size_t SIGNATURE = 8, AROUND = 12;  // the length, type and checksum of a chunk

std::uint32_t numberAt(const std::uint8_t* at) {
    return std::uint32_t{at[0]} << 24 | std::uint32_t{at[1]} << 16 | std::uint32_t{at[2]} << 8 |
           at[3];
}

void writeNumber(std::uint8_t* at, unsigned long number) {
    for (int n = 0; n < 4; ++n) at[n] = static_cast<std::uint8_t>(number >> (24 - 8 * n));
}

void correctChecksums(std::uint8_t* data, std::size_t size) {
    for (std::size_t at = SIGNATURE; at + AROUND <= size;) {
        const std::size_t length = numberAt(data + at);
        if (length > size - at - AROUND) return;
        const std::uint8_t* checked = data + at + 4;
        writeNumber(data + at + 8 + length, crc32(0, checked, static_cast<uInt>(length + 4)));
        at += AROUND + length;
    }
}

}  // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t most, unsigned seed) {
    size = LLVMFuzzerMutate(data, size, most);
    if (seed % 8 != 0) correctChecksums(data, size);
    return size;
}
