// Whichever call of a save fails and before whichever the process is killed: what was in the file
// or what was to be is whole, the file is what it was besides, and the next save leaves nothing
// behind.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <sys/syscall.h>

#include <algorithm>
#include <filesystem>

#include "tests/frac/watched_save.h"
#include "tests/support/sanitized.h"

using namespace watched_save;
using test_support::readFile;
using test_support::writeFile;
using testing::IsEmpty;
using traced_child::Call;
using traced_child::KILL;
using traced_child::MAKE;
using traced_child::PRETEND;
using traced_child::Watch;

namespace {

// One way in which a save can go.
struct Way {
    std::string name;
    bool exists = true;          // there is an old file
    bool secondName = false;     // it has another link
    bool foreignFolder = false;  // the saver may not write to the folder
    bool fullDisk = false;       // the folder has no room for another file
    Watch watch = [](const Call&) { return MAKE; };
};

bool opensUnnamed(const Call& call) {
    return call.is(SYS_openat) && (call.flags(2) & O_TMPFILE) == O_TMPFILE;
}

bool creates(const Call& call) {
    return call.is(SYS_openat) && (opensUnnamed(call) || (call.flags(2) & O_CREAT) != 0);
}

int refuseUnnamed(const Call& call) {
    return opensUnnamed(call) ? EOPNOTSUPP : MAKE;
}

int withoutProc(const Call& call) {
    return call.is(SYS_linkat) ? ENOENT : MAKE;
}

int refuseOwner(const Call& call) {
    return call.is(SYS_fchmod) ? EPERM : MAKE;
}

// A sanitizer's allocator ends the process when it is given no memory.
bool isOfASanitizer(const Call& call) {
    return SANITIZED && (call.is(SYS_mmap) || call.is(SYS_munmap));
}

class EachTurn : public WatchedSave, public testing::WithParamInterface<Way> {
  protected:
    void SetUp() override {
        WatchedSave::SetUp();
        if (IsSkipped()) return;
        if (GetParam().foreignFolder && !isRoot()) GTEST_SKIP() << "only root has foreign folders";
    }

    // What becomes of a call where nothing is made to fail. Nobody waits for the disk: that takes
    // most of the time.
    int usual(const Call& call) const {
        const bool full = GetParam().fullDisk && creates(call) &&
                          call.text(1).compare(0, folder.path.size(), folder.path) == 0;
        if (full) return ENOSPC;
        return call.is(SYS_fsync) ? PRETEND : GetParam().watch(call);
    }

    // This verdict on the call with this number, in the order in which they are made.
    Watch atTurn(int turn, int verdict) {
        count = 0;
        return [=, this](const Call& call) {
            if (isOfASanitizer(call)) return MAKE;
            return count++ == turn ? verdict : usual(call);
        };
    }

    // As it was before each save.
    void setUpFiles() {
        for (const test_support::TemporaryFolder* each : {&folder, &runtime, &temporary}) {
            chmod(each->path.c_str(), 0755);
            for (const std::string& name : each->names()) std::filesystem::remove(*each / name);
        }
        if (GetParam().exists) setUpOld();
        if (GetParam().foreignFolder) {
            asNobody();
            chmod(folder.path.c_str(), 0555);
        }
        before = attributesOf(path());
    }

    void setUpOld() {
        writeFile(path(), oldContent());
        chmod(path().c_str(), 0640);
        setAttribute(path(), "user.note", "kept");
        setAttribute(path(), "system.posix_acl_access", someAccessList());
        if (GetParam().secondName) std::filesystem::create_hard_link(path(), folder / "b.frac");
    }

    bool somethingIsWhole() const {
        const std::string found = readFile(path());
        if (found == newContent()) return true;
        if (!GetParam().exists) return !std::filesystem::exists(path());
        if (found == oldContent()) return true;
        const std::vector<std::string> kept = copies();
        return std::any_of(kept.begin(), kept.end(),
                           [](const std::string& copy) { return readFile(copy) == oldContent(); });
    }

    void expectItsAttributes() const {
        EXPECT_TRUE(!GetParam().exists || attributesOf(path()) == before)
            << testing::PrintToString(attributesOf(path()));
    }

    void expectGood(const std::string& content) {
        EXPECT_TRUE(readFile(path()) == content);
        expectItsAttributes();
        EXPECT_TRUE(!GetParam().secondName || readFile(folder / "b.frac") == content);
        EXPECT_EQ(folder.names().size(), GetParam().secondName ? 2u : 1u);
        EXPECT_THAT(runtime.names(), IsEmpty());
        EXPECT_THAT(temporary.names(), IsEmpty());
    }

    void expectNextSaveCleansUp() {
        EXPECT_TRUE(save([&](const Call& call) { return usual(call); }, "the next").done);
        expectGood("the next");
    }

    Attributes before;
    int count = 0;
};

TEST_P(EachTurn, KilledBeforeAnyCallLosesNothing) {
    for (int turn = 0;; ++turn) {
        SCOPED_TRACE("killed before call " + std::to_string(turn));
        setUpFiles();
        const Told told = save(atTurn(turn, KILL));
        if (told.ended) break;
        EXPECT_EQ(ending, -SIGKILL);
        EXPECT_TRUE(somethingIsWhole());
        expectItsAttributes();
        expectNextSaveCleansUp();
        if (HasFailure()) return;
    }
    RecordProperty("points", count);
    EXPECT_GT(count, 15);
    expectGood(newContent());
}

// What a failed save tells is so: the old content is in the file or in the copy it names. After the
// file has taken its place only closing and syncing can fail.
void expectTruth(const Told& told, const std::string& found, bool existed) {
    const std::string old = existed ? oldContent() : "";
    EXPECT_EQ(told.done, std::string(told.error).empty());
    if (told.done) {
        EXPECT_TRUE(found == newContent());
    } else if (told.safeCopy[0] != '\0') {
        EXPECT_TRUE(readFile(told.safeCopy) == old);
    } else {
        EXPECT_TRUE(found == old || found == newContent());
    }
}

// A sanitizer makes every child many times slower, and looks at what is done about an error, which
// is the same for all of them.
std::vector<int> errors() {
    if (SANITIZED) return {EIO};
    return {EIO, ENOSPC, EACCES, EPERM};
}

TEST_P(EachTurn, WhicheverCallFailsNothingIsLost) {
    int points = 0;
    for (const int error : errors()) {
        for (int turn = 0; turn == 0 || turn < count; ++turn) {
            SCOPED_TRACE("call " + std::to_string(turn) + " fails with " + std::to_string(error));
            setUpFiles();
            const Told told = save(atTurn(turn, error));
            if (ending == -SIGABRT) continue;  // the allocator's call, or a sanitizer's
            ASSERT_TRUE(told.ended);
            expectTruth(told, readFile(path()), GetParam().exists);
            expectItsAttributes();
            expectNextSaveCleansUp();
            if (HasFailure()) return;
            ++points;
        }
    }
    RecordProperty("points", points);
    EXPECT_GT(points, 15 * static_cast<int>(errors().size()));
}

bool mayBeInterrupted(const Call& call) {
    for (const long number :
         {SYS_openat, SYS_read, SYS_write, SYS_fsync, SYS_ftruncate, SYS_close}) {
        if (call.is(number)) return true;
    }
    return false;
}

TEST_P(EachTurn, AnInterruptedCallIsNoFailure) {
    int interrupted = 0;
    for (int turn = 0; turn == 0 || turn < count; ++turn) {
        SCOPED_TRACE("call " + std::to_string(turn) + " is interrupted");
        setUpFiles();
        count = 0;
        const Told told = save([&](const Call& call) {
            const int verdict = usual(call);
            if (count++ != turn || verdict > 0 || !mayBeInterrupted(call)) return verdict;
            ++interrupted;
            return EINTR;
        });
        EXPECT_TRUE(told.done) << told.error;
        expectGood(newContent());
        if (HasFailure()) return;
    }
    RecordProperty("points", interrupted);
    EXPECT_GT(interrupted, 5);
}

INSTANTIATE_TEST_SUITE_P(
    Ways, EachTurn,
    testing::Values(Way{.name = "ANewFile", .exists = false},
                    Way{.name = "ANewFileOnAnOldSystem", .exists = false, .watch = refuseUnnamed},
                    Way{.name = "AnotherFileInItsPlace"},
                    Way{.name = "WithoutUnnamedFiles", .watch = refuseUnnamed},
                    Way{.name = "WithoutProc", .watch = withoutProc},
                    Way{.name = "ASecondName", .secondName = true},
                    Way{.name = "AForeignFolder", .foreignFolder = true},
                    Way{.name = "AnOwnerThatCannotBeKept", .watch = refuseOwner},
                    Way{.name = "AFullDisk", .fullDisk = true}),
    [](const auto& tested) { return tested.param.name; });

}  // namespace
