#include "render/output_file.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <random>

#include "render/failure.h"

namespace render {
namespace {

constexpr mode_t NEW_FILE_MODE = 0666;  // less the umask

struct CloseFolder {
    void operator()(DIR* folder) const { closedir(folder); }
};

std::string inFolder(const std::string& folder, std::string_view file) {
    return folder.empty() ? std::string(file) : folder + "/" + std::string(file);
}

std::string folderPath(const std::string& folder) {
    return folder.empty() ? "." : folder;
}

// A name in the folder of `path` that is most likely free.
std::string unfinishedName(const std::string& path) {
    constexpr std::string_view LETTERS = "abcdefghijklmnopqrstuvwxyz0123456789";
    std::random_device random;
    std::string name(UNFINISHED_PREFIX);
    for (int i = 0; i < 12; ++i) name += LETTERS[random() % LETTERS.size()];
    return inFolder(folderOf(path), name + ".tmp");
}

// Where a path leads when it is a link to something that exists; itself otherwise.
std::string resolved(const std::string& path) {
    struct stat status = {};
    if (lstat(path.c_str(), &status) != 0 || !S_ISLNK(status.st_mode)) return path;
    const std::unique_ptr<char, decltype(&std::free)> real(realpath(path.c_str(), nullptr),
                                                           &std::free);
    return real ? real.get() : path;
}

// Takes the lock that tells others the file is in work. Where files cannot be locked, nobody takes
// it for a leftover either.
void lockWhileInWork(int file) {
    [[maybe_unused]] const int locked = flock(file, LOCK_EX | LOCK_NB);
}

std::string descriptorPath(int file) {
    return "/proc/self/fd/" + std::to_string(file);
}

bool isUnfinishedName(std::string_view name) {
    return name.starts_with(UNFINISHED_PREFIX) && name.ends_with(".tmp");
}

void removeUnlessInWork(const std::string& path) {
    const int file = open(path.c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK);
    if (file < 0) return;
    struct stat status = {};
    if (fstat(file, &status) == 0 && S_ISREG(status.st_mode) &&
        flock(file, LOCK_EX | LOCK_NB) == 0) {
        unlink(path.c_str());
    }
    close(file);
}

}  // namespace

std::string folderOf(const std::string& path) {
    const std::size_t slash = path.rfind('/');
    if (slash == std::string::npos) return {};
    return slash == 0 ? "/" : path.substr(0, slash);
}

void removeLeftovers(const std::string& folder) {
    const std::unique_ptr<DIR, CloseFolder> entries(opendir(folderPath(folder).c_str()));
    if (!entries) return;
    while (const dirent* entry = readdir(entries.get())) {
        if (isUnfinishedName(entry->d_name)) removeUnlessInWork(inFolder(folder, entry->d_name));
    }
}

OutputFile::OutputFile(const std::string& path) : name(path) {
    if (path == "-") {
        name = "standard output";
        file = STDOUT_FILENO;
#ifdef F_SETPIPE_SZ
        // A pipe holds 64 KiB, and whoever reads a film would be waited for a hundred times a
        // frame. What is no pipe, or may not be larger, stays as it is.
        constexpr int LARGEST_FOR_EVERYBODY = 1 << 20;
        fcntl(file, F_SETPIPE_SZ, LARGEST_FOR_EVERYBODY);
#endif
        return;
    }
    struct stat status = {};
    const bool exists = stat(path.c_str(), &status) == 0;
    if (exists && S_ISDIR(status.st_mode)) fail("cannot be written", EISDIR);
    owned = true;
    if (exists && !S_ISREG(status.st_mode)) {
        file = open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY);
        if (file < 0) fail("cannot be written", errno);
        return;
    }
    // Renaming over a file asks nobody whether that file may be written.
    if (exists && access(path.c_str(), W_OK) != 0) fail("cannot be written", errno);
    target = resolved(path);
    openBeside();
    // Where that is not allowed the file gets those of a new one.
    if (exists && fchmod(file, status.st_mode & 07777) != 0) errno = 0;
}

OutputFile::~OutputFile() {
    if (!temporary.empty()) unlink(temporary.c_str());
    if (owned && file >= 0) close(file);
}

void OutputFile::fail(const char* deed, int error) const {
    throw Failure(name + ": " + deed + ": " + std::strerror(error));
}

void OutputFile::openBeside() {
    if (openNameless()) {
        lockWhileInWork(file);
    } else {
        openNamed();
    }
}

bool OutputFile::openNameless() {
    file =
        open(folderPath(folderOf(target)).c_str(), O_TMPFILE | O_WRONLY | O_CLOEXEC, NEW_FILE_MODE);
    if (file < 0) return false;
    // The only way to a name later on.
    if (access(descriptorPath(file).c_str(), F_OK) == 0) return true;
    close(file);
    file = -1;
    return false;
}

// Between its creation and its lock the file may look like a leftover to others.
void OutputFile::openNamed() {
    for (;;) {
        temporary = unfinishedName(target);
        file = open(temporary.c_str(), O_CREAT | O_EXCL | O_WRONLY | O_CLOEXEC, NEW_FILE_MODE);
        if (file < 0 && errno == EEXIST) continue;
        if (file < 0) break;
        lockWhileInWork(file);
        struct stat status = {};
        if (fstat(file, &status) == 0 && status.st_nlink > 0) return;
        close(file);
    }
    temporary.clear();
    fail("cannot be written", errno);
}

void OutputFile::write(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t written = ::write(file, bytes.data(), bytes.size());
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) fail("cannot be written", errno);
        bytes.remove_prefix(static_cast<std::size_t>(written));
    }
}

// A file without a name cannot take the place of another one, so it gets a name of its own first.
void OutputFile::giveName() {
    const std::string self = descriptorPath(file);
    for (;;) {
        const std::string free = unfinishedName(target);
        if (linkat(AT_FDCWD, self.c_str(), AT_FDCWD, free.c_str(), AT_SYMLINK_FOLLOW) == 0) {
            temporary = free;
            return;
        }
        if (errno != EEXIST) fail("cannot be given its name", errno);
    }
}

void OutputFile::publish() {
    if (!target.empty()) {
        if (temporary.empty()) giveName();
        if (rename(temporary.c_str(), target.c_str()) != 0) {
            fail("cannot be given its name", errno);
        }
        temporary.clear();
    }
    if (!owned) return;
    owned = false;
    if (close(file) != 0) fail("cannot be written", errno);
}

}  // namespace render
