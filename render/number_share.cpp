#include "render/number_share.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <iterator>
#include <nlohmann/json.hpp>

#include "render/deflate.h"
#include "render/failure.h"
#include "render/settings.h"
#include "render/shard.h"

namespace render {
namespace {

using nlohmann::json;

constexpr std::uint64_t LONGEST_RECORD = std::uint64_t{1} << 24;  // decimals have many digits
constexpr std::size_t CHECKSUM_LINE = 9;

[[noreturn]] void refuse(const std::string& path, const std::string& reason) {
    throw Failure(path + ": " + reason);
}

std::uint64_t bytesOf(const NpyShape& shape) {
    return std::uint64_t{numberBytes(shape.kind)} * static_cast<std::uint64_t>(shape.size.width) *
           static_cast<std::uint64_t>(shape.size.height);
}

const char* wordOf(NumberKind kind) {
    return kind == NumberKind::values ? "values" : "counts";
}

std::string checksumLine(std::uint32_t checksum) {
    std::string line;
    for (int shift = 28; shift >= 0; shift -= 4) line += "0123456789abcdef"[checksum >> shift & 15];
    return line + "\n";
}

std::optional<std::uint32_t> readChecksum(std::string_view line) {
    std::uint32_t checksum = 0;
    std::from_chars(line.data(), line.data() + line.size(), checksum, 16);
    if (checksumLine(checksum) != line) return {};
    return checksum;
}

std::string documentOf(const Job& job, NumberKind kind) {
    fractal view = job.view;
    view.name.clear();
    view.paletteType = 0;
    view.fractalID = 0;
    const Size size = wholeSize(job);
    const json render = {{"size", {size.width, size.height}},
                         {"precision", wordOf(job.precision)},
                         {"escape", escapeBound(job.view, job.colouring->wanted())},
                         {"numbers", wordOf(kind)},
                         {"band", bandSettings(*job.band)}};
    return writeDocument({{view}, render}, Letters::ascii);
}

std::ifstream openFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    if (!file) refuse(path, std::string("cannot be read: ") + std::strerror(errno));
    return file;
}

// At most so many of the bytes that come next.
std::string take(std::istream& in, std::uint64_t most) {
    std::string bytes(most, '\0');
    in.read(bytes.data(), static_cast<std::streamsize>(most));
    bytes.resize(static_cast<std::size_t>(in.gcount()));
    in.clear();
    return bytes;
}

// The bytes behind the rows; nothing where those are not all there.
std::optional<std::string> behindRows(std::istream& in, const NpyShape& shape) {
    const std::uint64_t end = shape.length + bytesOf(shape);
    in.seekg(0, std::ios::end);
    if (static_cast<std::uint64_t>(in.tellg()) < end) return {};
    in.seekg(static_cast<std::streamoff>(end));
    return take(in, LONGEST_RECORD);
}

void readRecord(const std::string& record, NumberShare& share) {
    constexpr std::string_view LAST_LINE = "\n}\n";
    const std::size_t last = record.find(LAST_LINE);
    if (last == std::string::npos) refuse(share.path, "not whole: its record is not complete");
    share.length = last + LAST_LINE.size();
    const std::string document = record.substr(0, share.length);
    const auto checksum = readChecksum(record.substr(share.length, CHECKSUM_LINE));
    if (!checksum) refuse(share.path, "not whole: its checksum is missing");
    if (record.size() > share.length + CHECKSUM_LINE) refuse(share.path, "longer than it says");
    share.checksum = *checksum;
    share.adler = adlerOf(1, document);
    try {
        share.document = readDocument(document);
    } catch (const JsonError& error) {
        refuse(share.path, std::string("its record is damaged: ") + error.what());
    }
    const json& render = share.document.render;
    if (!render.is_object() || !render.contains("numbers") ||
        render["numbers"] != wordOf(share.shape.kind)) {
        refuse(share.path, "its record tells of other numbers");
    }
}

// Bytes are read in pieces, so that memory stays small.
std::optional<std::uint32_t> adlerOfNext(std::istream& in, std::uint64_t length) {
    constexpr std::uint64_t PIECE = std::uint64_t{1} << 20;
    std::uint32_t adler = 1;
    while (length > 0) {
        const std::string bytes = take(in, std::min(length, PIECE));
        if (bytes.empty()) return {};
        adler = adlerOf(adler, bytes);
        length -= bytes.size();
    }
    return adler;
}

bool isWholeShare(const Job& job, NumberKind kind) {
    std::ifstream file(job.output, std::ios::binary);
    const std::string head = npyHead(sizeOfNumbers(job), kind);
    if (!file || take(file, head.size()) != head) return false;
    const auto adler = adlerOfNext(file, bytesOf({sizeOfNumbers(job), kind, head.size()}));
    return adler && take(file, LONGEST_RECORD) == numberRecord(job, kind, *adler);
}

}  // namespace

Size sizeOfNumbers(const Job& job) {
    return job.band && job.band->blank ? Size{job.size.width, 0} : job.size;
}

std::string numberRecord(const Job& job, NumberKind kind, std::uint32_t rows) {
    const std::string document = documentOf(job, kind);
    return document + checksumLine(adlerOf(rows, document));
}

bool isNumberFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return file && isNpy(take(file, LONGEST_NPY_HEAD));
}

NumberShare readNumberShare(const std::string& path) {
    std::ifstream file = openFile(path);
    const auto shape = readNpyHead(take(file, LONGEST_NPY_HEAD));
    if (!shape) refuse(path, "no band of a picture");
    const auto record = behindRows(file, *shape);
    if (!record) refuse(path, "not whole: some of its rows are missing");
    if (record->empty()) refuse(path, "no band of a picture: nothing stands behind its rows");
    NumberShare share;
    share.path = path;
    share.shape = *shape;
    readRecord(*record, share);
    return share;
}

std::vector<Job> unfinishedNumbers(const std::vector<Job>& jobs, NumberKind kind) {
    std::vector<Job> left;
    std::copy_if(jobs.begin(), jobs.end(), std::back_inserter(left),
                 [&](const Job& job) { return !job.band || !isWholeShare(job, kind); });
    return left;
}

StackedNumbers::StackedNumbers(std::vector<NumberShare> parts) : shares(std::move(parts)) {
    open();
}

// The next share that has a row.
void StackedNumbers::open() {
    for (; current < shares.size(); finish()) {
        const NumberShare& share = shares[current];
        file = openFile(share.path);
        file.seekg(static_cast<std::streamoff>(share.shape.length));
        left = share.shape.size.height;
        adler = 1;
        if (left > 0) return;
    }
}

void StackedNumbers::finish() {
    const NumberShare& share = shares[current++];
    if (joinAdler(adler, share.adler, share.length) != share.checksum) {
        refuse(share.path, "damaged: its checksum is another one");
    }
}

void StackedNumbers::read(int first, int end, unsigned char* out, std::size_t stride) {
    for (int y = first; y < end; ++y, out += stride) {
        const NumberShare& share = shares.at(current);
        const std::uint64_t rowBytes = bytesOf({{share.shape.size.width, 1}, share.shape.kind, 0});
        const std::string row = take(file, rowBytes);
        if (row.size() < rowBytes) refuse(share.path, "cannot be read to its end");
        // Numbers and no text. NOLINTNEXTLINE(bugprone-not-null-terminated-result)
        std::memcpy(out, row.data(), row.size());
        adler = adlerOf(adler, row);
        if (--left > 0) continue;
        finish();
        open();
    }
}

}  // namespace render
