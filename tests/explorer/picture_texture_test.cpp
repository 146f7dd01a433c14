// The picture on an OpenGL that takes only small textures. What it takes is found out once a
// process, so each case is a process of its own.
#include "explorer/picture_texture.h"

#include <GL/gl.h>
#include <gmock/gmock.h>

#include <algorithm>
#include <cmath>
#include <iostream>
#include <set>

#include "backends/image.h"
#include "tests/support/backend_globals.h"
#include "tests/support/glut_stand_in.h"
#include "tests/support/stdout_capture.h"

namespace {

using glut_stand_in::call;
using glut_stand_in::callsNamed;
using glut_stand_in::glut;
using testing::AllOf;
using testing::ExitedWithCode;
using testing::HasSubstr;
using testing::Not;

constexpr int WIDTH = 264, HEIGHT = 256;

// Each pixel tells where it is.
void paintBuffer() {
    for (int row = 0; row < HEIGHT; ++row) {
        for (int column = 0; column < WIDTH; ++column) {
            unsigned char* pixel = buffer.get() + (row * WIDTH + column) * 4;
            pixel[0] = static_cast<unsigned char>(column);
            pixel[1] = static_cast<unsigned char>(column >> 8);
            pixel[2] = static_cast<unsigned char>(row);
            pixel[3] = 255;
        }
    }
}

bool texelIs(int x, int y, int side, int column, int row) {
    const auto at = static_cast<std::size_t>((y * side + x) * 4);
    return glut.texture[at] + 256 * glut.texture[at + 1] == column && glut.texture[at + 2] == row;
}

// Runs `check` in a process whose OpenGL takes textures up to `taken` and says `named`; the exit
// status tells whether it held.
template <class Check>
void inProcess(int taken, int named, Check check) {
    const test_support::ImageGuard image(WIDTH, HEIGHT);
    test_support::sendStdoutToStderr();
    paintBuffer();
    glut_stand_in::reset();
    glut.largestTexture = taken;
    glut.namedTexture = named;
    std::_Exit(check() ? 0 : 1);
}

class SmallTextures : public testing::Test {
  protected:
    SmallTextures() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }
};

TEST_F(SmallTextures, AreOfNoConcernWhereThePictureFits) {
    EXPECT_EXIT(inProcess(264, 1,
                          [] {
                              drawPicture();
                              drawPicture();
                              return callsNamed({"glTexImage2D"}).size() == 2 &&
                                     callsNamed({"glBegin"}).size() == 2;
                          }),
                ExitedWithCode(0), Not(HasSubstr("refuses")));
}

TEST_F(SmallTextures, AreTakenForPiecesOnceOneForTheWholeWasRefused) {
    EXPECT_EXIT(
        inProcess(128, 16384,
                  [] {
                      drawPicture();
                      return callsNamed({"glBegin"}).size() == 9;
                  }),
        ExitedWithCode(0),
        AllOf(HasSubstr("OpenGL refuses a texture of 264 x 256 pixels: the picture is drawn "
                        "in pieces of 128 x 128\n")));
}

TEST_F(SmallTextures, AreAnnouncedOnceAndTriedNoMore) {
    EXPECT_EXIT(inProcess(128, 128,
                          [] {
                              drawPicture();
                              glut.calls.clear();
                              std::cout << "and then" << std::endl;
                              drawPicture();
                              const auto loads = callsNamed({"glTexImage2D"});
                              return std::set(loads.begin(), loads.end()).size() == 1 &&
                                     loads.size() == 9;
                          }),
                ExitedWithCode(0), testing::EndsWith("and then\n"));
}

TEST_F(SmallTextures, AreNotLargerThanOpenGlSays) {
    EXPECT_EXIT(inProcess(200, 100,
                          [] {
                              drawPicture();
                              return callsNamed({"glBegin"}).size() == 25;  // of 62 pixels
                          }),
                ExitedWithCode(0), HasSubstr("pieces of 64 x 64\n"));
}

TEST_F(SmallTextures, HoldTheirNeighboursPixelsAroundTheirOwn) {
    EXPECT_EXIT(inProcess(128, 128,
                          [] {
                              std::set<std::pair<int, int>> seen;
                              bool right = true;
                              glut.onCall = [&](const std::string& what) {
                                  if (what.rfind("glBegin", 0) != 0) return;
                                  const int piece = static_cast<int>(seen.size());
                                  const int left = piece % 3 * 126, top = piece / 3 * 126;
                                  seen.insert({left, top});
                                  const int columns = std::min(126, WIDTH - left);
                                  const int rows = std::min(126, HEIGHT - top);
                                  for (const int x : {-1, 0, columns - 1, columns}) {
                                      for (const int y : {-1, 0, rows - 1, rows}) {
                                          right = right && texelIs(x + 1, y + 1, 128,
                                                                   (left + x + WIDTH) % WIDTH,
                                                                   (top + y + HEIGHT) % HEIGHT);
                                      }
                                  }
                              };
                              drawPicture();
                              return right && seen.size() == 9;
                          }),
                ExitedWithCode(0), "");
}

TEST_F(SmallTextures, CoverTheQuadOfTheWholeWithoutAGap) {
    EXPECT_EXIT(inProcess(128, 128,
                          [] {
                              drawPicture();
                              const auto vertices = callsNamed({"glVertex3f"});
                              const float seam = 126.0f / 264.0f * 263.0f;
                              const auto has = [&](float x, float y) {
                                  const std::string wanted = call("glVertex3f", x, y, 0);
                                  return std::count(vertices.begin(), vertices.end(), wanted);
                              };
                              return has(0, 0) == 1 && has(263, 0) == 1 && has(263, 255) == 1 &&
                                     has(0, 255) == 1 && has(seam, 0) == 2;
                          }),
                ExitedWithCode(0), "");
}

TEST_F(SmallTextures, OfNoUseAtAllAreALineAndNoPicture) {
    EXPECT_EXIT(inProcess(32, 32,
                          [] {
                              drawPicture();
                              drawPicture();
                              return callsNamed({"glBegin"}).empty() &&
                                     callsNamed({"glDeleteTextures"}).size() == 2;
                          }),
                ExitedWithCode(0), HasSubstr("pixels: the picture cannot be shown\n"));
}

}  // namespace
