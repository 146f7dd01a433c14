#include "tests/glutmenu/toolkit_test.h"

#include <algorithm>
#include <iostream>
#include <iterator>
#include <utility>

using GlutMenu::CGlutMenu;
using GlutMenu::CTextInput;
using stand_in::Drawn;

ToolkitTest::ToolkitTest() : output(std::cout.rdbuf(traced.rdbuf())) {
    stand_in::reset();
    GlutMenu::input_field = nullptr;
    GlutMenu::num_dialogs_active = 0;
    GlutMenu::text_input = nullptr;
    GlutMenu::stroked_font = GLUT_STROKE_ROMAN;
    CTextInput::cursor_visible = true;
    // A menu of the reference screen leaves its scale in the globals.
    CGlutMenu menu;
    Strings items = {"any"};
    menu.Initialise(1024, 768, 0, 0, 0, 0, "", items, 1.0F, 1.0F, true, false);
    trace();
}

ToolkitTest::~ToolkitTest() {
    std::cout.rdbuf(output);
    EXPECT_FALSE(stand_in::state.in_shape) << "a shape was begun and not ended";
    EXPECT_EQ(stand_in::state.misplaced_calls, 0);
    EXPECT_EQ(stand_in::state.off_the_plane, 0);
}

std::string ToolkitTest::trace() {
    std::string text = traced.str();
    traced.str("");
    return text;
}

void ToolkitTest::initialiseBar(CGlutMenu& menu, Strings items, int w, int h) {
    stand_in::state.window_width = w;
    stand_in::state.window_height = h;
    menu.Initialise(w, h, 0, 0, 5, 5, "Bar", items, 1.0F, 1.0F, true, false);
}

void ToolkitTest::initialiseList(CGlutMenu& menu, Strings items, int x, int y) {
    menu.Initialise(stand_in::state.window_width, stand_in::state.window_height, x, y, 5, 5, "List",
                    items, 1.0F, 1.0F, false, false);
}

bool ToolkitTest::click(CGlutMenu& root, int x, int y) {
    return root.mouse_callback(0, 0, x, y);
}

bool ToolkitTest::clickItem(CGlutMenu& root, const CGlutMenu& menu, int i) {
    int bx = 0;
    int by = 0;
    menu.GetBottomLeft(i, bx, by);
    return click(root, bx + 10, by - 10);
}

void ToolkitTest::showMessage(CTextInput& dialog, int x, int y) {
    Strings lines = {"hello"};
    dialog.Initialise("Title", lines, x, y, nullptr, nullptr);
    dialog.Display();
}

std::vector<Drawn> ToolkitTest::draw(CGlutMenu& root) {
    stand_in::state.drawn.clear();
    stand_in::state.calls.clear();
    root.Render();
    return stand_in::state.drawn;
}

OutputByFlush::OutputByFlush() : before(std::cout.rdbuf(this)) {}

OutputByFlush::~OutputByFlush() {
    std::cout.rdbuf(before);
}

int OutputByFlush::overflow(int c) {
    pending.push_back(static_cast<char>(c));
    return c;
}

int OutputByFlush::sync() {
    flushed.push_back(std::exchange(pending, ""));
    return 0;
}

std::vector<Drawn> shapes(const std::vector<Drawn>& drawn, GLenum mode) {
    std::vector<Drawn> found;
    std::copy_if(drawn.begin(), drawn.end(), std::back_inserter(found),
                 [mode](const Drawn& one) { return one.mode == mode; });
    return found;
}

std::vector<Drawn> texts(const std::vector<Drawn>& drawn) {
    return shapes(drawn, stand_in::no_shape);
}

Strings words(const std::vector<Drawn>& drawn) {
    Strings found;
    for (const Drawn& text : texts(drawn)) found.push_back(text.text);
    return found;
}

Drawn textOf(const std::vector<Drawn>& drawn, const std::string& words) {
    const auto found = std::find_if(drawn.begin(), drawn.end(),
                                    [&](const Drawn& one) { return one.text == words; });
    if (found != drawn.end()) return *found;
    ADD_FAILURE() << "no text \"" << words << "\" was drawn";
    return {stand_in::no_shape, {{0.0F, 0.0F}}, "", {}, 0.0F, {}};
}

float lengthOf(const std::string& text, float screen_width) {
    int units = 0;
    for (const char c : text) units += stand_in::strokeWidth(static_cast<unsigned char>(c));
    return static_cast<float>(units) * (13.0F / 89.0F * screen_width / 1024.0F);
}
