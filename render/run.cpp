#include "render/run.h"

#include <algorithm>
#include <atomic>
#include <memory>
#include <optional>
#include <set>
#include <thread>

#include "render/exact_picture.h"
#include "render/output_file.h"
#include "render/pipeline.h"
#include "render/progress.h"

namespace render {
namespace {

// The bands of all pictures as one sequence.
class BandSequence {
  public:
    explicit BandSequence(const std::vector<Job>& pictures) : jobs(pictures) {
        for (const Job& job : jobs) {
            ends.push_back(count() + static_cast<std::uint64_t>(bandCount(job.size)));
        }
    }

    std::uint64_t count() const { return ends.empty() ? 0 : ends.back(); }

    struct Place {
        std::size_t picture;
        int band;
        bool first, last;
    };

    Place place(std::uint64_t index) const {
        const auto end = std::upper_bound(ends.begin(), ends.end(), index);
        const std::uint64_t start = end == ends.begin() ? 0 : *(end - 1);
        return {static_cast<std::size_t>(end - ends.begin()), static_cast<int>(index - start),
                index == start, index + 1 == *end};
    }

  private:
    const std::vector<Job>& jobs;
    std::vector<std::uint64_t> ends;  // index behind the last band of each picture
};

// Sets a flag when it goes.
struct SetAtEnd {
    explicit SetAtEnd(std::atomic<bool>& which) : flag(which) {}
    ~SetAtEnd() { flag = true; }
    SetAtEnd(const SetAtEnd&) = delete;
    SetAtEnd& operator=(const SetAtEnd&) = delete;
    std::atomic<bool>& flag;
};

// Writes bands as they come, picture after picture.
class Writer {
  public:
    Writer(const std::vector<Job>& pictures, const Encoder& format)
        : jobs(pictures), encoder(format) {}

    void begin(std::size_t picture) {
        job = &jobs[picture];
        file = std::make_unique<OutputFile>(job->output);
        file->write(encoder.head(*job));
        adler = 1;
    }

    void add(const EncodedBand& band) {
        file->write(band.bytes);
        adler = joinAdler(adler, band.adler, band.length);
    }

    void finish() {
        file->write(encoder.tail(*job, adler));
        file->publish();
        file.reset();
    }

  private:
    const std::vector<Job>& jobs;
    const Encoder& encoder;
    const Job* job = nullptr;  // that is being written
    std::unique_ptr<OutputFile> file;
    std::uint32_t adler = 1;
};

}  // namespace

int threadCount(int wanted) {
    if (wanted > 0) return wanted;
    return std::max(static_cast<int>(std::thread::hardware_concurrency()), 1);
}

std::int64_t unprovenIn(const std::vector<Job>& jobs) {
    std::set<const ExactPicture*> pictures;
    for (const Job& job : jobs) {
        pictures.insert(job.exact.get());
        if (job.fade) pictures.insert(job.fade->from->exact.get());
    }
    std::int64_t sum = 0;
    for (const ExactPicture* picture : pictures) sum += picture ? picture->unproven() : 0;
    return sum;
}

void removeLeftoversOf(const std::vector<Job>& jobs) {
    std::set<std::string> folders;
    for (const Job& job : jobs) {
        if (job.output != "-") folders.insert(folderOf(job.output));
    }
    for (const std::string& folder : folders) removeLeftovers(folder);
}

void makePictures(const std::vector<Job>& jobs, const Encoder& encoder, const RunOptions& options) {
    if (jobs.empty()) return;
    removeLeftoversOf(jobs);
    const BandSequence bands(jobs);
    Writer writer(jobs, encoder);
    writer.begin(0);  // what cannot be written shall not be computed first
    Progress progress(!options.quiet);
    std::atomic<bool> stop{false};
    const int threads = threadCount(options.threads);
    const auto makeBand = [&](std::uint64_t index, Workshop& workshop) {
        const auto place = bands.place(index);
        const Job& job = jobs[place.picture];
        return encoder.band(job, bandRows(job.size, place.band), workshop);
    };
    Pipeline<EncodedBand> pipeline(
        bands.count(), threads, static_cast<std::uint64_t>(2 * threads) + 2, [&] {
            const auto workshop = std::make_shared<Workshop>(stop);
            return [&, workshop](std::uint64_t index) { return makeBand(index, *workshop); };
        });
    const SetAtEnd stopping(stop);
    for (std::uint64_t index = 0; index < bands.count(); ++index) {
        const EncodedBand band = pipeline.next();
        const auto place = bands.place(index);
        if (place.first && index > 0) writer.begin(place.picture);
        writer.add(band);
        if (place.last) writer.finish();
        progress.show(
            {place.picture + (place.last ? 1u : 0u), jobs.size(), index + 1, bands.count()});
    }
}

}  // namespace render
