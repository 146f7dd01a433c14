// Which lock each command takes, and when.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <cstdlib>
#include <mutex>
#include <thread>

#include "commands/parameter_dialog.h"
#include "explorer/catalogue.h"
#include "explorer/frac_file.h"
#include "tests/commands/handlers_fixture.h"
#include "tests/frac/frac_bytes.h"
#include "tests/support/lock_probe.h"

using frac_bytes::Record;
using stand_ins::choose;
using stand_ins::submenu;
using testing::HasSubstr;

namespace {

// ---- the count of renders owed

using UpdateLock = stand_ins::Handlers;

TEST_F(UpdateLock, IsWaitedForByACommandThatOwesARender) {
    EXPECT_TRUE(waitsFor(update_lock, [] { choose(submenu({"Palette"}), "RGB Cycle"); }));
    EXPECT_EQ(update_count, 1);
}

TEST_F(UpdateLock, IsWaitedForByTheDevicesMenu) {
    EXPECT_TRUE(waitsFor(update_lock, [] { choose(submenu({"Devices"}), "CPU Threads"); }));
    EXPECT_EQ(update_count, 1);
}

TEST_F(UpdateLock, IsWaitedForByANewEntry) {
    EXPECT_TRUE(waitsFor(update_lock, [] { CreateNewFractal(0, 0); }));
}

TEST_F(UpdateLock, IsWaitedForByAStep) {
    EXPECT_TRUE(waitsFor(update_lock, [] { advanceCursor(1, true); }));
}

TEST_F(UpdateLock, IsWaitedForByATypedLoad) {
    EXPECT_TRUE(waitsFor(update_lock, [] { keyboard_input_load("OK", "/nonexistent", nullptr); }));
}

TEST_F(UpdateLock, IsWaitedForByChangedParametersAfterTheirEntryIsCurrentAgain) {
    Gate gate;
    stand_ins::glut.onRedisplay = [&] { gate.pass(); };
    EXPECT_TRUE(waitsFrom(gate, update_lock, [] { param_change("OK", {}, {}, nullptr); }));
    EXPECT_EQ(update_count, 2);
}

TEST_F(UpdateLock, IsNotNeededByACommandThatOwesNothing) {
    EXPECT_FALSE(waitsFor(update_lock, [] { choose(submenu({"Devices", "CPU Threads"}), "2"); }));
}

using UpdateLockDeathTest = UpdateLock;

TEST_F(UpdateLockDeathTest, IsWaitedForByQuit) {
    const auto quit = [] {
        static std::atomic<bool> waited{false};
        std::atexit([] { std::_Exit(waited && update_count == 0 ? 0 : 1); });
        const auto command = [] { fractalsCommand("Quit"); };
        waitsFor(update_lock, command, [] {
            waited = true;
            update_count = 5;
        });
    };
    EXPECT_EXIT(quit(), testing::ExitedWithCode(0), "");
}

// ---- the catalogue

class CatalogueLock : public stand_ins::Handlers {
  protected:
    CatalogueLock() { mkfifo(pipe().c_str(), 0600); }

    std::string path() const { return folder / "catalogue.frac"; }
    std::string pipe() const { return folder / "pipe.frac"; }

  private:
    stand_ins::TemporaryFolder folder;
};

// Reads what is left in an open file and closes it.
std::size_t drain(int file) {
    std::size_t length = 0;
    char block[65536];
    for (ssize_t count = 1; count > 0; length += static_cast<std::size_t>(count)) {
        count = read(file, block, sizeof block);
        if (count < 0) break;
    }
    close(file);
    return length;
}

TEST_F(CatalogueLock, IsHeldWhileASaveIsUnderWay) {
    constexpr std::size_t LONGER_THAN_A_PIPE = 1 << 20;
    setCatalogue({stand_ins::someEntry(std::string(LONGER_THAN_A_PIPE, 'n'))});
    std::thread saving([this] { SaveData(pipe()); });
    const int file = open(pipe().c_str(), O_RDONLY);
    char first = 0;
    EXPECT_EQ(read(file, &first, 1), 1);  // the write has begun and cannot end
    const bool held = isHeld(mutex);
    const std::size_t length = 1 + drain(file);
    saving.join();
    EXPECT_TRUE(held);
    EXPECT_EQ(length, 77 + LONGER_THAN_A_PIPE);
    EXPECT_FALSE(isHeld(mutex));
}

TEST_F(CatalogueLock, IsWaitedForByASave) {
    EXPECT_TRUE(waitsFor(mutex, [this] { SaveData(path()); }));
}

TEST_F(CatalogueLock, IsFreeWhileAFileIsRead) {
    const std::string bytes = Record::named("one").bytes() + Record::named("two").bytes();
    std::thread loading([this] { LoadData(pipe()); });
    const int file = open(pipe().c_str(), O_WRONLY);
    const std::size_t half = bytes.size() / 2 + 1;
    EXPECT_EQ(write(file, bytes.data(), half), static_cast<ssize_t>(half));
    while (printed().find("Loaded fractal\n") == std::string::npos) std::this_thread::yield();
    std::unique_lock lock(mutex, std::try_to_lock);
    const bool free = lock.owns_lock();
    const std::string nameMeanwhile = fractals.at(0).name;
    if (free) lock.unlock();
    EXPECT_GT(write(file, bytes.data() + half, bytes.size() - half), 0);
    close(file);
    loading.join();
    EXPECT_TRUE(free);
    EXPECT_EQ(nameMeanwhile, "first");
    EXPECT_EQ(fractals.at(1).name, "two");
}

TEST_F(CatalogueLock, IsWaitedForByTheReplacementOfTheCatalogue) {
    SaveData(path());
    fractals[0].name = "changed";
    std::string nameMeanwhile;
    EXPECT_TRUE(waitsFor(
        mutex, [this] { LoadData(path()); }, [&] { nameMeanwhile = fractals[0].name; }));
    EXPECT_EQ(nameMeanwhile, "changed");
    EXPECT_EQ(fractals[0].name, "first");
}

TEST_F(CatalogueLock, IsHeldUntilTheRedisplayAfterALoadIsAskedFor) {
    SaveData(path());
    bool held = false;
    std::string printedBefore;
    stand_ins::glut.onRedisplay = [&] {
        held = isHeld(mutex);
        printedBefore = printed();
    };
    LoadData(path());
    EXPECT_TRUE(held);
    EXPECT_THAT(printedBefore, HasSubstr("Loaded  2 fractals.\n"));
    EXPECT_FALSE(isHeld(mutex));
}

TEST_F(CatalogueLock, IsNotTakenByChangedParameters) {
    const auto change = [] { param_change("OK", {"Minimum X"}, {"-8"}, nullptr); };
    EXPECT_FALSE(waitsFor(mutex, change));
    EXPECT_EQ(fractals[0].xMin, -8.0);
}

TEST_F(CatalogueLock, IsWaitedForByANewEntry) {
    EXPECT_TRUE(waitsFor(mutex, [] { CreateNewFractal(0, 0); }));
}

}  // namespace
