// Files that are written whole before anything counts on them, and the cleaning up after writers
// that were killed.
//
// A draft has no name while it is written, where the file system can do that, and holds a lock for
// as long as it is open. A file with the name of a draft and without that lock was left by a
// process that is gone, whatever process has its number now.
#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

#include "frac/file_descriptor.h"

// The folder of a path as one can open it: "." for a path that names none.
std::filesystem::path folderOf(const std::filesystem::path& path);

// Waits until the names in a folder are on its disk; 0 also where the folder may not be read.
FileError syncFolder(const std::filesystem::path& folder);

// Names in one folder that differ in a number: `start`, the number, `end`.
struct DraftNames {
    std::filesystem::path folder;
    std::string start, end;

    std::filesystem::path at(int number) const;
};

// Removes the drafts in names.folder that nobody is at work on: the files called `start`, then
// digits and hyphens, then `end`. What cannot be removed stays. Any thread.
void removeDeadDrafts(const DraftNames& names);

// A new file, removed when it goes unless it is let go. One thread at a time.
class FileDraft {
  public:
    // Writes to the descriptor it is given.
    using Fill = std::function<FileError(int file)>;

    FileDraft() = default;
    ~FileDraft() { remove(); }
    FileDraft(const FileDraft&) = delete;
    FileDraft& operator=(const FileDraft&) = delete;

    // Makes a file with this mode, less the umask, under the first of the names that is free:
    // filled, on disk, open for reading and writing. When it fails no file is left. `fill` may run
    // a second time, on a fresh file.
    FileError make(const DraftNames& names, mode_t mode, const Fill& fill);

    void remove();

    // From here on the file is not a draft: it stays. Its lock lasts until the draft goes.
    void letGo() { name.clear(); }

    bool isMade() const { return !name.empty(); }
    const std::filesystem::path& path() const { return name; }
    int get() const { return file.get(); }

  private:
    // None where the system cannot do it that way.
    std::optional<FileError> makeUnnamed(const DraftNames& names, mode_t mode, const Fill& fill);
    FileError makeNamed(const DraftNames& names, mode_t mode, const Fill& fill);
    FileError link(const DraftNames& names);
    bool takeName(const std::filesystem::path& taken);

    FileDescriptor file;
    std::filesystem::path name;  // empty while there is none
};
