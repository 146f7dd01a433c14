// What `tessary-frac import` takes: a JSON document becomes a catalogue and is written again the
// same; anything else is refused in one line.
#include <cstdint>

#include "frac/catalogue_bytes.h"
#include "frac/input.h"
#include "tests/fuzz/memory_file.h"

namespace {

void checkMessage(const std::string& message) {
    require(!message.empty() && message.size() < 2000, "a message is a line of some length");
    for (const char c : message) {
        require(c >= ' ' && c <= '~', "a message holds nothing that drives a terminal");
    }
}

// The entries as the catalogue's bytes hold them.
void checkCatalogue(const std::vector<fractal>& entries) {
    const std::string bytes = encodeCatalogue(entries);
    require(encodeCatalogue(decodeCatalogue(bytes)) == bytes,
            "what is imported is loaded the same");
}

void checkAgain(const Document& document, Letters letters) {
    const std::string once = writeDocument(document, letters);
    require(writeDocument(readDocument(once), letters) == once,
            "what is written is read, and written again, the same");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const MemoryFile file(data, size);
    try {
        const Document document = readDocumentFile(file.path());
        checkCatalogue(document.entries);
        checkAgain(document, Letters::utf8);
        checkAgain(document, Letters::ascii);
    } catch (const InputError& error) {
        checkMessage(error.what());
    }
    return 0;
}
