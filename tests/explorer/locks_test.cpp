// Which lock frame loop and navigation take, and when.
#include <gmock/gmock.h>

#include <functional>
#include <iostream>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "backends/palette.h"
#include "backends/view_state.h"
#include "explorer/frame_loop.h"
#include "explorer/navigation.h"
#include "tests/explorer/explorer_test.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

// Looks at every piece of text on its way to standard output.
class Onlooker : public std::stringbuf {
  public:
    explicit Onlooker(std::function<void(const std::string&)> f)
        : look(std::move(f)), before(std::cout.rdbuf(this)) {}
    ~Onlooker() override { std::cout.rdbuf(before); }
    Onlooker(const Onlooker&) = delete;
    Onlooker& operator=(const Onlooker&) = delete;

  protected:
    std::streamsize xsputn(const char* text, std::streamsize length) override {
        look(std::string(text, static_cast<std::size_t>(length)));
        return std::stringbuf::xsputn(text, length);
    }

  private:
    std::function<void(const std::string&)> look;
    std::streambuf* before;
};

class LockTest : public ExplorerTest {
  protected:
    LockTest() {
        setCatalogue({namedEntry("p", 1, {2, -2, 2, -2}), namedEntry("p", 1, {1, -1, 1, -1}),
                      namedEntry("stranger", 2, {0, -1, 1, 0})});
        InitColours(0);
        updatePalette(0);
    }

    // Whether the catalogue's lock is held at each moment in which a view is made current.
    static std::vector<bool> heldWhenApplied(const std::function<void()>& call) {
        std::vector<bool> held;
        glut.onCall = [&](const std::string& what) {
            if (what.rfind("glutSetWindowTitle", 0) == 0) held.push_back(isHeld(mutex));
        };
        call();
        glut.onCall = nullptr;
        return held;
    }

    static void selectTheMiddle() {
        newXMin = newYMin = 64;
        newXMax = newYMax = 192;
    }
};

// ---- the catalogue

TEST_F(LockTest, AZoomBeginsUnderTheCatalogues) {
    selectTheMiddle();
    EXPECT_THAT(heldWhenApplied(idle), ElementsAre(true));
}

TEST_F(LockTest, AZoomWaitsForTheCataloguesBeforeItAppends) {
    selectTheMiddle();
    EXPECT_TRUE(waitsFor(mutex, idle, [] {
        EXPECT_EQ(fractals.size(), 3u);
        EXPECT_EQ(currentFractal, 0);
    }));
    EXPECT_EQ(fractals.size(), 4u);
}

TEST_F(LockTest, AGlideLandsUnderTheCatalogues) {
    selectTheMiddle();
    for (int step = 1; step < 20; ++step) idle();
    EXPECT_THAT(heldWhenApplied(idle), ElementsAre(true));
}

TEST_F(LockTest, AStepOfAGlideOnItsWayNeedsNone) {
    selectTheMiddle();
    idle();
    EXPECT_FALSE(waitsFor(mutex, idle));
}

TEST_F(LockTest, CyclingJumpsUnderTheCatalogues) {
    currentFractal = 1;
    cycleDir = 1;
    EXPECT_THAT(heldWhenApplied(idle), ElementsAre(true));
    EXPECT_EQ(currentFractal, 2);
}

TEST_F(LockTest, CyclingWaitsForTheCataloguesBeforeItGlides) {
    currentFractal = 1;
    cycleDir = -1;
    oldXMax = 77;
    EXPECT_TRUE(waitsFor(mutex, idle, [] { EXPECT_EQ(oldXMax, 77); }));
    EXPECT_EQ(oldXMax, 1);
}

TEST_F(LockTest, AStepForwardsWaitsForTheCatalogues) {
    EXPECT_TRUE(waitsFor(
        mutex, [] { advanceCursor(1, false); }, [] { EXPECT_EQ(currentFractal, 0); }));
    EXPECT_EQ(currentFractal, 1);
}

TEST_F(LockTest, AStepBackwardsAndNoneNeedNot) {
    currentFractal = 1;
    EXPECT_FALSE(waitsFor(mutex, [] { advanceCursor(-1, false); }));
    EXPECT_FALSE(waitsFor(mutex, [] { advanceCursor(0, true); }));
}

// ---- the count of renders owed

TEST_F(LockTest, ADragWaitsForTheCountBeforeItDropsIt) {
    EXPECT_TRUE(waitsFor(
        update_lock, [] { mouse_motion_func(30, 40); }, [] { update_count = 5; }));
    EXPECT_EQ(update_count, 0);
}

TEST_F(LockTest, AFrameWaitsForTheCountBeforeItLooksAtIt) {
    EXPECT_TRUE(waitsFor(update_lock, renderScene, [] { update_count = 1; }));
    EXPECT_THAT(printed(), HasSubstr("Enqueuing"));
}

TEST_F(LockTest, AFrameWaitsForTheCountAgainBeforeItTakesOneOff) {
    update_count = 1;
    Gate gate;
    bool passed = false;
    const Onlooker onlooker([&](const std::string& text) {
        if (passed || text.find("Enqueuing") == std::string::npos) return;
        passed = true;
        gate.pass();
    });
    EXPECT_TRUE(waitsFrom(gate, update_lock, renderScene, [] { update_count = 7; }));
    EXPECT_EQ(update_count, 6);
}

}  // namespace
