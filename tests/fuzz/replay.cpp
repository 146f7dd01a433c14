// Plays the files of a folder to a target, in the order of their names, and no input at all: what a
// fuzzer once found, and what it began with, must go well in every build.
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <vector>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* bytes, std::size_t size);

namespace {

namespace fs = std::filesystem;

std::vector<fs::path> filesIn(const fs::path& folder) {
    std::vector<fs::path> found;
    for (const auto& entry : fs::directory_iterator(folder)) found.push_back(entry.path());
    std::sort(found.begin(), found.end());
    return found;
}

std::vector<std::uint8_t> contentOf(const fs::path& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

// From a copy of just that size on the heap, so that a sanitizer sees who reads beyond it.
void play(std::vector<std::uint8_t> bytes) {
    bytes.shrink_to_fit();
    LLVMFuzzerTestOneInput(bytes.data(), bytes.size());
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 2) {
        std::fprintf(stderr, "usage: %s FOLDER\n", argv[0]);
        return 2;
    }
    const std::vector<fs::path> files = filesIn(argv[1]);
    if (files.empty()) {
        std::fprintf(stderr, "%s: no inputs\n", argv[1]);
        return 1;
    }
    // Many targets print, as the programs do.
    dup2(open("/dev/null", O_WRONLY | O_CLOEXEC), STDOUT_FILENO);
    play({});
    for (const fs::path& path : files) {
        std::fprintf(stderr, "%s\n", path.c_str());
        play(contentOf(path));
    }
    return 0;
}
