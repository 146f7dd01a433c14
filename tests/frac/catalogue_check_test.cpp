// What is damaged in a file, and where.
#include "frac/catalogue_check.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <limits>
#include <random>

#include "frac/catalogue_bytes.h"
#include "tests/frac/frac_bytes.h"

using frac_bytes::Record;
using testing::ElementsAre;
using testing::IsEmpty;

namespace {

std::vector<std::string> damageOf(const std::string& bytes) {
    std::vector<std::string> lines;
    for (const Damage& damage : findDamage(bytes)) {
        lines.push_back(std::to_string(damage.offset) + ": " + damage.text);
    }
    return lines;
}

const std::string SOUND = Record::named("sound").bytes();  // 82 bytes

std::string withLength(std::int32_t length) {
    Record record = Record::named("name");
    record.length = length;
    return record.bytes();
}

TEST(CatalogueCheck, SoundFilesHaveNone) {
    EXPECT_THAT(damageOf(""), IsEmpty());
    EXPECT_THAT(damageOf(SOUND), IsEmpty());
    EXPECT_THAT(damageOf(SOUND + SOUND + Record::named("").bytes()), IsEmpty());
}

TEST(CatalogueCheck, NumbersThatMeanNothingAreNone) {
    Record record = Record::named("odd");
    record.formula = 99;
    record.palette = -1;
    record.xMin = std::numeric_limits<double>::quiet_NaN();
    EXPECT_THAT(damageOf(record.bytes()), IsEmpty());
}

TEST(CatalogueCheck, AFewBytesAreNoEntry) {
    EXPECT_THAT(damageOf(SOUND + "1234567"),
                ElementsAre("82: entry 2: 7 bytes at the end of the file, too few for an entry"));
    EXPECT_THAT(damageOf("1"),
                ElementsAre("0: entry 1: 1 byte at the end of the file, too few for an entry"));
}

TEST(CatalogueCheck, ACutEntryNamesTheFirstFieldThatIsNotWhole) {
    const auto cutAt = [](std::size_t length) { return damageOf(SOUND.substr(0, length)); };
    EXPECT_THAT(cutAt(8), ElementsAre("8: entry 1: the file ends before the end of xMin"));
    EXPECT_THAT(cutAt(51),
                ElementsAre("51: entry 1: the file ends before the end of the iteration limit"));
    EXPECT_THAT(cutAt(71),
                ElementsAre("71: entry 1: the file ends before the end of the length of the name"));
    EXPECT_THAT(cutAt(81),
                ElementsAre("81: entry 1: the file ends before the end of the identity"));
}

TEST(CatalogueCheck, ANameCutShortIsToldByItsLength) {
    EXPECT_THAT(damageOf(SOUND.substr(0, 75)),
                ElementsAre("68: entry 1: the length of the name is 6, but 3 bytes follow"));
    EXPECT_THAT(
        damageOf(withLength(2147483647)),
        ElementsAre("68: entry 1: the length of the name is 2147483647, but 9 bytes follow"));
}

TEST(CatalogueCheck, ALengthBelowOneIsToldAndTheIdentityFollowsAtOnce) {
    Record record;
    record.length = -5;
    record.name.clear();
    EXPECT_THAT(damageOf(record.bytes() + SOUND),
                ElementsAre("68: entry 1: the length of the name is -5, the smallest is 1"));
}

TEST(CatalogueCheck, ANulMustEndTheName) {
    EXPECT_THAT(damageOf(SOUND + withLength(4).substr(0, 76) + "\x2a" + std::string(3, '\0')),
                ElementsAre("157: entry 2: the name does not end with a NUL"));
}

TEST(CatalogueCheck, ANulWithinTheNameEndsIt) {
    Record record = Record::named(std::string("a\0bc", 4));
    EXPECT_THAT(damageOf(record.bytes()),
                ElementsAre("73: entry 1: a NUL ends the name 3 bytes before its end"));
}

TEST(CatalogueCheck, EveryDamageIsToldInOrder) {
    Record noName;
    noName.length = 0;
    noName.name.clear();
    EXPECT_THAT(damageOf(noName.bytes() + noName.bytes() + "x").size(), 3u);
}

// The promise of the header, on files of every kind.
TEST(CatalogueCheck, ThereIsDamageExactlyWhereSavingGivesOtherBytes) {
    std::mt19937 random(7);
    const auto below = [&](std::size_t limit) {
        return std::uniform_int_distribution<std::size_t>(0, limit - 1)(random);
    };
    int damaged = 0;
    for (int round = 0; round < 3000; ++round) {
        std::string bytes;
        for (std::size_t i = 0; i < 1 + below(4); ++i) {
            bytes += Record::named(std::string(below(5), 'n')).bytes();
        }
        for (std::size_t i = below(3); i > 0; --i) {
            bytes[below(bytes.size())] = static_cast<char>(below(256));
        }
        if (below(3) == 0) bytes.resize(below(bytes.size() + 1));
        const bool same = encodeCatalogue(decodeCatalogue(bytes)) == bytes;
        ASSERT_EQ(findDamage(bytes).empty(), same) << testing::PrintToString(bytes);
        damaged += same ? 0 : 1;
    }
    EXPECT_GT(damaged, 500);
    EXPECT_LT(damaged, 2500);
}

}  // namespace
