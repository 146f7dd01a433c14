// The bytes of a .frac file: whatever they are, what is read of them is written and read again the
// same, and damage is told of exactly where the bytes would not come back.
#include "frac/catalogue_bytes.h"
#include "frac/catalogue_check.h"
#include "tests/fuzz/memory_file.h"

namespace {

// As the window reads it, and as the companion does.
std::vector<fractal> readBothWays(std::string_view bytes) {
    const MemoryFile file(bytes.data(), bytes.size());
    const auto loaded = readCatalogue(file.path());
    require(loaded.has_value(), "a file that opens is read");
    require(encodeCatalogue(*loaded) == encodeCatalogue(decodeCatalogue(bytes)),
            "a file and its bytes hold the same entries");
    return *loaded;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view bytes(reinterpret_cast<const char*>(data), size);
    const std::string saved = encodeCatalogue(readBothWays(bytes));
    require(encodeCatalogue(readBothWays(saved)) == saved, "what was saved is loaded the same");
    require(findDamage(bytes).empty() == (saved == bytes), "damage is what saving would change");
    return 0;
}
