#include "render/stored_picture.h"

#include <png.h>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include "render/failure.h"

namespace render {
namespace {

struct CloseFile {
    void operator()(FILE* file) const { std::fclose(file); }
};

extern "C" void noteReadError(png_structp png, png_const_charp message) {
    *static_cast<std::string*>(png_get_error_ptr(png)) = message;
    png_longjmp(png, 1);
}

extern "C" void ignoreReadWarning(png_structp, png_const_charp) {}

}  // namespace

// No C++ object lives where the library may jump.
struct StoredPicture::Reader {
    explicit Reader(FILE* input)
        : file(input),
          png(png_create_read_struct(PNG_LIBPNG_VER_STRING, &message, noteReadError,
                                     ignoreReadWarning)) {
        if (png == nullptr) throw std::bad_alloc();
        info = png_create_info_struct(png);
        if (info == nullptr) {
            png_destroy_read_struct(&png, nullptr, nullptr);
            throw std::bad_alloc();
        }
        // Only what tells of pixels: a few bytes of text may claim to be two gigabytes.
        png_set_keep_unknown_chunks(png, PNG_HANDLE_CHUNK_NEVER, nullptr, -1);
        png_init_io(png, input);
    }
    ~Reader() { png_destroy_read_struct(&png, &info, nullptr); }
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;

    bool readHead(bool deep) {
        if (setjmp(png_jmpbuf(png)) != 0) return false;
        png_read_info(png, info);
        png_set_expand(png);
        if (deep) {
            png_set_expand_16(png);
        } else {
            png_set_strip_16(png);
        }
        png_set_strip_alpha(png);
        png_set_gray_to_rgb(png);
        png_read_update_info(png, info);
        if (png_get_interlace_type(png, info) != PNG_INTERLACE_NONE) png_error(png, "interlaced");
        return true;
    }
    bool readRow(unsigned char* out) {
        if (setjmp(png_jmpbuf(png)) != 0) return false;
        png_read_row(png, out, nullptr);
        return true;
    }
    bool readTail() {
        if (setjmp(png_jmpbuf(png)) != 0) return false;
        png_read_end(png, nullptr);
        return true;
    }

    std::unique_ptr<FILE, CloseFile> file;
    std::string message;
    png_structp png;
    png_infop info = nullptr;
};

StoredPicture::StoredPicture(const std::string& path, bool deep) : name(path) {
    FILE* file = std::fopen(path.c_str(), "rbe");
    if (file == nullptr) throw Failure(path + ": cannot be read: " + std::strerror(errno));
    reader = std::make_unique<Reader>(file);
    if (!reader->readHead(deep)) fail();
}

StoredPicture::~StoredPicture() = default;

void StoredPicture::fail() const {
    throw Failure(name + ": no whole picture: " + reader->message);
}

Size StoredPicture::size() const {
    return {static_cast<int>(png_get_image_width(reader->png, reader->info)),
            static_cast<int>(png_get_image_height(reader->png, reader->info))};
}

void StoredPicture::readRow(unsigned char* out) {
    if (!reader->readRow(out)) fail();
}

void StoredPicture::finish() {
    if (!reader->readTail()) fail();
}

void StackedRows::open() {
    const Part& part = parts.at(current);
    picture = std::make_unique<StoredPicture>(part.path, deep);
    if (picture->size() != part.size) {
        throw Failure(part.path + ": not of the size that it tells of");
    }
    left = part.size.height;
}

void StackedRows::read(int first, int end, unsigned char* out, std::size_t stride) {
    for (int y = first; y < end; ++y, out += stride) {
        if (left == 0) open();
        picture->readRow(out);
        if (--left > 0) continue;
        picture->finish();
        ++current;
    }
}

}  // namespace render
