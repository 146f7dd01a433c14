#include "render/resume.h"

#include <isa-l/crc.h>
#include <isa-l/igzip_lib.h>

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <iterator>
#include <memory>

namespace render {
namespace {

constexpr std::size_t LONGEST_CHUNK = std::size_t{1} << 28;
constexpr std::size_t WIDTH_AT = 16, HEIGHT_AT = 20, DEPTH_AT = 24,
                      COLOUR_AT = 25;  // in the head of a PNG
constexpr char INDEXED = 3;

std::uint32_t numberAt(std::string_view bytes, std::size_t at) {
    std::uint32_t number = 0;
    for (std::size_t n = at; n < at + 4; ++n) {
        number = number << 8 | static_cast<unsigned char>(bytes[n]);
    }
    return number;
}

// Number of bytes that the rows of a picture with this head unpack to.
std::uint64_t unpackedLength(std::string_view head) {
    const std::uint64_t pixel = head[COLOUR_AT] == INDEXED ? 1 : head[DEPTH_AT] == 16 ? 6 : 3;
    return (1 + pixel * numberAt(head, WIDTH_AT)) * numberAt(head, HEIGHT_AT);
}

// Unpacks a zlib stream piece by piece, only to see whether it is sound and how long.
class Unpacker {
  public:
    Unpacker() : state(std::make_unique<inflate_state>()), room(std::size_t{1} << 18, '\0') {
        isal_inflate_init(state.get());
        state->crc_flag = ISAL_ZLIB;
    }

    bool take(std::string& packed) {
        state->next_in = reinterpret_cast<std::uint8_t*>(packed.data());
        state->avail_in = static_cast<std::uint32_t>(packed.size());
        do {
            state->next_out = reinterpret_cast<std::uint8_t*>(room.data());
            state->avail_out = static_cast<std::uint32_t>(room.size());
            if (isal_inflate(state.get()) != ISAL_DECOMP_OK) return false;
            length += room.size() - state->avail_out;
        } while (state->avail_out == 0 && !isFinished());
        return true;
    }

    bool isFinished() const { return state->block_state == ISAL_BLOCK_FINISH; }
    std::uint64_t lengthSoFar() const { return length; }

  private:
    std::unique_ptr<inflate_state> state;
    std::string room;
    std::uint64_t length = 0;
};

// The chunks of a file from some place on.
class Chunks {
  public:
    explicit Chunks(std::istream& stream) : in(stream) {}

    // The type of the next chunk; empty when there is none or it is not sound.
    std::string next(std::string& data) {
        std::string head = take(8);
        if (head.size() < 8 || numberAt(head, 0) > LONGEST_CHUNK) return {};
        std::string type = head.substr(4);
        data = type + take(numberAt(head, 0) + std::size_t{4});
        if (data.size() < numberAt(head, 0) + std::size_t{8}) return {};
        const auto* checked = reinterpret_cast<const unsigned char*>(data.data());
        const std::uint32_t sum = crc32_gzip_refl(0, checked, data.size() - 4);
        if (numberAt(data, data.size() - 4) != sum) return {};
        data = data.substr(4, data.size() - 8);
        return type;
    }

    bool isAtEnd() { return in.peek() == std::istream::traits_type::eof(); }

  private:
    std::string take(std::size_t count) {
        std::string bytes(count, '\0');
        in.read(bytes.data(), static_cast<std::streamsize>(count));
        bytes.resize(static_cast<std::size_t>(in.gcount()));
        return bytes;
    }

    std::istream& in;
};

// The first bytes of the packed rows, which the head ends with.
std::string packedIn(std::string_view head) {
    constexpr std::size_t CHECKSUM = 4;
    const std::size_t length = streamHead(Compression::fast).size();
    return std::string(head.substr(head.size() - CHECKSUM - length, length));
}

bool beginsWith(std::istream& in, std::string_view head) {
    std::string bytes(head.size(), '\0');
    in.read(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    return bytes == head;
}

}  // namespace

bool isWhole(const std::string& path, std::string_view head) {
    std::ifstream file(path, std::ios::binary);
    if (!file || !beginsWith(file, head)) return false;
    Unpacker unpacker;
    std::string begin = packedIn(head);
    if (!unpacker.take(begin)) return false;
    Chunks chunks(file);
    std::string data, type;
    while ((type = chunks.next(data)) == "IDAT") {
        if (!unpacker.take(data)) return false;
    }
    return type == "IEND" && chunks.isAtEnd() && unpacker.isFinished() &&
           unpacker.lengthSoFar() == unpackedLength(head);
}

std::vector<Job> unfinished(const std::vector<Job>& jobs, const Encoder& encoder) {
    std::vector<Job> left;
    std::copy_if(jobs.begin(), jobs.end(), std::back_inserter(left),
                 [&](const Job& job) { return !isWhole(job.output, encoder.head(job)); });
    return left;
}

}  // namespace render
