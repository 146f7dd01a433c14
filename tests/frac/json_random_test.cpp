// Random catalogues through JSON and back.
#include <gmock/gmock.h>

#include <bit>
#include <random>

#include "frac/catalogue_bytes.h"
#include "frac/json_document.h"

namespace {

class RandomCatalogues {
  public:
    explicit RandomCatalogues(unsigned seed) : random(seed) {}

    std::vector<fractal> next() {
        std::vector<fractal> entries(below(12));
        for (fractal& entry : entries) entry = nextEntry();
        return entries;
    }

    std::string noise(std::size_t most) {
        std::string bytes(below(most), '\0');
        for (char& byte : bytes) byte = static_cast<char>(below(256));
        return bytes;
    }

  private:
    std::size_t below(std::size_t limit) {
        return std::uniform_int_distribution<std::size_t>(0, limit - 1)(random);
    }

    // Any bits, often those of a nan, an infinity, a subnormal or a number one would type.
    double real() {
        const std::uint64_t bits = random();
        switch (below(6)) {
            case 0:
                return std::bit_cast<double>(bits | 0x7ff0000000000000);
            case 1:
                return std::bit_cast<double>(bits & 0x800fffffffffffff);
            case 2:
                return std::bit_cast<double>((bits & 0x8000000000000000) | 0x7ff0000000000000);
            case 3:
                return static_cast<double>(static_cast<int>(below(9)) - 4) / 2;
            case 4:
                return -0.0;
            default:
                return std::bit_cast<double>(bits);
        }
    }

    std::int32_t whole(std::size_t usual) {
        return below(2) ? static_cast<std::int32_t>(below(usual))
                        : static_cast<std::int32_t>(random());
    }

    fractal nextEntry() {
        fractal entry;
        for (double* edge : {&entry.xMax, &entry.xMin, &entry.yMax, &entry.yMin}) *edge = real();
        entry.cx = real();
        entry.cy = real();
        entry.fractalType = whole(14);
        entry.maxIters = whole(1000);
        entry.maxSize = real();
        entry.paletteType = whole(2);
        entry.fractalID = whole(5);
        entry.name = below(2) ? noise(30) : "\u00e4\u4e2d\U0001F600";
        std::erase(entry.name, '\0');
        return entry;
    }

    std::mt19937_64 random;
};

TEST(RandomCatalogue, ComesBackFromJsonByteForByte) {
    RandomCatalogues catalogues(11);
    for (int i = 0; i < 500; ++i) {
        const std::vector<fractal> entries = catalogues.next();
        const std::string text = writeDocument({entries, {}});
        ASSERT_EQ(encodeCatalogue(readDocument(text).entries), encodeCatalogue(entries)) << text;
    }
}

TEST(RandomCatalogue, ComesBackFromAsciiJsonToo) {
    RandomCatalogues catalogues(12);
    for (int i = 0; i < 100; ++i) {
        const std::vector<fractal> entries = catalogues.next();
        const std::string text = writeDocument({entries, {}}, Letters::ascii);
        ASSERT_EQ(encodeCatalogue(readDocument(text).entries), encodeCatalogue(entries)) << text;
    }
}

TEST(RandomBytes, ComeBackFromJsonAsTheyWouldBeSaved) {
    RandomCatalogues catalogues(13);
    for (int i = 0; i < 500; ++i) {
        const std::vector<fractal> loaded = decodeCatalogue(catalogues.noise(2000));
        const std::string text = writeDocument({loaded, {}});
        ASSERT_EQ(encodeCatalogue(readDocument(text).entries), encodeCatalogue(loaded)) << text;
    }
}

// Whatever becomes of a document, it is taken or refused with a place.
TEST(RandomDamage, OfADocumentIsTakenOrRefused) {
    RandomCatalogues catalogues(14);
    std::mt19937 random(15);
    int refused = 0;
    for (int i = 0; i < 3000; ++i) {
        std::string text = writeDocument({catalogues.next(), {}});
        text[random() % text.size()] = static_cast<char>(random() % 256);
        try {
            readDocument(text);
        } catch (const JsonError& error) {
            ASSERT_GE(error.line, 1u);
            ASSERT_GE(error.column, 1u);
            ++refused;
        }
    }
    EXPECT_GT(refused, 1000);
}

}  // namespace
