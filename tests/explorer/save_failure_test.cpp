// A catalogue that cannot be written costs nobody the one that was there.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <string>

#include "explorer/frac_file.h"
#include "tests/support/stand_ins.h"
#include "tests/support/traced_child.h"

using test_support::FileSizeLimit;

namespace {

class SaveFailure : public stand_ins::CommandsTest {
  protected:
    stand_ins::TemporaryFolder folder;
};

TEST_F(SaveFailure, IsOneLineAndNoEntryCountsAsSaved) {
    setCatalogue({stand_ins::someEntry("a"), stand_ins::someEntry("b")});
    for (const std::string path : {"/nonexistent/a.frac", "/dev/full", "/"}) {
        forgetOutput();
        SaveData(path);
        EXPECT_EQ(printed(), "Could not write to disk\n") << path;
    }
}

TEST_F(SaveFailure, LeavesTheOldCatalogueLoadable) {
    const std::string path = folder / "a.frac";
    setCatalogue({stand_ins::someEntry("kept")});
    SaveData(path);
    setCatalogue({stand_ins::someEntry(std::string(5000, 'x'))});
    {
        const FileSizeLimit limit(200);
        SaveData(path);
    }
    LoadData(path);
    EXPECT_EQ(fractals.at(0).name, "kept");
}

// What SaveData prints in a child process whose truncations of the file fail.
std::string printedWithoutTruncation(const std::string& path, const std::string& log) {
    const auto prepare = [&] {
        dup2(open(log.c_str(), O_CREAT | O_TRUNC | O_WRONLY, 0600), STDOUT_FILENO);
    };
    const auto watch = [&](const traced_child::Call& call) {
        return call.is(SYS_ftruncate) && call.file(0) == path ? EIO : traced_child::MAKE;
    };
    traced_child::run(
        prepare, [&] { SaveData(path); }, watch);
    return test_support::readFile(log);
}

TEST_F(SaveFailure, ThatSpoiltTheFileNamesTheCopyInALineOfItsOwn) {
    if (!traced_child::isPossible()) GTEST_SKIP() << "no process may be traced here";
    const std::string path = folder / "a.frac";
    test_support::writeFile(path, "old");
    std::filesystem::create_hard_link(path, folder / "b.frac");  // so it is written in place
    const stand_ins::TemporaryFolder logs;
    const std::string printed = printedWithoutTruncation(path, logs / "log");
    const std::string start = "Could not write to disk\nWhat was in the file before is kept in ";
    ASSERT_EQ(printed.substr(0, start.size()), start);
    const std::string copy = printed.substr(start.size(), printed.size() - start.size() - 1);
    EXPECT_EQ(test_support::readFile(copy), "old");
}

}  // namespace
