#include "frac/command/command_line.h"

#include <CLI/CLI.hpp>
#include <cmath>

#include "frac/command/actions.h"
#include "frac/command/output.h"
#include "frac/command/values.h"
#include "frac/decimal_text.h"
#include "frac/formula_names.h"
#include "frac/number_text.h"

namespace {

using Texts = std::vector<std::string>;

// An option whose text `read` turns into `target`; anything else is a mistake that names what was
// expected.
template <class Target, class Read>
CLI::Option* addValue(CLI::App& app, const std::string& name, Target& target, Read read,
                      const std::string& expected, const std::string& help) {
    const auto take = [&target, read, name, expected](const std::string& text) {
        const auto value = read(text);
        if (!value) throw CLI::ValidationError(name, "expected " + expected + ", found " + text);
        target = *value;
    };
    return app.add_option_function<std::string>(name, take, help);
}

std::optional<TypedNumber> readWidth(const std::string& text) {
    const auto width = readNumber(text);
    const bool above = width && std::isfinite(*width) && (*width > 0 || isPositiveDecimal(text));
    return above ? std::optional(TypedNumber{*width, text}) : std::nullopt;
}

std::optional<std::array<TypedNumber, 2>> readCenter(const std::string& text) {
    const auto center = readPair(text);
    const bool finite =
        center && std::isfinite((*center)[0].value) && std::isfinite((*center)[1].value);
    return finite ? center : std::nullopt;
}

std::string listOf(std::span<const std::string_view> names) {
    std::string list;
    for (const std::string_view name : names)
        list += (list.empty() ? "" : ", ") + std::string(name);
    return list;
}

auto nameReader(std::span<const std::string_view> names) {
    return [names](const std::string& text) { return readNameOrNumber(names, text); };
}

void addChanges(CLI::App& app, Changes& changes) {
    const std::string palettes = listOf(paletteNames()) + " or a whole number";
    app.add_option_function<std::string>(
           "--name", [&](const std::string& text) { changes.name = text; }, "the name")
        ->type_name("TEXT");
    addValue(app, "--limit", changes.limit, readWholeNumber, "a whole number", "iteration limit")
        ->type_name("N");
    addValue(app, "--size-limit", changes.sizeLimit, readNumber, "a number",
             "escape bound, compared with the squared magnitude")
        ->type_name("X");
    addValue(app, "--palette", changes.palette, nameReader(paletteNames()), palettes, palettes)
        ->type_name("NAME");
    addValue(app, "--c", changes.c, readPair, "two numbers RE,IM", "the constant c")
        ->type_name("RE,IM");
    auto* view =
        addValue(app, "--view", changes.view, readRectangle, "XMIN,XMAX,YMIN,YMAX", "the rectangle")
            ->type_name("XMIN,XMAX,YMIN,YMAX");
    addValue(app, "--center", changes.center, readCenter, "two finite numbers X,Y",
             "the middle of the rectangle, which keeps its size")
        ->type_name("X,Y")
        ->excludes(view);
    addValue(app, "--width", changes.width, readWidth, "a finite number above 0",
             "the width of the rectangle, which keeps its middle and its proportions")
        ->type_name("W")
        ->excludes(view);
}

CLI::Option* addOutput(CLI::App& app, Options& options, const std::string& help) {
    return app
        .add_option_function<std::string>(
            "-o,--output", [&](const std::string& text) { options.output = text; }, help)
        ->type_name("FILE");
}

// Positional files.
void addFiles(CLI::App& app, Options& options, const std::string& name, const std::string& help,
              bool several) {
    auto* files = app.add_option(name, options.files, help)->type_name("")->required();
    if (!several) files->expected(1)->allow_extra_args(false);
}

using Action = void (*)(const Options&);

CLI::App* addCommand(CLI::App& app, Options& options, const std::string& name,
                     const std::string& help, Action action) {
    auto* command = app.add_subcommand(name, help);
    command->callback([&options, action] { options.action = action; });
    return command;
}

void addReaders(CLI::App& app, Options& options) {
    auto* list = addCommand(app, options, "list", "Show the entries as a table", listEntries);
    list->add_flag("--json", options.json, "as a JSON document");
    addFiles(*list, options, "FILE", "a catalogue", false);
    auto* check =
        addCommand(app, options, "check", "Say what is damaged, and at which byte; status 1 if so",
                   checkCatalogue);
    addFiles(*check, options, "FILE", "a catalogue", false);
    auto* exporting =
        addCommand(app, options, "export", "Write a catalogue as a JSON document", exportDocument);
    addFiles(*exporting, options, "FILE", "a catalogue", false);
    addOutput(*exporting, options, "the document (standard output)");
}

void addEditors(CLI::App& app, Options& options) {
    auto* set = addCommand(app, options, "set", "Change an entry", setEntry);
    addFiles(*set, options, "FILE", "a catalogue", false);
    addValue(*set, "--entry", options.entry, readEntryNumber, "the number of an entry, from 1",
             "which one, from 1")
        ->type_name("N")
        ->required();
    addChanges(*set, options.changes);
    addOutput(*set, options, "where to write (FILE itself)");
    auto* making = addCommand(app, options, "new", "Make a catalogue of one entry", newCatalogue);
    const std::string formulas = "one of " + listOf(formulaNames());
    addValue(
        *making, "--formula", options.formula,
        [](const std::string& text) { return numberOf(formulaNames(), text); }, formulas, formulas)
        ->type_name("NAME")
        ->required();
    addChanges(*making, options.changes);
    addOutput(*making, options, "the catalogue")->required();
}

void addCollectors(CLI::App& app, Options& options) {
    auto* importing =
        addCommand(app, options, "import", "Make a catalogue of JSON documents", importDocuments);
    addFiles(*importing, options, "FILE", "JSON documents, or pictures that carry one", true);
    addOutput(*importing, options, "the catalogue")->required();
    auto* merge =
        addCommand(app, options, "merge", "Put catalogues one after another", mergeCatalogues);
    addFiles(*merge, options, "FILE", "catalogues", true);
    addOutput(*merge, options, "the catalogue")->required();
    auto* take = addCommand(app, options, "take", "Copy entries", takeEntries);
    addFiles(*take, options, "FILE", "a catalogue", false);
    addValue(*take, "ENTRIES", options.entries, readEntryRanges, "entries such as 3,5-7",
             "which entries, such as 3,5-7")
        ->type_name("")
        ->required();
    addOutput(*take, options, "the catalogue")->required();
}

void describe(CLI::App& app, Options& options) {
    app.require_subcommand(1);
    app.set_version_flag("--version", "tessary-frac (Tessary) " TESSARY_VERSION);
    addReaders(app, options);
    addCollectors(app, options);
    addEditors(app, options);
}

// Prints what was asked for; a page that cannot be printed is a failure like any other.
[[noreturn]] void printAndEnd(const std::string& page) {
    try {
        writeOutput("-", page);
    } catch (const std::exception& error) {
        say(error.what());
        throw CommandLineEnd{1};
    }
    throw CommandLineEnd{0};
}

[[noreturn]] void endWithMistake(const std::string& message) {
    say(message + " (see tessary-frac --help)");
    throw CommandLineEnd{2};
}

// The arguments as the library takes them, in reverse. It would take "--name=" for an option whose
// value follows, and a file name in brackets, among several, for a list.
Texts argumentsOf(int argc, char** argv) {
    Texts arguments;
    const std::string_view command = argc > 1 ? argv[1] : "";
    const bool several = command == "merge" || command == "import";
    for (int i = 1; i < argc; ++i) {
        const std::string argument = argv[i];
        const bool bracketed = argument.starts_with('[') && argument.ends_with(']');
        arguments.push_back(bracketed && several ? "./" + argument : argument);
        if (argument != "--name=") continue;
        arguments.back() = "--name";
        arguments.emplace_back();
    }
    return {arguments.rbegin(), arguments.rend()};
}

// What no single option can see.
void checkTogether(const CLI::App& app, const Options& options) {
    if (app.got_subcommand("set") && !options.changes.any()) {
        endWithMistake("set: nothing to change was named");
    }
}

}  // namespace

Options readCommandLine(int argc, char** argv) {
    Options options;
    CLI::App app("Look into, change and convert the catalogues of Tessary.", "tessary-frac");
    describe(app, options);
    try {
        app.parse(argumentsOf(argc, argv));
    } catch (const CLI::CallForHelp&) {
        printAndEnd(app.help());
    } catch (const CLI::CallForVersion& version) {
        printAndEnd(std::string(version.what()) + "\n");
    } catch (const CLI::ParseError& error) {
        endWithMistake(error.what());
    }
    checkTogether(app, options);
    return options;
}
