// Stepping through the catalogue: by hand, by cycling, and in benchmark mode.
#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "backends/view_state.h"
#include "backends/worker_pool.h"
#include "explorer/navigation.h"
#include "explorer/window_state.h"
#include "tests/explorer/explorer_test.h"

namespace {

using testing::ElementsAre;

using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;

constexpr int LEFT = 0, PRESS = 0, RELEASE = 1;

const Rectangle FIRST{1, 0, 1, 0}, SECOND{3, 2, 3, 2}, THIRD{5, 4, 5, 4};

class AdvanceTest : public ExplorerTest {
  protected:
    AdvanceTest() {
        setCatalogue(
            {namedEntry("a", 1, FIRST), namedEntry("b", 2, SECOND), namedEntry("c", 3, THIRD)});
    }
};

TEST_F(AdvanceTest, ForwardsAppliesTheNextEntry) {
    EXPECT_TRUE(advanceCursor(1, true));
    EXPECT_EQ(currentFractal, 1);
    EXPECT_EQ(viewRectangle(), SECOND);
    EXPECT_THAT(glut.titles, ElementsAre(" b"));
    EXPECT_EQ(glut.redisplays, 1);
    EXPECT_EQ(update_count, 1);
}

TEST_F(AdvanceTest, BackwardsAppliesThePreviousEntry) {
    currentFractal = 2;
    EXPECT_TRUE(advanceCursor(-1, true));
    EXPECT_EQ(currentFractal, 1);
    EXPECT_EQ(viewRectangle(), SECOND);
}

TEST_F(AdvanceTest, AtTheLastEntryItDoesNotMoveButOwesARender) {
    currentFractal = 2;
    EXPECT_FALSE(advanceCursor(1, true));
    EXPECT_EQ(currentFractal, 2);
    EXPECT_EQ(viewRectangle(), FIRST);  // what was shown
    EXPECT_EQ(update_count, 1);
    EXPECT_THAT(glut.calls, IsEmpty());
}

TEST_F(AdvanceTest, AtTheFirstEntryItDoesNotMoveButOwesARender) {
    EXPECT_FALSE(advanceCursor(-1, true));
    EXPECT_EQ(currentFractal, 0);
    EXPECT_EQ(update_count, 1);
    EXPECT_THAT(glut.calls, IsEmpty());
}

TEST_F(AdvanceTest, WithoutApplyOnlyTheIndexMoves) {
    EXPECT_TRUE(advanceCursor(1, false));
    EXPECT_EQ(currentFractal, 1);
    EXPECT_EQ(viewRectangle(), FIRST);
    EXPECT_EQ(update_count, 1);
    EXPECT_THAT(glut.calls, IsEmpty());
}

TEST_F(AdvanceTest, StayingAppliesTheCurrentEntryAgainEvenWithoutApply) {
    for (const bool apply : {true, false}) {
        copyToView(namedEntry("", 0, {9, 8, 9, 8}));
        EXPECT_TRUE(advanceCursor(0, apply));
        EXPECT_EQ(viewRectangle(), FIRST);
    }
    EXPECT_EQ(glut.redisplays, 2);
    EXPECT_EQ(update_count, 2);
}

TEST_F(AdvanceTest, AnyOtherDirectionLeavesTheIndexAndReportsNoMove) {
    EXPECT_FALSE(advanceCursor(2, true));
    EXPECT_FALSE(advanceCursor(-7, true));
    EXPECT_EQ(currentFractal, 0);
}

TEST_F(AdvanceTest, AnEmptyCatalogueIsHarmless) {
    fractals.clear();
    currentFractal = -1;
    EXPECT_FALSE(advanceCursor(1, true));
    EXPECT_FALSE(advanceCursor(-1, true));
    advanceCursor(0, true);
    EXPECT_EQ(currentFractal, -1);
    EXPECT_EQ(update_count, 3);
}

class CycleTest : public ExplorerTest {
  protected:
    void startCycling(const std::vector<fractal>& entries) {
        setCatalogue(entries);
        cycleDir = 1;
    }

    // The current index after each of so many idle calls.
    static std::vector<int> indicesOf(int calls) {
        std::vector<int> indices;
        for (int i = 0; i < calls; ++i) {
            idle();
            indices.push_back(currentFractal);
        }
        return indices;
    }

    const std::vector<fractal> strangers = {namedEntry("a", 1, FIRST), namedEntry("b", 2, SECOND),
                                            namedEntry("c", 3, THIRD)};
    const std::vector<fractal> family = {namedEntry("p", 1, {2, -2, 2, -2}),
                                         namedEntry("p", 1, {1, 0, 1.0 / 3.0, -1})};
};

TEST_F(CycleTest, StrangersAreShownBackAndForth) {
    startCycling(strangers);
    EXPECT_THAT(indicesOf(9), ElementsAre(1, 2, 1, 0, 1, 2, 1, 0, 1));
}

TEST_F(CycleTest, AStrangerIsJumpedTo) {
    startCycling(strangers);
    idle();
    EXPECT_EQ(viewRectangle(), SECOND);
    EXPECT_THAT(glut.titles, ElementsAre(" b"));
}

TEST_F(CycleTest, EachCallAsksForOneRedisplay) {
    startCycling(strangers);
    for (int calls = 1; calls <= 6; ++calls) {
        idle();
        ASSERT_EQ(glut.redisplays, calls);
    }
}

TEST_F(CycleTest, EveryMoveOfTheCursorOwesARenderOfItsOwn) {
    startCycling(strangers);
    idle();
    EXPECT_EQ(update_count, 2);  // the move's and the frame's
    idle();
    EXPECT_EQ(update_count, 4);
    idle();
    EXPECT_EQ(update_count, 7);  // the move that failed counts too
}

TEST_F(CycleTest, NothingMovesOnOnceTheProgramIsEnding) {
    startCycling(strangers);
    shutdown_threads = true;
    EXPECT_THAT(indicesOf(2), ElementsAre(0, 0));
    shutdown_threads = false;
    EXPECT_EQ(update_count, 0);
    EXPECT_EQ(glut.redisplays, 0);
}

TEST_F(CycleTest, TheImageCountsAsFresh) {
    startCycling(strangers);
    idle();
    EXPECT_TRUE(image_refreshed);
}

TEST_F(CycleTest, ARelativeIsReachedInTwentyCalls) {
    startCycling(family);
    const Rectangle from = rectangleOf(family[0]), to = rectangleOf(family[1]);
    Rectangle expected = from;
    for (int step = 1; step < 20; ++step) {
        idle();
        for (std::size_t edge = 0; edge < 4; ++edge) expected[edge] += (to[edge] - from[edge]) / 20;
        ASSERT_EQ(viewRectangle(), expected) << step;
        ASSERT_EQ(currentFractal, 1);
    }
    idle();
    EXPECT_EQ(viewRectangle(), to);
}

TEST_F(CycleTest, TheGlideGoesBackInTwentyCallsToo) {
    startCycling(family);
    indicesOf(20);
    idle();
    EXPECT_EQ(currentFractal, 0);
    EXPECT_NE(viewRectangle(), rectangleOf(family[0]));
    indicesOf(19);
    EXPECT_EQ(viewRectangle(), rectangleOf(family[0]));
    EXPECT_EQ(cycleDir, -1);
}

TEST_F(CycleTest, AGlideWhileCyclingLeavesIdleAlone) {
    startCycling(family);
    indicesOf(60);
    EXPECT_THAT(callsNamed({"glutIdleFunc"}), IsEmpty());
}

TEST_F(CycleTest, NoEntryIsEverAdded) {
    startCycling(family);
    indicesOf(100);
    EXPECT_EQ(fractals.size(), 2u);
}

TEST_F(CycleTest, AGlideStartsFromTheEntryLeftWhateverIsShown) {
    startCycling(family);
    idle();
    EXPECT_EQ((Rectangle{oldXMax, oldXMin, oldYMax, oldYMin}), rectangleOf(family[0]));
    EXPECT_EQ((Rectangle{newXMax, newXMin, newYMax, newYMin}), rectangleOf(family[1]));
}

TEST_F(CycleTest, ASingleEntryGlidesOntoItself) {
    startCycling({strangers[0]});
    indicesOf(45);
    EXPECT_EQ(viewRectangle(), FIRST);
    EXPECT_EQ(currentFractal, 0);
}

TEST_F(CycleTest, CyclingInterruptedByADragResumesAtTheReleaseInsteadOfZooming) {
    startCycling(strangers);
    idle();
    mouse(LEFT, PRESS, 10, 20);
    EXPECT_EQ(glut.idle, nullptr);
    mouse_motion_func(60, 70);
    mouse(LEFT, RELEASE, 60, 70);
    EXPECT_EQ(glut.idle, idle);
    idle();
    EXPECT_EQ(currentFractal, 2);
    EXPECT_EQ(viewRectangle(), THIRD);
    EXPECT_EQ(fractals.size(), 3u);
}

TEST_F(CycleTest, AnEmptyCatalogueIsHarmless) {
    startCycling(strangers);
    fractals.clear();
    currentFractal = -1;
    indicesOf(3);
    EXPECT_EQ(currentFractal, -1);
}

TEST_F(CycleTest, TheTwoLocksAreNeverHeldTogether) {
    startCycling(family);
    bool both = false;
    glut.onCall = [&](const std::string&) {
        both = both || (isHeld(mutex) && isHeld(update_lock));
    };
    indicesOf(45);
    EXPECT_FALSE(both);
}

class BenchmarkTest : public CycleTest {
  protected:
    void startBenchmark(const std::vector<fractal>& entries) {
        startCycling(entries);
        bBench = true;
        totalTime = 2500000000;
        glut.idle = idle;
    }
};

TEST_F(BenchmarkTest, StepsOnceOverEveryEntryAndThenPrintsTheTotal) {
    startBenchmark(strangers);
    indicesOf(2);
    EXPECT_THAT(printed(), Not(HasSubstr("Total")));
    idle();
    EXPECT_THAT(printed(), HasSubstr("Total rendering time 2.5 s\n"));
}

TEST_F(BenchmarkTest, TheEndTurnsCyclingAndBenchmarkOffAndAppliesTheLastEntryAgain) {
    startBenchmark(strangers);
    indicesOf(3);
    EXPECT_EQ(cycleDir, 0);
    EXPECT_FALSE(bBench);
    EXPECT_EQ(currentFractal, 2);
    EXPECT_THAT(glut.titles, ElementsAre(" b", " c", " c"));
    EXPECT_THAT(printed(), HasSubstr(" s\nc Z-range"));
}

TEST_F(BenchmarkTest, TwentyFramesOfTheLastEntryFollowAndThenIdleGoes) {
    startBenchmark(strangers);
    indicesOf(2);
    for (int frame = 1; frame <= 20; ++frame) {
        ASSERT_EQ(glut.idle, idle) << frame;
        idle();
        ASSERT_EQ(viewRectangle(), THIRD) << frame;
    }
    EXPECT_EQ(glut.idle, nullptr);
    EXPECT_EQ(fractals.size(), 3u);
}

TEST_F(BenchmarkTest, TheTotalIsPrintedOnce) {
    startBenchmark(strangers);
    indicesOf(22);
    const std::string all = printed();
    EXPECT_EQ(all.find("Total"), all.rfind("Total"));
}

TEST_F(BenchmarkTest, ASingleEntryEndsAtTheFirstCall) {
    startBenchmark({strangers[0]});
    idle();
    EXPECT_THAT(printed(), HasSubstr("Total rendering time 2.5 s\n"));
}

TEST_F(BenchmarkTest, AnEmptyCatalogueEndsItToo) {
    startBenchmark(strangers);
    fractals.clear();
    currentFractal = -1;
    indicesOf(1);
    EXPECT_THAT(printed(), HasSubstr("Total rendering time 2.5 s\n"));
    EXPECT_EQ(glut.idle, nullptr);
}

}  // namespace
