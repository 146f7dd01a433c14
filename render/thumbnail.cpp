#include "render/thumbnail.h"

#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <condition_variable>
#include <cstring>
#include <filesystem>
#include <mutex>
#include <thread>
#include <utility>

#include "frac/byte_reader.h"
#include "frac/file_descriptor.h"
#include "frac/frac_record.h"
#include "frac/input.h"
#include "render/encoder.h"
#include "render/failure.h"
#include "render/output_file.h"
#include "render/plan.h"
#include "render/rows.h"

namespace render {
namespace {

constexpr std::size_t BEGINNING = 4096;  // bytes; far more than the numbers of a record
constexpr std::chrono::milliseconds TIME_LIMIT{1500};
// Steps of all pixels together that the slowest formula makes in far less than that.
constexpr std::int64_t FEW_STEPS = std::int64_t{1} << 23;
constexpr std::int32_t LIMIT_FACTOR = 8;  // from one attempt to the next
constexpr int BEST_SUPERSAMPLE = 2;

// The numbers of the first record. Its name may be as long as the file is, and is left alone.
fractal firstEntry(const std::string& path) {
    if (!std::filesystem::is_regular_file(path)) throw Failure(path + ": no plain file");
    ByteReader reader(path);
    const std::string bytes = reader.takeText(BEGINNING);
    if (kindOf(bytes) == InputKind::document) {
        throw Failure(path + ": a JSON document, and thumbnails are of .frac catalogues");
    }
    if (kindOf(bytes) != InputKind::catalogue) throw Failure(path + ": no catalogue");
    ByteReader beginning = ByteReader::ofBytes(bytes);
    const auto entry = decodeRecord(beginning);
    if (!entry) throw Failure(path + ": no entries");
    return *entry;
}

// With the view's proportions; a square where it has none.
Size sizeOf(const fractal& view, int side) {
    const double proportion = std::abs((view.xMax - view.xMin) / (view.yMax - view.yMin));
    if (!std::isfinite(proportion) || proportion == 0) return {side, side};
    const auto shorter = [side](double part) {
        return std::max(static_cast<int>(std::lround(part * side)), 1);
    };
    if (proportion < 1) return {shorter(proportion), side};
    return {side, shorter(1 / proportion)};
}

// Sets a flag when the time is up, unless it goes before.
class Alarm {
  public:
    Alarm(std::atomic<bool>& which, std::chrono::milliseconds time)
        : flag(which), thread([this, time] { wait(time); }) {}

    ~Alarm() {
        {
            const std::lock_guard lock(mutex);
            over = true;
        }
        changed.notify_one();
        thread.join();
    }

    Alarm(const Alarm&) = delete;
    Alarm& operator=(const Alarm&) = delete;

  private:
    void wait(std::chrono::milliseconds time) {
        std::unique_lock lock(mutex);
        if (!changed.wait_for(lock, time, [this] { return over; })) flag = true;
    }

    std::atomic<bool>& flag;
    std::mutex mutex;
    std::condition_variable changed;
    bool over = false;  // under the mutex
    std::thread thread;
};

std::size_t rowBytes(const Job& job) {
    return 3 * static_cast<std::size_t>(job.size.width);
}

// Pixels in memory.
class Pixels : public RowSource {
  public:
    explicit Pixels(const Job& job)
        : width(rowBytes(job)), bytes(width * static_cast<std::size_t>(job.size.height)) {}

    unsigned char* data() { return bytes.data(); }

    void read(int first, int end, unsigned char* out, std::size_t stride) override {
        for (int y = first; y < end; ++y, out += stride) {
            std::memcpy(out, &bytes[static_cast<std::size_t>(y) * width], width);
        }
    }

  private:
    std::size_t width;
    std::vector<unsigned char> bytes;
};

// The attempts at one picture, each better than the one before.
class Attempts {
  public:
    explicit Attempts(Job wanted)
        : job(std::move(wanted)), own(job.view.maxIters), best(std::make_shared<Pixels>(job)) {}

    // The first one is made whatever it takes, the others until the flag is set.
    std::shared_ptr<Pixels> make() {
        const std::int64_t pixels = std::int64_t{job.size.width} * job.size.height;
        std::int64_t limit = std::max<std::int64_t>(FEW_STEPS / pixels, LIMIT_FACTOR);
        attempt(limit, 1, never);
        {
            const Alarm alarm(timeIsUp, TIME_LIMIT);
            while (limit < own && !timeIsUp) attempt(limit *= LIMIT_FACTOR, 1, timeIsUp);
            if (!timeIsUp) attempt(own, BEST_SUPERSAMPLE, timeIsUp);
        }
        return best;
    }

  private:
    void attempt(std::int64_t limit, int supersample, const std::atomic<bool>& stop) {
        job.view.maxIters = static_cast<std::int32_t>(std::min<std::int64_t>(limit, own));
        job.supersample = supersample;
        auto pixels = std::make_shared<Pixels>(job);
        RowRenderer(stop).render(job, {0, job.size.height}, pixels->data(), rowBytes(job));
        if (!stop) best = std::move(pixels);
    }

    Job job;
    const std::int32_t own;
    std::shared_ptr<Pixels> best;
    const std::atomic<bool> never{false};
    std::atomic<bool> timeIsUp{false};
};

// All of the file.
std::string encoded(const Job& job, const Encoder& encoder) {
    const std::atomic<bool> never{false};
    Workshop workshop(never);
    std::string bytes = encoder.head(job);
    std::uint32_t adler = 1;
    for (int n = 0; n < bandCount(job.size); ++n) {
        const EncodedBand band = encoder.band(job, bandRows(job.size, n), workshop);
        bytes += band.bytes;
        adler = joinAdler(adler, band.adler, band.length);
    }
    return bytes + encoder.tail(job, adler);
}

FileError writeInto(FileDescriptor& file, const std::string& bytes) {
    if (const FileError error = writeAll(file.get(), bytes)) return error;
    return file.close();
}

// File managers hand over an empty file that they have open already: another one in its place would
// never be seen. A file that cannot be filled is emptied, and removed where there was none.
void writeInPlace(const std::string& path, const std::string& bytes) {
    FileDescriptor file;
    FileError error = file.open(path, O_WRONLY | O_CREAT | O_EXCL, 0666);
    const bool isNew = error == 0;
    if (error == EEXIST) error = file.open(path, O_WRONLY | O_TRUNC);
    if (error == 0) {
        error = writeInto(file, bytes);
        if (error != 0 && isNew) unlink(path.c_str());
        if (error != 0 && !isNew) truncateTo(file.get(), 0);
    }
    if (error != 0) throw Failure(path + " cannot be written: " + std::strerror(error));
}

void write(const std::string& path, const std::string& bytes) {
    if (path != "-") return writeInPlace(path, bytes);
    OutputFile output(path);
    output.write(bytes);
    output.publish();
}

}  // namespace

void makeThumbnail(const Options& options) {
    const fractal entry = firstEntry(options.inputs.front());
    const Source source{{entry}, {}, {}, {}};
    const Planner planner(options, source);
    Job job = planner.jobFor(entry, sizeOf(entry, *options.thumbnail));
    job.stored = Attempts(job).make();
    write(options.output, encoded(job, PngEncoder(options.compression, false)));
}

}  // namespace render
