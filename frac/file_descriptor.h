// Open files, with what went wrong as a value and interrupted calls made again.
#pragma once

#include <fcntl.h>
#include <sys/types.h>

#include <cerrno>
#include <string>
#include <string_view>

// 0, or the errno of the call that failed.
using FileError = int;

// What a call that answers 0 or -1 came to.
inline FileError errorOf(int answer) {
    return answer == 0 ? 0 : errno;
}

// The answer of a call, made again for as long as signals interrupt it.
template <typename Call>
auto uninterrupted(Call call) {
    auto answer = call();
    while (answer == -1 && errno == EINTR) answer = call();
    return answer;
}

// An open file, closed when it goes and at every exec. One thread at a time.
class FileDescriptor {
  public:
    FileDescriptor() = default;
    explicit FileDescriptor(int open) : descriptor(open) {}  // or -1 for none
    ~FileDescriptor() { close(); }
    FileDescriptor(const FileDescriptor&) = delete;
    FileDescriptor& operator=(const FileDescriptor&) = delete;

    // Closes what was open before. `flags` and `mode` are those of open(2).
    FileError open(const std::string& path, int flags, mode_t mode = 0);
    // Closing is what writes on some file systems, so it may fail. The file is closed all the same.
    FileError close();

    bool isOpen() const { return descriptor >= 0; }
    int get() const { return descriptor; }

  private:
    int descriptor = -1;
};

// Writes where the file stands.
FileError writeAll(int file, std::string_view bytes);
FileError writeAllAt(int file, std::string_view bytes, off_t offset);

// Writes all of `from` over the beginning of `to`.
FileError copyAll(int from, int to);

FileError truncateTo(int file, off_t size);

// Waits until the file is on its disk; 0 also where the file system knows no such thing.
FileError syncFile(int file);

// Has the file system write what it would write at close, and stays open.
FileError flushAsClosing(int file);
