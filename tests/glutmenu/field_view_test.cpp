// Which part of a value is in sight. Rooms are given in the units of the stroke font, of which an
// 'H' takes 89 and an 'i' 29.
#include "GlutMenu/FieldView.h"

#include <utility>

#include "tests/glutmenu/toolkit_test.h"

namespace {

class FieldView : public ToolkitTest {
  protected:
    static float room(int units) {
        return static_cast<float>(units) * GlutMenu::CGlutMenu::font_scale_x;
    }
    static std::string seen(const std::string& text, std::size_t cursor, int units) {
        const GlutMenu::Part part = GlutMenu::PartInSight(text, cursor, room(units));
        return text.substr(part.first, part.length);
    }
};

TEST_F(FieldView, is_the_whole_of_a_text_that_fits_wherever_the_cursor_is) {
    const std::string text = "HiHiH";
    for (const int units : {325, 326, 500}) {
        for (std::size_t cursor = 0; cursor <= text.size(); ++cursor) {
            EXPECT_EQ(seen(text, cursor, units), text) << cursor << " in " << units;
        }
    }
}

TEST_F(FieldView, is_the_beginning_while_the_cursor_is_near_to_it) {
    for (const std::size_t cursor : {0U, 1U}) EXPECT_EQ(seen("HHHHHH", cursor, 4 * 89), "HHHH");
    EXPECT_EQ(seen("HHHHHH", 2, 4 * 89), "HHHH");
    EXPECT_EQ(seen("HHHHHH", 2, 4 * 89 - 1), "HHH");
}

TEST_F(FieldView, is_the_end_while_the_cursor_is_near_to_it) {
    for (const std::size_t cursor : {4U, 5U, 6U}) EXPECT_EQ(seen("iHHHHH", cursor, 4 * 89), "HHHH");
}

TEST_F(FieldView, has_no_part_in_a_room_of_nothing_or_less) {
    // The stand-in's other font, whose glyphs are a unit wide.
    GlutMenu::stroked_font = nullptr;
    for (const int units : {0, -1, -5}) {
        for (const std::size_t cursor : {0U, 1U, 3U}) EXPECT_EQ(seen("abc", cursor, units), "");
    }
    EXPECT_EQ(seen("abc", 0, 1), "a");
}

TEST_F(FieldView, keeps_the_last_glyph_of_a_text_that_just_fills_it) {
    // Widths of a window and numbers of letters of which the product of units and scale, divided by
    // the scale, is less than the units were.
    const std::pair<int, std::size_t> cases[] = {
        {800, 9}, {803, 17}, {806, 16}, {812, 14}, {814, 11}};
    for (const auto& [width, letters] : cases) {
        GlutMenu::CGlutMenu bar;
        initialiseBar(bar, {"A"}, width, 768);
        const std::string text(letters, 'H');
        EXPECT_EQ(GlutMenu::Beginning(text, room(static_cast<int>(letters) * 89)), text) << width;
    }
}

TEST_F(FieldView, of_a_beginning_takes_no_more_than_fits_behind_the_first_glyph) {
    EXPECT_EQ(GlutMenu::Beginning("Hii", room(89)), "H");
    EXPECT_EQ(GlutMenu::Beginning("Hii", room(117)), "H");
    EXPECT_EQ(GlutMenu::Beginning("Hii", room(118)), "Hi");
    EXPECT_EQ(GlutMenu::Beginning("Hii", room(88)), "");
    EXPECT_EQ(GlutMenu::Beginning("", room(88)), "");
}

}  // namespace
