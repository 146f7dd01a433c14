// Files that somebody names on a command line: a catalogue, a JSON document or a picture that
// carries one, told apart by what they hold.
#pragma once

#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "frac/catalogue_check.h"
#include "frac/json_document.h"

enum class InputKind { catalogue, document, picture };

// What bytes are the beginning of. A document begins with a brace and holds no NUL, of which every
// whole record of a catalogue has one.
InputKind kindOf(std::string_view bytes);

// Why an input cannot be taken, for one line: "FILE: reason".
class InputError : public std::runtime_error {
    using std::runtime_error::runtime_error;
};

// NOLINTNEXTLINE(bugprone-exception-escape): as of Document
struct Input {
    InputKind kind = InputKind::catalogue;
    Document document;           // the entries that the program would load; "render" of a document
    std::vector<Damage> damage;  // of a catalogue
};

// What path holds; "-" is standard input. Throws InputError.
Input readInput(const std::string& path);

// The document in the file at path, which must be JSON or a picture. Throws InputError.
Document readDocumentFile(const std::string& path);

// What messages call path.
std::string inputName(const std::string& path);
