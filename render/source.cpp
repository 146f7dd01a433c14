#include "render/source.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <filesystem>

#include "frac/byte_reader.h"
#include "frac/catalogue_bytes.h"
#include "frac/json_document.h"
#include "render/failure.h"
#include "render/png_reader.h"

namespace render {
namespace {

// A file or standard input, read front to back. Errors are Failures.
class Input {
  public:
    explicit Input(const std::string& path)
        : file(path == "-" ? STDIN_FILENO : open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY)) {
        if (file < 0) fail();
    }
    ~Input() {
        if (file != STDIN_FILENO) close(file);
    }
    Input(const Input&) = delete;
    Input& operator=(const Input&) = delete;

    std::size_t read(char* buffer, std::size_t length) const {
        for (;;) {
            const ssize_t count = ::read(file, buffer, length);
            if (count >= 0) return static_cast<std::size_t>(count);
            if (errno != EINTR) fail();
        }
    }

    // Up to `most` further bytes.
    std::string read(std::size_t most) const {
        std::string bytes;
        char block[65536];
        while (bytes.size() < most) {
            const std::size_t count = read(block, std::min(most - bytes.size(), sizeof block));
            if (count == 0) break;
            bytes.append(block, count);
        }
        return bytes;
    }

    // Bytes after which it counts as ended: what has no size of its own may never end.
    std::size_t longest() const {
        struct stat status = {};
        const bool regular = fstat(file, &status) == 0 && S_ISREG(status.st_mode);
        return regular ? LONGEST_DOCUMENT : ByteReader::LONGEST_STREAM;
    }

  private:
    [[noreturn]] static void fail() {
        throw Failure(std::string("cannot be read: ") + std::strerror(errno));
    }

    int file;
};

// A document begins with a bracket, and has none of the bytes that numbers and names of a .frac
// file are full of.
bool isDocument(std::string_view bytes) {
    const std::size_t start = bytes.find_first_not_of(" \t\r\n");
    return start != std::string_view::npos && (bytes[start] == '{' || bytes[start] == '[') &&
           bytes.find('\0') == std::string_view::npos;
}

void takeDocument(Source& source, std::string_view text) {
    Document document = readDocument(text);
    source.entries = std::move(document.entries);
    source.settings = readSettings(document.render);
}

void takePng(Source& source, const Input& input) {
    const auto text =
        pngText([&input](char* buffer, std::size_t length) { return input.read(buffer, length); },
                "tessary");
    if (!text) throw Failure("a PNG without a chunk \"tessary\": not one of this program's");
    takeDocument(source, *text);
}

void takeFrac(Source& source, std::string_view bytes) {
    source.entries = decodeCatalogue(bytes);
    if (source.entries.empty() || encodeCatalogue(source.entries) == bytes) return;
    const std::size_t count = source.entries.size();
    source.warning = "damaged; rendering what can be read: " + std::to_string(count) +
                     (count == 1 ? " entry" : " entries");
}

void take(Source& source, const Input& input) {
    std::string bytes = input.read(PNG_SIGNATURE_BYTES);
    if (isPng(bytes)) return takePng(source, input);
    bytes += input.read(input.longest());
    if (isDocument(bytes)) return takeDocument(source, bytes);
    takeFrac(source, bytes);
}

std::string stemOf(const std::string& path) {
    return path == "-" ? "stdin" : std::filesystem::path(path).stem().string();
}

}  // namespace

Source readSource(const std::string& path) {
    const std::string name = path == "-" ? "standard input" : path;
    Source source;
    source.stem = stemOf(path);
    try {
        take(source, Input(path));
        if (source.entries.empty()) throw Failure("no entries");
    } catch (const std::runtime_error& error) {
        throw Failure(name + ": " + error.what());
    }
    if (!source.warning.empty()) source.warning = name + ": " + source.warning;
    return source;
}

}  // namespace render
