// The command line of tessary-frac, as far as what it does to an entry; no file is touched.
#include <stdexcept>

#include "frac/catalogue_bytes.h"
#include "frac/command/actions.h"
#include "frac/command/command_line.h"
#include "frac/command/edit.h"
#include "frac/command/output.h"
#include "frac/presets.h"
#include "tests/fuzz/arguments.h"
#include "tests/fuzz/require.h"

// What is said and written goes nowhere.
void say(const std::string& message) {
    require(!message.empty(), "a refusal has words");
}
void writeOutput(const std::string&, std::string_view) {}

// What is asked for is not done here, but told apart.
void listEntries(const Options&) {}
void checkCatalogue(const Options&) {}
void exportDocument(const Options&) {}
void importDocuments(const Options&) {}
void setEntry(const Options&) {}
void newCatalogue(const Options&) {}
void mergeCatalogues(const Options&) {}
void takeEntries(const Options&) {}

namespace {

void checkOptions(const Options& options) {
    require(options.action != nullptr, "there is something to do");
    require(options.action == newCatalogue || !options.files.empty(), "there is a file");
    require(options.entry >= 1, "entries count from 1");
    for (const EntryRange& range : options.entries) {
        require(range.first >= 1 && range.first <= range.last, "ranges are in order");
    }
}

void change(const Options& options) {
    fractal entry = presetEntry(options.formula, 0);
    try {
        change(entry, options.changes);
    } catch (const std::runtime_error&) {
        return;
    }
    require(!encodeCatalogue({entry}).empty(), "what was changed can be written");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Arguments arguments("tessary-frac", data, size);
    try {
        const Options options = readCommandLine(arguments.count(), arguments.values());
        checkOptions(options);
        change(options);
    } catch (const CommandLineEnd& end) {
        require(end.status == 0 || end.status == 2, "help or a mistake");
    }
    return 0;
}
