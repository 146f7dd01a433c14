// What a saved file keeps, and where its old content lies while it is written itself.
#include <gmock/gmock.h>
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
using testing::SizeIs;
using testing::StartsWith;
using traced_child::Call;
using traced_child::MAKE;
using traced_child::PRETEND;

namespace {

const std::string ACCESS_LIST = "system.posix_acl_access";
const std::string FOLDER_LIST = "system.posix_acl_default";

ino_t identity(const std::string& path) {
    struct stat status = {};
    return stat(path.c_str(), &status) == 0 ? status.st_ino : 0;
}

class Kept : public WatchedSave {
  protected:
    void SetUp() override {
        WatchedSave::SetUp();
        writeFile(path(), oldContent());
        chmod(path().c_str(), 0640);
    }

    void needAttributes() {
        if (!setAttribute(path(), "user.note", "kept") ||
            !setAttribute(path(), ACCESS_LIST, someAccessList())) {
            GTEST_SKIP() << "no attributes in " << folder.path;
        }
    }

    // Whether the save is done and everything but the content is what it was.
    void expectKept(const Told& told) {
        EXPECT_TRUE(told.done) << told.error;
        EXPECT_TRUE(readFile(path()) == newContent());
        EXPECT_EQ(attributesOf(path()), before);
    }

    bool isInPlace() const { return identity(path()) == file; }

    // To be called when the files are as the save shall find them.
    void remember() {
        before = attributesOf(path());
        file = identity(path());
    }

    Attributes before;
    ino_t file = 0;
};

// ---- attributes

TEST_F(Kept, AccessListAndAttributesAreThoseOfTheOldFile) {
    needAttributes();
    if (IsSkipped()) return;
    remember();
    expectKept(save());
    EXPECT_FALSE(isInPlace());
    EXPECT_EQ(before.accessList, someAccessList());
    EXPECT_EQ(before.note, "kept");
}

TEST_F(Kept, TheFoldersAccessListDoesNotGetIntoAFileWithoutOne) {
    if (!setAttribute(folder.path, FOLDER_LIST, someAccessList())) {
        GTEST_SKIP() << "no access lists in " << folder.path;
    }
    remember();
    expectKept(save());
    EXPECT_EQ(before.accessList, "");
}

TEST_F(Kept, ANewFileGetsTheFoldersAccessList) {
    if (!setAttribute(folder.path, FOLDER_LIST, someAccessList())) {
        GTEST_SKIP() << "no access lists in " << folder.path;
    }
    std::filesystem::remove(path());
    save();
    EXPECT_EQ(attributesOf(path()).accessList, someAccessList());
}

TEST_F(Kept, ModeBitsThatWritingTakesAwayAreKept) {
    if (!isRoot()) GTEST_SKIP() << "only root may become somebody else";
    asNobody();
    chmod(path().c_str(), 04750);
    remember();
    expectKept(save());
}

TEST_F(Kept, SomebodyElsesFileIsWrittenItself) {
    if (!isRoot()) GTEST_SKIP() << "only root may give files away";
    asNobody();
    EXPECT_EQ(chown(path().c_str(), 0, 0), 0);
    chmod(path().c_str(), 0666);
    remember();
    expectKept(save());
    EXPECT_TRUE(isInPlace());
}

TEST_F(Kept, AGroupThatMayNotBeGivenHasTheFileItselfWritten) {
    if (!isRoot()) GTEST_SKIP() << "only root may give files away";
    asNobody();
    EXPECT_EQ(chown(path().c_str(), NOBODY, 12345), 0);
    remember();
    expectKept(save());
    EXPECT_TRUE(isInPlace());
}

TEST_F(Kept, AnAttributeThatMayNotBeGivenHasTheFileItselfWritten) {
    if (!isRoot()) GTEST_SKIP() << "only root may set such an attribute";
    asNobody();
    if (!setAttribute(path(), "security.tessary", "kept")) GTEST_SKIP() << "no such attributes";
    remember();
    expectKept(save());
    EXPECT_TRUE(isInPlace());
    EXPECT_EQ(attribute(path(), "security.tessary"), "kept");
}

TEST_F(Kept, AnAttributeThatFindsNoRoomHasTheFileItselfWritten) {
    needAttributes();
    if (IsSkipped()) return;
    remember();
    expectKept(save([](const Call& call) { return call.is(SYS_fsetxattr) ? E2BIG : MAKE; }));
    EXPECT_TRUE(isInPlace());
}

// The place of a file may give it a label that nobody may set.
TEST_F(Kept, AnAttributeThatANewFileHasByItselfIsNotGiven) {
    needAttributes();
    if (IsSkipped()) return;
    const auto giveByItself = [](const Call& call) {
        if (call.is(SYS_fremovexattr)) {
            const std::string draft =
                "/proc/" + std::to_string(call.process) + "/fd/" + std::to_string(call.flags(0));
            EXPECT_TRUE(setAttribute(draft, "user.note", "kept"));
        }
        return call.is(SYS_fsetxattr) && call.text(1) == "user.note" ? EPERM : MAKE;
    };
    remember();
    expectKept(save(giveByItself));
    EXPECT_FALSE(isInPlace());
}

TEST_F(Kept, WhatVouchesForTheContentGoesWithIt) {
    const std::string capability("\0\0\0\2\0\4\0\0\0\0\0\0\0\0\0\0\0\0\0\0", 20);
    if (!setAttribute(path(), "security.capability", capability)) {
        GTEST_SKIP() << "no capabilities may be given here";
    }
    remember();
    expectKept(save());
    EXPECT_FALSE(isInPlace());
    EXPECT_EQ(attribute(path(), "security.capability"), "");
}

TEST_F(Kept, AnOwnerOrModeThatTheFileSystemForgetsHasTheFileItselfWritten) {
    if (!isRoot()) GTEST_SKIP() << "only root may give files away";
    EXPECT_EQ(chown(path().c_str(), 12345, 54321), 0);
    for (const long forgotten : {SYS_fchown, SYS_fchmod}) {
        remember();
        expectKept(save([=](const Call& call) { return call.is(forgotten) ? PRETEND : MAKE; }));
        EXPECT_TRUE(isInPlace());
    }
}

TEST_F(Kept, AFileSystemWithoutAttributesIsNoReasonToWriteInPlace) {
    remember();
    const auto none = [](const Call& call) {
        const bool attributes = call.is(SYS_flistxattr) || call.is(SYS_fremovexattr);
        return attributes ? EOPNOTSUPP : MAKE;
    };
    expectKept(save(none));
    EXPECT_FALSE(isInPlace());
}

TEST_F(Kept, AFileThatMayBeWrittenButNotReadIsReplaced) {
    if (!isRoot()) GTEST_SKIP() << "only root may become somebody else";
    asNobody();
    chmod(path().c_str(), 0200);
    remember();
    expectKept(save());
}

// ---- second names

TEST_F(Kept, ASecondNameLeadsToTheSameContent) {
    std::filesystem::create_hard_link(path(), runtime / "second.frac");
    remember();
    expectKept(save());
    EXPECT_TRUE(isInPlace());
    EXPECT_TRUE(readFile(runtime / "second.frac") == newContent());
    EXPECT_THAT(folder.names(), ElementsAre("a.frac"));
}

// ---- the copy

// Looks whether the old content is whole in the one copy that there is when the file itself
// changes.
class Copy : public Kept {
  protected:
    void SetUp() override {
        Kept::SetUp();
        if (!isRoot()) GTEST_SKIP() << "only root has foreign folders";
    }

    // Of the folder only the file itself may be written.
    void closeFolder() {
        asNobody();
        chmod(folder.path.c_str(), 0555);
    }

    int look(const Call& call) {
        if ((call.is(SYS_write) || call.is(SYS_ftruncate)) && isPath(call.file(0))) {
            const std::vector<std::string> found = copies();
            EXPECT_THAT(found, SizeIs(1));
            if (found.size() != 1) return MAKE;
            place = std::filesystem::path(found.front()).parent_path().string();
            EXPECT_TRUE(readFile(found.front()) == oldContent());
            EXPECT_EQ(std::filesystem::path(found.front()).extension(), ".frac");
        }
        return MAKE;
    }

    Told saveLooking() {
        return save([this](const Call& call) { return look(call); });
    }

    std::string place;  // of the copy
};

TEST_F(Copy, LiesBesideTheFileIfPossible) {
    std::filesystem::create_hard_link(path(), runtime / "second.frac");
    EXPECT_TRUE(saveLooking().done);
    EXPECT_EQ(place, folder.path);
    EXPECT_THAT(copies(), IsEmpty());
}

TEST_F(Copy, LiesInTheRuntimeFolderOtherwise) {
    closeFolder();
    EXPECT_TRUE(saveLooking().done);
    EXPECT_EQ(place, runtime.path);
    EXPECT_THAT(copies(), IsEmpty());
}

TEST_F(Copy, LiesInTheTemporaryFolderWhereThereIsNoRuntimeFolder) {
    closeFolder();
    for (const std::optional<std::string>& none :
         {std::optional<std::string>(), std::optional<std::string>("/nonexistent"),
          std::optional<std::string>(std::filesystem::relative(runtime.path))}) {
        runtimeFolder = none;
        EXPECT_TRUE(saveLooking().done);
        EXPECT_EQ(place, temporary.path);
        EXPECT_THAT(copies(), IsEmpty());
        writeFile(path(), oldContent());
    }
}

TEST_F(Copy, LiesInTmpWhereNoFolderIsNamed) {
    closeFolder();
    runtimeFolder.reset();
    temporaryFolder.reset();
    std::vector<std::string> tried;
    save([&](const Call& call) {
        if (call.is(SYS_linkat)) tried.push_back(call.text(3));
        return MAKE;
    });
    EXPECT_THAT(tried, ElementsAre(StartsWith("/tmp/tessary-kept-")));
}

TEST_F(Copy, IsNotNeededWhereThereIsNoPlaceForIt) {
    closeFolder();
    runtimeFolder = temporaryFolder = "/nonexistent";
    EXPECT_TRUE(save().done);
    EXPECT_TRUE(readFile(path()) == newContent());
}

TEST_F(Copy, IsNamedWhenTheFileIsSpoiltAndGoesWithTheNextSave) {
    closeFolder();
    const Told told = save([this](const Call& call) {
        return call.is(SYS_ftruncate) && isPath(call.file(0)) ? EIO : MAKE;
    });
    EXPECT_FALSE(told.done);
    EXPECT_THAT(copies(), ElementsAre(told.safeCopy));
    EXPECT_TRUE(readFile(told.safeCopy) == oldContent());
    EXPECT_TRUE(save().done);
    EXPECT_THAT(copies(), IsEmpty());
}

TEST_F(Copy, GoesAlsoWithASaveThatReplacesTheFile) {
    std::filesystem::create_hard_link(path(), runtime / "second.frac");
    save([this](const Call& call) {
        return call.is(SYS_ftruncate) && isPath(call.file(0)) ? EIO : MAKE;
    });
    EXPECT_THAT(copies(), SizeIs(1));
    std::filesystem::remove(runtime / "second.frac");
    remember();
    EXPECT_TRUE(save().done);
    EXPECT_FALSE(isInPlace());
    EXPECT_THAT(copies(), IsEmpty());
}

TEST_F(Copy, IsPutBackWhenAWriteFails) {
    closeFolder();
    int writes = 0;
    const Told told = save([&](const Call& call) {
        if (!call.is(SYS_write) || !isPath(call.file(0))) return MAKE;
        return ++writes == 2 ? EIO : MAKE;
    });
    EXPECT_FALSE(told.done);
    EXPECT_STREQ(told.safeCopy, "");
    EXPECT_TRUE(readFile(path()) == oldContent());
    EXPECT_THAT(copies(), IsEmpty());
}

TEST_F(Copy, IsNotTheOldContentUnlessItIsOnDisk) {
    closeFolder();
    EXPECT_TRUE(save([this](const Call& call) {
                    const bool fails = call.is(SYS_fsync) && call.file(0).starts_with(runtime.path);
                    return fails ? EIO : look(call);
                }).done);
    EXPECT_EQ(place, temporary.path);
}

TEST_F(Copy, LeavesTheRoomOfAFullDiskToTheFile) {
    for (const int full : {ENOSPC, EDQUOT}) {
        writeFile(path(), oldContent());
        place.clear();
        bool failed = false;  // the copy would have room
        const Told told = save([&, full](const Call& call) {
            const bool draft = call.is(SYS_write) && !isPath(call.file(0));
            return draft && !std::exchange(failed, true) ? full : look(call);
        });
        EXPECT_TRUE(told.done);
        EXPECT_EQ(place, runtime.path);
    }
}

TEST_F(Copy, IsMadeAlsoWhereNoRoomIsLeftForTheAttributes) {
    const auto full = [this](const Call& call) {
        return call.is(SYS_fchmod) && call.file(0).starts_with(folder.path) ? ENOSPC : look(call);
    };
    EXPECT_TRUE(save(full).done);
    EXPECT_EQ(place, runtime.path);
}

TEST_F(Copy, IsNeededOnADiskWithoutAnyQuota) {
    const auto full = [this](const Call& call) {
        return call.is(SYS_write) && !isPath(call.file(0)) ? EDQUOT : MAKE;
    };
    EXPECT_FALSE(save(full).done);
    EXPECT_TRUE(readFile(path()) == oldContent());
}

}  // namespace
