// tessary-render: pictures of a catalogue without a window.
#include <signal.h>

#include <cstdint>
#include <cstdio>
#include <exception>
#include <string>

#include "render/command_line.h"
#include "render/failure.h"
#include "render/film.h"
#include "render/join.h"
#include "render/npy_encoder.h"
#include "render/number_share.h"
#include "render/output_file.h"
#include "render/plan.h"
#include "render/ppm_encoder.h"
#include "render/resume.h"
#include "render/run.h"
#include "render/swatch.h"
#include "render/thumbnail.h"

namespace {

constexpr int FAILED = 1, WRONG_USAGE = 2;

// One line on standard error, whatever stands in names and messages.
void say(std::string message) {
    for (char& c : message) {
        if (static_cast<unsigned char>(c) < ' ' || c == '\x7f') c = '?';
    }
    std::fprintf(stderr, "tessary-render: %s\n", message.c_str());
}

// A closed pipe or a size limit shall make a write fail, with a line that says so.
void ignoreWriteSignals() {
    signal(SIGPIPE, SIG_IGN);
    signal(SIGXFSZ, SIG_IGN);
}

void warnOf(const render::Source& source) {
    if (!source.warning.empty()) say(source.warning);
}

// All of the pictures, or what an earlier run has left of them.
void makeFiles(const std::vector<render::Job>& jobs, const render::Options& options,
               const render::RunOptions& how) {
    const render::PngEncoder encoder(options.compression, options.metadata);
    if (options.resume && options.metadata) {
        render::removeLeftoversOf(jobs);
        render::makePictures(render::unfinished(jobs, encoder), encoder, how);
    } else {
        render::makePictures(jobs, encoder, how);
    }
}

void makeNumbers(const std::vector<render::Job>& jobs, const render::Options& options,
                 const render::RunOptions& how) {
    const auto kind =
        options.colour.values.empty() ? render::NumberKind::counts : render::NumberKind::values;
    const render::NpyEncoder encoder(kind);
    if (options.resume) {
        render::removeLeftoversOf(jobs);
        render::makePictures(render::unfinishedNumbers(jobs, kind), encoder, how);
    } else {
        render::makePictures(jobs, encoder, how);
    }
}

// What no arithmetic could decide is told, and never guessed.
void reportUnproven(const std::vector<render::Job>& jobs) {
    const std::int64_t count = render::unprovenIn(jobs);
    if (count > 0) say("unproven: " + std::to_string(count));
}

void stills(const render::Options& options, const render::Source& source,
            const render::RunOptions& how) {
    const auto jobs = render::planStills(options, source);
    warnOf(source);
    if (options.colour.wantsNumbers()) {
        makeNumbers(jobs, options, how);
    } else {
        makeFiles(jobs, options, how);
    }
    reportUnproven(jobs);
}

void print(const std::string& text) {
    render::OutputFile output("-");
    output.write(text);
    output.publish();
}

void film(const render::Options& options, const render::Source& source,
          const render::RunOptions& how) {
    const render::Film film = render::planFilm(options, source);
    warnOf(source);
    if (options.dryRun) {
        print(render::linesOf(film.frames));
    } else if (options.output == "-") {
        render::makePictures(film.jobs, render::PpmEncoder(), how);
    } else {
        makeFiles(film.jobs, options, how);
    }
    reportUnproven(film.jobs);
}

void run(const render::Options& options) {
    const render::RunOptions how{options.threads, options.quiet};
    if (options.join) {
        render::joinBands(options.inputs, options.output, how);
        return;
    }
    if (options.thumbnail) {
        render::makeThumbnail(options);
        return;
    }
    if (!options.colour.swatch.empty()) {
        const render::PngEncoder encoder(options.compression, false);
        render::makePictures({render::planSwatch(options)}, encoder, {1, options.quiet});
        return;
    }
    const render::Source source = render::readSource(options.inputs.front());
    if (options.film) {
        film(options, source, how);
    } else {
        stills(options, source, how);
    }
}

}  // namespace

int main(int argc, char** argv) {
    ignoreWriteSignals();
    try {
        if (const auto options = render::readOptions(argc, argv)) run(*options);
        return 0;
    } catch (const render::UsageError& error) {
        say(error.what());
        return WRONG_USAGE;
    } catch (const std::bad_alloc&) {
        say("out of memory");
    } catch (const std::exception& error) {
        say(error.what());
    }
    return FAILED;
}
