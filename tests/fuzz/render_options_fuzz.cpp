// The command line of tessary-render, as far as the pictures that it plans.
#include "frac/presets.h"
#include "render/command_line.h"
#include "render/failure.h"
#include "render/film.h"
#include "render/plan.h"
#include "render/settings.h"
#include "tests/fuzz/arguments.h"
#include "tests/fuzz/require.h"

namespace {

constexpr double MOST_FRAMES_HERE = 500;

render::Source someSource() {
    render::Source source;
    for (int type = 0; type < 3; ++type) source.entries.push_back(presetEntry(type, 0));
    source.entries.push_back(source.entries.front());
    source.entries.back().xMin = -0.5;
    source.stem = "some";
    return source;
}

// Nothing is read that the input names, and nothing computed.
bool readsFiles(const render::Options& options) {
    return !options.colour.gradientFile.empty() ||
           (options.palette && !options.palette->map.empty());
}

bool isLong(const render::FlightOptions& flight) {
    const double seconds = flight.seconds + flight.hold.value_or(1);
    return seconds * flight.rate + flight.steps + flight.fade > MOST_FRAMES_HERE;
}

void checkJobs(const std::vector<render::Job>& jobs) {
    for (const render::Job& job : jobs) {
        require(job.size.width >= 1 && job.size.width <= render::LARGEST_SIDE &&
                    job.size.height >= 1 && job.size.height <= render::LARGEST_SIDE,
                "a picture's sides are in their range");
        require(job.palette != nullptr && !job.output.empty(), "a picture has colours and a place");
        require(!render::describe(job).empty(), "a picture is described");
    }
}

void plan(render::Options options) {
    options.colour.wanted.autoRange = false;
    const render::Source source = someSource();
    if (!options.film) return checkJobs(render::planStills(options, source));
    if (isLong(options.flight)) return;
    const render::Film film = render::planFilm(options, source);
    checkJobs(film.jobs);
    require(render::linesOf(film.frames).empty() == film.frames.empty(), "a frame is a line");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Arguments arguments("tessary-render", data, size);
    try {
        const auto options = render::readOptions(arguments.count(), arguments.values());
        if (options && !readsFiles(*options) && !options->join) plan(*options);
    } catch (const render::UsageError& error) {
        require(error.what()[0] != '\0', "a refusal has words");
    } catch (const render::Failure& failure) {
        require(failure.what()[0] != '\0', "a refusal has words");
    }
    return 0;
}
