// A file that lives in memory only, for readers that want a path.
#pragma once

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <string>

#include "tests/fuzz/require.h"

class MemoryFile {
  public:
    MemoryFile(const void* bytes, std::size_t size) : descriptor(memfd_create("fuzz", 0)) {
        require(write(descriptor, bytes, size) == static_cast<ssize_t>(size), "memory for a file");
    }
    ~MemoryFile() { close(descriptor); }
    MemoryFile(const MemoryFile&) = delete;
    MemoryFile& operator=(const MemoryFile&) = delete;

    std::string path() const { return "/proc/self/fd/" + std::to_string(descriptor); }

  private:
    int descriptor;
};
