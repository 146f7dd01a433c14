// What the toolkit's globals hold before anything was initialised. These tests have a program of
// their own and change nothing, so that no other test comes before them.

#include <gtest/gtest.h>

#include "GlutMenu/CGlutMenu.h"
#include "tests/glutmenu/glut_stand_in.h"

using GlutMenu::CGlutMenu;

namespace {

TEST(Globals, start_with_the_size_of_a_character) {
    EXPECT_EQ(GlutMenu::char_width, 12.0F);
    EXPECT_EQ(GlutMenu::char_height, 15.0F);
}

TEST(Globals, start_with_a_hundred_pixels_either_way_at_scale_one) {
    EXPECT_EQ(CGlutMenu::screen_width, 100.0F);
    EXPECT_EQ(CGlutMenu::screen_height, 100.0F);
    EXPECT_EQ(CGlutMenu::GetScaleX(), 1.0F);
    EXPECT_EQ(CGlutMenu::GetScaleY(), 1.0F);
    EXPECT_EQ(CGlutMenu::font_scale_x, 1.0F);
    EXPECT_EQ(CGlutMenu::font_scale_y, 1.0F);
}

TEST(Globals, start_with_helvetica_and_the_stroked_roman) {
    EXPECT_EQ(GlutMenu::font, GLUT_BITMAP_HELVETICA_18);
    EXPECT_EQ(GlutMenu::stroked_font, GLUT_STROKE_ROMAN);
}

TEST(Globals, start_without_a_dialog_and_with_a_visible_cursor) {
    EXPECT_EQ(GlutMenu::input_field, nullptr);
    EXPECT_EQ(GlutMenu::num_dialogs_active, 0);
    EXPECT_EQ(GlutMenu::text_input, nullptr);
    EXPECT_TRUE(GlutMenu::CTextInput::cursor_visible);
}

}  // namespace
