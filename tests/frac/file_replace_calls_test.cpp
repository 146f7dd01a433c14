// The calls that a save makes, one by one: in which order, with which flags,
// and what their failures come to.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <unistd.h>

#include <filesystem>
#include <utility>

#include "tests/frac/watched_save.h"

using namespace watched_save;
using test_support::readFile;
using test_support::writeFile;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::StrEq;
using traced_child::Call;
using traced_child::KILL;
using traced_child::MAKE;

namespace {

bool opensUnnamed(const Call& call) {
    return call.is(SYS_openat) && (call.flags(2) & O_TMPFILE) == O_TMPFILE;
}

bool creates(const Call& call) {
    return call.is(SYS_openat) && (opensUnnamed(call) || (call.flags(2) & O_CREAT) != 0);
}

int refuseUnnamed(const Call& call) {
    return opensUnnamed(call) ? EOPNOTSUPP : MAKE;
}

// The file that the name leads to, whatever its name.
ino_t identity(const std::string& path) {
    struct stat status = {};
    return stat(path.c_str(), &status) == 0 ? status.st_ino : 0;
}

class Calls : public WatchedSave {
  protected:
    void SetUp() override {
        WatchedSave::SetUp();
        writeFile(path(), "old");
    }

    std::string draftOf(const Call& call, int number) const {
        return folder /
               (".tessary-" + std::to_string(call.process) + "-" + std::to_string(number) + ".tmp");
    }

    bool isDraft(const std::string& file) const {
        return file.starts_with(folder.path + "/") && !isPath(file);
    }

    bool isFolder(const std::string& file) const { return file == folder.path; }

    enum Kind { FOLDER, DRAFT, TARGET };

    bool isOf(Kind kind, const std::string& file) const {
        return kind == FOLDER ? isFolder(file) : kind == DRAFT ? isDraft(file) : isPath(file);
    }

    // The save, the calls of this number on files of this kind failing.
    Told saveWhere(long number, Kind kind, int error) {
        return save([=, this](const Call& call) {
            return call.is(number) && isOf(kind, call.file(0)) ? error : MAKE;
        });
    }
};

// ---- syncing

TEST_F(Calls, TheFileIsOnDiskBeforeItTakesItsPlaceAndTheFolderAfterwards) {
    std::vector<std::string> steps;
    save([&](const Call& call) {
        if (call.is(SYS_write)) steps.emplace_back("write");
        if (call.is(SYS_fchmod)) steps.emplace_back("mode");
        if (call.is(SYS_rename)) steps.emplace_back("rename");
        if (call.is(SYS_fsync)) steps.emplace_back(isFolder(call.file(0)) ? "folder" : "file");
        return MAKE;
    });
    EXPECT_THAT(steps, ElementsAre("write", "mode", "file", "rename", "folder"));
}

TEST_F(Calls, AFileWrittenInPlaceIsOnDiskBeforeTheCopyGoes) {
    std::filesystem::create_hard_link(path(), folder / "b.frac");
    std::vector<std::string> steps;
    save([&](const Call& call) {
        const std::string file = call.is(SYS_fsync) ? call.file(0) : "";
        if (isPath(file)) steps.emplace_back("file");
        if (isFolder(file)) steps.emplace_back("folder");
        if (isDraft(file)) steps.emplace_back("copy");
        if (call.is(SYS_unlink)) steps.emplace_back("copy removed");
        return MAKE;
    });
    EXPECT_THAT(steps, ElementsAre("copy", "folder", "file", "copy removed"));
}

TEST_F(Calls, AFolderThatCannotBeSyncedIsAFailure) {
    const Told told = saveWhere(SYS_fsync, FOLDER, EIO);
    EXPECT_FALSE(told.done);
    EXPECT_THAT(told.error, StrEq("Input/output error"));
}

TEST_F(Calls, AFolderThatKnowsNoSyncIsNone) {
    EXPECT_TRUE(saveWhere(SYS_fsync, FOLDER, EINVAL).done);
    EXPECT_TRUE(saveWhere(SYS_fsync, FOLDER, EOPNOTSUPP).done);
}

TEST_F(Calls, AFolderThatCannotBeOpenedToSyncIsAFailureUnlessItMayNotBeRead) {
    bool renamed = false;
    int error = EIO;
    const auto watch = [&](const Call& call) {
        renamed = renamed || call.is(SYS_rename);
        return renamed && call.is(SYS_openat) && isFolder(call.text(1)) ? error : MAKE;
    };
    EXPECT_FALSE(save(watch).done);
    error = EACCES;
    EXPECT_TRUE(save(watch).done);
}

TEST_F(Calls, AFileThatCannotBeSyncedDoesNotTakeThePlace) {
    EXPECT_FALSE(saveWhere(SYS_fsync, DRAFT, EIO).done);
    EXPECT_EQ(readFile(path()), "old");
    EXPECT_THAT(folder.names(), ElementsAre("a.frac"));
}

// ---- closing

TEST_F(Calls, AFileThatFailsAtCloseDoesNotTakeThePlace) {
    EXPECT_FALSE(saveWhere(SYS_close, DRAFT, EIO).done);
    EXPECT_EQ(readFile(path()), "old");
    EXPECT_THAT(folder.names(), ElementsAre("a.frac"));
}

TEST_F(Calls, AFileWrittenInPlaceThatFailsAtCloseIsAFailureThatNamesTheCopy) {
    std::filesystem::create_hard_link(path(), folder / "b.frac");
    const Told told = saveWhere(SYS_close, TARGET, EIO);
    EXPECT_FALSE(told.done);
    EXPECT_EQ(readFile(told.safeCopy), "old");
}

TEST_F(Calls, APipeThatFailsAtCloseIsAFailure) {
    std::filesystem::remove(path());
    ASSERT_EQ(mkfifo(path().c_str(), 0600), 0);
    const int reader = open(path().c_str(), O_RDONLY | O_NONBLOCK);
    const auto watch = [&](const Call& call) {
        return call.is(SYS_close) && isPath(call.file(0)) ? EIO : MAKE;
    };
    EXPECT_FALSE(save(watch, "short").done);
    EXPECT_TRUE(save([](const Call&) { return MAKE; }, "short").done);
    close(reader);
}

// What waits for the reader of a pipe must end with the process's signals.
TEST_F(Calls, OpeningAPipeMayBeInterrupted) {
    std::filesystem::remove(path());
    ASSERT_EQ(mkfifo(path().c_str(), 0600), 0);
    int opened = 0;
    const Told told = save([&](const Call& call) {
        if (!call.is(SYS_openat) || !isPath(call.text(1))) return MAKE;
        return ++opened == 1 ? EINTR : KILL;
    });
    EXPECT_TRUE(told.ended);
    EXPECT_FALSE(told.done);
}

// ---- opening

TEST_F(Calls, NoFileIsLeftToTheProgramsThisOneStarts) {
    int opened = 0;
    std::vector<std::string> open;
    const auto watch = [&](const Call& call) {
        if (!call.is(SYS_openat)) return MAKE;
        ++opened;
        if ((call.flags(2) & O_CLOEXEC) == 0) open.push_back(call.text(1));
        return refuseUnnamed(call);
    };
    std::filesystem::create_hard_link(path(), folder / "b.frac");
    save(watch);
    std::filesystem::remove(folder / "b.frac");
    save(watch);
    EXPECT_GT(opened, 8);
    EXPECT_THAT(open, IsEmpty());
}

TEST_F(Calls, ASecondDescriptorIsNotLeftToThemEither) {
    std::vector<int> commands;
    save([&](const Call& call) {
        if (call.is(SYS_fcntl) && isDraft(call.file(0))) commands.push_back(call.flags(1));
        EXPECT_FALSE(call.is(SYS_dup));
        return MAKE;
    });
    EXPECT_THAT(commands, ElementsAre(F_DUPFD_CLOEXEC));
}

TEST_F(Calls, AFileIsMadeOnlyWhereNoneIs) {
    for (const bool inPlace : {false, true}) {
        int made = 0;
        if (inPlace) std::filesystem::create_hard_link(path(), folder / "b.frac");
        save([&](const Call& call) {
            const bool named = call.is(SYS_openat) && (call.flags(2) & O_CREAT) != 0;
            made += named;
            EXPECT_TRUE(!named || (call.flags(2) & O_EXCL) != 0) << call.text(1);
            return refuseUnnamed(call);
        });
        EXPECT_EQ(made, 1);
    }
}

// ---- names that are taken

TEST_F(Calls, ADraftThatSomebodyIsAtWorkOnStays) {
    for (const auto usual : {+[](const Call&) { return MAKE; }, refuseUnnamed}) {
        int theirs = -1;
        std::string taken;
        const Told told = save([&](const Call& call) {
            if (theirs < 0) {
                taken = draftOf(call, 0);
                writeFile(taken, "theirs");
                theirs = open(taken.c_str(), O_RDWR | O_CLOEXEC);
                EXPECT_EQ(flock(theirs, LOCK_EX | LOCK_NB), 0);
            }
            return usual(call);
        });
        EXPECT_TRUE(told.done) << told.error;
        EXPECT_EQ(readFile(taken), "theirs");
        close(theirs);
        std::filesystem::remove(taken);
    }
}

TEST_F(Calls, ADraftIsLockedForAsLongAsItHasAName) {
    for (const auto usual : {+[](const Call&) { return MAKE; }, refuseUnnamed}) {
        int looked = 0;
        save([&](const Call& call) {
            if (call.is(SYS_rename)) {
                ++looked;
                const int draft = open(draftOf(call, 0).c_str(), O_RDWR);
                EXPECT_EQ(flock(draft, LOCK_EX | LOCK_NB), -1);
                EXPECT_EQ(errno, EWOULDBLOCK);
                close(draft);
            }
            return usual(call);
        });
        EXPECT_EQ(looked, 1);
    }
}

// Another save may take a draft for a dead one before it is locked.
TEST_F(Calls, ADraftThatAnotherSaveHasLockedFirstIsLeftToIt) {
    int locks = 0;
    const Told told = save([&](const Call& call) {
        if (call.is(SYS_flock)) return ++locks == 1 ? EWOULDBLOCK : MAKE;
        return refuseUnnamed(call);
    });
    EXPECT_TRUE(told.done) << told.error;
    EXPECT_EQ(locks, 2);
    EXPECT_TRUE(readFile(path()) == newContent());
}

TEST_F(Calls, ADraftThatAnotherSaveHasRemovedFirstIsMadeAgain) {
    int locks = 0;
    const Told told = save([&](const Call& call) {
        if (call.is(SYS_flock) && ++locks == 1) std::filesystem::remove(draftOf(call, 0));
        return refuseUnnamed(call);
    });
    EXPECT_TRUE(told.done) << told.error;
    EXPECT_TRUE(readFile(path()) == newContent());
}

TEST_F(Calls, AFileSystemWithoutLocksIsWrittenToAllTheSame) {
    const Told told =
        save([](const Call& call) { return call.is(SYS_flock) ? ENOLCK : refuseUnnamed(call); });
    EXPECT_TRUE(told.done) << told.error;
}

// ---- what killed saves have left

TEST_F(Calls, DeadDraftsOfAnyProcessGo) {
    for (const char* name : {".tessary-1-0.tmp", ".tessary-99999-17.tmp"}) {
        writeFile(folder / name, "dead");
    }
    save();
    EXPECT_THAT(folder.names(), ElementsAre("a.frac"));
}

TEST_F(Calls, WhatIsNoDraftStays) {
    const std::vector<std::string> others = {".tessary-x-0.tmp", ".tessary-.tmp", "tessary-1-0.tmp",
                                             ".tessary-1-0.tmp~", ".tessary-1-0"};
    for (const std::string& name : others) writeFile(folder / name, "other");
    for (const char* name : {".tessary-1-0.tmp", ".tessary-1-2.tmp"}) {
        ASSERT_EQ(mkfifo((folder / name).c_str(), 0600), 0);
    }
    const int reader = open((folder / ".tessary-1-2.tmp").c_str(), O_RDONLY | O_NONBLOCK);
    writeFile(runtime / "other", "other");
    std::filesystem::create_symlink(runtime / "other", folder / ".tessary-1-1.tmp");
    save();
    EXPECT_EQ(folder.names().size(), others.size() + 4);
    EXPECT_EQ(readFile(runtime / "other"), "other");
    close(reader);
}

TEST_F(Calls, CopiesOfOtherFilesStay) {
    writeFile(runtime / "tessary-kept-0123456789abcdef-0.frac", "other");
    save();
    EXPECT_THAT(runtime.names(), ElementsAre("tessary-kept-0123456789abcdef-0.frac"));
}

// ---- privacy

TEST_F(Calls, NobodyElseCanReadWhatTakesThePlaceOfAPrivateFile) {
    chmod(path().c_str(), 0600);
    for (const auto usual : {+[](const Call&) { return MAKE; }, refuseUnnamed}) {
        int seen = 0;
        save([&](const Call& call) {
            const std::string files = "/proc/" + std::to_string(call.process) + "/fd";
            for (const auto& entry : std::filesystem::directory_iterator(files)) {
                std::error_code gone;
                struct stat status = {};
                if (!isDraft(std::filesystem::read_symlink(entry.path(), gone).string())) continue;
                if (stat(entry.path().c_str(), &status) != 0) continue;
                ++seen;
                EXPECT_EQ(status.st_mode & 0777, 0600u);
            }
            return usual(call);
        });
        EXPECT_GT(seen, 3);
    }
}

TEST_F(Calls, NobodyElseCanReadTheCopy) {
    std::filesystem::create_hard_link(path(), folder / "b.frac");
    chmod(path().c_str(), 0666);
    int seen = 0;
    save([&](const Call&) {
        for (const std::string& copy : copies()) {
            ++seen;
            EXPECT_EQ(attributesOf(copy).mode, 0600u);
        }
        return MAKE;
    });
    EXPECT_GT(seen, 1);
}

// ---- when no other file may be made

class Refusal : public Calls, public testing::WithParamInterface<int> {};

TEST_P(Refusal, OfAnotherFileHasTheFileItselfWritten) {
    const ino_t before = identity(path());
    const Told told = save([&](const Call& call) {
        return creates(call) && call.text(1).starts_with(folder.path) ? GetParam() : MAKE;
    });
    EXPECT_TRUE(told.done) << told.error;
    EXPECT_EQ(identity(path()), before);
    EXPECT_TRUE(readFile(path()) == newContent());
}

TEST_P(Refusal, ToTakeThePlaceHasTheFileItselfWritten) {
    const ino_t before = identity(path());
    const Told told =
        save([](const Call& call) { return call.is(SYS_rename) ? GetParam() : MAKE; });
    EXPECT_TRUE(told.done) << told.error;
    EXPECT_EQ(identity(path()), before);
    EXPECT_TRUE(readFile(path()) == newContent());
    EXPECT_THAT(folder.names(), ElementsAre("a.frac"));
}

TEST_P(Refusal, OfTheFileItselfIsAFailure) {
    const Told told = save([&](const Call& call) {
        return call.is(SYS_openat) && isPath(call.text(1)) ? GetParam() : MAKE;
    });
    EXPECT_FALSE(told.done);
    EXPECT_EQ(readFile(path()), "old");
}

// Some folders take one name and no other.
TEST_P(Refusal, OfAllNamesButOneMakesANewFileOfThatName) {
    std::filesystem::remove(path());
    const Told told = save([&](const Call& call) {
        return creates(call) && !isPath(call.text(1)) ? GetParam() : MAKE;
    });
    EXPECT_TRUE(told.done) << told.error;
    EXPECT_TRUE(readFile(path()) == newContent());
}

INSTANTIATE_TEST_SUITE_P(Errors, Refusal, testing::Values(EACCES, EPERM, EROFS, EBUSY, EXDEV));

TEST_F(Calls, ANewFileThatCannotBeWrittenWholeIsNotLeft) {
    std::filesystem::remove(path());
    const Told told = save([&](const Call& call) {
        if (creates(call) && !isPath(call.text(1))) return EPERM;
        return call.is(SYS_write) ? EIO : MAKE;
    });
    EXPECT_FALSE(told.done);
    EXPECT_THAT(folder.names(), IsEmpty());
}

// ---- links

TEST_F(Calls, ALinkThatCannotBeReadIsNotReplaced) {
    std::filesystem::rename(path(), folder / "real.frac");
    std::filesystem::create_symlink("real.frac", path());
    const Told told = save([&](const Call& call) {
        return call.is(SYS_readlink) && isPath(call.text(0)) ? EIO : MAKE;
    });
    EXPECT_FALSE(told.done);
    EXPECT_TRUE(std::filesystem::is_symlink(path()));
    EXPECT_EQ(readFile(path()), "old");
}

TEST_F(Calls, AFileThatItsPathDoesNotLeadToIsWrittenItself) {
    const int old = open(path().c_str(), O_RDWR | O_CLOEXEC);
    std::filesystem::remove(path());
    const std::string asTheSystemNamesIt = path() + " (deleted)";
    writeFile(asTheSystemNamesIt, "other");
    EXPECT_TRUE(replaceFile("/proc/self/fd/" + std::to_string(old), "new content"));
    char bytes[12] = {};
    EXPECT_EQ(pread(old, bytes, 11, 0), 11);
    EXPECT_STREQ(bytes, "new content");
    EXPECT_EQ(readFile(asTheSystemNamesIt), "other");
    close(old);
}

// Somebody moves the file away and puts another one there after it was opened.
TEST_F(Calls, AFileThatHasTakenThePlaceMeanwhileIsNotReplaced) {
    bool opened = false, moved = false;
    const Told told = save([&](const Call& call) {
        if (opened && !std::exchange(moved, true)) {
            std::filesystem::rename(path(), folder / "moved.frac");
            writeFile(path(), "other");
        }
        opened = opened || (call.is(SYS_openat) && isPath(call.text(1)));
        return MAKE;
    });
    EXPECT_TRUE(told.done) << told.error;
    EXPECT_EQ(readFile(path()), "other");
    EXPECT_TRUE(readFile(folder / "moved.frac") == newContent());
}

// ---- signals

TEST_F(Calls, TheFileSizeSignalIsWhatItWasAfterwards) {
    struct sigaction own = {}, after = {}, previous = {};
    own.sa_handler = [](int) {};
    sigaction(SIGXFSZ, &own, &previous);
    replaceFile(path(), "new");
    sigaction(SIGXFSZ, &previous, &after);
    EXPECT_EQ(after.sa_handler, own.sa_handler);
}

}  // namespace
