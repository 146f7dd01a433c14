// Writing a file without ever losing the one that was there.
#pragma once

#include <string>
#include <string_view>

// Makes `bytes` the content of the file at path; false when it could not be written.
//
// A regular file, or one that does not exist yet, is written beside its place, synced and renamed
// into it, with the mode and, where allowed, the owner of the old one; a symbolic link stays and
// its target is replaced. Where that is not possible (another kind of file, a directory one may not
// write to, a mount point) the file itself is written; what it has to grow by is written first, so
// that a full disk still leaves the old bytes. Any thread, but signals are ignored process-wide
// meanwhile: SIGXFSZ.
bool replaceFile(const std::string& path, std::string_view bytes);
