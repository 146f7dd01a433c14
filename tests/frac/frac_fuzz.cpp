// Throws arbitrary bytes at the reader of saved catalogues: a libFuzzer entry point, built with
// -DTESSARY_FUZZ=ON by clang. What was decoded must encode and decode again to the same bytes.
#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <string>

#include "frac/byte_reader.h"
#include "frac/frac_record.h"

namespace {

// A file that lives in memory only.
class MemoryFile {
  public:
    MemoryFile(const void* bytes, std::size_t size) : descriptor(memfd_create("frac", 0)) {
        if (write(descriptor, bytes, size) != static_cast<ssize_t>(size)) std::abort();
    }
    ~MemoryFile() { close(descriptor); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor); }

  private:
    int descriptor;
};

std::string decodeAndEncode(const void* bytes, std::size_t size) {
    const MemoryFile file(bytes, size);
    ByteReader reader(file.path());
    std::string encoded;
    while (const auto entry = decodeRecord(reader)) encoded += encodeRecord(*entry);
    return encoded;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size) {
    const std::string once = decodeAndEncode(bytes, size);
    if (decodeAndEncode(once.data(), once.size()) != once) std::abort();
    return 0;
}
