// The display callback and the small callbacks beside it.
#include "explorer/frame_loop.h"
#include "explorer/window_state.h"

#include <GL/freeglut.h>
#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "backends/palette.h"
#include "backends/view_state.h"
#include "explorer/navigation.h"
#include "explorer/window_title.h"
#include "tests/explorer/explorer_test.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::Not;

using Bytes = std::vector<unsigned char>;

class FrameTest : public ExplorerTest {
  protected:
    FrameTest() {
        setCatalogue({namedEntry("", 0, {2, -2, 2, -2})});
        // The first frame of the process is over when a test begins.
        InitColours(0);
        renderScene();
        glut_stand_in::reset();
        update_count = 0;
        totalTime = 0;
        before = ExplorerTest::printed().size();
    }
    ~FrameTest() override {
        updatePalette(0);  // the next test begins without a change
    }

    std::string printed() const { return ExplorerTest::printed().substr(before); }

    static Bytes bytes() { return {buffer.get(), buffer.get() + imageBytes()}; }

  private:
    std::size_t before;
};

TEST_F(FrameTest, TheProjectionCountsInBufferPixelsFromTheTop) {
    renderScene();
    const std::vector<std::string> start(glut.calls.begin(), glut.calls.begin() + 6);
    EXPECT_THAT(start, ElementsAre(call("glMatrixMode", GL_PROJECTION), "glLoadIdentity()",
                                   call("glOrtho", 0, 255, 255, 0, 1, -1),
                                   call("glMatrixMode", GL_MODELVIEW), "glLoadIdentity()",
                                   call("glClear", GL_COLOR_BUFFER_BIT | GL_DEPTH_BUFFER_BIT)));
}

TEST_F(FrameTest, ThePictureIsATextureOverTheWholeWindow) {
    renderScene();
    const int from = glut_stand_in::indexOf("glGenTextures(1)");
    ASSERT_GE(from, 0);
    const std::vector<std::string> drawing(glut.calls.begin() + from,
                                           glut.calls.begin() + from + 20);
    const auto parameter = [](GLenum what, GLint value) {
        return call("glTexParameteri", GL_TEXTURE_2D, what, value);
    };
    EXPECT_THAT(
        drawing,
        ElementsAre(
            "glGenTextures(1)", call("glBindTexture", GL_TEXTURE_2D, 7),
            call("glTexImage2D", GL_TEXTURE_2D, 0, 4, 256, 256, 0, GL_RGBA, GL_UNSIGNED_BYTE),
            call("glTexEnvi", GL_TEXTURE_ENV_MODE, GL_TEXTURE_ENV_MODE, GL_DECAL),
            parameter(GL_TEXTURE_MIN_FILTER, GL_LINEAR),
            parameter(GL_TEXTURE_MAG_FILTER, GL_LINEAR), parameter(GL_TEXTURE_WRAP_S, GL_REPEAT),
            parameter(GL_TEXTURE_WRAP_T, GL_REPEAT), call("glEnable", GL_TEXTURE_2D),
            call("glBindTexture", GL_TEXTURE_2D, 7), call("glBegin", GL_QUADS),
            "glTexCoord2f(0, 0)", "glVertex3f(0, 0, 0)", "glTexCoord2f(1, 0)",
            "glVertex3f(255, 0, 0)", "glTexCoord2f(1, 1)", "glVertex3f(255, 255, 0)",
            "glTexCoord2f(0, 1)", "glVertex3f(0, 255, 0)", "glEnd()"));
}

TEST_F(FrameTest, TheTextureGoesWithTheFrame) {
    renderScene();
    renderScene();
    EXPECT_THAT(callsNamed({"glGenTextures", "glDeleteTextures"}),
                ElementsAre("glGenTextures(1)", "glDeleteTextures(1, 7)", "glGenTextures(1)",
                            "glDeleteTextures(1, 7)"));
}

TEST_F(FrameTest, TheTextureHoldsTheBuffer) {
    update_count = 1;
    renderScene();
    EXPECT_EQ(glut.texture, bytes());
}

TEST_F(FrameTest, TheMenuIsDrawnOverThePictureAndTheSwapIsLast) {
    showMenuBar({"First"});
    glut.calls.clear();
    renderScene();
    const int deleted = glut_stand_in::indexOf("glDeleteTextures(1, 7)");
    ASSERT_GE(deleted, 0);
    EXPECT_GE(glut_stand_in::indexOf("glutStrokeCharacter(F)", deleted), 0);
    EXPECT_EQ(glut.calls.back(), "glutSwapBuffers()");
    EXPECT_THAT(callsNamed({"glutSwapBuffers"}), ElementsAre("glutSwapBuffers()"));
}

TEST_F(FrameTest, AFrameAsksForNoRedisplay) {
    update_count = 2;
    renderScene();
    EXPECT_EQ(glut.redisplays, 0);
}

TEST_F(FrameTest, AnOwedRenderIsMadeAndTakenOff) {
    update_count = 3;
    for (int owed = 2; owed >= 0; --owed) {
        renderScene();
        EXPECT_EQ(update_count, owed);
    }
    renderScene();
    EXPECT_EQ(update_count, 0);
}

TEST_F(FrameTest, ThreeOwedRendersAreThreeRenders) {
    update_count = 3;
    bLogging = false;
    for (int frame = 0; frame < 5; ++frame) renderScene();
    EXPECT_EQ(printed(), "Enqueuing 65536\nEnqueuing 65536\nEnqueuing 65536\n");
}

TEST_F(FrameTest, WithNothingOwedTheOldImageIsShown) {
    const Bytes old(imageBytes(), 42);
    std::copy(old.begin(), old.end(), buffer.get());
    xMin = -0.1;
    renderScene();
    EXPECT_EQ(glut.texture, old);
}

TEST_F(FrameTest, WithNothingOwedTheTimeIsZeroAndTheTotalStays) {
    totalTime = 123;
    renderScene();
    EXPECT_EQ(printed(), "Rendering to texture took 0 s\n");
    EXPECT_EQ(totalTime, 123);
}

TEST_F(FrameTest, ANegativeCountRendersNothingAndStays) {
    update_count = -2;
    renderScene();
    EXPECT_EQ(printed(), "Rendering to texture took 0 s\n");
    EXPECT_EQ(update_count, -2);
}

TEST_F(FrameTest, TheTimingLineFollowsTheRender) {
    update_count = 1;
    renderScene();
    EXPECT_THAT(printed(),
                MatchesRegex("Enqueuing 65536\nRendering to texture took [0-9.e-]+ s\n"));
}

TEST_F(FrameTest, TheTimeIsThatOfTheRenderInSeconds) {
    update_count = 1;
    renderScene();
    const std::string line = printed().substr(printed().find("took ") + 5);
    EXPECT_GT(totalTime, 0);
    EXPECT_NEAR(std::stod(line), static_cast<double>(totalTime) / 1e9,
                1e-6 + std::stod(line) / 1e5);
}

TEST_F(FrameTest, RenderTimesAddUp) {
    totalTime = 1000000000000;
    update_count = 1;
    renderScene();
    EXPECT_GT(totalTime, 1000000000000);
}

TEST_F(FrameTest, WithoutLoggingThereIsNoTimingLineButTheTotalGrows) {
    bLogging = false;
    update_count = 1;
    renderScene();
    EXPECT_EQ(printed(), "Enqueuing 65536\n");
    EXPECT_GT(totalTime, 0);
}

TEST_F(FrameTest, TheViewOfTheMomentIsRendered) {
    update_count = 2;
    renderScene();
    const Bytes wide = glut.texture;
    xMin = -0.5;
    renderScene();
    EXPECT_NE(glut.texture, wide);
}

TEST_F(FrameTest, APaletteChangeAloneIsAnnouncedAndRecoloursNothing) {
    update_count = 1;
    renderScene();
    const Bytes old = glut.texture;
    const std::size_t length = printed().size();
    paletteType = 1;
    renderScene();
    EXPECT_EQ(printed().substr(length), "Palette has changed\nRendering to texture took 0 s\n");
    EXPECT_EQ(glut.texture, old);
}

TEST_F(FrameTest, APaletteChangeIsAnnouncedOnceAndBeforeTheRenderThatUsesIt) {
    update_count = 1;
    renderScene();
    const Bytes old = glut.texture;
    const std::size_t length = printed().size();
    paletteType = 1;
    update_count = 2;
    bLogging = false;
    renderScene();
    renderScene();
    EXPECT_EQ(printed().substr(length), "Palette has changed\nEnqueuing 65536\nEnqueuing 65536\n");
    EXPECT_NE(glut.texture, old);
}

TEST_F(FrameTest, ThePaletteStepComesAfterTheClearing) {
    paletteType = 1;
    std::string printedAtTexture;
    bool printedAtClear = true;
    glut.onCall = [&](const std::string& what) {
        if (what.rfind("glClear", 0) == 0) printedAtClear = !printed().empty();
        if (what.rfind("glGenTextures", 0) == 0) printedAtTexture = printed();
    };
    renderScene();
    EXPECT_FALSE(printedAtClear);
    EXPECT_THAT(printedAtTexture, HasSubstr("Palette has changed\n"));
}

TEST_F(FrameTest, NoLockIsHeldWhileDrawing) {
    bool held = false;
    glut.onCall = [&](const std::string& what) {
        if (what.rfind("glTexImage2D", 0) == 0) held = isHeld(mutex) || isHeld(update_lock);
    };
    update_count = 1;
    renderScene();
    EXPECT_FALSE(held);
}

class BandTest : public FrameTest {
  protected:
    BandTest() {
        glut.windowWidth = 128;
        glut.windowHeight = 64;
        rubber_banding = true;
        mouse_x1 = 10, mouse_y1 = 11, mouse_x2 = 20, mouse_y2 = 21;
    }

    // The calls between the picture and the menu.
    static std::vector<std::string> bandCalls() {
        renderScene();
        const int from = glut_stand_in::indexOf("glDeleteTextures(1, 7)") + 1;
        const int to = glut_stand_in::indexOf("glPushMatrix()", from);
        return {glut.calls.begin() + from, glut.calls.begin() + to};
    }
};

TEST_F(BandTest, IsALoopThroughTheCornersInBufferCoordinates) {
    EXPECT_THAT(bandCalls(),
                ElementsAre(call("glDisable", GL_DEPTH_TEST), call("glDisable", GL_TEXTURE_2D),
                            "glLineWidth(2)", "glColor3f(0.7, 0.7, 0)",
                            call("glBegin", GL_LINE_LOOP), "glVertex2i(20, 44)",
                            "glVertex2i(20, 84)", "glVertex2i(40, 84)", "glVertex2i(40, 44)",
                            "glEnd()", call("glEnable", GL_DEPTH_TEST), "glColor4fv(1, 1, 1, 1)"));
}

TEST_F(BandTest, TheColourOfBeforeComesBack) {
    glColor4f(0.25f, 0.5f, 0.75f, 0.125f);
    EXPECT_EQ(bandCalls().back(), "glColor4fv(0.25, 0.5, 0.75, 0.125)");
}

TEST_F(BandTest, CoordinatesAreTruncated) {
    glut.windowWidth = 100;  // 2.56 buffer pixels a window pixel
    glut.windowHeight = 300;
    mouse_x1 = 33, mouse_y1 = 10, mouse_x2 = -33, mouse_y2 = 299;
    bandCalls();
    EXPECT_THAT(callsNamed({"glVertex2i"}),
                ElementsAre("glVertex2i(84, 8)", "glVertex2i(84, 255)", "glVertex2i(-84, 255)",
                            "glVertex2i(-84, 8)"));
}

TEST_F(BandTest, IsDrawnOnlyWhileBanding) {
    rubber_banding = false;
    renderScene();
    EXPECT_THAT(callsNamed({"glVertex2i"}), IsEmpty());
}

TEST_F(BandTest, TexturingStaysOffUntilTheNextPicture) {
    renderScene();
    const int off = glut_stand_in::indexOf(call("glDisable", GL_TEXTURE_2D));
    ASSERT_GE(off, 0);
    EXPECT_EQ(glut_stand_in::indexOf(call("glEnable", GL_TEXTURE_2D), off), -1);
}

class CallbackTest : public ExplorerTest {};

TEST_F(CallbackTest, ReshapeSetsTheViewportAndNoProjection) {
    reshape(640, 480);
    EXPECT_THAT(glut.calls, ElementsAre("glViewport(0, 0, 640, 480)"));
}

TEST_F(CallbackTest, ReshapeReachesTheMenu) {
    showMenuBar({"First"});
    reshape(640, 480);
    EXPECT_EQ(GlutMenu::CGlutMenu::screen_width, 640.0f);
    EXPECT_EQ(GlutMenu::CGlutMenu::screen_height, 480.0f);
    reshape(1024, 1024);
}

TEST_F(CallbackTest, AKeyAsksForARedisplay) {
    keyboard('x', 0, 0);
    EXPECT_EQ(glut.redisplays, 1);
}

TEST_F(CallbackTest, ASpecialKeyAsksForARedisplay) {
    special_keyboard(GLUT_KEY_LEFT, 0, 0);
    EXPECT_EQ(glut.redisplays, 1);
}

TEST_F(CallbackTest, KeysReachTheMenu) {
    showMenuBar({"First", "Second", "Third"});
    special_keyboard(GLUT_KEY_RIGHT, 0, 0);
    EXPECT_EQ(menu.highlighted_item, 1);
    keyboard('f', 0, 0);  // 102, the code of the right arrow
    EXPECT_EQ(menu.highlighted_item, 2);
}

TEST_F(CallbackTest, KeysOweNoRender) {
    keyboard('x', 0, 0);
    special_keyboard(GLUT_KEY_LEFT, 0, 0);
    EXPECT_EQ(update_count, 0);
}

TEST_F(CallbackTest, BareModifiersGoNowhere) {
    showMenuBar({"First"});
    glut.calls.clear();
    for (const int key : {109, 112, 113, 114, 115, 116, 117}) special_keyboard(key, 0, 0);
    EXPECT_THAT(glut.calls, IsEmpty());
}

TEST_F(CallbackTest, TheTitleNamesProgramVersionAndFile) {
    EXPECT_EQ(get_title(), "Tessary with OpenCL V1.0 :");
    current_filename = "views.frac";
    EXPECT_EQ(get_title(), "Tessary with OpenCL V1.0 :views.frac");
}

TEST_F(CallbackTest, TheWindowTitleIsPassedOnByteForByte) {
    setWindowTitle("Apfelm\xC3\xA4nnchen");
    EXPECT_THAT(glut.titles, ElementsAre("Apfelm\xC3\xA4nnchen"));
}

TEST(FirstFrame, BuildsThePaletteInSilenceAndRendersInFullColour) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            const test_support::ImageGuard image(256, 256);
            test_support::sendStdoutToStderr();
            copyToView(test_support::makeView(0, -2, 2, -2, 2, 20));
            paletteType = 1;
            bCPU = true;
            bLogging = false;
            renderScene();
            std::_Exit(cpuPalette == tempColours.get() && update_count == 0 ? 0 : 1);
        },
        testing::ExitedWithCode(0), Not(HasSubstr("Palette")));
}

TEST(FirstFrame, LoggingIsOnAtTheStart) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(
        {
            const test_support::ImageGuard image(256, 256);
            test_support::sendStdoutToStderr();
            bCPU = true;
            update_count = 0;
            renderScene();
            std::_Exit(0);
        },
        testing::ExitedWithCode(0), HasSubstr("Rendering to texture took 0 s\n"));
}

}  // namespace
