#include "frac/catalogue_bytes.h"

#include "frac/byte_reader.h"
#include "frac/frac_record.h"

namespace {

std::vector<fractal> readRecords(ByteReader& reader, const RecordListener& listener) {
    std::vector<fractal> loaded;
    while (std::optional<fractal> entry = decodeRecord(reader)) {
        loaded.push_back(std::move(*entry));
        if (listener) listener(loaded.back());
    }
    return loaded;
}

}  // namespace

std::optional<std::vector<fractal>> readCatalogue(const std::string& path,
                                                  const RecordListener& listener) {
    ByteReader reader(path);
    if (!reader.isOpen()) return {};
    std::vector<fractal> loaded = readRecords(reader, listener);
    if (loaded.empty() && reader.failed()) return {};
    return loaded;
}

std::vector<fractal> decodeCatalogue(std::string_view bytes) {
    ByteReader reader = ByteReader::ofBytes(bytes);
    return readRecords(reader, {});
}

std::string encodeCatalogue(const std::vector<fractal>& entries) {
    std::string bytes;
    for (const fractal& entry : entries) bytes += encodeRecord(entry);
    return bytes;
}
