#include "frac/file_descriptor.h"

#include <unistd.h>

#include <array>

FileError FileDescriptor::open(const std::string& path, int flags, mode_t mode) {
    close();
    const int all = flags | O_CLOEXEC | O_NOCTTY;
    descriptor = uninterrupted([&] { return ::open(path.c_str(), all, mode); });
    return isOpen() ? 0 : errno;
}

// An interrupted close has closed: doing it again could close another thread's file.
FileError FileDescriptor::close() {
    const int closing = descriptor;
    descriptor = -1;
    if (closing < 0 || ::close(closing) == 0 || errno == EINTR) return 0;
    return errno;
}

FileError writeAll(int file, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count =
            uninterrupted([&] { return write(file, bytes.data(), bytes.size()); });
        if (count < 0) return errno;
        if (count == 0) return EIO;
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return 0;
}

FileError writeAllAt(int file, std::string_view bytes, off_t offset) {
    return lseek(file, offset, SEEK_SET) == offset ? writeAll(file, bytes) : errno;
}

FileError copyAll(int from, int to) {
    std::array<char, 1 << 16> part;
    if (lseek(from, 0, SEEK_SET) != 0 || lseek(to, 0, SEEK_SET) != 0) return errno;
    while (true) {
        const ssize_t count = uninterrupted([&] { return read(from, part.data(), part.size()); });
        if (count <= 0) return count == 0 ? 0 : errno;
        const FileError error = writeAll(to, {part.data(), static_cast<std::size_t>(count)});
        if (error != 0) return error;
    }
}

FileError truncateTo(int file, off_t size) {
    return errorOf(uninterrupted([&] { return ftruncate(file, size); }));
}

FileError syncFile(int file) {
    const FileError error = errorOf(uninterrupted([&] { return fsync(file); }));
    return error == EINVAL || error == ENOTSUP ? 0 : error;
}

// Every close flushes, also that of a second descriptor of the same open file; the first keeps the
// lock on it.
FileError flushAsClosing(int file) {
    const int twin = fcntl(file, F_DUPFD_CLOEXEC, 0);
    if (twin < 0) return errno;
    return close(twin) == 0 || errno == EINTR ? 0 : errno;
}
