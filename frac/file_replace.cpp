#include "frac/file_replace.h"

#include <signal.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <system_error>
#include <vector>

#include "frac/file_attributes.h"
#include "frac/file_descriptor.h"
#include "frac/file_draft.h"

namespace {

namespace fs = std::filesystem;

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

Replacement resultOf(FileError error) {
    if (error == 0) return {true, "", ""};
    return {false, std::generic_category().message(error), ""};
}

// Errors that stand in the way of another file, not of writing to the one that is there.
bool isRefusal(FileError error) {
    constexpr std::array REFUSALS = {EACCES, EPERM, EROFS, EBUSY, EXDEV};
    return std::find(REFUSALS.begin(), REFUSALS.end(), error) != REFUSALS.end();
}

bool isFull(FileError error) {
    return error == ENOSPC || error == EDQUOT;
}

// Where path leads, through links whose last target need not exist.
FileError followLinks(const fs::path& path, fs::path& target) {
    constexpr int MOST_LINKS = 40;
    target = path;
    for (int i = 0; i < MOST_LINKS; ++i) {
        std::error_code error;
        const fs::path next = fs::read_symlink(target, error);
        if (error.value() == EINVAL || error.value() == ENOENT) return 0;
        if (error) return error.value();
        target = target.parent_path() / next;
    }
    return ELOOP;
}

// ---- the names of what is written on the way

DraftNames draftNames(const fs::path& target) {
    return {folderOf(target), ".tessary-" + std::to_string(getpid()) + "-", ".tmp"};
}

// Those of every process.
DraftNames allDraftNames(const fs::path& target) {
    return {folderOf(target), ".tessary-", ".tmp"};
}

// The same for every way to name the file and for every run of the program. The ending stays, so
// that the program's file panels show the copy.
DraftNames copyNames(const fs::path& place, const fs::path& target) {
    constexpr std::size_t LONGEST_ENDING = 16;
    std::error_code error;
    const fs::path known = fs::canonical(target, error);
    std::array<char, 48> start{};
    std::snprintf(start.data(), start.size(), "tessary-kept-%016zx-",
                  std::hash<std::string>{}((error ? target : known).string()));
    const std::string ending = target.extension().string();
    return {place, start.data(), ending.size() > LONGEST_ENDING ? "" : ending};
}

std::vector<fs::path> placesForCopies(const fs::path& target) {
    std::vector<fs::path> places = {folderOf(target)};
    const char* const runtime = std::getenv("XDG_RUNTIME_DIR");
    if (runtime != nullptr && *runtime == '/') places.emplace_back(runtime);
    const char* const temporary = std::getenv("TMPDIR");
    places.emplace_back(temporary != nullptr && *temporary != '\0' ? temporary : "/tmp");
    return places;
}

void removeDeadCopies(const fs::path& target) {
    for (const fs::path& place : placesForCopies(target)) {
        removeDeadDrafts(copyNames(place, target));
    }
}

// ---- writing over the file itself

FileError copyTo(FileDraft& copy, int file, const fs::path& place, const fs::path& target) {
    const auto fill = [&](int to) { return copyAll(file, to); };
    FileError error = copy.make(copyNames(place, target), PRIVATE_FILE_MODE, fill);
    if (error == 0) error = syncFolder(place);
    if (error != 0) copy.remove();
    return error;
}

// On a full disk the room beside the file is what the file itself may need.
FileError putAside(FileDraft& copy, int file, const fs::path& target, bool diskIsFull) {
    std::vector<fs::path> places = placesForCopies(target);
    if (diskIsFull) std::rotate(places.begin(), places.begin() + 1, places.end());
    FileError error = 0;
    for (const fs::path& place : places) {
        error = copyTo(copy, file, place, target);
        if (error == 0) break;
    }
    return error;
}

// What the file has to grow by goes first: that is what a full disk refuses, and it can be undone.
FileError overwrite(int file, off_t oldSize, std::string_view bytes) {
    const auto newSize = static_cast<off_t>(bytes.size());
    const auto kept = static_cast<std::size_t>(std::min(oldSize, newSize));
    FileError error = writeAllAt(file, bytes.substr(kept), static_cast<off_t>(kept));
    if (error == 0) error = writeAllAt(file, bytes.substr(0, kept), 0);
    if (error == 0) error = truncateTo(file, newSize);
    return error == 0 ? syncFile(file) : error;
}

// Without a copy the file is at least no longer than it was.
FileError putBack(int file, off_t oldSize, const FileDraft& copy) {
    FileError error = truncateTo(file, oldSize);
    if (error == 0 && copy.isMade()) error = copyAll(copy.get(), file);
    return error == 0 ? syncFile(file) : error;
}

// Leaves the copy where it is and says where that is.
Replacement resultWith(FileError error, FileDraft& copy) {
    Replacement result = resultOf(error);
    std::error_code unknown;
    const fs::path whole = fs::absolute(copy.path(), unknown);
    if (copy.isMade()) result.safeCopy = (unknown ? copy.path() : whole).string();
    copy.letGo();
    return result;
}

Replacement writeOver(FileDescriptor& file, off_t oldSize, std::string_view bytes,
                      FileDraft& copy) {
    FileError error = overwrite(file.get(), oldSize, bytes);
    if (error != 0) {
        return putBack(file.get(), oldSize, copy) == 0 ? resultOf(error) : resultWith(error, copy);
    }
    error = file.close();
    return error == 0 ? resultOf(0) : resultWith(error, copy);
}

// `reason` is why no other file can take the place of this one.
Replacement writeInPlace(FileDescriptor& file, const fs::path& target, std::string_view bytes,
                         FileError reason) {
    struct stat status = {};
    if (fstat(file.get(), &status) != 0) return resultOf(errno);
    FileDraft copy;
    const FileError unsafe = putAside(copy, file.get(), target, isFull(reason));
    // The limit that stopped the copy would stop the file itself half way.
    if (unsafe != 0 && (isFull(reason) || unsafe == EFBIG)) return resultOf(reason);
    return writeOver(file, status.st_size, bytes, copy);
}

// ---- putting another file in its place

// `old` is that of the file whose place the new one takes, or -1.
FileError writeBeside(FileDraft& draft, const fs::path& target, int old, std::string_view bytes) {
    const auto fill = [&](int file) {
        const FileError error = writeAll(file, bytes);
        if (error != 0 || old < 0) return error;
        const FileError lost = keepAttributes(old, file);
        return lost == 0 || isFull(lost) ? lost : EPERM;
    };
    const FileError error =
        draft.make(draftNames(target), old < 0 ? NEW_FILE_MODE : PRIVATE_FILE_MODE, fill);
    return error == 0 ? errorOf(rename(draft.path().c_str(), target.c_str())) : error;
}

// The draft has become the file: no failure from here on leads to another way of writing it.
Replacement finish(FileDraft& draft, const fs::path& target) {
    draft.letGo();
    const FileError error = syncFolder(folderOf(target));
    if (error == 0) removeDeadCopies(target);
    return resultOf(error);
}

// Whether another file may take the place: no second name would still lead to the old one, and what
// is there is the open file itself.
bool isReplaceable(int file, const fs::path& target) {
    struct stat open = {}, found = {};
    return fstat(file, &open) == 0 && open.st_nlink == 1 && lstat(target.c_str(), &found) == 0 &&
           open.st_dev == found.st_dev && open.st_ino == found.st_ino;
}

// Renaming over a file asks nobody whether that file may be written, hence the open. One that may
// be written but not read can be replaced, but not copied.
FileError openToWrite(FileDescriptor& file, const std::string& path) {
    const FileError error = file.open(path, O_RDWR);
    return error == EACCES ? file.open(path, O_WRONLY) : error;
}

Replacement replaceRegular(const std::string& path, const fs::path& target,
                           std::string_view bytes) {
    FileDescriptor old;
    FileError error = openToWrite(old, path);
    if (error != 0) return resultOf(error);
    error = EPERM;
    if (isReplaceable(old.get(), target)) {
        FileDraft draft;
        error = writeBeside(draft, target, old.get(), bytes);
        if (error == 0) return finish(draft, target);
    }
    if (!isRefusal(error) && !isFull(error)) return resultOf(error);
    Replacement written = writeInPlace(old, target, bytes, error);
    if (written) removeDeadCopies(target);
    return written;
}

// ---- where there is nothing to replace

// Some places take this one name and no other.
Replacement createDirectly(const fs::path& target, std::string_view bytes) {
    FileDescriptor file;
    FileError error = file.open(target, O_CREAT | O_EXCL | O_WRONLY, NEW_FILE_MODE);
    if (error != 0) return resultOf(error);
    error = writeAll(file.get(), bytes);
    if (error == 0) error = syncFile(file.get());
    if (error == 0) error = file.close();
    if (error != 0) unlink(target.c_str());
    return resultOf(error == 0 ? syncFolder(folderOf(target)) : error);
}

Replacement create(const fs::path& target, std::string_view bytes) {
    FileDraft draft;
    const FileError error = writeBeside(draft, target, -1, bytes);
    if (error == 0) return finish(draft, target);
    draft.remove();
    return isRefusal(error) ? createDirectly(target, bytes) : resultOf(error);
}

// A pipe or a device. Opening a pipe waits for its reader, so that a signal must be able to end it.
Replacement writeStream(const std::string& path, std::string_view bytes) {
    FileDescriptor file(open(path.c_str(), O_WRONLY | O_CLOEXEC | O_NOCTTY));
    if (!file.isOpen()) return resultOf(errno);
    const FileError error = writeAll(file.get(), bytes);
    return resultOf(error == 0 ? file.close() : error);
}

}  // namespace

Replacement replaceFile(const std::string& path, std::string_view bytes) {
    const IgnoreFileSizeSignal ignore;
    struct stat status = {};
    const bool exists = stat(path.c_str(), &status) == 0;
    if (path.empty() || (!exists && errno != ENOENT)) return resultOf(errno);
    if (exists && !S_ISREG(status.st_mode)) return writeStream(path, bytes);
    fs::path target;
    const FileError error = followLinks(path, target);
    if (error != 0) return resultOf(error);
    removeDeadDrafts(allDraftNames(target));
    return exists ? replaceRegular(path, target, bytes) : create(target, bytes);
}
