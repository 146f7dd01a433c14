#include "tests/frac/watched_save.h"

#include <grp.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <ostream>

namespace watched_save {
namespace {

constexpr const char* ACCESS_LIST = "system.posix_acl_access";
constexpr const char* NOTE = "user.note";

void setVariable(const char* name, const std::optional<std::string>& value) {
    if (value) {
        setenv(name, value->c_str(), 1);
    } else {
        unsetenv(name);
    }
}

void handOver(const std::string& path) {
    const bool handed = lchown(path.c_str(), NOBODY, NOBODY) == 0;
    EXPECT_TRUE(handed) << path;
}

void becomeNobody() {
    if (setgroups(0, nullptr) != 0 || setresgid(NOBODY, NOBODY, NOBODY) != 0 ||
        setresuid(NOBODY, NOBODY, NOBODY) != 0) {
        _exit(124);
    }
}

void copyText(char* to, std::size_t size, const std::string& text) {
    std::strncpy(to, text.c_str(), size - 1);
}

}  // namespace

bool isRoot() {
    return geteuid() == 0;
}

bool setAttribute(const std::string& path, const std::string& name, const std::string& value) {
    return setxattr(path.c_str(), name.c_str(), value.data(), value.size(), 0) == 0;
}

std::string attribute(const std::string& path, const std::string& name) {
    std::string value(1000, '\0');
    const ssize_t size = getxattr(path.c_str(), name.c_str(), value.data(), value.size());
    value.resize(size < 0 ? 0 : static_cast<std::size_t>(size));
    return value;
}

Attributes attributesOf(const std::string& path) {
    struct stat status = {};
    stat(path.c_str(), &status);
    return {status.st_mode & 07777, status.st_uid, status.st_gid, attribute(path, ACCESS_LIST),
            attribute(path, NOTE)};
}

void PrintTo(const Attributes& attributes, std::ostream* out) {
    *out << std::oct << attributes.mode << std::dec << " " << attributes.owner << ":"
         << attributes.group << " access list of " << attributes.accessList.size()
         << " bytes, note \"" << attributes.note << "\"";
}

std::string someAccessList() {
    struct Entry {
        std::uint16_t tag, rights;
        std::uint32_t id;
    };
    constexpr std::uint32_t VERSION = 2, NO_ID = 0xffffffff;
    const Entry entries[] = {
        {0x01, 6, NO_ID}, {0x02, 6, 1234}, {0x04, 0, NO_ID}, {0x10, 6, NO_ID}, {0x20, 0, NO_ID}};
    std::string list(reinterpret_cast<const char*>(&VERSION), sizeof VERSION);
    return list.append(reinterpret_cast<const char*>(entries), sizeof entries);
}

std::string oldContent() {
    return std::string(150000, 'o') + "the end of the old one";
}

std::string newContent() {
    return std::string(170000, 'n') + "the end of the new one";
}

void WatchedSave::SetUp() {
    if (!traced_child::isPossible()) GTEST_SKIP() << "no process may be traced here";
}

void WatchedSave::asNobody() {
    childIsNobody = true;
    for (const std::string& root : {folder.path, runtime.path, temporary.path}) {
        handOver(root);
        for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
            handOver(entry.path().string());
        }
    }
}

Told WatchedSave::save(const traced_child::Watch& watch, const std::string& bytes) {
    const traced_child::Shared<Told> told;
    const std::string file = path();
    const auto prepare = [&] {
        umask(022);
        setVariable("XDG_RUNTIME_DIR", runtimeFolder);
        setVariable("TMPDIR", temporaryFolder);
        if (childIsNobody) becomeNobody();
    };
    const auto work = [&] {
        const Replacement result = replaceFile(file, bytes);
        copyText(told->error, sizeof told->error, result.error);
        copyText(told->safeCopy, sizeof told->safeCopy, result.safeCopy);
        told->done = result.done;
        told->ended = true;
    };
    ending = traced_child::run(prepare, work, watch);
    return *told;
}

std::vector<std::string> WatchedSave::copies() const {
    std::vector<std::string> found;
    for (const std::string& place : {folder.path, runtime.path, temporary.path}) {
        for (const auto& entry : std::filesystem::directory_iterator(place)) {
            const std::string name = entry.path().filename().string();
            if (name.starts_with("tessary-kept-")) found.push_back(entry.path().string());
        }
    }
    return found;
}

}  // namespace watched_save
