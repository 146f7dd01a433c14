// Files that something or somebody has damaged.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <fstream>
#include <limits>
#include <random>
#include <thread>

#include "explorer/frac_file.h"
#include "frac/byte_reader.h"
#include "frac/frac_record.h"
#include "tests/frac/frac_bytes.h"
#include "tests/support/stand_ins.h"

using frac_bytes::Record;
using stand_ins::readFile;
using stand_ins::writeFile;

namespace {

// Bytes that read() still gives before it fails as a broken disk does; negative: it never fails.
std::int64_t bytesBeforeBreaking = -1;

}  // namespace

// Takes the place of the library's function.
extern "C" ssize_t read(int file, void* target, std::size_t length) {
    if (bytesBeforeBreaking < 0) return syscall(SYS_read, file, target, length);
    if (bytesBeforeBreaking == 0) {
        errno = EIO;
        return -1;
    }
    const auto most = static_cast<std::size_t>(bytesBeforeBreaking);
    const ssize_t count = syscall(SYS_read, file, target, std::min(length, most));
    bytesBeforeBreaking -= std::max<ssize_t>(count, 0);
    return count;
}

namespace {

class DamagedFile : public stand_ins::CommandsTest {
  protected:
    std::string path() const { return folder / "damaged.frac"; }

    void load(const std::string& bytes) {
        writeFile(path(), bytes);
        LoadData(path());
    }

    stand_ins::TemporaryFolder folder;
};

// The largest resident size of this process so far, in bytes.
std::size_t peakMemory() {
    struct rusage usage = {};
    getrusage(RUSAGE_SELF, &usage);
    return static_cast<std::size_t>(usage.ru_maxrss) * 1024u;
}

// ---- records cut short

class CutRecord : public DamagedFile, public testing::WithParamInterface<std::size_t> {};

TEST_P(CutRecord, CountsFromItsFirstWholeFieldOn) {
    const std::string whole = Record::named("first").bytes();
    load(whole + whole.substr(0, GetParam()));
    EXPECT_EQ(fractals.size(), GetParam() < 8 ? 1u : 2u);
}

TEST_P(CutRecord, HasZerosForEveryFieldThatIsNotWhole) {
    load(Record::named("first").bytes().substr(0, GetParam()));
    if (GetParam() < 8) {
        EXPECT_TRUE(fractals.empty());
        return;
    }
    const Record full;
    const fractal& entry = fractals.at(0);
    const auto upTo = [](std::size_t end) { return GetParam() >= end; };
    EXPECT_EQ(entry.xMax, full.xMax);
    EXPECT_EQ(entry.xMin, upTo(16) ? full.xMin : 0.0);
    EXPECT_EQ(entry.yMax, upTo(24) ? full.yMax : 0.0);
    EXPECT_EQ(entry.yMin, upTo(32) ? full.yMin : 0.0);
    EXPECT_EQ(entry.cx, upTo(40) ? full.cx : 0.0);
    EXPECT_EQ(entry.cy, upTo(48) ? full.cy : 0.0);
    EXPECT_EQ(entry.maxIters, upTo(52) ? full.maxIters : 0);
    EXPECT_EQ(entry.maxSize, upTo(60) ? full.maxSize : 0.0);
    EXPECT_EQ(entry.paletteType, upTo(64) ? full.palette : 0);
    EXPECT_EQ(entry.fractalType, upTo(68) ? full.formula : 0);
    EXPECT_EQ(entry.name, upTo(72) ? std::string("first").substr(0, GetParam() - 72) : "");
    EXPECT_EQ(entry.fractalID, upTo(82) ? full.id : 0);
}

INSTANTIATE_TEST_SUITE_P(Everywhere, CutRecord, testing::Range<std::size_t>(0, 83));

// ---- name lengths

class NameLength : public DamagedFile, public testing::WithParamInterface<std::int32_t> {};

TEST_P(NameLength, BelowOneMeansNoName) {
    Record record;
    record.length = GetParam();
    record.name.clear();
    load(record.bytes() + Record::named("next").bytes());
    ASSERT_EQ(fractals.size(), 2u);
    EXPECT_EQ(fractals[0].name, "");
    EXPECT_EQ(fractals[0].fractalID, 42);
    EXPECT_EQ(fractals[1].name, "next");
}

INSTANTIATE_TEST_SUITE_P(Lengths, NameLength,
                         testing::Values(0, -1, -2147483647,
                                         std::numeric_limits<std::int32_t>::min()));

TEST_F(DamagedFile, ANameLengthPastTheEndTakesWhatIsThere) {
    for (const std::int32_t length : {10, 1000000, std::numeric_limits<std::int32_t>::max()}) {
        Record record;
        record.name = "abcd";
        record.length = length;
        load(record.bytes());  // the four bytes of the identity are taken for the name too
        ASSERT_EQ(fractals.size(), 1u);
        EXPECT_EQ(fractals[0].name, "abcd*");
        EXPECT_EQ(fractals[0].fractalID, 0);
    }
}

TEST_F(DamagedFile, ANameEndsAtItsFirstNul) {
    Record record;
    record.name = std::string("ab\0cd\0", 6);
    record.length = 6;
    load(record.bytes());
    EXPECT_EQ(fractals.at(0).name, "ab");
    EXPECT_EQ(fractals.at(0).fractalID, 42);
}

TEST_F(DamagedFile, ANameWithoutItsNulIsTakenWhole) {
    Record record;
    record.name = "abc";
    record.length = 3;
    load(record.bytes());
    EXPECT_EQ(fractals.at(0).name, "abc");
    EXPECT_EQ(fractals.at(0).fractalID, 42);
}

// ---- sizes

TEST_F(DamagedFile, AMillionRecordsTakeASmallMultipleOfTheirSize) {
    Record record;
    record.length = 0;
    record.name.clear();
    const std::string one = record.bytes();
    constexpr std::size_t COUNT = 1000000;
    std::ofstream file(path(), std::ios::binary);
    for (std::size_t i = 0; i < COUNT; ++i) file << one;
    file.close();
    const std::size_t before = peakMemory();
    LoadData(path());
    EXPECT_EQ(fractals.size(), COUNT);
    EXPECT_LT(peakMemory() - before, 8 * COUNT * one.size());
}

TEST_F(DamagedFile, AnAbsurdNameLengthTakesNoMemory) {
    Record record;
    record.length = std::numeric_limits<std::int32_t>::max();
    const std::size_t before = peakMemory();
    load(record.bytes());
    EXPECT_LT(peakMemory() - before, 64u << 20);
}

TEST_F(DamagedFile, AHugeNameIsLoadedWhole) {
    const std::string name(20 << 20, 'n');
    load(Record::named(name).bytes());
    EXPECT_TRUE(fractals.at(0).name == name);
}

// ---- things that are no plain file

TEST_F(DamagedFile, APipeIsReadToItsEnd) {
    ASSERT_EQ(mkfifo(path().c_str(), 0600), 0);
    const std::string bytes = Record::named("one").bytes() + Record::named("two").bytes();
    std::thread writer([&] { writeFile(path(), bytes); });
    LoadData(path());
    writer.join();
    EXPECT_EQ(fractals.size(), 2u);
}

TEST_F(DamagedFile, AnEmptyDeviceIsAnEmptyFile) {
    setCatalogue({stand_ins::someEntry("old")});
    LoadData("/dev/null");
    EXPECT_TRUE(fractals.empty());
}

TEST_F(DamagedFile, AnEndlessSourceEndsAtTheBound) {
    ByteReader reader("/dev/zero");
    std::uint64_t total = 0, eight = 0;
    while (reader.take(eight)) total += sizeof eight;
    EXPECT_EQ(total, ByteReader::LONGEST_STREAM);
    EXPECT_FALSE(reader.failed());
}

TEST_F(DamagedFile, AFileThatGrowsEndsWhereItEnded) {
    const std::string whole = Record::named("one").bytes();
    writeFile(path(), whole);
    ByteReader reader(path());
    std::ofstream(path(), std::ios::binary | std::ios::app) << whole;
    EXPECT_TRUE(decodeRecord(reader).has_value());
    EXPECT_FALSE(decodeRecord(reader).has_value());
}

TEST_F(DamagedFile, AFileThatShrinksEndsWhereItEnds) {
    writeFile(path(), std::string(100000, '\0'));
    ByteReader reader(path());
    ASSERT_EQ(truncate(path().c_str(), 0), 0);
    EXPECT_FALSE(decodeRecord(reader).has_value());
    EXPECT_FALSE(reader.failed());
}

// ---- a disk that breaks

class BreakingDisk : public DamagedFile {
  protected:
    BreakingDisk() {
        const std::string one = Record::named("one").bytes();
        writeFile(path(), one + one + one);
        setCatalogue({stand_ins::someEntry("old")});
    }

    void loadBreakingAfter(std::int64_t bytes) {
        forgetOutput();
        bytesBeforeBreaking = bytes;
        LoadData(path());
        bytesBeforeBreaking = -1;
    }
};

TEST_F(BreakingDisk, WhatWasReadCounts) {
    loadBreakingAfter(100);  // a record of 80 bytes and the beginning of another
    ASSERT_EQ(fractals.size(), 2u);
    EXPECT_EQ(fractals[0].name, "one");
    EXPECT_EQ(fractals[1].xMax, 1.5);
    EXPECT_EQ(fractals[1].name, "");
}

TEST_F(BreakingDisk, BeforeTheFirstRecordCountsAsUnreadable) {
    for (const std::int64_t bytes : {0, 7}) {
        loadBreakingAfter(bytes);
        EXPECT_EQ(fractals.at(0).name, "old");
        EXPECT_EQ(printed(), "Could not read from disk\n");
    }
}

// ---- anything at all

// Reads whatever `bytes` hold; what is checked is that it ends, stays within its memory and, under
// a sanitizer, touches nothing it should not.
void readAnything(const std::string& path, const std::string& bytes) {
    writeFile(path, bytes);
    ByteReader reader(path);
    std::size_t count = 0;
    while (decodeRecord(reader)) ++count;
    EXPECT_LE(count, bytes.size() / 8);
}

class Corruption : public DamagedFile, public testing::WithParamInterface<unsigned> {
  protected:
    std::mt19937 random{GetParam()};

    std::size_t below(std::size_t limit) {
        return std::uniform_int_distribution<std::size_t>(0, limit - 1)(random);
    }
};

TEST_P(Corruption, FlippedBytesAreReadToTheEnd) {
    std::string good;
    for (int i = 0; i < 20; ++i) good += Record::named(std::string(below(40), 'n')).bytes();
    for (int round = 0; round < 50; ++round) {
        std::string bad = good;
        for (std::size_t i = 0; i <= below(30); ++i) {
            bad[below(bad.size())] = static_cast<char>(below(256));
        }
        bad.resize(below(bad.size() + 1));
        readAnything(path(), bad);
    }
}

TEST_P(Corruption, NoiseIsReadToTheEnd) {
    for (int round = 0; round < 50; ++round) {
        std::string noise(below(3000), '\0');
        std::generate(noise.begin(), noise.end(), [&] { return static_cast<char>(below(256)); });
        readAnything(path(), noise);
    }
}

TEST_P(Corruption, WhatWasLoadedCanBeSavedAndLoadedAgain) {
    std::string noise(below(3000), '\0');
    std::generate(noise.begin(), noise.end(), [&] { return static_cast<char>(below(256)); });
    load(noise);
    SaveData(folder / "again.frac");
    const std::string again = readFile(folder / "again.frac");
    LoadData(folder / "again.frac");
    SaveData(folder / "again.frac");
    EXPECT_EQ(readFile(folder / "again.frac"), again);
}

INSTANTIATE_TEST_SUITE_P(Seeds, Corruption, testing::Range(0u, 8u));

}  // namespace
