#include "render/film.h"

#include <array>
#include <charconv>
#include <cmath>
#include <functional>
#include <map>

#include "frac/number_text.h"
#include "render/colour_range.h"
#include "render/failure.h"
#include "render/plan.h"
#include "render/precision.h"
#include "render/shard.h"

namespace render {
namespace {

constexpr int DIGITS = 6;

// The values of the entries, each measured when it is first asked for.
class Ranges {
  public:
    using Measure = std::function<ValueRange(std::uint64_t entry)>;
    explicit Ranges(Measure how) : measure(std::move(how)) {}

    // Those at this share of the way to an entry from the one before: no frame jumps.
    ValueRange at(std::uint64_t entry, double share) {
        const ValueRange to = of(entry);
        if (share >= 1) return to;
        const ValueRange from = of(entry - 1);
        return {from.least + share * (to.least - from.least),
                from.greatest + share * (to.greatest - from.greatest)};
    }

  private:
    ValueRange of(std::uint64_t entry) {
        const auto found = known.find(entry);
        return found != known.end() ? found->second : known[entry] = measure(entry);
    }

    const Measure measure;
    std::map<std::uint64_t, ValueRange> known;
};

// The pictures of frames; one palette and one past view serve many of them.
class Pictures {
  public:
    // perEntry: where the gradient is stretched; may be null.
    Pictures(const Planner& by, Size all, const Naming& names, Ranges* perEntry)
        : planner(by), size(all), nameOf(names), ranges(perEntry) {}

    Job of(const Frame& frame) {
        Job job = jobOf(frame.view, frame.entry);
        if (ranges) job = stretched(std::move(job), ranges->at(frame.entry, frame.share));
        if (frame.crossing) job.fade = fadeOf(*frame.crossing, frame.entry - 1);
        job.output = nameOf(frame.number, DIGITS);
        return job;
    }

  private:
    Job jobOf(const fractal& view, std::uint64_t entry) const {
        return ofEntry(entry, [&] { return planner.jobOf(view, size); });
    }

    Fade fadeOf(const Crossing& crossing, std::uint64_t entry) {
        if (crossing.from != past) {
            past = crossing.from;
            Job job = jobOf(*past, entry);
            if (ranges) job = stretched(std::move(job), ranges->at(entry, 1));
            pastJob = std::make_shared<const Job>(std::move(job));
        }
        return {pastJob, crossing.step, crossing.steps};
    }

    const Planner& planner;
    const Size size;
    const Naming& nameOf;
    Ranges* const ranges;
    std::shared_ptr<const fractal> past;
    std::shared_ptr<const Job> pastJob;
};

// Not a word for what is finite: there "-0" is shorter than a document's "-0.0".
std::string shortestText(double value) {
    if (!std::isfinite(value)) return numberText(value);
    std::array<char, 32> room{};
    char* const end = std::to_chars(room.data(), room.data() + room.size(), value).ptr;
    return {room.data(), end};
}

}  // namespace

Film planFilm(const Options& options, const Source& source) {
    const Planner planner(options, source);
    const EntryRange range = planner.chosenEntries();
    const auto begin = source.entries.begin();
    const std::vector<fractal> entries(begin + static_cast<std::ptrdiff_t>(range.first - 1),
                                       begin + static_cast<std::ptrdiff_t>(range.last));
    const Size size = ofEntry(range.first, [&] { return planner.sizeFor(entries.front()); });
    const Naming nameOf(options, source, options.output != "-");
    Film film;
    film.frames = planFlight(entries, range.first, options.flight,
                             [&](const fractal& view) { return planner.fit(view, size); });
    if (options.shard) film.frames = shareOf(std::move(film.frames), *options.shard);
    Ranges ranges([&](std::uint64_t entry) {
        const fractal& view = source.entries[entry - 1];
        return valuesIn(ofEntry(entry, [&] { return planner.jobFor(view, size); }),
                        options.threads);
    });
    const bool stretches = options.colour.wanted.autoRange && !options.dryRun;
    Pictures pictures(planner, size, nameOf, stretches ? &ranges : nullptr);
    for (const Frame& frame : film.frames) film.jobs.push_back(pictures.of(frame));
    shareReferences(film.jobs);
    return film;
}

namespace {

std::string placeText(const fractal& view) {
    std::string text;
    if (view.exact) {
        for (const auto* decimal : {&view.exact->re, &view.exact->im, &view.exact->width}) {
            text.append(1, '\t').append(*decimal);
        }
        return text;
    }
    for (const double edge : {view.xMin, view.xMax, view.yMin, view.yMax}) {
        text.append(1, '\t').append(shortestText(edge));
    }
    return text;
}

}  // namespace

std::string linesOf(const std::vector<Frame>& frames) {
    std::string lines;
    for (const Frame& frame : frames) {
        lines += std::to_string(frame.number) + '\t' + std::to_string(frame.entry);
        lines += placeText(frame.view) + '\n';
    }
    return lines;
}

}  // namespace render
