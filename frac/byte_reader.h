// Reading a file that nobody vouches for, from its first byte to its last.
#pragma once

#include <sys/types.h>

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

// A file read once, front to back. Directories do not open. A regular file ends where it ended when
// it was opened, even if it grows meanwhile; anything else (a pipe, a device) ends by itself or at
// LONGEST_STREAM. A read error ends it too. One thread.
class ByteReader {
  public:
    // Bytes after which a source without a size of its own counts as ended: some devices never end.
    static constexpr std::uint64_t LONGEST_STREAM = std::uint64_t{1} << 27;

    // What keeps it from opening is in errno.
    explicit ByteReader(const std::string& path);
    ~ByteReader();

    // A reader of what is left of standard input, which stays open.
    static ByteReader ofStandardInput();

    // A reader of `bytes`, which outlive it: always open, it never fails.
    static ByteReader ofBytes(std::string_view bytes) { return {bytes, InMemory()}; }

    ByteReader(const ByteReader&) = delete;
    ByteReader& operator=(const ByteReader&) = delete;

    bool isOpen() const { return file >= 0 || memory.data() != nullptr; }

    // Whether a read error, rather than the end, ended it.
    bool failed() const { return readFailed; }

    // Fills value with its bytes in host order; if fewer are left, uses them up, leaves value as it
    // is and returns false.
    template <class T>
    bool take(T& value) {
        T complete;
        if (takeBytes(&complete, sizeof complete) < sizeof complete) return false;
        value = complete;
        return true;
    }

    // The next `length` bytes, or as many as are left.
    std::string takeText(std::size_t length);

  private:
    struct InMemory {};
    explicit ByteReader(int descriptor);
    ByteReader(std::string_view bytes, InMemory);
    std::size_t takeBytes(void* target, std::size_t length);
    ssize_t readMore(std::size_t length);
    bool refill();

    int file = -1;
    std::string_view memory;  // what is read where there is no file
    bool readFailed = false;
    std::uint64_t unread = 0;  // bytes that may still be read from the file
    std::size_t position = 0, filled = 0;
    std::array<char, 65536> block;
};
