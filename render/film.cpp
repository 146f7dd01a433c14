#include "render/film.h"

#include <array>
#include <charconv>
#include <cmath>

#include "frac/number_text.h"
#include "render/plan.h"
#include "render/shard.h"

namespace render {
namespace {

constexpr int DIGITS = 6;

// The pictures of frames; one palette and one past view serve many of them.
class Pictures {
  public:
    Pictures(const Planner& by, Size all, const Naming& names)
        : planner(by), size(all), nameOf(names) {}

    Job of(const Frame& frame) {
        Job job = planner.jobOf(frame.view, size);
        if (frame.crossing) job.fade = fadeOf(*frame.crossing);
        job.output = nameOf(frame.number, DIGITS);
        return job;
    }

  private:
    Fade fadeOf(const Crossing& crossing) {
        if (crossing.from != past) {
            past = crossing.from;
            pastJob = std::make_shared<const Job>(planner.jobOf(*past, size));
        }
        return {pastJob, crossing.step, crossing.steps};
    }

    const Planner& planner;
    const Size size;
    const Naming& nameOf;
    std::shared_ptr<const fractal> past;
    std::shared_ptr<const Job> pastJob;
};

// Not a word for what is finite: there "-0" is shorter than a document's "-0.0".
std::string shortestText(double value) {
    if (!std::isfinite(value)) return numberText(value);
    std::array<char, 32> room{};
    const auto end = std::to_chars(room.data(), room.data() + room.size(), value).ptr;
    return {room.data(), end};
}

}  // namespace

Film planFilm(const Options& options, const Source& source) {
    const Planner planner(options, source);
    const EntryRange range = planner.chosenEntries();
    const auto begin = source.entries.begin();
    const std::vector<fractal> entries(begin + static_cast<std::ptrdiff_t>(range.first - 1),
                                       begin + static_cast<std::ptrdiff_t>(range.last));
    const Size size = planner.sizeFor(entries.front());
    const Naming nameOf(options, source, options.output != "-");
    Film film;
    film.frames = planFlight(entries, range.first, options.flight,
                             [&](const fractal& view) { return planner.fit(view, size); });
    if (options.shard) film.frames = shareOf(std::move(film.frames), *options.shard);
    Pictures pictures(planner, size, nameOf);
    for (const Frame& frame : film.frames) film.jobs.push_back(pictures.of(frame));
    return film;
}

std::string linesOf(const std::vector<Frame>& frames) {
    std::string lines;
    for (const Frame& frame : frames) {
        lines += std::to_string(frame.number) + '\t' + std::to_string(frame.entry);
        const fractal& v = frame.view;
        for (const double edge : {v.xMin, v.xMax, v.yMin, v.yMax}) {
            lines += '\t' + shortestText(edge);
        }
        lines += '\n';
    }
    return lines;
}

}  // namespace render
