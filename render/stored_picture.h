// Reading pictures back.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include "render/job.h"

namespace render {

// The rows of a PNG file as red, green and blue, from the top down, one at a time; memory does not
// grow with the height. One thread. Failure, with the name of the file, when it cannot be read, is
// no PNG, is interlaced, or is not whole.
class StoredPicture {
  public:
    // deep: six bytes a pixel, the greater of two first, rather than three.
    explicit StoredPicture(const std::string& path, bool deep = false);
    ~StoredPicture();
    StoredPicture(const StoredPicture&) = delete;
    StoredPicture& operator=(const StoredPicture&) = delete;

    Size size() const;
    void readRow(unsigned char* out);

    // Behind the last row: makes sure that the rest is there.
    void finish();

  private:
    struct Reader;
    [[noreturn]] void fail() const;

    std::string name;
    std::unique_ptr<Reader> reader;
};

// The rows of pictures that lie one below the other.
class StackedRows : public RowSource {
  public:
    struct Part {
        std::string path;
        Size size;  // that it must have
    };

    // parts: from the top down.
    explicit StackedRows(std::vector<Part> pictures, bool ofSixteenBits = false)
        : parts(std::move(pictures)), deep(ofSixteenBits) {}

    void read(int first, int end, unsigned char* out, std::size_t stride) override;

  private:
    void open();

    const std::vector<Part> parts;
    const bool deep;
    std::size_t current = 0;  // the part that is read or comes next
    int left = 0;             // its rows still to come; 0 while it is not open
    std::unique_ptr<StoredPicture> picture;
};

}  // namespace render
