// Where the tokens of a JSON text stand. The parser of the library reports what it reads, not
// where; walked beside it, this tells the place of each token that it has accepted.
#pragma once

#include <cstddef>
#include <string_view>

// The tokens of a text one after another, without commas, colons and blanks. The text outlives it.
class TokenWalk {
  public:
    explicit TokenWalk(std::string_view ofText);

    // Goes on to the next token, which the parser has found to be whole.
    void next();

    // The token last walked to: its offset in the text, and the offset just past it.
    std::size_t begin() const { return first; }
    std::size_t end() const { return past; }
    std::string_view token() const { return text.substr(first, past - first); }

    // The offset of what comes after it, blanks and separators aside.
    std::size_t ahead() const;

  private:
    std::string_view text;
    std::size_t first = 0, past = 0;
};

// A place in a text, both from 1; columns count UTF-8 characters.
struct TextPlace {
    std::size_t line, column;
};

// The place of the byte at offset, which may be the end of the text.
TextPlace placeOf(std::string_view text, std::size_t offset);
