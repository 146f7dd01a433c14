#include "frac/frac_record.h"

#include "frac/byte_reader.h"

namespace {

template <class T>
void append(std::string& bytes, const T& value) {
    bytes.append(reinterpret_cast<const char*>(&value), sizeof value);
}

// A name of `length` bytes up to its first NUL.
std::string decodeName(ByteReader& reader, std::int32_t length) {
    if (length < 1) return {};
    std::string name = reader.takeText(static_cast<std::size_t>(length));
    const std::size_t end = name.find('\0');
    if (end != std::string::npos) name.resize(end);
    return name;
}

}  // namespace

std::string encodeRecord(const fractal& entry) {
    std::string bytes;
    append(bytes, entry.xMax);
    append(bytes, entry.xMin);
    append(bytes, entry.yMax);
    append(bytes, entry.yMin);
    append(bytes, entry.cx);
    append(bytes, entry.cy);
    append(bytes, entry.maxIters);
    append(bytes, entry.maxSize);
    append(bytes, entry.paletteType);
    append(bytes, entry.fractalType);
    append(bytes, static_cast<std::int32_t>(entry.name.size() + 1));
    bytes.append(entry.name.c_str(), entry.name.size() + 1);
    append(bytes, entry.fractalID);
    return bytes;
}

std::optional<fractal> decodeRecord(ByteReader& reader) {
    fractal entry;
    if (!reader.take(entry.xMax)) return {};
    reader.take(entry.xMin);
    reader.take(entry.yMax);
    reader.take(entry.yMin);
    reader.take(entry.cx);
    reader.take(entry.cy);
    reader.take(entry.maxIters);
    reader.take(entry.maxSize);
    reader.take(entry.paletteType);
    reader.take(entry.fractalType);
    std::int32_t length = 0;
    reader.take(length);
    entry.name = decodeName(reader, length);
    reader.take(entry.fractalID);
    return entry;
}
