#include "tests/support/picture.h"

#include <algorithm>
#include <fstream>

namespace test_support {
namespace {

void savePpm(const Picture& picture, const std::string& path) {
    std::ofstream file(path, std::ios::binary);
    file << "P6\n" << picture.width << ' ' << picture.height << "\n255\n";
    for (std::size_t at = 0; at < picture.bytes.size(); at += 4) {
        file.write(reinterpret_cast<const char*>(picture.bytes.data() + at), 3);
    }
}

bool samePixel(const Picture& a, const Picture& b, int x, int y) {
    return std::equal(a.pixel(x, y), a.pixel(x, y) + 4, b.pixel(x, y));
}

void describe(testing::AssertionResult& result, const char* whose, const unsigned char* p) {
    result << whose << " (" << int{p[0]} << ' ' << int{p[1]} << ' ' << int{p[2]} << ' ' << int{p[3]}
           << ')';
}

testing::AssertionResult describeDifference(const Picture& actual, const Picture& expected,
                                            const std::string& name) {
    Picture difference(actual.width, actual.height, 0);
    int count = 0, firstX = 0, firstY = 0;
    for (int y = actual.height - 1; y >= 0; --y) {
        for (int x = actual.width - 1; x >= 0; --x) {
            if (samePixel(actual, expected, x, y)) continue;
            std::fill_n(difference.pixel(x, y), 4, static_cast<unsigned char>(255));
            ++count, firstX = x, firstY = y;
        }
    }
    savePpm(actual, name + ".actual.ppm");
    savePpm(expected, name + ".expected.ppm");
    savePpm(difference, name + ".difference.ppm");
    auto result = testing::AssertionFailure();
    result << count << " pixels differ, the first at (" << firstX << ", " << firstY << "): ";
    describe(result, "is", actual.pixel(firstX, firstY));
    describe(result, ", should be", expected.pixel(firstX, firstY));
    result << "; see " << name << ".difference.ppm";
    return result;
}

}  // namespace

testing::AssertionResult samePicture(const Picture& actual, const Picture& expected,
                                     const std::string& name) {
    if (actual.width != expected.width || actual.height != expected.height) {
        return testing::AssertionFailure() << "the pictures differ in size";
    }
    if (actual.bytes == expected.bytes) return testing::AssertionSuccess();
    return describeDifference(actual, expected, name);
}

}  // namespace test_support
