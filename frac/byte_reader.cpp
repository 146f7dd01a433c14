#include "frac/byte_reader.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace {

ssize_t readSome(int file, char* target, std::size_t length) {
    ssize_t count = 0;
    do {
        count = read(file, target, length);
    } while (count < 0 && errno == EINTR);
    return count;
}

}  // namespace

ByteReader::ByteReader(const std::string& path)
    : ByteReader(open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY)) {}

ByteReader ByteReader::ofStandardInput() {
    return ByteReader(fcntl(STDIN_FILENO, F_DUPFD_CLOEXEC, 0));
}

ByteReader::ByteReader(int descriptor) : file(descriptor) {
    struct stat status = {};
    if (file < 0) return;
    if (fstat(file, &status) != 0 || S_ISDIR(status.st_mode)) {
        close(file);
        file = -1;
        errno = EISDIR;
        return;
    }
    // A size of nothing is also what the kernel's own files claim to have.
    const bool hasSize = S_ISREG(status.st_mode) && status.st_size > 0;
    unread = hasSize ? static_cast<std::uint64_t>(status.st_size) : LONGEST_STREAM;
}

ByteReader::ByteReader(std::string_view bytes, InMemory)
    : memory(bytes.empty() ? std::string_view("") : bytes), unread(bytes.size()) {}

ByteReader::~ByteReader() {
    if (file >= 0) close(file);
}

ssize_t ByteReader::readMore(std::size_t length) {
    if (file >= 0) return readSome(file, block.data(), length);
    memory.copy(block.data(), length);
    memory.remove_prefix(length);
    return static_cast<ssize_t>(length);
}

bool ByteReader::refill() {
    const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(unread, block.size()));
    if (wanted == 0) return false;
    const ssize_t count = readMore(wanted);
    if (count < 0) readFailed = true;
    position = 0;
    filled = count > 0 ? static_cast<std::size_t>(count) : 0;
    unread = count > 0 ? unread - filled : 0;
    return filled > 0;
}

std::size_t ByteReader::takeBytes(void* target, std::size_t length) {
    std::size_t taken = 0;
    while (taken < length && (position < filled || refill())) {
        const std::size_t count = std::min(length - taken, filled - position);
        std::memcpy(static_cast<char*>(target) + taken, block.data() + position, count);
        position += count;
        taken += count;
    }
    return taken;
}

// Grows with what is there, whatever the length claims.
std::string ByteReader::takeText(std::size_t length) {
    std::string text;
    while (text.size() < length && (position < filled || refill())) {
        const std::size_t count = std::min(length - text.size(), filled - position);
        text.append(block.data() + position, count);
        position += count;
    }
    return text;
}
