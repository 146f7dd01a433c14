#include "frac/file_attributes.h"

#include <linux/limits.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <optional>
#include <vector>

namespace {

const char* const ACCESS_LIST = "system.posix_acl_access";
constexpr mode_t MODE_BITS = 07777;

// Some file systems know no attributes at all.
bool knowsNone(FileError error) {
    return error == ENOTSUP || error == ENOSYS;
}

bool vouchesForContent(std::string_view name) {
    return name == "security.capability" || name == "security.ima" || name == "security.evm";
}

FileError listAttributes(int file, std::vector<std::string>& names) {
    std::string list(XATTR_LIST_MAX, '\0');
    const ssize_t size = flistxattr(file, list.data(), list.size());
    if (size < 0) return knowsNone(errno) ? 0 : errno;
    const char* const end = list.data() + size;
    for (const char* at = list.data(); at < end; at += names.back().size() + 1) {
        names.emplace_back(at);
    }
    return 0;
}

// None with errno set where it cannot be read.
std::optional<std::string> attribute(int file, const std::string& name) {
    std::string value(XATTR_SIZE_MAX, '\0');
    const ssize_t size = fgetxattr(file, name.c_str(), value.data(), value.size());
    if (size < 0) return std::nullopt;
    value.resize(static_cast<std::size_t>(size));
    return value;
}

// Only what differs is set: a security label that the folder gives by itself may not be settable.
FileError keepAttribute(int from, int to, const std::string& name) {
    const std::optional<std::string> value = attribute(from, name);
    if (!value) return errno;
    if (attribute(to, name) == value) return 0;
    return errorOf(fsetxattr(to, name.c_str(), value->data(), value->size(), 0));
}

// A new file may have got an access list from its folder.
FileError dropAccessList(int file) {
    const FileError error = errorOf(fremovexattr(file, ACCESS_LIST));
    return error == ENODATA || knowsNone(error) ? 0 : error;
}

FileError keepExtended(int from, int to) {
    std::vector<std::string> names;
    FileError error = listAttributes(from, names);
    if (error == 0) error = dropAccessList(to);
    for (const std::string& name : names) {
        if (error == 0 && !vouchesForContent(name)) error = keepAttribute(from, to, name);
    }
    return error;
}

// Owner before mode: changing it takes mode bits away.
FileError keepOwnerAndMode(const struct stat& old, int to) {
    struct stat now = {};
    if (fstat(to, &now) != 0) return errno;
    const bool sameOwner = now.st_uid == old.st_uid && now.st_gid == old.st_gid;
    if (!sameOwner && fchown(to, old.st_uid, old.st_gid) != 0) return errno;
    return errorOf(fchmod(to, old.st_mode & MODE_BITS));
}

// Some file systems take an owner or a mode and forget it.
FileError compare(const struct stat& old, int to) {
    struct stat now = {};
    if (fstat(to, &now) != 0) return errno;
    const bool same = now.st_uid == old.st_uid && now.st_gid == old.st_gid &&
                      (now.st_mode & MODE_BITS) == (old.st_mode & MODE_BITS);
    return same ? 0 : EPERM;
}

}  // namespace

FileError keepAttributes(int from, int to) {
    struct stat old = {};
    if (fstat(from, &old) != 0) return errno;
    FileError error = keepExtended(from, to);
    if (error == 0) error = keepOwnerAndMode(old, to);
    return error == 0 ? compare(old, to) : error;
}
