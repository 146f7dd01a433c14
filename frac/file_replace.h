// Writing a file without ever losing the one that was there.
#pragma once

#include <string>
#include <string_view>

// What became of a replacement; true when it was done.
struct Replacement {
    bool done = false;
    std::string error;  // why not, in the system's words; empty when done
    std::string
        safeCopy;  // where the old content is whole when the file itself no longer is, else empty

    explicit operator bool() const { return done; }
};

// Makes `bytes` the content of the file at path.
//
// A regular file, or one that does not exist yet, is written beside its place, synced and renamed
// into it, with owner, mode, access list and extended attributes of the old one; a symbolic link
// stays and its target is replaced. What a killed process has left of that is removed by the next
// replacement in the same folder.
//
// Where that is not possible the file itself is written: a folder one may not write to, a mount
// point, a second hard link, an owner or attributes that cannot be given, a full disk. The old
// content then lies in a copy ("tessary-kept-...", readable by its owner alone) beside the file, in
// $XDG_RUNTIME_DIR, or in $TMPDIR (without one in /tmp), whichever first takes it. When the write
// fails the old content is put back; where that fails, too, the copy stays and is named. A copy
// that a killed process has left stays until the same file is replaced. On a full disk a file is
// not written without such a copy; everywhere else it is, as a last resort.
//
// Other kinds of files are just written. Any thread, but signals are ignored process-wide
// meanwhile: SIGXFSZ.
Replacement replaceFile(const std::string& path, std::string_view bytes);
