// An input taken apart from its beginning; behind its end all is nought.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>

class InputBytes {
  public:
    InputBytes(const std::uint8_t* data, std::size_t size) : next(data), end(data + size) {}

    bool isEmpty() const { return next == end; }
    int byte() { return isEmpty() ? 0 : *next++; }

    // 0 to limit - 1, of one byte; 0 for a limit of less than two.
    int below(int limit) { return byte() % std::max(limit, 1); }
    bool oneIn(int chances) { return below(chances) == 0; }

    // -32768 to 32767.
    int number() {
        const int high = byte();
        return static_cast<std::int16_t>(high << 8 | byte());
    }

    // At most `longest` bytes, as many as a byte says and are there.
    std::string text(std::size_t longest) {
        const auto wanted = std::min(static_cast<std::size_t>(byte()), longest);
        std::string bytes;
        while (bytes.size() < wanted && !isEmpty()) bytes.push_back(static_cast<char>(byte()));
        return bytes;
    }

  private:
    const std::uint8_t* next;
    const std::uint8_t* end;
};
