// A file on disk with the name that a reader goes by, and the input's bytes.
#pragma once

#include <string>
#include <string_view>

#include "tests/support/files.h"

class ScratchFile {
  public:
    explicit ScratchFile(const std::string& name) : path(folder / name) {}

    void write(std::string_view bytes) const { test_support::writeFile(path, std::string(bytes)); }

  private:
    test_support::TemporaryFolder folder;  // made before its path is asked for

  public:
    const std::string path;
};
