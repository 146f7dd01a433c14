#include "frac/frac_extension.h"

#include <algorithm>

namespace {

// Every letter outside ASCII stays as it is, whatever the locale: the path may be UTF-8.
char asciiLower(char c) {
    return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

}  // namespace

void applyFracExtension(std::string& path) {
    const std::string extension = ".frac";
    std::string lower = path;
    std::transform(lower.begin(), lower.end(), lower.begin(), asciiLower);
    const std::size_t first = lower.find(extension);
    if (first == std::string::npos || first + extension.size() != path.size()) path += extension;
}
