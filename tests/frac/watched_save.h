// A save in a child process that a test looks into, and the file and folders it works on.
#pragma once

#include <gtest/gtest.h>

#include <optional>
#include <string>
#include <vector>

#include "frac/file_replace.h"
#include "tests/support/files.h"
#include "tests/support/traced_child.h"

namespace watched_save {

constexpr unsigned NOBODY = 65534;

bool isRoot();

// What the child tells of its save.
struct Told {
    bool ended = false, done = false;
    char error[256] = {}, safeCopy[4096] = {};
};

// What a file is besides its content.
struct Attributes {
    unsigned mode = 0, owner = 0, group = 0;
    std::string accessList, note;

    bool operator==(const Attributes&) const = default;
};
Attributes attributesOf(const std::string& path);
void PrintTo(const Attributes& attributes, std::ostream* out);

// The text of an access list: rw for the owner, nothing for the group, rw for user 1234.
std::string someAccessList();

bool setAttribute(const std::string& path, const std::string& name, const std::string& value);
std::string attribute(const std::string& path, const std::string& name);

// Long enough for several reads and writes, and of different lengths.
std::string oldContent();
std::string newContent();

// A folder with the file that is saved over, and folders for the copies of it. All are the child's,
// who is root, or nobody after `asNobody`.
class WatchedSave : public testing::Test {
  protected:
    void SetUp() override;

    std::string path() const { return folder / "a.frac"; }
    bool isPath(const std::string& file) const { return file == path(); }

    // Hands over all there is and lets the child be nobody from here on.
    void asNobody();

    // The child's save, each call of which passes the watch.
    Told save(const traced_child::Watch& watch, const std::string& bytes = newContent());
    Told save() {
        return save([](const traced_child::Call&) { return traced_child::MAKE; });
    }

    // The copies of the old content, wherever they lie.
    std::vector<std::string> copies() const;

    test_support::TemporaryFolder folder, runtime, temporary;
    bool childIsNobody = false;
    // The variables of the child; none: unset.
    std::optional<std::string> runtimeFolder = runtime.path, temporaryFolder = temporary.path;

    // How the last child ended.
    traced_child::Ending ending = 0;
};

}  // namespace watched_save
