// An input as the arguments of a command line.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

// The lines of the input behind the program's name; none holds a NUL.
class Arguments {
  public:
    Arguments(const std::string& program, const std::uint8_t* data, std::size_t size)
        : texts{program} {
        for (std::size_t i = 0; i < size; ++i) {
            if (i == 0 || data[i - 1] == '\n') texts.emplace_back();
            if (data[i] != '\n' && data[i] != 0) texts.back().push_back(static_cast<char>(data[i]));
        }
        for (std::string& text : texts) pointers.push_back(text.data());
        pointers.push_back(nullptr);
    }
    Arguments(const Arguments&) = delete;
    Arguments& operator=(const Arguments&) = delete;

    int count() const { return static_cast<int>(texts.size()); }
    char** values() { return pointers.data(); }

  private:
    std::vector<std::string> texts;
    std::vector<char*> pointers;
};
