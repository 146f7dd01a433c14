#include "render/film_options.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <span>

#include "render/failure.h"
#include "render/option_values.h"

namespace render {
namespace {

constexpr int MOST_STEPS = static_cast<int>(MOST_FRAMES);
constexpr int MOST_FADE = 65535;  // what an average in linear light takes, less one
constexpr double LONGEST = 86400, FASTEST = 1000;

constexpr const char* NEEDS_FILM[] = {"--fade", "--glide", "--steps",  "--seconds",
                                      "--fps",  "--hold",  "--dry-run"};
constexpr const char* WITH_JOIN[] = {"--join", "--output", "--quiet", "--threads", "FILE"};
constexpr const char* WITH_THUMBNAIL[] = {"--thumbnail", "--output", "--quiet", "FILE"};

Shard shard(const std::string& text) {
    const std::size_t slash = text.find('/');
    const std::string_view all = text;
    std::optional<std::uint64_t> number, count;
    if (slash != std::string::npos) count = wholeNumber(all.substr(slash + 1), 1, MOST_SHARDS);
    if (count) number = wholeNumber(all.substr(0, slash), 1, *count);
    if (!number) refuse("--shard", text, "K/N with K from 1 to N");
    return {static_cast<int>(*number), static_cast<int>(*count)};
}

// An option whose value `read` understands.
template <class Read>
void add(CLI::App& app, const std::string& name, const std::string& value, const std::string& text,
         Read read) {
    app.add_option_function<std::string>(name, std::move(read), text)->type_name(value);
}

bool isGiven(const CLI::App& app, const std::string& name) {
    const CLI::Option* option = app.get_option_no_throw(name);
    return option != nullptr && option->count() > 0;
}

// An option that stands nearly alone: with those allowed, and -o.
void checkAlone(const CLI::App& app, const Options& options, std::span<const char* const> with) {
    const std::string name = with.front();
    for (const CLI::Option* option : app.get_options()) {
        const bool allowed = std::any_of(with.begin(), with.end(), [&](const char* allowedName) {
            return option == app.get_option_no_throw(allowedName);
        });
        if (option->count() > 0 && !allowed) {
            throw UsageError(option->get_name() + ": not with " + name);
        }
    }
    if (options.output.empty()) throw UsageError(name + ": -o FILE is missing");
}

void checkGlide(const CLI::App& app, const FlightOptions& film) {
    const bool linear = film.glide == Glide::linear;
    if (!linear && isGiven(app, "--steps")) throw UsageError("--steps: only with --glide linear");
    if (linear && isGiven(app, "--seconds")) throw UsageError("--seconds: not with --glide linear");
}

}  // namespace

void addFilmOptions(CLI::App& app, Options& options) {
    FlightOptions& flight = options.flight;
    app.add_flag_callback(
        "--film", [&options] { options.film = true; }, "One film of all entries");
    add(app, "--glide", "HOW", "Between relatives, smooth or linear (smooth)",
        [&flight](const std::string& text) {
            flight.glide = choose<Glide>("--glide", text,
                                         {{"smooth", Glide::smooth}, {"linear", Glide::linear}});
        });
    add(app, "--seconds", "S", "Length of a smooth glide (4)", [&flight](const std::string& text) {
        flight.seconds = decimal("--seconds", text, 0, true, LONGEST);
    });
    add(app, "--steps", "N", "Frames of a linear glide (20)", [&flight](const std::string& text) {
        flight.steps = number("--steps", text, 1, MOST_STEPS);
    });
    add(app, "--fps", "F", "Frames a second (30)", [&flight](const std::string& text) {
        flight.rate = decimal("--fps", text, 0, true, FASTEST);
    });
    add(app, "--hold", "S", "How long each entry is shown (1 s; linear: one frame)",
        [&flight](const std::string& text) {
            flight.hold = decimal("--hold", text, 0, false, LONGEST);
        });
    add(app, "--fade", "N", "Cross-faded frames at a cut (0)",
        [&flight](const std::string& text) { flight.fade = number("--fade", text, 0, MOST_FADE); });
    app.add_flag_callback(
        "--dry-run", [&options] { options.dryRun = true; }, "Only list the frames of the film");
}

void addShareOptions(CLI::App& app, Options& options) {
    add(app, "--shard", "K/N", "Only share K of N: every N-th picture, or a band of one",
        [&options](const std::string& text) { options.shard = shard(text); });
    app.add_flag_callback(
        "--join", [&options] { options.join = true; },
        "Make one picture or file of numbers of these bands");
    app.add_flag_callback(
        "--resume", [&options] { options.resume = true; }, "Leave pictures that are done");
}

void checkFilmOptions(const CLI::App& app, const Options& options) {
    if (options.join) checkAlone(app, options, WITH_JOIN);
    if (options.thumbnail) checkAlone(app, options, WITH_THUMBNAIL);
    for (const char* name : NEEDS_FILM) {
        if (!options.film && isGiven(app, name)) {
            throw UsageError(std::string(name) + ": only with --film");
        }
    }
    checkGlide(app, options.flight);
    if (options.resume && options.output == "-") {
        throw UsageError("--resume: not with -o -, which keeps nothing");
    }
}

}  // namespace render
