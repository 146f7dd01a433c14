// Catalogues as JSON documents: see docs/frac-format.md. Plain functions; any thread.
#pragma once

#include <cstddef>
#include <nlohmann/json.hpp>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "frac/fractal.h"

// What a document holds.
// NOLINTNEXTLINE(bugprone-exception-escape): the library's values may run out of memory as they go
struct Document {
    std::vector<fractal> entries;
    nlohmann::json render;  // the top-level object "render" as it stands; null where there is none
};

// Why a text is no document: where (from 1, columns in characters) and what was expected there, all
// of it in the one line that what() gives: "line 3, column 5: expected ...".
class JsonError : public std::runtime_error {
  public:
    JsonError(std::size_t atLine, std::size_t atColumn, const std::string& message)
        : std::runtime_error("line " + std::to_string(atLine) + ", column " +
                             std::to_string(atColumn) + ": " + message),
          line(atLine),
          column(atColumn) {}

    std::size_t line, column;
};

// A longer text, a deeper or longer "render" is refused.
constexpr std::size_t LONGEST_DOCUMENT = std::size_t{1} << 30;
constexpr std::size_t LONGEST_RENDER = std::size_t{1} << 20;
constexpr std::size_t DEEPEST_RENDER = 16;

// The document that text holds. Keys that are missing take the values of the formula's preset,
// which are zeros where the formula is unknown. Throws JsonError for anything that is not exactly a
// document; memory stays within a small multiple of the text, whatever it holds.
Document readDocument(std::string_view text);

enum class Letters {
    utf8,   // as they are
    ascii,  // escaped above ASCII, for containers that know no other letters
};

// The text of a document, ended by a line feed: the same bytes for the same document. The edges of
// "render" are indented, its values stand in one line each.
std::string writeDocument(const Document& document, Letters letters = Letters::utf8);
