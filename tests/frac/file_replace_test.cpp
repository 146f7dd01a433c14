// Saving never costs the user what was there.
#include "frac/file_replace.h"

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/mount.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <thread>

#include "tests/support/files.h"

using test_support::FileSizeLimit;
using test_support::readFile;
using test_support::writeFile;
using testing::ElementsAre;

namespace {

class ReplaceFile : public testing::Test {
  protected:
    std::string path() const { return folder / "a.frac"; }

    static struct stat status(const std::string& of) {
        struct stat result = {};
        stat(of.c_str(), &result);
        return result;
    }

    test_support::TemporaryFolder folder;
};

bool isRoot() {
    return geteuid() == 0;
}

// Takes root's powers away while it lives; the folder is handed to whom is left.
class AsNobody {
  public:
    explicit AsNobody(const std::string& folder) : previous(geteuid()) {
        if (previous != 0) return;
        constexpr uid_t NOBODY = 65534;
        std::filesystem::recursive_directory_iterator files(folder);
        for (const auto& entry : files) lchown(entry.path().c_str(), NOBODY, NOBODY);
        chown(folder.c_str(), NOBODY, NOBODY);
        seteuid(NOBODY);
    }
    ~AsNobody() { seteuid(previous); }
    AsNobody(const AsNobody&) = delete;
    AsNobody& operator=(const AsNobody&) = delete;

  private:
    uid_t previous;
};

// A tiny file system of its own, where the user may mount one.
class TinyDisk {
  public:
    explicit TinyDisk(const std::string& at, const char* options) : path(at) {
        mounted = mount("none", at.c_str(), "tmpfs", 0, options) == 0;
    }
    ~TinyDisk() {
        if (mounted) umount2(path.c_str(), MNT_DETACH);
    }
    TinyDisk(const TinyDisk&) = delete;
    TinyDisk& operator=(const TinyDisk&) = delete;

    std::string path;
    bool mounted = false;
};

TEST_F(ReplaceFile, ANewFileIsWhatTheUmaskMakesIt) {
    const mode_t before = umask(027);
    EXPECT_TRUE(replaceFile(path(), "content"));
    umask(before);
    EXPECT_EQ(readFile(path()), "content");
    EXPECT_EQ(status(path()).st_mode & 0777, 0640u);
}

TEST_F(ReplaceFile, NothingElseIsLeftInTheFolder) {
    writeFile(path(), "old");
    EXPECT_TRUE(replaceFile(path(), "content"));
    EXPECT_THAT(folder.names(), ElementsAre("a.frac"));
}

TEST_F(ReplaceFile, TheOldFileIsNeverTouched) {
    writeFile(path(), "old");
    const int old = open(path().c_str(), O_RDONLY);
    EXPECT_TRUE(replaceFile(path(), "new content"));
    char bytes[4] = {};
    EXPECT_EQ(read(old, bytes, 3), 3);
    EXPECT_STREQ(bytes, "old");
    close(old);
}

TEST_F(ReplaceFile, TheModeIsKept) {
    for (const mode_t mode : {0600u, 0644u, 0664u, 0755u}) {
        writeFile(path(), "old");
        chmod(path().c_str(), mode);
        EXPECT_TRUE(replaceFile(path(), "new"));
        EXPECT_EQ(status(path()).st_mode & 07777, mode);
    }
}

TEST_F(ReplaceFile, TheOwnerIsKeptWhereAllowed) {
    if (!isRoot()) GTEST_SKIP() << "only root may give files away";
    writeFile(path(), "old");
    ASSERT_EQ(chown(path().c_str(), 12345, 54321), 0);
    EXPECT_TRUE(replaceFile(path(), "new"));
    EXPECT_EQ(status(path()).st_uid, 12345u);
    EXPECT_EQ(status(path()).st_gid, 54321u);
}

TEST_F(ReplaceFile, ALinkStaysALink) {
    std::filesystem::create_directory(folder / "elsewhere");
    writeFile(folder / "elsewhere/real.frac", "old");
    std::filesystem::create_symlink("elsewhere/real.frac", folder / "middle");
    std::filesystem::create_symlink("middle", path());
    EXPECT_TRUE(replaceFile(path(), "new"));
    EXPECT_TRUE(std::filesystem::is_symlink(path()));
    EXPECT_EQ(readFile(folder / "elsewhere/real.frac"), "new");
    EXPECT_FALSE(std::filesystem::is_symlink(folder / "elsewhere/real.frac"));
}

TEST_F(ReplaceFile, ALinkToNothingMakesItsTarget) {
    std::filesystem::create_symlink(folder / "target.frac", path());
    EXPECT_TRUE(replaceFile(path(), "new"));
    EXPECT_TRUE(std::filesystem::is_symlink(path()));
    EXPECT_EQ(readFile(folder / "target.frac"), "new");
}

TEST_F(ReplaceFile, LinksInACircleFail) {
    std::filesystem::create_symlink("b", folder / "a");
    std::filesystem::create_symlink("a", folder / "b");
    EXPECT_FALSE(replaceFile(folder / "a", "new"));
}

TEST_F(ReplaceFile, APathWithoutAFolderIsInTheWorkingOne) {
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(folder.path);
    EXPECT_TRUE(replaceFile("plain.frac", "content"));
    std::filesystem::current_path(before);
    EXPECT_EQ(readFile(folder / "plain.frac"), "content");
}

TEST_F(ReplaceFile, TheLongestNameStillWorks) {
    const std::string longest = folder / (std::string(250, 'n') + ".frac");
    EXPECT_TRUE(replaceFile(longest, "content"));
    EXPECT_EQ(readFile(longest), "content");
}

class Unwritable : public ReplaceFile, public testing::WithParamInterface<std::string> {};

TEST_P(Unwritable, Fails) {
    EXPECT_FALSE(replaceFile(GetParam(), "content"));
}

INSTANTIATE_TEST_SUITE_P(Paths, Unwritable,
                         testing::Values("", "/", "/nonexistent/a.frac", "/dev/full",
                                         "/tmp/" + std::string(300, 'n')));

TEST_F(ReplaceFile, AFileThatMayNotBeWrittenStays) {
    writeFile(path(), "old");
    chmod(path().c_str(), 0444);
    const AsNobody nobody(folder.path);
    EXPECT_FALSE(replaceFile(path(), "new"));
    EXPECT_EQ(readFile(path()), "old");
}

TEST_F(ReplaceFile, InAFolderThatMayNotBeWrittenTheFileItselfIs) {
    writeFile(path(), "something longer than the new content");
    const AsNobody nobody(folder.path);
    chmod(folder.path.c_str(), 0555);
    EXPECT_TRUE(replaceFile(path(), "new"));
    chmod(folder.path.c_str(), 0755);
    EXPECT_EQ(readFile(path()), "new");
}

TEST_F(ReplaceFile, SomebodyElsesFileThatMayBeWrittenIsWritten) {
    if (!isRoot()) GTEST_SKIP() << "only root may give files away";
    const AsNobody nobody(folder.path);
    seteuid(0);
    writeFile(path(), "old and rather long");
    chmod(path().c_str(), 0666);
    seteuid(65534);
    EXPECT_TRUE(replaceFile(path(), "new"));
    EXPECT_EQ(readFile(path()), "new");
    EXPECT_EQ(status(path()).st_mode & 0777, 0666u);
}

TEST_F(ReplaceFile, APipeIsWrittenAsItIs) {
    ASSERT_EQ(mkfifo(path().c_str(), 0600), 0);
    std::string received;
    std::thread reader([&] { received = readFile(path()); });
    EXPECT_TRUE(replaceFile(path(), "content"));
    reader.join();
    EXPECT_EQ(received, "content");
    EXPECT_TRUE(S_ISFIFO(status(path()).st_mode));
}

TEST_F(ReplaceFile, BeyondTheFileSizeLimitTheOldFileStays) {
    writeFile(path(), "old");
    {
        const FileSizeLimit limit(100);
        EXPECT_FALSE(replaceFile(path(), std::string(1000, 'x')));
    }
    EXPECT_EQ(readFile(path()), "old");
    EXPECT_THAT(folder.names(), ElementsAre("a.frac"));
}

TEST_F(ReplaceFile, OnAFullDiskTheOldFileStays) {
    const TinyDisk disk(folder.path, "size=64k");
    if (!disk.mounted) GTEST_SKIP() << "no file system may be mounted here";
    writeFile(path(), "old");
    EXPECT_FALSE(replaceFile(path(), std::string(200000, 'x')));
    EXPECT_EQ(readFile(path()), "old");
    EXPECT_THAT(folder.names(), ElementsAre("a.frac"));
}

TEST_F(ReplaceFile, WithoutRoomForAnotherFileTheOldFileStays) {
    const TinyDisk disk(folder.path, "nr_inodes=2");
    if (!disk.mounted) GTEST_SKIP() << "no file system may be mounted here";
    writeFile(path(), "old");
    EXPECT_FALSE(replaceFile(path(), "new"));
    EXPECT_EQ(readFile(path()), "old");
}

TEST_F(ReplaceFile, AMountPointIsWrittenItself) {
    writeFile(folder / "source", "old and rather long");
    writeFile(path(), "");
    if (mount((folder / "source").c_str(), path().c_str(), nullptr, MS_BIND, nullptr) != 0) {
        GTEST_SKIP() << "no file may be mounted here";
    }
    EXPECT_TRUE(replaceFile(path(), "new"));
    umount2(path().c_str(), MNT_DETACH);
    EXPECT_EQ(readFile(folder / "source"), "new");
}

TEST_F(ReplaceFile, AMountPointOnAFullDiskKeepsItsBytes) {
    std::filesystem::create_directory(folder / "disk");
    const TinyDisk disk(folder / "disk", "size=64k");
    if (!disk.mounted) GTEST_SKIP() << "no file system may be mounted here";
    writeFile(folder / "disk/source", "old");
    writeFile(path(), "");
    ASSERT_EQ(mount((folder / "disk/source").c_str(), path().c_str(), nullptr, MS_BIND, nullptr),
              0);
    EXPECT_FALSE(replaceFile(path(), std::string(200000, 'x')));
    umount2(path().c_str(), MNT_DETACH);
    EXPECT_EQ(readFile(folder / "disk/source"), "old");
}

TEST_F(ReplaceFile, AKilledWriterLeavesOldOrNewWhole) {
    const std::string old(100000, 'o'), fresh(8 << 20, 'n');
    writeFile(path(), old);
    for (int delay = 0; delay < 20; ++delay) {
        const pid_t child = fork();
        if (child == 0) {
            while (true) replaceFile(path(), fresh);
        }
        usleep(static_cast<useconds_t>(delay) * 1000);
        kill(child, SIGKILL);
        waitpid(child, nullptr, 0);
        const std::string found = readFile(path());
        EXPECT_TRUE(found == old || found == fresh);
    }
}

}  // namespace
