#include "render/plan.h"

#include <sys/stat.h>

#include <cmath>
#include <string_view>

#include "render/colour_options.h"
#include "render/colour_range.h"
#include "render/failure.h"
#include "render/precision.h"
#include "render/shard.h"

namespace render {
namespace {

bool isFolder(const std::string& path) {
    struct stat status = {};
    return path.ends_with('/') || (stat(path.c_str(), &status) == 0 && S_ISDIR(status.st_mode));
}

std::string withSlash(const std::string& folder) {
    return folder.ends_with('/') ? folder : folder + "/";
}

// The height of a picture of this width with the proportions of `size`.
double heightLike(Size size, int width) {
    return std::round(static_cast<double>(width) * size.height / size.width);
}

}  // namespace

Planner::Planner(const Options& chosen, const Source& from) : options(chosen), source(from) {
    if (options.palette && !options.palette->map.empty()) {
        map = std::make_shared<Palette>(readMap(options.palette->map));
    } else if (!options.palette && !source.settings.colours.empty()) {
        map = std::make_shared<Palette>(paletteOf(source.settings.colours));
    }
    chooseColouring();
}

// A palette that is asked for wins over the gradient of a picture.
void Planner::chooseColouring() {
    WantedColours wanted = wantedColours(options.colour);
    WantedColours usual = source.settings.colouring;
    if (options.palette) {
        usual.smooth.reset();
        usual.gradient.reset();
    }
    wanted = merged(wanted, usual);
    if (!options.colour.values.empty()) wanted.smooth = true;
    checkGradientIsThere(options, wanted);
    if (wanted.isAny() || options.colour.wantsNumbers()) {
        colouring = std::make_shared<const Colouring>(wanted);
    }
}

EntryRange Planner::chosenEntries() const {
    const std::uint64_t count = source.entries.size();
    const EntryRange range = options.entries.value_or(EntryRange{1, count});
    if (range.last > count) {
        throw Failure("no entry " + std::to_string(std::max(range.first, count + 1)) +
                      ": the catalogue has " + std::to_string(count));
    }
    return range;
}

Size Planner::sizeFor(const fractal& entry) const {
    const auto& own = source.settings.size;
    if (!options.size && own) return *own;
    const WantedSize wanted = options.size.value_or(WantedSize{DEFAULT_WIDTH, {}});
    if (wanted.height) return {wanted.width, *wanted.height};
    if (!own) return {wanted.width, heightFor(entry, wanted.width)};
    const double height = std::max(heightLike(*own, wanted.width), 1.0);
    if (height > LARGEST_SIDE) throw Failure("a picture of this width would be too high");
    return {wanted.width, static_cast<int>(height)};
}

bool Planner::hasProportionsOfSource(Size size) const {
    const auto& own = source.settings.size;
    return own && size.height == std::max(heightLike(*own, size.width), 1.0);
}

std::shared_ptr<const Palette> Planner::paletteFor(std::int32_t type) const {
    if (map) return map;
    auto& palette = builtIn[type == 1 ? 1 : 0];
    if (!palette) palette = std::make_shared<Palette>(builtInPalette(type));
    return palette;
}

fractal Planner::fit(const fractal& view, Size size) const {
    if (view.exact) return framed(view, size);
    return hasProportionsOfSource(size) ? view : fitted(view, size, options.fit);
}

Job Planner::jobOf(const fractal& view, Size size) const {
    Job job;
    job.view = view;
    if (options.limit) job.view.maxIters = *options.limit;
    if (options.palette && options.palette->map.empty()) {
        job.view.paletteType = options.palette->type;
    }
    job.size = size;
    job.supersample = options.supersample.value_or(source.settings.supersample.value_or(1));
    if (options.colour.wantsNumbers()) job.supersample = 1;  // numbers have no average
    job.palette = paletteFor(job.view.paletteType);
    job.colouring = colouring;
    const Precision usual = view.exact ? Precision::automatic : Precision::doubles;
    choosePrecision(job, options.precision.value_or(source.settings.precision.value_or(usual)));
    return job;
}

Job Planner::jobOfEntry(std::uint64_t number) const {
    const fractal& entry = source.entries[number - 1];
    return ofEntry(number, [&] { return jobFor(entry, sizeFor(entry)); });
}

Naming::Naming(const Options& options, const Source& source, bool several)
    : ending(options.colour.wantsNumbers() ? ".npy" : ".png") {
    const std::string& output = options.output;
    if (output.empty() || (output != "-" && isFolder(output))) {
        prefix = (output.empty() ? "" : withSlash(output)) + source.stem;
    } else if (several) {
        throw Failure("-o " + output + ": more than one picture for one name");
    } else {
        whole = output;
    }
}

std::string Naming::operator()(std::uint64_t number, int digits) const {
    if (!whole.empty()) return whole;
    std::string text = std::to_string(number);
    const auto wanted = static_cast<std::size_t>(digits);
    if (text.size() < wanted) text.insert(0, wanted - text.size(), '0');
    return prefix + "-" + text + ending;
}

namespace {

// NAME.png becomes NAME.K-of-N.png, and .npy likewise.
std::string bandName(const std::string& name, Shard shard) {
    const std::size_t stem = name.rfind('.');
    return name.substr(0, stem) + "." + std::to_string(shard.number) + "-of-" +
           std::to_string(shard.count) + name.substr(stem);
}

// Several pictures are dealt out; of a single one a share is a band, which goes to the name given
// or to one that tells which it is.
std::vector<Job> stillsOfShare(std::vector<Job> jobs, const Options& options) {
    if (jobs.size() > 1) return shareOf(std::move(jobs), *options.shard);
    Job job = bandOf(std::move(jobs.front()), *options.shard);
    job.band->small = options.compression == Compression::small;
    job.band->metadata = options.metadata;
    if (job.output != options.output) job.output = bandName(job.output, *options.shard);
    return {job};
}

}  // namespace

std::vector<Job> planStills(const Options& options, const Source& source) {
    constexpr int DIGITS = 3;
    const Planner planner(options, source);
    const EntryRange range = planner.chosenEntries();
    const Naming nameOf(options, source, range.last > range.first);
    std::vector<Job> jobs;
    for (std::uint64_t number = range.first; number <= range.last; ++number) {
        jobs.push_back(planner.jobOfEntry(number));
        if (options.colour.wanted.autoRange) {
            const ValueRange values = valuesIn(jobs.back(), options.threads);
            jobs.back() = stretched(std::move(jobs.back()), values);
        }
        jobs.back().output = nameOf(number, DIGITS);
    }
    return options.shard ? stillsOfShare(std::move(jobs), options) : jobs;
}

}  // namespace render
