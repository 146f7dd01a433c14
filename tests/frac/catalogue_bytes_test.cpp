#include "frac/catalogue_bytes.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <fstream>

#include "tests/frac/frac_bytes.h"

using frac_bytes::Record;

namespace {

// Two records of 80 bytes and more, and the bytes of a third that is cut short.
std::string twoAndAPiece() {
    return Record::named("one").bytes() + Record::named("two").bytes() + std::string(12, '\x01');
}

TEST(DecodedBytes, AreTheRecordsInOrder) {
    const std::vector<fractal> entries =
        decodeCatalogue(Record::named("one").bytes() + Record::named("two").bytes());
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(entries[0].name, "one");
    EXPECT_EQ(entries[1].name, "two");
    EXPECT_EQ(entries[1].fractalID, 42);
}

TEST(DecodedBytes, OfARecordCutShortCountWithZeros) {
    const std::vector<fractal> entries = decodeCatalogue(twoAndAPiece());
    ASSERT_EQ(entries.size(), 3u);
    EXPECT_NE(entries[2].xMax, 0.0);
    EXPECT_EQ(entries[2].xMin, 0.0);
    EXPECT_EQ(entries[2].name, "");
}

TEST(DecodedBytes, OfNothingAreNoRecords) {
    EXPECT_TRUE(decodeCatalogue({}).empty());
}

TEST(DecodedBytes, ThatFillManyBlocksAreAllRead) {
    const std::string longName(200000, 'x');
    const std::vector<fractal> entries =
        decodeCatalogue(Record::named(longName).bytes() + Record::named("last").bytes());
    ASSERT_EQ(entries.size(), 2u);
    EXPECT_EQ(entries[0].name, longName);
    EXPECT_EQ(entries[1].name, "last");
}

TEST(EncodedCatalogue, IsTheBytesItWasDecodedFrom) {
    const std::string bytes = Record::named("one").bytes() + Record::named("").bytes();
    EXPECT_EQ(encodeCatalogue(decodeCatalogue(bytes)), bytes);
}

class CatalogueFile : public testing::Test {
  protected:
    ~CatalogueFile() override { unlink(path.c_str()); }

    void write(const std::string& bytes) {
        std::ofstream(path, std::ios::binary)
            .write(bytes.data(), static_cast<std::streamsize>(bytes.size()));
    }

    std::string path = testing::TempDir() + "catalogue" + std::to_string(getpid()) + ".frac";
};

TEST_F(CatalogueFile, GivesTheRecordsOfItsBytes) {
    write(twoAndAPiece());
    const auto entries = readCatalogue(path);
    ASSERT_TRUE(entries.has_value());
    EXPECT_EQ(encodeCatalogue(*entries), encodeCatalogue(decodeCatalogue(twoAndAPiece())));
}

TEST_F(CatalogueFile, TellsOfEachRecord) {
    write(twoAndAPiece());
    std::vector<std::string> names;
    readCatalogue(path, [&](const fractal& entry) { names.push_back(entry.name); });
    EXPECT_EQ(names, (std::vector<std::string>{"one", "two", ""}));
}

TEST_F(CatalogueFile, WithoutBytesIsAnEmptyCatalogue) {
    write("");
    const auto entries = readCatalogue(path);
    ASSERT_TRUE(entries.has_value());
    EXPECT_TRUE(entries->empty());
}

TEST_F(CatalogueFile, ThatDoesNotOpenIsNone) {
    EXPECT_FALSE(readCatalogue(path).has_value());
    EXPECT_FALSE(readCatalogue(testing::TempDir()).has_value());
}

}  // namespace
