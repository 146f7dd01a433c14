// How inputs of the target `shares` are changed: a share whose checksum is wrong is not believed,
// so mostly the checksum is set right again.
#include <zlib.h>

#include <cstdint>

extern "C" std::size_t LLVMFuzzerMutate(std::uint8_t* data, std::size_t size, std::size_t most);

namespace {

constexpr std::size_t HEAD_LENGTH = 8;    // where its two bytes stand
constexpr std::size_t CHECKSUM_LINE = 9;  // the last bytes

void correctChecksum(std::uint8_t* data, std::size_t size) {
    if (size < HEAD_LENGTH + 2) return;
    const std::size_t start =
        HEAD_LENGTH + 2 + data[HEAD_LENGTH] + std::size_t{256} * data[HEAD_LENGTH + 1];
    if (start + CHECKSUM_LINE > size) return;
    std::uint8_t* line = data + size - CHECKSUM_LINE;
    const auto length = static_cast<uInt>(line - data) - static_cast<uInt>(start);
    const unsigned long sum = adler32(1, data + start, length);
    for (int n = 0; n < 8; ++n) {
        line[n] = static_cast<std::uint8_t>("0123456789abcdef"[sum >> (28 - 4 * n) & 15]);
    }
    line[8] = '\n';
}

}  // namespace

extern "C" std::size_t LLVMFuzzerCustomMutator(std::uint8_t* data, std::size_t size,
                                               std::size_t most, unsigned seed) {
    size = LLVMFuzzerMutate(data, size, most);
    if (seed % 8 != 0) correctChecksum(data, size);
    return size;
}
