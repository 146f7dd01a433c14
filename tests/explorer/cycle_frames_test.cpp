// The pictures that cycling and the benchmark show, one display call after the other.
#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "backends/palette.h"
#include "backends/view_state.h"
#include "explorer/frame_loop.h"
#include "explorer/navigation.h"
#include "explorer/window_state.h"
#include "tests/explorer/explorer_test.h"

namespace {

using testing::DoubleNear;
using testing::Each;
using testing::HasSubstr;
using testing::Ne;
using testing::Not;

using Bytes = std::vector<unsigned char>;
using Pictures = std::vector<Bytes>;

int countOf(const std::string& part, const std::string& text) {
    int count = 0;
    for (auto at = text.find(part); at != std::string::npos; at = text.find(part, at + 1)) ++count;
    return count;
}

// The sum of the times in all timing lines.
double sumOfTimes(const std::string& text) {
    const std::string start = "Rendering to texture took ";
    double sum = 0;
    for (auto at = text.find(start); at != std::string::npos; at = text.find(start, at + 1)) {
        sum += std::stod(text.substr(at + start.size()));
    }
    return sum;
}

class FramesTest : public ExplorerTest {
  protected:
    FramesTest() {
        // The first frame of the process is over when a test begins.
        InitColours(0);
        updatePalette(0);
    }

    // Makes these the catalogue, draws each of them, and owes one render, as start-up does.
    void start(const std::vector<fractal>& entries) {
        bLogging = false;
        for (const fractal& entry : entries) {
            copyToView(entry);
            update_count = 1;
            renderScene();
            pictures.push_back(glut.texture);
        }
        bLogging = true;
        setCatalogue(entries);
        update_count = 1;
        totalTime = 0;
        cycleDir = 1;
        glut.idle = idle;
        before = ExplorerTest::printed().size();
        display();
    }

    // The main loop: each idle call asks for a display call.
    void loop(int idleCalls) {
        for (int call = 0; call < idleCalls; ++call) {
            ASSERT_NE(glut.idle, nullptr) << call;
            glut.idle();
            display();
        }
    }

    void display() {
        renderScene();
        shown.push_back(glut.texture);
    }

    std::string printed() const { return ExplorerTest::printed().substr(before); }

    static int rendersIn(const std::string& text) { return countOf("Enqueuing 65536\n", text); }

    // Those shown from the frame of this number on.
    Pictures shownFrom(int frame) const { return {shown.begin() + frame, shown.end()}; }

    // Of the entries, and of the frames: 0 is the one before the first idle call.
    Pictures pictures, shown;

    const std::vector<fractal> strangers = {namedEntry("a", 1, {2, -2, 2, -2}),
                                            namedEntry("b", 2, {1, -1, 1, -1}),
                                            namedEntry("c", 3, {0, -1, 1, 0})};
    const std::vector<fractal> family = {namedEntry("p", 1, {2, -2, 2, -2}),
                                         namedEntry("p", 1, {1, -0.5, 1.0 / 3.0, -1})};

  private:
    std::size_t before = 0;
};

using CycleFramesTest = FramesTest;

TEST_F(CycleFramesTest, StrangersAreShownBackAndForthOneFrameEach) {
    start(strangers);
    loop(6);
    const auto& [a, b, c] = std::tie(pictures[0], pictures[1], pictures[2]);
    EXPECT_EQ(shown, (Pictures{a, b, c, b, a, b, c}));
}

TEST_F(CycleFramesTest, EveryFrameIsARenderOfItsOwn) {
    start(strangers);
    loop(6);
    EXPECT_EQ(rendersIn(printed()), 7);
}

TEST_F(CycleFramesTest, ARelativeIsReachedInTwentyFramesEachWay) {
    start(family);
    loop(40);
    for (std::size_t frame = 1; frame < shown.size(); ++frame) {
        ASSERT_NE(shown[frame], shown[frame - 1]) << frame;
        ASSERT_EQ(shown[frame] == pictures[1], frame == 20) << frame;
        ASSERT_EQ(shown[frame] == pictures[0], frame == 40) << frame;
    }
    EXPECT_EQ(rendersIn(printed()), 41);
}

class BenchmarkFramesTest : public FramesTest {
  protected:
    // Runs the benchmark over these to where it leaves the main loop without an idle function.
    void run(const std::vector<fractal>& entries, int idleCalls) {
        bBench = true;
        start(entries);
        loop(idleCalls);
        EXPECT_EQ(glut.idle, nullptr);
    }

    // What was printed up to the line of the total, and from it on.
    std::string untilTotal() const { return printed().substr(0, total()); }
    std::string afterTotal() const { return printed().substr(total()); }

  private:
    std::size_t total() const { return printed().find("Total rendering time "); }
};

TEST_F(BenchmarkFramesTest, RendersEachStrangerOnceBeforeTheTotal) {
    run(strangers, 22);
    EXPECT_EQ(rendersIn(untilTotal()), 3);
    EXPECT_EQ((Pictures{shown[0], shown[1], shown[2]}), pictures);
}

TEST_F(BenchmarkFramesTest, ShowsTheLastEntryInTwentyMoreFrames) {
    run(strangers, 22);
    EXPECT_EQ(rendersIn(afterTotal()), 20);
    EXPECT_THAT(shownFrom(2), Each(pictures[2]));
}

TEST_F(BenchmarkFramesTest, TheTotalIsTheSumOfTheRenderTimesBeforeIt) {
    run(strangers, 22);
    const std::string line = afterTotal();
    const double total = std::stod(line.substr(std::string("Total rendering time ").size()));
    EXPECT_THAT(total, DoubleNear(sumOfTimes(untilTotal()), 1e-6 + total / 1e4));
    EXPECT_GT(total, 0.0);
}

TEST_F(BenchmarkFramesTest, GlidesToARelativeInTwentyRendersBeforeTheTotal) {
    run(family, 40);
    EXPECT_EQ(rendersIn(untilTotal()), 21);
    EXPECT_EQ(rendersIn(afterTotal()), 20);
    EXPECT_EQ(shown[20], pictures[1]);
    EXPECT_THAT((Pictures{shown.begin(), shown.begin() + 20}), Each(Ne(pictures[1])));
}

}  // namespace
