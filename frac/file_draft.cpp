#include "frac/file_draft.h"

#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

namespace {

constexpr int MOST_NAMES = 100;

bool lock(int file) {
    return flock(file, LOCK_EX | LOCK_NB) == 0;
}

bool isNumbering(std::string_view text) {
    return !text.empty() && text.find_first_not_of("0123456789-") == std::string_view::npos;
}

bool isDraftName(const std::string& name, const DraftNames& names) {
    const std::size_t around = names.start.size() + names.end.size();
    return name.size() > around && name.starts_with(names.start) && name.ends_with(names.end) &&
           isNumbering(std::string_view(name).substr(names.start.size(), name.size() - around));
}

bool hasName(int file) {
    struct stat status = {};
    return fstat(file, &status) == 0 && S_ISREG(status.st_mode) && status.st_nlink > 0;
}

// Whoever makes a draft of this name waits for no lock: it sees that this one is taken.
void removeIfDead(const std::filesystem::path& path) {
    FileDescriptor file;
    if (file.open(path, O_WRONLY | O_NONBLOCK | O_NOFOLLOW) != 0) return;
    if (lock(file.get()) && hasName(file.get())) unlink(path.c_str());
}

FileError fillToDisk(int file, const FileDraft::Fill& fill) {
    FileError error = fill(file);
    if (error == 0) error = syncFile(file);
    return error == 0 ? flushAsClosing(file) : error;
}

}  // namespace

std::filesystem::path folderOf(const std::filesystem::path& path) {
    const std::filesystem::path folder = path.parent_path();
    return folder.empty() ? "." : folder;
}

FileError syncFolder(const std::filesystem::path& folder) {
    FileDescriptor file;
    const FileError error = file.open(folder, O_RDONLY | O_DIRECTORY);
    if (error != 0) return error == EACCES ? 0 : error;
    return syncFile(file.get());
}

std::filesystem::path DraftNames::at(int number) const {
    return folder / (start + std::to_string(number) + end);
}

void removeDeadDrafts(const DraftNames& names) {
    std::error_code error;
    std::filesystem::directory_iterator entry(names.folder, error);
    for (; !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
        const std::filesystem::path& path = entry->path();
        if (isDraftName(path.filename().string(), names)) removeIfDead(path);
    }
}

FileError FileDraft::make(const DraftNames& names, mode_t mode, const Fill& fill) {
    remove();
    const std::optional<FileError> result = makeUnnamed(names, mode, fill);
    return result ? *result : makeNamed(names, mode, fill);
}

void FileDraft::remove() {
    if (isMade()) unlink(name.c_str());
    letGo();
    file.close();
}

// A process that is killed leaves nothing that has no name. Whatever is in the way of it, the named
// way finds out.
std::optional<FileError> FileDraft::makeUnnamed(const DraftNames& names, mode_t mode,
                                                const Fill& fill) {
    if (file.open(names.folder, O_TMPFILE | O_RDWR, mode) != 0) return std::nullopt;
    lock(file.get());
    const FileError error = fillToDisk(file.get(), fill);
    if (error != 0) return error;
    if (link(names) != 0) return std::nullopt;
    return 0;
}

FileError FileDraft::link(const DraftNames& names) {
    const std::string unnamed = "/proc/self/fd/" + std::to_string(file.get());
    FileError error = EEXIST;
    for (int number = 0; error == EEXIST && number < MOST_NAMES; ++number) {
        const std::filesystem::path path = names.at(number);
        error =
            errorOf(linkat(AT_FDCWD, unnamed.c_str(), AT_FDCWD, path.c_str(), AT_SYMLINK_FOLLOW));
        if (error == 0) name = path;
    }
    return error;
}

FileError FileDraft::makeNamed(const DraftNames& names, mode_t mode, const Fill& fill) {
    FileError error = EEXIST;
    for (int number = 0; error == EEXIST && number < MOST_NAMES; ++number) {
        const std::filesystem::path path = names.at(number);
        error = file.open(path, O_CREAT | O_EXCL | O_RDWR, mode);
        if (error == 0 && !takeName(path)) error = EEXIST;
    }
    if (error == 0) error = fillToDisk(file.get(), fill);
    if (error != 0) remove();
    return error;
}

// Between opening and locking another process may have taken the file for a dead one.
bool FileDraft::takeName(const std::filesystem::path& taken) {
    if ((!lock(file.get()) && errno == EWOULDBLOCK) || !hasName(file.get())) return false;
    name = taken;
    return true;
}
