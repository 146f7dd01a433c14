#include "frac/command/actions.h"

#include <algorithm>
#include <stdexcept>

#include "frac/catalogue_bytes.h"
#include "frac/command/edit.h"
#include "frac/command/identities.h"
#include "frac/command/output.h"
#include "frac/command/table.h"
#include "frac/input.h"
#include "frac/presets.h"

namespace {

using Entries = std::vector<fractal>;

std::string damageText(const Damage& damage) {
    return "byte " + std::to_string(damage.offset) + ": " + damage.text;
}

bool isExact(const fractal& entry) {
    return entry.exact != nullptr;
}

bool hasExactEntry(const Entries& entries) {
    return std::any_of(entries.begin(), entries.end(), isExact);
}

// A catalogue, or a document that no catalogue can be made of.
Input readCatalogueInput(const std::string& path) {
    Input input = readInput(path);
    if (input.kind == InputKind::catalogue || hasExactEntry(input.document.entries)) return input;
    const char* what = input.kind == InputKind::document ? "a JSON document" : "a picture";
    throw InputError(inputName(path) + ": it is " + what + ", which import makes a catalogue of");
}

void warnOfDamage(const std::string& path, const std::vector<Damage>& damage) {
    if (damage.empty()) return;
    const std::string more =
        damage.size() > 1 ? " (and " + std::to_string(damage.size() - 1) + " more)" : "";
    say("warning: " + inputName(path) + " is damaged: " + damageText(damage[0]) + more);
}

// The entries that the program would load, with a warning where that is not all.
Entries entriesOf(const std::string& path) {
    Input input = readCatalogueInput(path);
    warnOfDamage(path, input.damage);
    return std::move(input.document.entries);
}

// The index of an entry that must be there.
std::size_t indexOf(std::size_t number, const Entries& entries, const std::string& path) {
    if (number <= entries.size()) return number - 1;
    throw std::runtime_error(inputName(path) + ": there is no entry " + std::to_string(number) +
                             ", the number of entries is " + std::to_string(entries.size()));
}

void appendRange(Entries& taken, EntryRange range, const Entries& entries,
                 const std::string& path) {
    const auto last = static_cast<std::ptrdiff_t>(indexOf(range.last, entries, path));
    const auto first = static_cast<std::ptrdiff_t>(range.first) - 1;
    taken.insert(taken.end(), entries.begin() + first, entries.begin() + last + 1);
}

[[noreturn]] void refuseExact(const std::string& path, const Entries& entries,
                              const std::string& advice) {
    const auto exact = std::find_if(entries.begin(), entries.end(), isExact);
    throw std::runtime_error(inputName(path) + ": entry " +
                             std::to_string(exact - entries.begin() + 1) +
                             " lies deeper than a .frac record can tell" + advice);
}

// The bytes of a catalogue for this output; of a document where records cannot tell all.
std::string bytesFor(const std::string& output, const Entries& entries) {
    if (!hasExactEntry(entries)) return encodeCatalogue(entries);
    if (output != "-" && !output.ends_with(".json")) {
        refuseExact(output, entries, ": name an output that ends in .json");
    }
    return writeDocument({entries, {}});
}

void append(Entries& all, const Entries& more) {
    all.insert(all.end(), more.begin(), more.end());
}

}  // namespace

void listEntries(const Options& options) {
    const Entries entries = entriesOf(options.files.at(0));
    writeOutput("-", options.json ? writeDocument({entries, {}}) : tableOf(entries));
}

void checkCatalogue(const Options& options) {
    const std::string& path = options.files.at(0);
    const Input input = readCatalogueInput(path);
    std::string lines;
    for (const Damage& damage : input.damage) {
        lines += printable(inputName(path) + ": " + damageText(damage)) + "\n";
    }
    writeOutput("-", lines);
    if (!input.damage.empty()) throw std::runtime_error(inputName(path) + " is damaged");
}

void exportDocument(const Options& options) {
    const Entries entries = entriesOf(options.files.at(0));
    writeOutput(options.output.value_or("-"), writeDocument({entries, {}}));
}

void importDocuments(const Options& options) {
    Entries entries;
    for (const std::string& path : options.files) {
        const Entries more = readDocumentFile(path).entries;
        if (hasExactEntry(more)) refuseExact(path, more, "");
        append(entries, more);
    }
    writeOutput(options.output.value(), encodeCatalogue(entries));
}

void setEntry(const Options& options) {
    const std::string& path = options.files.at(0);
    Entries entries = entriesOf(path);
    change(entries[indexOf(options.entry, entries, path)], options.changes);
    const std::string output = options.output.value_or(path);
    writeOutput(output, bytesFor(output, entries));
}

void newCatalogue(const Options& options) {
    fractal entry = presetEntry(options.formula, 0);
    change(entry, options.changes);
    writeOutput(options.output.value(), encodeCatalogue({entry}));
}

void mergeCatalogues(const Options& options) {
    Entries merged;
    Identities identities;
    for (const std::string& path : options.files) {
        Entries entries = entriesOf(path);
        identities.keepApart(entries);
        append(merged, entries);
    }
    writeOutput(options.output.value(), bytesFor(*options.output, merged));
}

void takeEntries(const Options& options) {
    const std::string& path = options.files.at(0);
    const Entries entries = entriesOf(path);
    Entries taken;
    for (const EntryRange range : options.entries) appendRange(taken, range, entries, path);
    writeOutput(options.output.value(), bytesFor(*options.output, taken));
}
