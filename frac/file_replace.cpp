#include "frac/file_replace.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>

namespace {

constexpr mode_t NEW_FILE_MODE = 0666;      // less the umask
constexpr mode_t PRIVATE_FILE_MODE = 0600;  // until the mode of the old file is put on

// A file-size limit shall make the write fail, not end the process.
class IgnoreFileSizeSignal {
  public:
    IgnoreFileSizeSignal() {
        struct sigaction ignore = {};
        ignore.sa_handler = SIG_IGN;
        sigaction(SIGXFSZ, &ignore, &previous);
    }
    ~IgnoreFileSizeSignal() { sigaction(SIGXFSZ, &previous, nullptr); }
    IgnoreFileSizeSignal(const IgnoreFileSizeSignal&) = delete;
    IgnoreFileSizeSignal& operator=(const IgnoreFileSizeSignal&) = delete;

  private:
    struct sigaction previous = {};
};

// An open file for writing, closed when it goes.
class OutputFile {
  public:
    OutputFile(const std::string& path, int flags, mode_t mode = NEW_FILE_MODE)
        : descriptor(open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY | flags, mode)) {}
    ~OutputFile() { finish(); }
    OutputFile(const OutputFile&) = delete;
    OutputFile& operator=(const OutputFile&) = delete;

    bool isOpen() const { return descriptor >= 0; }
    int get() const { return descriptor; }

    // Whether closing, which on some file systems is what writes, went well.
    bool finish() {
        const int closing = descriptor;
        descriptor = -1;
        return closing < 0 || close(closing) == 0;
    }

  private:
    int descriptor;
};

bool writeAll(int file, std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t count = write(file, bytes.data(), bytes.size());
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0) return false;
        bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
}

bool writeAllAt(int file, std::string_view bytes, off_t offset) {
    return lseek(file, offset, SEEK_SET) == offset && writeAll(file, bytes);
}

// Some file systems cannot sync; there is then nothing to wait for.
bool sync(int file) {
    return fsync(file) == 0 || errno == EINVAL || errno == ENOTSUP;
}

// Where path leads, through links whose last target need not exist.
std::filesystem::path followLinks(std::filesystem::path path) {
    constexpr int MOST_LINKS = 40;
    std::error_code error;
    for (int i = 0; i < MOST_LINKS; ++i) {
        const std::filesystem::path target = std::filesystem::read_symlink(path, error);
        if (error) break;
        path = path.parent_path() / target;
    }
    return path;
}

// Writes over the file itself. What it has to grow by goes first: that is what a full disk refuses.
bool overwrite(int file, off_t oldSize, std::string_view bytes) {
    const auto newSize = static_cast<off_t>(bytes.size());
    const auto kept = static_cast<std::size_t>(std::min(oldSize, newSize));
    if (!writeAllAt(file, bytes.substr(kept), static_cast<off_t>(kept))) {
        [[maybe_unused]] const int undone = ftruncate(file, oldSize);
        return false;
    }
    return writeAllAt(file, bytes.substr(0, kept), 0) && ftruncate(file, newSize) == 0 &&
           sync(file);
}

bool writeInPlace(const std::string& path, std::string_view bytes) {
    OutputFile file(path, O_CREAT);
    struct stat status = {};
    if (!file.isOpen() || fstat(file.get(), &status) != 0) return false;
    const bool written = S_ISREG(status.st_mode) ? overwrite(file.get(), status.st_size, bytes)
                                                 : writeAll(file.get(), bytes);
    return file.finish() && written;
}

// What became of writing beside the old file.
enum class Outcome { done, failed, notAllowed };

Outcome outcomeOfErrno() {
    const bool refused = errno == EACCES || errno == EPERM || errno == EROFS || errno == EBUSY;
    return refused ? Outcome::notAllowed : Outcome::failed;
}

std::filesystem::path temporaryName(const std::filesystem::path& target, int attempt) {
    return target.parent_path() /
           (".tessary-" + std::to_string(getpid()) + "-" + std::to_string(attempt) + ".tmp");
}

// Owner first: changing it may take mode bits away. A group that cannot be kept is no reason to
// lose a picture collection.
bool takeOver(int file, const struct stat& old) {
    if (fchown(file, old.st_uid, old.st_gid) != 0 &&
        fchown(file, static_cast<uid_t>(-1), old.st_gid) != 0) {
        return fchmod(file, old.st_mode & 0777) == 0;
    }
    return fchmod(file, old.st_mode & 07777) == 0;
}

void syncFolder(const std::filesystem::path& folder) {
    const int file = open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_CLOEXEC);
    if (file < 0) return;
    fsync(file);
    close(file);
}

// Writes the new file whole; `old` is null when there is none to take the place of.
Outcome fill(OutputFile& file, const struct stat* old, std::string_view bytes) {
    if (old != nullptr && !takeOver(file.get(), *old)) return Outcome::notAllowed;
    const bool complete = writeAll(file.get(), bytes) && sync(file.get());
    return file.finish() && complete ? Outcome::done : Outcome::failed;
}

// Puts the new file in its place; what cannot be put there is removed.
Outcome install(const std::filesystem::path& temporary, const std::filesystem::path& target,
                Outcome outcome) {
    if (outcome == Outcome::done && rename(temporary.c_str(), target.c_str()) != 0) {
        outcome = outcomeOfErrno();
    }
    if (outcome == Outcome::done) {
        syncFolder(target.parent_path());
    } else {
        unlink(temporary.c_str());
    }
    return outcome;
}

Outcome writeBeside(const std::filesystem::path& target, const struct stat* old,
                    std::string_view bytes) {
    constexpr int MOST_ATTEMPTS = 100;
    for (int attempt = 0; attempt < MOST_ATTEMPTS; ++attempt) {
        const std::filesystem::path temporary = temporaryName(target, attempt);
        OutputFile file(temporary, O_CREAT | O_EXCL, old ? PRIVATE_FILE_MODE : NEW_FILE_MODE);
        if (file.isOpen()) return install(temporary, target, fill(file, old, bytes));
        if (errno != EEXIST) return outcomeOfErrno();
    }
    return Outcome::failed;
}

}  // namespace

bool replaceFile(const std::string& path, std::string_view bytes) {
    const IgnoreFileSizeSignal ignore;
    struct stat status = {};
    const bool exists = stat(path.c_str(), &status) == 0;
    if (!exists && errno != ENOENT) return false;
    if (exists && !S_ISREG(status.st_mode)) return writeInPlace(path, bytes);
    // Renaming over a file asks nobody whether that file may be written.
    if (exists && !OutputFile(path, 0).isOpen()) return false;
    const Outcome outcome = writeBeside(followLinks(path), exists ? &status : nullptr, bytes);
    if (outcome == Outcome::notAllowed) return writeInPlace(path, bytes);
    return outcome == Outcome::done;
}
