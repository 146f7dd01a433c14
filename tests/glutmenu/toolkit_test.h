// What every test of the toolkit starts from: no dialog open, the reference screen, nothing drawn,
// and standard output caught. And what it ends with: every shape drawn was ended, and all lies at
// z = 0.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <sstream>
#include <streambuf>
#include <string>
#include <vector>

#include "GlutMenu/CGlutMenu.h"
#include "tests/glutmenu/glut_stand_in.h"

using Strings = std::vector<std::string>;

class ToolkitTest : public testing::Test {
  protected:
    ToolkitTest();
    ~ToolkitTest() override;

    // What was traced since the last call.
    std::string trace();

    // Brings the window and a menu, as its bar or as a list at (x, y), to w x h.
    void initialiseBar(GlutMenu::CGlutMenu& menu, Strings items, int w = 1024, int h = 768);
    void initialiseList(GlutMenu::CGlutMenu& menu, Strings items, int x = 40, int y = 60);

    // Left presses at a point of the window, and in the middle of an item where it is drawn.
    static bool click(GlutMenu::CGlutMenu& root, int x, int y);
    static bool clickItem(GlutMenu::CGlutMenu& root, const GlutMenu::CGlutMenu& menu, int i);

    // Shows a message "hello" with its corner at (x, y).
    static void showMessage(GlutMenu::CTextInput& dialog, int x = 10, int y = 20);

    // Draws a menu as a frame does and returns what was drawn since the last call.
    static std::vector<stand_in::Drawn> draw(GlutMenu::CGlutMenu& root);

  private:
    std::ostringstream traced;
    std::streambuf* output;
};

// Takes standard output over while it lives.
class OutputByFlush : public std::streambuf {
  public:
    OutputByFlush();
    ~OutputByFlush() override;

    Strings flushed;      // what was written, cut where it was flushed
    std::string pending;  // what was not flushed

  protected:
    int overflow(int c) override;
    int sync() override;

  private:
    std::streambuf* before;
};

// Of what was drawn: the shapes of one mode, and the texts.
std::vector<stand_in::Drawn> shapes(const std::vector<stand_in::Drawn>& drawn, GLenum mode);
std::vector<stand_in::Drawn> texts(const std::vector<stand_in::Drawn>& drawn);
// The texts' own words, in drawing order.
Strings words(const std::vector<stand_in::Drawn>& drawn);
// The first text with these words; fails the test when there is none.
stand_in::Drawn textOf(const std::vector<stand_in::Drawn>& drawn, const std::string& words);

// Width of a text at a screen width, worked out from the glyph table.
float lengthOf(const std::string& text, float screen_width = 1024.0F);

constexpr int arrow_left = 100;
constexpr int arrow_up = 101;
constexpr int arrow_right = 102;
constexpr int arrow_down = 103;
constexpr int home = 106;
constexpr int end = 107;
constexpr int return_key = 13;
constexpr int escape = 27;
