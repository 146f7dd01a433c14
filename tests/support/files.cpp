#include "tests/support/files.h"

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace test_support {

TemporaryFolder::TemporaryFolder() {
    std::string pattern = (std::filesystem::temp_directory_path() / "tessary-test-XXXXXX").string();
    path = mkdtemp(pattern.data());
}

TemporaryFolder::~TemporaryFolder() {
    std::error_code error;
    std::filesystem::remove_all(path, error);
}

std::vector<std::string> TemporaryFolder::names() const {
    std::vector<std::string> found;
    for (const auto& entry : std::filesystem::directory_iterator(path)) {
        found.push_back(entry.path().filename().string());
    }
    return found;
}

std::string readFile(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

void writeFile(const std::string& path, const std::string& bytes) {
    std::ofstream(path, std::ios::binary) << bytes;
}

}  // namespace test_support
