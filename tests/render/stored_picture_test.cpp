// Pictures read back that are not what they claim to be.
#include "render/stored_picture.h"

#include <gtest/gtest.h>
#include <sys/resource.h>
#include <zlib.h>

#include <cstdint>
#include <string>

#include "frac/input.h"
#include "render/failure.h"
#include "tests/support/files.h"

namespace {

std::string number(std::uint32_t value) {
    std::string bytes;
    for (int shift = 24; shift >= 0; shift -= 8) bytes += static_cast<char>(value >> shift);
    return bytes;
}

std::string checked(const std::string& typeAndData) {
    const auto* bytes = reinterpret_cast<const unsigned char*>(typeAndData.data());
    const auto sum = crc32(0, bytes, static_cast<uInt>(typeAndData.size()));
    return typeAndData + number(static_cast<std::uint32_t>(sum));
}

// A head, and a text that claims to be two gigabytes.
std::string pictureOfGigabytes() {
    const std::string sides = number(8) + number(5);
    return std::string("\x89PNG\r\n\x1a\n") + number(13) +
           checked("IHDR" + sides + std::string("\x08\x02\0\0\0", 5)) + number(0x7ffffff0) +
           "tEXtTitle";
}

// The most memory that this process ever had, in MiB.
long peak() {
    struct rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
    return usage.ru_maxrss / 1024;
}

class PictureOfGigabytes : public testing::Test {
  protected:
    PictureOfGigabytes() { test_support::writeFile(path, pictureOfGigabytes()); }
    ~PictureOfGigabytes() override { EXPECT_LT(peak(), before + 512); }

    const test_support::TemporaryFolder folder;
    const std::string path = folder / "a.png";
    const long before = peak();
};

TEST_F(PictureOfGigabytes, IsNoWholePicture) {
    EXPECT_THROW(render::StoredPicture{path}, render::Failure);
}

TEST_F(PictureOfGigabytes, CarriesNoDocument) {
    EXPECT_THROW(readDocumentFile(path), InputError);
}

}  // namespace
