#include "frac/input.h"

#include <cerrno>
#include <cstring>
#include <limits>

#include "frac/byte_reader.h"
#include "frac/catalogue_bytes.h"
#include "frac/picture_document.h"

namespace {

constexpr std::string_view PICTURE_SIGNATURE("\x89PNG\r\n\x1a\n", 8);
constexpr std::string_view BYTE_ORDER_MARK = "\xEF\xBB\xBF";

// A file as it was read; of a picture, the text of its document.
struct Content {
    InputKind kind;
    std::string bytes;
    bool broken;  // a read error ended it
};

[[noreturn]] void refuse(const std::string& path, const std::string& reason) {
    throw InputError(inputName(path) + ": " + reason);
}

ByteReader openReader(const std::string& path) {
    return path == "-" ? ByteReader::ofStandardInput() : ByteReader(path);
}

std::string readPicture(ByteReader& reader, const std::string& path) {
    try {
        if (const auto text = readPictureText(reader)) return *text;
    } catch (const PictureError& error) {
        refuse(path, std::string("the picture cannot be read: ") + error.what());
    }
    refuse(path, "the picture has no text chunk \"tessary\": it was not made by this program");
}

Content readContent(const std::string& path) {
    ByteReader reader = openReader(path);
    if (!reader.isOpen()) refuse(path, std::strerror(errno));
    std::string bytes = reader.takeText(PICTURE_SIGNATURE.size());
    if (bytes == PICTURE_SIGNATURE) return {InputKind::picture, readPicture(reader, path), false};
    bytes += reader.takeText(std::numeric_limits<std::size_t>::max());
    if (bytes.empty() && reader.failed()) refuse(path, std::strerror(errno));
    return {kindOf(bytes), std::move(bytes), reader.failed()};
}

Document parse(const std::string& path, const Content& content) {
    if (content.broken) refuse(path, "it cannot be read to its end");
    try {
        return readDocument(content.bytes);
    } catch (const JsonError& error) {
        refuse(path, error.what());
    }
}

// What the program would load. A file that fails before its first record counts as unreadable.
Input readRecords(const std::string& path, const Content& content) {
    Input input;
    input.document.entries = decodeCatalogue(content.bytes);
    if (input.document.entries.empty() && content.broken) refuse(path, "it cannot be read");
    input.damage = findDamage(content.bytes);
    if (content.broken) input.damage.push_back({content.bytes.size(), "reading fails"});
    return input;
}

}  // namespace

InputKind kindOf(std::string_view bytes) {
    if (bytes.starts_with(PICTURE_SIGNATURE)) return InputKind::picture;
    if (bytes.starts_with(BYTE_ORDER_MARK)) bytes.remove_prefix(BYTE_ORDER_MARK.size());
    const std::size_t first = bytes.find_first_not_of(" \t\r\n");
    const bool brace = first != std::string_view::npos && bytes[first] == '{';
    const bool text = brace && bytes.find('\0') == std::string_view::npos;
    return text ? InputKind::document : InputKind::catalogue;
}

Input readInput(const std::string& path) {
    const Content content = readContent(path);
    if (content.kind == InputKind::catalogue) return readRecords(path, content);
    return {content.kind, parse(path, content), {}};
}

Document readDocumentFile(const std::string& path) {
    return parse(path, readContent(path));
}

std::string inputName(const std::string& path) {
    return path == "-" ? "standard input" : path;
}
