// What codes of rows make of bytes, zlib takes apart again; vectors of every instruction set make
// the same of them.
#include "render/row_codes.h"

#include <gtest/gtest.h>
#include <zlib.h>

#include <algorithm>
#include <cstdint>
#include <numeric>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "compute/vector_renderer.h"

namespace {

using render::CODED_BLOCK;
using render::RowCode;

using Bytes = std::vector<unsigned char>;

constexpr unsigned char CANARY = 0xa5;

struct ForcedTarget {
    explicit ForcedTarget(std::int64_t bit) { vector_control::forceTarget(bit); }
    ~ForcedTarget() { vector_control::forceTarget(0); }
    ForcedTarget(const ForcedTarget&) = delete;
    ForcedTarget& operator=(const ForcedTarget&) = delete;
};

// The blocks, with nothing written beyond the room they were promised.
Bytes coded(const Bytes& rows) {
    const std::size_t room = render::codedRoom(rows.size());
    Bytes out(room + 16, CANARY);
    const std::size_t length = render::codeRows(rows.data(), rows.size(), out.data());
    EXPECT_LE(length, room);
    EXPECT_EQ(std::count(out.end() - 16, out.end(), CANARY), 16);
    out.resize(length);
    return out;
}

// What zlib reads in them; empty if it stumbles, or if they do not end on a byte.
Bytes decoded(const Bytes& blocks, std::size_t length) {
    Bytes rows(length + 1);
    z_stream stream = {};
    inflateInit2(&stream, -15);
    stream.next_in = const_cast<Bytef*>(blocks.data());
    stream.avail_in = static_cast<uInt>(blocks.size());
    stream.next_out = rows.data();
    stream.avail_out = static_cast<uInt>(rows.size());
    const int status = inflate(&stream, Z_SYNC_FLUSH);
    const bool sound = status == Z_OK && stream.avail_in == 0 && (stream.data_type & 128) != 0;
    rows.resize(sound ? stream.total_out : 0);
    inflateEnd(&stream);
    return rows;
}

// So many bytes, of which each is another one by up to `most`, with runs of zeros of all lengths.
Bytes differences(std::size_t count, int most, unsigned seed) {
    std::mt19937 random(seed);
    Bytes rows;
    while (rows.size() < count) {
        const bool zeros = random() % 16 == 0;
        const auto length = std::min<std::size_t>(random() % 700, count - rows.size());
        for (std::size_t n = 0; n < length; ++n) {
            const auto step = static_cast<int>(random() % static_cast<unsigned>(2 * most + 1));
            rows.push_back(static_cast<unsigned char>(zeros ? 0 : step - most));
        }
    }
    return rows;
}

void expectTheSameOnEveryTarget(const Bytes& rows) {
    Bytes plain;
    {
        const ForcedTarget scalar(vector_control::targets().back().bit);
        plain = coded(rows);
    }
    ASSERT_EQ(decoded(plain, rows.size()), rows);
    for (const auto& target : vector_control::targets()) {
        const ForcedTarget forced(target.bit);
        ASSERT_EQ(coded(rows), plain) << target.name << ", " << rows.size() << " bytes";
    }
}

TEST(ACodeOfRows, HasAWordForEachSymbolAndNoneToSpare) {
    for (std::size_t number = 0; number < render::ROW_CODES; ++number) {
        const RowCode& code = render::rowCode(number);
        double share = 0;
        for (std::size_t symbol = 0; symbol < render::SYMBOLS; ++symbol) {
            const int length = code.words[symbol].length;
            if (length > 0) share += 1.0 / (1 << length);
            const bool used = symbol <= render::END_OF_BLOCK || symbol == render::MATCH_64 ||
                              symbol == render::MATCH_256;
            EXPECT_EQ(length > 0, used) << symbol;
        }
        EXPECT_EQ(share, 1.0);
    }
}

TEST(CodedRows, AreWhatTheyWereAtAnyLengthOnEveryTarget) {
    for (std::size_t length = 0; length <= 3 * CODED_BLOCK + 1; ++length) {
        expectTheSameOnEveryTarget(differences(length, 2, static_cast<unsigned>(length)));
    }
}

TEST(CodedRows, AreWhatTheyWereHoweverLargeTheDifferences) {
    for (const int most : {0, 1, 2, 4, 7, 8, 9, 20, 60, 127}) {
        for (unsigned seed = 1; seed <= 4; ++seed) {
            expectTheSameOnEveryTarget(differences(30000, most, seed));
        }
    }
}

// Every byte next to every other: all pairs of words.
TEST(CodedRows, AreWhatTheyWereWhateverTheirNeighbours) {
    Bytes rows;
    for (int a = 0; a < 256; ++a) {
        for (int b = 0; b < 256; ++b) {
            rows.push_back(static_cast<unsigned char>(a));
            rows.push_back(static_cast<unsigned char>(b));
        }
    }
    expectTheSameOnEveryTarget(rows);
}

TEST(RunsOfZeros, AreWhatTheyWereWhereverTheyBeginAndEnd) {
    for (std::size_t before = 0; before <= 2 * CODED_BLOCK; before += 7) {
        for (std::size_t zeros = 0; zeros <= 11 * CODED_BLOCK; zeros += 29) {
            Bytes rows(before, 3);
            rows.resize(before + zeros, 0);
            rows.resize(before + zeros + 50, 255);
            ASSERT_EQ(decoded(coded(rows), rows.size()), rows) << before << " " << zeros;
        }
    }
}

// They would repeat what lies one byte before, not two.
TEST(RunsOfZeros, AreNoMatchesBehindAnotherByte) {
    Bytes rows(3 * CODED_BLOCK, 0);
    std::fill_n(rows.begin(), CODED_BLOCK - 2, 3);
    rows[CODED_BLOCK - 1] = 5;
    expectTheSameOnEveryTarget(rows);
}

// A match of 256 bytes takes 14 bits, one of 64 bytes 9.
TEST(RunsOfZeros, TakeTheirMatchesAlone) {
    const auto sizeOf = [](std::size_t blocks) {
        return coded(Bytes((1 + blocks) * CODED_BLOCK, 0)).size();
    };
    const auto bytes = [](double bits) { return bits / 8; };
    EXPECT_NEAR(static_cast<double>(sizeOf(4000) - sizeOf(0)), bytes(1000 * 14), 1);
    EXPECT_NEAR(static_cast<double>(sizeOf(4003) - sizeOf(4000)), bytes(3 * 9), 1);
}

// In bits a byte: what the code that is made for such differences needs.
TEST(TheCode, SuitsTheDifferences) {
    const auto bitsOf = [](int most) {
        std::mt19937 random(5);
        Bytes rows(100000);
        for (auto& byte : rows) {
            const auto step = static_cast<int>(random() % static_cast<unsigned>(2 * most + 1));
            byte = static_cast<unsigned char>(step - most);
        }
        return 8.0 * static_cast<double>(coded(rows).size()) / static_cast<double>(rows.size());
    };
    EXPECT_NEAR(bitsOf(1), (1 + 3 + 3) / 3.0, 0.1);
    EXPECT_NEAR(bitsOf(4), (2 + 2 * (3 + 5 + 5 + 6)) / 9.0, 0.1);
    EXPECT_NEAR(bitsOf(127), (95 + 239 * 9) / 255.0, 0.1);
}

// One byte in three is 0, the others 1 and -1; but for the first block and those at which no sample
// looks, where all are far from 0.
TEST(TheCode, SuitsMostOfWhatIsSampled) {
    constexpr std::size_t APART = 16 * CODED_BLOCK;
    Bytes rows(50 * APART, 100);
    for (std::size_t n = APART; n < rows.size(); n += APART) {
        for (std::size_t k = 0; k < CODED_BLOCK; ++k) {
            rows[n + k] = static_cast<unsigned char>(k % 3 == 2 ? 255 : k % 3);
        }
    }
    const render::RowCode& finest = render::rowCode(0);
    EXPECT_NEAR(8.0 * static_cast<double>(coded(rows).size()) / static_cast<double>(rows.size()),
                finest.words[100].length * 15 / 16.0 + 7 / 3.0 / 16, 0.1);
}

// Rows of which the sample knows nothing take the longest words of the code for small ones.
TEST(CodedRows, NeverOutgrowTheirRoom) {
    Bytes rows(64 * 1024, 128);
    for (std::size_t n = 0; n < rows.size(); n += 16 * CODED_BLOCK) {
        std::fill_n(rows.begin() + static_cast<std::ptrdiff_t>(n), CODED_BLOCK, 0);
    }
    for (const auto& target : vector_control::targets()) {
        const ForcedTarget forced(target.bit);
        const Bytes blocks = coded(rows);
        EXPECT_EQ(decoded(blocks, rows.size()), rows);
        EXPECT_GT(blocks.size(), rows.size() * 10 / 8);
    }
}

}  // namespace
