#include "render/colour_options.h"

#include <CLI/CLI.hpp>

#include "render/failure.h"
#include "render/option_values.h"

namespace render {
namespace {

constexpr double GREATEST = 1e15, LARGEST_BOUND = 1e30;

constexpr const char* NOT_WITH_SWATCH[] = {
    "--entry",   "--fit",    "--supersample", "--single",   "--double", "--precision",
    "--palette", "--limit",  "--film",        "--output",   "--shard",  "--join",
    "--resume",  "--counts", "--colour",      "--escape",   "--scale",  "--period",
    "--offset",  "--values", "--inside",      "--metadata", "--range"};
constexpr const char* NOT_WITH_NUMBERS[] = {"--film",   "--output",      "--join",     "--depth",
                                            "--dither", "--supersample", "--gradient", "--blend",
                                            "--range",  "--scale",       "--period",   "--offset",
                                            "--inside", "--metadata",    "--compress", "--palette"};

bool isGiven(const CLI::App& app, const std::string& name) {
    const CLI::Option* option = app.get_option_no_throw(name);
    return option != nullptr && option->count() > 0;
}

// An option whose value `read` understands.
template <class Read>
void add(CLI::App& app, const std::string& name, const std::string& value, const std::string& text,
         Read read) {
    app.add_option_function<std::string>(name, std::move(read), text)->type_name(value);
}

void readGradientOption(const std::string& text, ColourChoice& colour) {
    if (isGradientFile(text)) {
        colour.gradientFile = text;
        return;
    }
    try {
        colour.wanted.gradient = std::make_shared<const Gradient>(readGradient(text));
    } catch (const Failure& failure) {
        throw UsageError(std::string("--gradient: ") + failure.what());
    }
}

Colour insideColour(const std::string& text) {
    const auto colour = readColourText(text);
    if (!colour) refuse("--inside", text, "a colour such as #206bcb");
    return *colour;
}

void addSource(CLI::App& app, ColourChoice& colour) {
    WantedColours& wanted = colour.wanted;
    add(app, "--colour", "HOW", "By counts in bands, or smooth (bands)",
        [&wanted](const std::string& text) {
            wanted.smooth = choose<bool>("--colour", text, {{"bands", false}, {"smooth", true}});
        });
    add(app, "--escape", "L", "Escape bound of |z|^2 (default: each entry's; smooth: often 65536)",
        [&wanted](const std::string& text) {
            wanted.escape = decimal("--escape", text, 0, true, LARGEST_BOUND);
        });
    add(app, "--gradient", "WHICH", "A name, a .map or .ggr file, or \"#000764 0, #206bcb 0.5\"",
        [&colour](const std::string& text) { readGradientOption(text, colour); });
    add(app, "--blend", "WHERE", "Mix colours in oklab, linear or srgb (oklab; .ggr files: srgb)",
        [&wanted](const std::string& text) {
            wanted.blend = choose<Blend>(
                "--blend", text,
                {{"oklab", Blend::oklab}, {"linear", Blend::linear}, {"srgb", Blend::srgb}});
        });
}

void addPlaces(CLI::App& app, WantedColours& wanted) {
    add(app, "--scale", "HOW", "linear, sqrt or log of the values (linear)",
        [&wanted](const std::string& text) {
            wanted.scale = choose<Scale>("--scale", text,
                                         {{"linear", Scale::linear},
                                          {"sqrt", Scale::squareRoot},
                                          {"log", Scale::logarithm}});
        });
    add(app, "--period", "P", "Values for one turn of the gradient (64)",
        [&wanted](const std::string& text) {
            wanted.period = decimal("--period", text, 0, true, GREATEST);
        });
    add(app, "--range", "HOW", "auto: one turn over the values that occur, instead of --period",
        [&wanted](const std::string& text) {
            wanted.autoRange = choose<bool>("--range", text, {{"auto", true}});
        });
    add(app, "--offset", "O", "Turns by which the gradient begins later in itself (0)",
        [&wanted](const std::string& text) {
            wanted.offset = decimal("--offset", text, -GREATEST, false, GREATEST);
        });
    add(app, "--inside", "COLOUR", "Colour of points that stay (#000000)",
        [&wanted](const std::string& text) { wanted.inside = insideColour(text); });
}

void addDepth(CLI::App& app, WantedColours& wanted) {
    add(app, "--depth", "BITS", "Bits of a level, 8 or 16 (8)", [&wanted](const std::string& text) {
        wanted.depth = choose<int>("--depth", text, {{"8", 8}, {"16", 16}});
    });
    add(app, "--dither", "HOW", "pattern or none, for 8 bits (pattern where colours are smooth)",
        [&wanted](const std::string& text) {
            wanted.dither = choose<bool>("--dither", text, {{"pattern", true}, {"none", false}});
        });
}

template <std::size_t N>
void refuseAny(const CLI::App& app, const char* const (&names)[N], const char* with) {
    for (const char* name : names) {
        if (isGiven(app, name)) throw UsageError(std::string(name) + ": not with " + with);
    }
}

}  // namespace

void addColourOptions(CLI::App& app, Options& options) {
    ColourChoice& colour = options.colour;
    addSource(app, colour);
    addPlaces(app, colour.wanted);
    addDepth(app, colour.wanted);
    add(app, "--counts", "FILE.npy", "Write the counts for NumPy rather than a picture",
        [&colour](const std::string& text) { colour.counts = text; });
    add(app, "--values", "FILE.npy", "Write the smooth values for NumPy rather than a picture",
        [&colour](const std::string& text) { colour.values = text; });
    add(app, "--swatch", "OUT.png", "Only draw the gradient, 1024x64 or of --size",
        [&colour](const std::string& text) { colour.swatch = text; });
}

WantedColours wantedColours(const ColourChoice& choice) {
    WantedColours wanted = choice.wanted;
    if (!choice.gradientFile.empty()) {
        wanted.gradient = std::make_shared<const Gradient>(readGradientFile(choice.gradientFile));
    }
    return wanted;
}

void checkColourOptions(const CLI::App& app, Options& options) {
    const ColourChoice& colour = options.colour;
    if (isGiven(app, "--swatch")) {
        refuseAny(app, NOT_WITH_SWATCH, "--swatch");
        if (!options.inputs.empty()) throw UsageError("--swatch: no FILE is read with it");
        options.output = colour.swatch;
    } else if (options.inputs.empty()) {
        throw UsageError("FILE is required");
    }
    if (isGiven(app, "--palette") &&
        (colour.wanted.hasGradient() || !colour.gradientFile.empty())) {
        throw UsageError("--palette: not with --gradient or smooth colours, which have a gradient");
    }
    if (isGiven(app, "--range") && isGiven(app, "--period")) {
        throw UsageError("--range: not with --period");
    }
    for (const char* name : {"--counts", "--values"}) {
        if (!isGiven(app, name)) continue;
        refuseAny(app, NOT_WITH_NUMBERS, name);
        options.output = name == std::string("--counts") ? colour.counts : colour.values;
        if (options.output.empty()) throw UsageError(std::string(name) + ": no FILE.npy named");
    }
    if (isGiven(app, "--counts") && isGiven(app, "--values")) {
        throw UsageError("--values: not with --counts");
    }
}

void checkGradientIsThere(const Options& options, const WantedColours& merged) {
    if (merged.hasGradient()) return;
    const WantedColours& given = options.colour.wanted;
    const std::pair<const char*, bool> needing[] = {
        {"--blend", given.blend.has_value()},   {"--scale", given.scale.has_value()},
        {"--period", given.period.has_value()}, {"--range", given.autoRange},
        {"--offset", given.offset.has_value()}, {"--inside", given.inside.has_value()},
        {"--dither", given.dither.has_value()}};
    for (const auto& [name, isThere] : needing) {
        if (isThere)
            throw UsageError(std::string(name) + ": only with --gradient or smooth colours");
    }
}

}  // namespace render
