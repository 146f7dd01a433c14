// Zooming with the mouse: the drag, its commit, and the glide to the new view.
#include <GL/glut.h>
#include <gmock/gmock.h>

#include <string>

#include "backends/view_state.h"
#include "explorer/navigation.h"
#include "explorer/window_state.h"
#include "tests/explorer/explorer_test.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr int LEFT = 0, RIGHT = 2, PRESS = 0, RELEASE = 1;

class ZoomTest : public ExplorerTest {
  protected:
    ZoomTest() {
        glut.windowWidth = 128;  // half the image's width, a quarter of its height
        glut.windowHeight = 64;
        setCatalogue({namedEntry("parent", 9, {2, -2, 1.5, -1.5})});
    }

    static void drag(int fromX, int fromY, int toX, int toY) {
        mouse(LEFT, PRESS, fromX, fromY);
        mouse_motion_func(toX, toY);
        mouse(LEFT, RELEASE, toX, toY);
    }

    static Rectangle selection() { return {newXMax, newXMin, newYMax, newYMin}; }
};

class PressTest : public ZoomTest {};

TEST_F(PressTest, StartsADrag) {
    mouse(LEFT, PRESS, 10, 20);
    EXPECT_EQ(mouse_x1, 10);
    EXPECT_EQ(mouse_y1, 20);
    EXPECT_EQ(mouse_x2, 10);
    EXPECT_EQ(glut.motion, mouse_motion_func);
    EXPECT_EQ(glut.redisplays, 1);
}

TEST_F(PressTest, LeavesTheSecondRowAsItWas) {
    mouse_y2 = 77;
    mouse(LEFT, PRESS, 10, 20);
    EXPECT_EQ(mouse_y2, 77);
}

TEST_F(PressTest, HidesTheBandAndMarksTheImageStale) {
    rubber_banding = true;
    image_refreshed = true;
    mouse(LEFT, PRESS, 10, 20);
    EXPECT_FALSE(rubber_banding);
    EXPECT_FALSE(image_refreshed);
}

TEST_F(PressTest, UnregistersIdle) {
    mouse(LEFT, PRESS, 10, 20);
    EXPECT_THAT(callsNamed({"glutIdleFunc"}), ElementsAre("glutIdleFunc(null)"));
}

TEST_F(PressTest, OwesNoRender) {
    mouse(LEFT, PRESS, 10, 20);
    EXPECT_EQ(update_count, 0);
}

TEST_F(PressTest, WithAnotherButtonDoesNothing) {
    for (const int button : {1, RIGHT, 3, 4}) mouse(button, PRESS, 10, 20);
    EXPECT_THAT(glut.calls, IsEmpty());
    EXPECT_EQ(mouse_x1, 0);
}

TEST_F(PressTest, WhileZoomingIsOffDoesNothing) {
    zooming_enabled = false;
    mouse(LEFT, PRESS, 10, 20);
    EXPECT_THAT(glut.calls, IsEmpty());
    EXPECT_EQ(mouse_x1, 0);
}

TEST_F(PressTest, AReleaseWithoutADragDoesNothing) {
    mouse(LEFT, RELEASE, 10, 20);
    EXPECT_THAT(glut.calls, IsEmpty());
    EXPECT_EQ(mouse_x2, 0);
}

TEST_F(PressTest, OnTheMenuBelongsToTheMenu) {
    showMenuBar({"First", "Second"});
    glut.calls.clear();
    mouse(LEFT, PRESS, 10, 2);
    EXPECT_THAT(callsNamed({"glutMotionFunc", "glutIdleFunc"}), IsEmpty());
    EXPECT_GE(glut.redisplays, 1);
    EXPECT_EQ(mouse_x1, 0);
}

class MotionTest : public ZoomTest {};

TEST_F(MotionTest, DrawsTheBandToThePointer) {
    image_refreshed = true;
    mouse_motion_func(30, 40);
    EXPECT_TRUE(rubber_banding);
    EXPECT_EQ(mouse_x2, 30);
    EXPECT_EQ(mouse_y2, 40);
    EXPECT_FALSE(image_refreshed);
    EXPECT_EQ(glut.redisplays, 1);
}

TEST_F(MotionTest, DropsTheRendersOwed) {
    update_count = 5;
    mouse_motion_func(30, 40);
    EXPECT_EQ(update_count, 0);
}

TEST_F(MotionTest, WhileZoomingIsOffDoesNothing) {
    zooming_enabled = false;
    update_count = 5;
    mouse_motion_func(30, 40);
    EXPECT_FALSE(rubber_banding);
    EXPECT_EQ(mouse_x2, 0);
    EXPECT_EQ(update_count, 5);
    EXPECT_EQ(glut.redisplays, 0);
}

class DragTest : public ZoomTest {};

TEST_F(DragTest, OtherButtonsAndASecondPressAreIgnored) {
    mouse(LEFT, PRESS, 10, 20);
    glut.calls.clear();
    mouse(LEFT, PRESS, 11, 21);
    mouse(RIGHT, PRESS, 12, 22);
    mouse(RIGHT, RELEASE, 13, 23);
    EXPECT_THAT(glut.calls, IsEmpty());
    EXPECT_EQ(mouse_x1, 10);
    EXPECT_EQ(mouse_x2, 10);
}

TEST_F(DragTest, AClickWithoutMovementZoomsNothing) {
    mouse(LEFT, PRESS, 10, 20);
    glut.calls.clear();
    mouse(LEFT, RELEASE, 10, 20);
    EXPECT_TRUE(zooming_enabled);
    EXPECT_EQ(update_count, 0);
    EXPECT_THAT(glut.calls, IsEmpty());  // the motion callback stays, no idle, no redisplay
}

TEST_F(DragTest, AReturnToTheFirstPointKeepsTheBandAndZoomsNothing) {
    mouse(LEFT, PRESS, 10, 20);
    mouse_motion_func(50, 50);
    mouse(LEFT, RELEASE, 10, 20);
    EXPECT_TRUE(rubber_banding);
    EXPECT_TRUE(zooming_enabled);
    EXPECT_EQ(glut.motion, mouse_motion_func);
    EXPECT_EQ(glut.idle, nullptr);
}

TEST_F(DragTest, AClickEndsTheDragSoThatTheNextPressStartsAnother) {
    mouse(LEFT, PRESS, 10, 20);
    mouse(LEFT, RELEASE, 10, 20);
    mouse(LEFT, PRESS, 60, 50);
    EXPECT_EQ(mouse_x1, 60);
    EXPECT_EQ(mouse_y1, 50);
}

TEST_F(DragTest, AReleaseElsewhereCommitsTheZoom) {
    drag(10, 20, 74, 52);
    EXPECT_FALSE(rubber_banding);
    EXPECT_FALSE(zooming_enabled);
    EXPECT_EQ(mouse_x2, 74);
    EXPECT_EQ(mouse_y2, 52);
    EXPECT_EQ(glut.motion, nullptr);
    EXPECT_EQ(glut.idle, idle);
    EXPECT_EQ(update_count, 1);
}

TEST_F(DragTest, MovementAlongOneAxisIsEnough) {
    drag(10, 20, 10, 21);
    EXPECT_FALSE(zooming_enabled);
}

TEST_F(DragTest, TheCommitAsksForNoRedisplay) {
    mouse(LEFT, PRESS, 10, 20);
    glut.redisplays = 0;
    mouse(LEFT, RELEASE, 74, 52);
    EXPECT_EQ(glut.redisplays, 0);
}

TEST_F(DragTest, TheCommitAddsNoEntryYet) {
    drag(10, 20, 74, 52);
    EXPECT_EQ(fractals.size(), 1u);
}

TEST_F(DragTest, TheCommitShowsTheMenu) {
    ASSERT_FALSE(menu.IsMenuVisible());
    drag(10, 20, 74, 52);
    EXPECT_TRUE(menu.IsMenuVisible());
}

TEST_F(DragTest, TheSelectionIsInBufferPixels) {
    drag(10, 20, 74, 52);
    EXPECT_EQ(selection(), (Rectangle{148, 20, 208, 80}));
}

TEST_F(DragTest, EveryDirectionOfTheDragSelectsTheSame) {
    for (const auto& [fromX, fromY, toX, toY] :
         {std::array{10, 20, 74, 52}, {74, 52, 10, 20}, {10, 52, 74, 20}, {74, 20, 10, 52}}) {
        zooming_enabled = true;
        drag(fromX, fromY, toX, toY);
        EXPECT_EQ(selection(), (Rectangle{148, 20, 208, 80})) << fromX << ' ' << fromY;
    }
}

TEST_F(DragTest, TheProductsAreOfSinglePrecision) {
    glut.windowWidth = 1152;
    glut.windowHeight = 921;
    drag(301, 207, 1001, 811);
    const float sx = 256.0f / 1152.0f, sy = 256.0f / 921.0f;
    EXPECT_EQ(selection(), (Rectangle{double{1001.0f * sx}, double{301.0f * sx},
                                      double{811.0f * sy}, double{207.0f * sy}}));
}

TEST_F(DragTest, ASecondDragAfterAZoomDoesNothing) {
    drag(10, 20, 74, 52);
    glut.calls.clear();
    update_count = 3;
    drag(5, 30, 6, 50);
    EXPECT_THAT(glut.calls, IsEmpty());
    EXPECT_FALSE(rubber_banding);
    EXPECT_EQ(update_count, 3);
}

class GlideTest : public ZoomTest {
  protected:
    // The plane rectangle of the selection (64..192, 64..192) of 256 pixels.
    static constexpr int FROM_X = 32, FROM_Y = 16, TO_X = 96, TO_Y = 48;
    const Rectangle start{2, -2, 1.5, -1.5};
    const Rectangle target{1, -1, 0.75, -0.75};

    GlideTest() {
        drag(FROM_X, FROM_Y, TO_X, TO_Y);
        update_count = 0;
        glut.calls.clear();
        glut.redisplays = 0;
    }

    static void idleTimes(int count) {
        for (int i = 0; i < count; ++i) idle();
    }
};

TEST_F(GlideTest, TheFirstIdleCallAppendsTheNewViewAsACopyOfItsParent) {
    fractals[0].cx = 0.3;
    fractals[0].paletteType = 1;
    idle();
    ASSERT_EQ(fractals.size(), 2u);
    const fractal& zoomed = fractals[1];
    EXPECT_EQ(rectangleOf(zoomed), target);
    EXPECT_EQ(zoomed.name, "parent");
    EXPECT_EQ(zoomed.fractalID, 9);
    EXPECT_EQ(zoomed.cx, 0.3);
    EXPECT_EQ(zoomed.paletteType, 1);
    EXPECT_EQ(zoomed.maxIters, 20);
    EXPECT_EQ(zoomed.maxSize, 4.0);
}

TEST_F(GlideTest, TheNewEntryIsCurrentThoughTheOldViewIsStillShown) {
    idle();
    EXPECT_EQ(currentFractal, 1);
    EXPECT_THAT(glut.titles, ElementsAre(" parent"));
    EXPECT_THAT(printed(), HasSubstr("(-2.000000, -1.500000)-(2.000000, 1.500000)"));
}

TEST_F(GlideTest, TheParentKeepsItsRectangle) {
    idleTimes(20);
    EXPECT_EQ(rectangleOf(fractals[0]), start);
}

TEST_F(GlideTest, TheSelectionAndTheParentsRectangleAreTheEndsOfTheGlide) {
    idle();
    EXPECT_EQ((Rectangle{oldXMax, oldXMin, oldYMax, oldYMin}), start);
    EXPECT_EQ(selection(), target);
}

TEST_F(GlideTest, TheFirstRowOfTheBufferIsTheLowerEdge) {
    newYMin = 0;
    newYMax = 64;
    idle();
    EXPECT_EQ(fractals[1].yMin, -1.5);
    EXPECT_EQ(fractals[1].yMax, -0.75);
}

TEST_F(GlideTest, TheMappingDividesFirst) {
    const test_support::ImageGuard image264(264, 264);  // no power of two: the order shows
    newXMax = 191.7;
    fractals[0].xMin = -0.7;
    fractals[0].xMax = 0.9;
    idle();
    EXPECT_EQ(fractals[1].xMax, 191.7 / 264.0 * (0.9 - -0.7) + -0.7);
}

TEST_F(GlideTest, StartsFromTheStoredRectangleWhateverIsShown) {
    xMax = 77, xMin = 66, yMax = 55, yMin = 44;
    idle();
    EXPECT_EQ(rectangleOf(fractals[1]), target);
}

TEST_F(GlideTest, EachCallMovesEveryEdgeByATwentieth) {
    Rectangle expected = start;
    for (int step = 1; step < 20; ++step) {
        idle();
        for (std::size_t edge = 0; edge < 4; ++edge) {
            expected[edge] += (target[edge] - start[edge]) / 20;
        }
        ASSERT_EQ(viewRectangle(), expected) << step;
    }
}

TEST_F(GlideTest, TheTwentiethCallLandsExactly) {
    newXMax = 64.0 + 1.0 / 3.0;  // steps that do not add up exactly
    idleTimes(20);
    EXPECT_EQ(viewRectangle(), rectangleOf(fractals[1]));
}

TEST_F(GlideTest, LandingMakesTheNewEntryCurrentOnce) {
    idleTimes(19);
    EXPECT_EQ(glut.titles.size(), 1u);
    idle();
    EXPECT_EQ(glut.titles.size(), 2u);
}

TEST_F(GlideTest, IdleIsUnregisteredAtTheLanding) {
    idleTimes(19);
    EXPECT_EQ(glut.idle, idle);
    idle();
    EXPECT_EQ(glut.idle, nullptr);
}

TEST_F(GlideTest, EachCallOwesOneRenderAndAsksForOneRedisplay) {
    for (int step = 1; step <= 20; ++step) {
        idle();
        ASSERT_EQ(update_count, step);
        ASSERT_EQ(glut.redisplays, step);
    }
}

TEST_F(GlideTest, TheImageCountsAsFresh) {
    image_refreshed = false;
    idle();
    EXPECT_TRUE(image_refreshed);
}

TEST_F(GlideTest, APressStopsTheGlideWhereItIs) {
    idleTimes(5);
    const Rectangle where = viewRectangle();
    zooming_enabled = true;
    mouse(LEFT, PRESS, 10, 20);
    EXPECT_EQ(glut.idle, nullptr);
    EXPECT_EQ(viewRectangle(), where);
    EXPECT_EQ(currentFractal, 1);
}

TEST_F(GlideTest, AZoomAfterAStoppedGlideStartsFromTheEntryThatIsCurrent) {
    idleTimes(5);
    zooming_enabled = true;
    drag(FROM_X, FROM_Y, TO_X, TO_Y);
    idle();
    ASSERT_EQ(fractals.size(), 3u);
    EXPECT_EQ(rectangleOf(fractals[2]), (Rectangle{0.5, -0.5, 0.375, -0.375}));
}

TEST_F(GlideTest, AZoomOfAnInvertedDragLandsOnTheSameView) {
    zooming_enabled = true;
    drag(TO_X, TO_Y, FROM_X, FROM_Y);
    idleTimes(20);
    EXPECT_EQ(viewRectangle(), target);
}

TEST_F(GlideTest, NoLockIsHeldWhileTheRenderIsOwedOrRedisplayed) {
    bool bothHeld = false, heldAtRedisplay = false;
    glut.onCall = [&](const std::string& what) {
        bothHeld = bothHeld || (isHeld(mutex) && isHeld(update_lock));
        if (what == "glutPostRedisplay()") heldAtRedisplay = isHeld(mutex) || isHeld(update_lock);
    };
    idleTimes(20);
    EXPECT_FALSE(bothHeld);
    EXPECT_FALSE(heldAtRedisplay);
}

TEST_F(ZoomTest, AnEmptyCatalogueIsLeftEmpty) {
    fractals.clear();
    drag(10, 20, 74, 52);
    idle();
    EXPECT_TRUE(fractals.empty());
}

}  // namespace
