// Files and folders that a test makes and that are gone after it.
#pragma once

#include <sys/resource.h>

#include <string>
#include <vector>

namespace test_support {

// A temporary folder, removed with all that is in it.
class TemporaryFolder {
  public:
    TemporaryFolder();
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    std::string operator/(const std::string& name) const { return path + "/" + name; }
    std::vector<std::string> names() const;

    std::string path;
};

std::string readFile(const std::string& path);
void writeFile(const std::string& path, const std::string& bytes);

// Gives the process a largest file size while it lives.
class FileSizeLimit {
  public:
    explicit FileSizeLimit(rlim_t bytes) {
        getrlimit(RLIMIT_FSIZE, &previous);
        const struct rlimit limit = {bytes, previous.rlim_max};
        setrlimit(RLIMIT_FSIZE, &limit);
    }
    ~FileSizeLimit() { setrlimit(RLIMIT_FSIZE, &previous); }
    FileSizeLimit(const FileSizeLimit&) = delete;
    FileSizeLimit& operator=(const FileSizeLimit&) = delete;

  private:
    struct rlimit previous = {};
};

}  // namespace test_support
