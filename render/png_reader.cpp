#include "render/png_reader.h"

#include <png.h>

#include "render/failure.h"

namespace render {
namespace {

// Texts longer than that are not ours.
constexpr png_alloc_size_t LONGEST_TEXT = png_alloc_size_t{1} << 28;

class Reader {
  public:
    explicit Reader(const ReadBytes& source)
        : png(png_create_read_struct(PNG_LIBPNG_VER_STRING, nullptr, fail, ignore)) {
        if (png == nullptr) throw std::bad_alloc();
        info = png_create_info_struct(png);
        png_set_read_fn(png, const_cast<ReadBytes*>(&source), fill);
        png_set_chunk_malloc_max(png, LONGEST_TEXT);
        png_set_sig_bytes(png, PNG_SIGNATURE_BYTES);
    }
    ~Reader() { png_destroy_read_struct(&png, &info, nullptr); }
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;

    png_structp png;
    png_infop info = nullptr;

  private:
    [[noreturn]] static void fail(png_structp, png_const_charp message) {
        throw Failure(std::string("damaged PNG: ") + message);
    }
    static void ignore(png_structp, png_const_charp) {}
    static void fill(png_structp png, png_bytep data, std::size_t length) {
        const auto& read = *static_cast<const ReadBytes*>(png_get_io_ptr(png));
        while (length > 0) {
            const std::size_t count = read(reinterpret_cast<char*>(data), length);
            if (count == 0) png_error(png, "it ends too early");
            data += count;
            length -= count;
        }
    }
};

std::string textOf(const png_text& entry) {
    const bool international = entry.compression >= PNG_ITXT_COMPRESSION_NONE;
    return {entry.text, international ? entry.itxt_length : entry.text_length};
}

}  // namespace

bool isPng(std::string_view start) {
    return start.substr(0, PNG_SIGNATURE_BYTES) == "\x89PNG\r\n\x1a\n";
}

std::optional<std::string> pngText(const ReadBytes& read, const std::string& keyword) {
    const Reader reader(read);
    png_read_info(reader.png, reader.info);
    png_textp texts = nullptr;
    const int count = png_get_text(reader.png, reader.info, &texts, nullptr);
    for (int i = 0; i < count; ++i) {
        if (keyword == texts[i].key) return textOf(texts[i]);
    }
    return {};
}

}  // namespace render
