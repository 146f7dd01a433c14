// tessary-render: pictures of a catalogue without a window.
#include <signal.h>

#include <cstdio>
#include <exception>
#include <string>

#include "render/failure.h"
#include "render/options.h"
#include "render/plan.h"
#include "render/run.h"

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

void run(const render::Options& options) {
    const render::Source source = render::readSource(options.input);
    const auto jobs = render::planStills(options, source);
    if (!source.warning.empty()) say(source.warning);
    const render::PngEncoder encoder(options.compression, options.metadata);
    render::makePictures(jobs, encoder, {options.threads, options.quiet});
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
