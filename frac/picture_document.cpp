#include "frac/picture_document.h"

#include <png.h>

#include <cstring>

#include "frac/byte_reader.h"

namespace {

constexpr int SIGNATURE_SIZE = 8;
constexpr png_alloc_size_t LONGEST_TEXT = png_alloc_size_t{64} << 20;
constexpr const char* KEYWORD = "tessary";

extern "C" void noteError(png_structp png, png_const_charp message) {
    *static_cast<std::string*>(png_get_error_ptr(png)) = message;
    png_longjmp(png, 1);
}

// Odd chunks of other programs are no concern of ours, but that a chunk exceeds LONGEST_TEXT is
// only told before memory is taken for it.
extern "C" void judgeWarning(png_structp png, png_const_charp message) {
    if (std::strstr(message, "too large") != nullptr) png_error(png, "a chunk is too large");
}

// Whether the bytes were there. Apart from the callback, which may not be left by png_error while a
// string lives.
bool copyBytes(ByteReader& reader, png_bytep target, std::size_t length) {
    const std::string bytes = reader.takeText(length);
    bytes.copy(reinterpret_cast<char*>(target), bytes.size());
    return bytes.size() == length;
}

extern "C" void takeBytes(png_structp png, png_bytep target, std::size_t length) {
    auto& reader = *static_cast<ByteReader*>(png_get_io_ptr(png));
    if (!copyBytes(reader, target, length)) png_error(png, "it is cut short");
}

// The library's structures for one picture.
class Picture {
  public:
    explicit Picture(ByteReader& reader)
        : png(png_create_read_struct(PNG_LIBPNG_VER_STRING, &message, noteError, judgeWarning)),
          info(png != nullptr ? png_create_info_struct(png) : nullptr) {
        if (info == nullptr) throw PictureError("no memory");
        png_set_read_fn(png, &reader, takeBytes);
        png_set_sig_bytes(png, SIGNATURE_SIZE);
        png_set_chunk_malloc_max(png, LONGEST_TEXT);
        // Pixels that nobody reads are such an error.
        png_set_benign_errors(png, 1);
    }
    ~Picture() { png_destroy_read_struct(&png, &info, nullptr); }
    Picture(const Picture&) = delete;
    Picture& operator=(const Picture&) = delete;

    // Reads up to the pixels, or from there to the end; false where that failed. No C++ object
    // lives here while the library may jump.
    bool readHead() {
        if (setjmp(png_jmpbuf(png)) != 0) return false;
        png_read_info(png, info);
        return true;
    }
    bool readTail() {
        if (setjmp(png_jmpbuf(png)) != 0) return false;
        png_start_read_image(png);
        png_read_end(png, info);
        return true;
    }

    std::optional<std::string> text() const {
        png_textp texts = nullptr;
        int count = 0;
        png_get_text(png, info, &texts, &count);
        for (int i = 0; i < count; ++i) {
            if (std::strcmp(texts[i].key, KEYWORD) == 0) return textOf(texts[i]);
        }
        return {};
    }

    std::string message;

  private:
    static std::string textOf(const png_text& text) {
        const bool international = text.compression >= PNG_ITXT_COMPRESSION_NONE;
        const std::size_t length = international ? text.itxt_length : text.text_length;
        return text.text != nullptr ? std::string(text.text, length) : std::string();
    }

    png_structp png;
    png_infop info;
};

}  // namespace

std::optional<std::string> readPictureText(ByteReader& reader) {
    Picture picture(reader);
    if (!picture.readHead()) throw PictureError(picture.message);
    if (auto text = picture.text()) return text;
    if (!picture.readTail()) throw PictureError(picture.message);
    return picture.text();
}
