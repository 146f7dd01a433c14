// Fuzzes the reader of documents: what it takes must be written, and read again, the same.
#include <cstdint>
#include <cstdlib>

#include "frac/json_document.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    try {
        const std::string_view text(reinterpret_cast<const char*>(data), size);
        const std::string once = writeDocument(readDocument(text));
        if (writeDocument(readDocument(once)) != once) std::abort();
    } catch (const JsonError&) {
        return 0;
    }
    return 0;
}
