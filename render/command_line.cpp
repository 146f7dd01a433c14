#include "render/command_line.h"

#include <CLI/CLI.hpp>
#include <algorithm>
#include <iostream>
#include <limits>
#include <string_view>
#include <thread>

#include "render/colour_options.h"
#include "render/failure.h"
#include "render/film_options.h"
#include "render/option_values.h"

namespace render {
namespace {

constexpr int MOST_THREADS = 4096;

std::optional<int> side(std::string_view text) {
    const auto value = wholeNumber(text, 1, LARGEST_SIDE);
    if (!value) return {};
    return static_cast<int>(*value);
}

WantedSize size(const std::string& text) {
    const std::size_t cross = text.find('x');
    const std::string_view all = text;
    const auto width = side(all.substr(0, cross));
    std::optional<int> height;
    if (cross != std::string::npos) height = side(all.substr(cross + 1));
    if (!width || (cross != std::string::npos && !height)) {
        refuse("--size", text, "W or WxH, each from 1 to 65535");
    }
    return {*width, height};
}

EntryRange entries(const std::string& text) {
    constexpr std::uint64_t MOST = std::numeric_limits<std::int64_t>::max();
    const std::size_t dash = text.find('-');
    const std::string_view all = text;
    const auto first = wholeNumber(all.substr(0, dash), 1, MOST);
    const auto last =
        dash == std::string::npos ? first : wholeNumber(all.substr(dash + 1), 1, MOST);
    if (!first || !last || *last < *first) refuse("--entry", text, "N or N-M, counted from 1");
    return {*first, *last};
}

bool isMap(std::string_view path) {
    constexpr std::string_view ENDING = ".map";
    return path.size() > ENDING.size() && path.ends_with(ENDING);
}

WantedPalette palette(const std::string& text) {
    if (text == "random") return {0, {}};
    if (text == "rgb") return {1, {}};
    if (!isMap(text)) refuse("--palette", text, "random, rgb or a file that ends in .map");
    return {0, text};
}

constexpr char FOOTER[] =
    "FILE is a .frac catalogue, a JSON document or a PNG written by this program;\n"
    "its content tells which. - is standard input.\n\n"
    "Exit status: 0 pictures made, 1 something failed, 2 the command line is wrong.";

// CLI11's help with a usage line as in other programs.
struct Help : CLI::Formatter {
    std::string make_usage(const CLI::App*, std::string) const override {
        return "Usage: tessary-render [OPTION...] FILE|-\n\n";
    }
};

// The command line's own texts, before they are understood.
class CommandLine {
  public:
    CommandLine() : app("Renders the entries of a Tessary catalogue as PNG pictures.") {
        app.name("tessary-render");
        app.formatter(std::make_shared<Help>());
        app.set_version_flag("--version", "tessary-render (Tessary) " TESSARY_VERSION,
                             "Print the version");
        app.set_help_flag("-h,--help", "Print this help");
        app.footer(FOOTER);
        addInput();
        addPicture();
        addColourOptions(app, options);
        addFilmOptions(app, options);
        addOutput();
        addShareOptions(app, options);
    }

    void parse(int argc, const char* const* argv) { app.parse(argc, argv); }

    // Prints the help or the version that was asked for.
    void print(const CLI::Success& wish) {
        app.exit(wish, std::cout, std::cout);
        if (!std::cout.flush()) throw Failure("standard output cannot be written");
    }

  private:
    // An option whose value `read` understands.
    template <class Read>
    CLI::Option* add(CLI::App& to, const std::string& names, const std::string& value,
                     const std::string& text, Read read) {
        return to.add_option_function<std::string>(names, std::move(read), text)->type_name(value);
    }

    void addInput();
    void addPicture();
    void addOutput();

  public:
    CLI::App app;
    Options options;
};

void CommandLine::addInput() {
    app.add_option("FILE", options.inputs, "")->type_name("")->group("");
    add(app, "--entry", "N[-M]", "Only entry N, or entries N to M (default: all)",
        [this](const std::string& text) { options.entries = entries(text); });
}

void CommandLine::addPicture() {
    add(app, "--size", "WxH", "Size in pixels; W alone takes the view's proportions (2048)",
        [this](const std::string& text) { options.size = size(text); });
    add(app, "--fit", "HOW", "contain, cover or stretch the view's rectangle (contain)",
        [this](const std::string& text) {
            options.fit = choose<Fit>(
                "--fit", text,
                {{"contain", Fit::contain}, {"cover", Fit::cover}, {"stretch", Fit::stretch}});
        });
    add(app, "--supersample", "N", "Average N x N samples a pixel, 1 to 8 (1)",
        [this](const std::string& text) {
            options.supersample = number("--supersample", text, 1, MOST_SUPERSAMPLE);
        });
    auto* single = app.add_flag_callback(
        "--single", [this] { options.precision = Precision::singles; }, "Single precision");
    auto* doubles = app.add_flag_callback(
                           "--double", [this] { options.precision = Precision::doubles; },
                           "Double precision (the default)")
                        ->excludes(single);
    add(app, "--precision", "WHICH", "single, double, exact, or auto: exact where doubles fail",
        [this](const std::string& text) {
            options.precision = choose<Precision>("--precision", text,
                                                  {{"single", Precision::singles},
                                                   {"double", Precision::doubles},
                                                   {"exact", Precision::exact},
                                                   {"auto", Precision::automatic}});
        })
        ->excludes(single, doubles);
    add(app, "--palette", "NAME", "random, rgb or a .map file (default: each entry's)",
        [this](const std::string& text) { options.palette = palette(text); });
    add(app, "--limit", "N", "Iteration limit (default: each entry's)",
        [this](const std::string& text) {
            options.limit = number("--limit", text, 1, std::numeric_limits<std::int32_t>::max());
        });
}

void CommandLine::addOutput() {
    add(app, "-o,--output", "WHERE", "FILE, folder DIR/, or - for standard output",
        [this](const std::string& text) { options.output = text; });
    add(app, "--thumbnail", "SIDE", "Only a small picture of the first entry, for file managers",
        [this](const std::string& text) {
            options.thumbnail = number("--thumbnail", text, 1, LARGEST_THUMBNAIL);
        });
    add(app, "--compress", "HOW", "fast or small (fast)", [this](const std::string& text) {
        options.compression = choose<Compression>(
            "--compress", text, {{"fast", Compression::fast}, {"small", Compression::small}});
    });
    add(app, "--metadata", "WHICH", "all, or none: no text chunks (all)",
        [this](const std::string& text) {
            options.metadata = choose<bool>("--metadata", text, {{"all", true}, {"none", false}});
        });
    add(app, "--threads", "N", "Number of threads (default: one for each processor)",
        [this](const std::string& text) {
            options.threads = number("--threads", text, 1, MOST_THREADS);
        });
    app.add_flag_callback(
        "-q,--quiet", [this] { options.quiet = true; }, "No progress bar");
}

// What no option shows by itself.
void check(const Options& options) {
    const auto& inputs = options.inputs;
    if (std::find(inputs.begin(), inputs.end(), "") != inputs.end()) {
        throw UsageError("no FILE named");
    }
    if (options.join) return;
    if (inputs.size() > 1) throw UsageError("more than one FILE: " + inputs[1]);
    const bool several = options.entries && options.entries->first < options.entries->last;
    if (several && !options.film && options.output == "-") {
        throw UsageError("-o -: only one picture goes to standard output");
    }
}

}  // namespace

std::optional<Options> readOptions(int argc, const char* const* argv) {
    CommandLine line;
    try {
        line.parse(argc, argv);
    } catch (const CLI::Success& wish) {
        line.print(wish);
        return {};
    } catch (const CLI::ParseError& error) {
        throw UsageError(error.what());
    }
    checkColourOptions(line.app, line.options);
    check(line.options);
    checkFilmOptions(line.app, line.options);
    return line.options;
}

}  // namespace render
