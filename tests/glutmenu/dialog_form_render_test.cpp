// What a form draws: its fields, the mark of the one being edited, its cursor, and what of a long
// value is seen.

#include <algorithm>
#include <cstddef>

#include "tests/glutmenu/dialog_fixture.h"

using GlutMenu::CTextInput;
using stand_in::Colour;
using stand_in::Drawn;
using testing::Contains;
using testing::ElementsAre;

namespace {

constexpr Colour white{1.0F, 1.0F, 1.0F, 1.0F};
constexpr Colour green{0.0F, 1.0F, 0.0F, 0.7F};

// The cursor is the one thing that is filled in the highlight's colour.
std::vector<Drawn> cursors(const std::vector<Drawn>& drawn) {
    std::vector<Drawn> found = shapes(drawn, GL_QUADS);
    found.erase(std::remove_if(found.begin(), found.end(),
                               [](const Drawn& quad) { return quad.colour != green; }),
                found.end());
    return found;
}

class FormDrawing : public DialogTest {
  protected:
    FormDrawing() {
        openForm({"A", "Beta"}, {"one", "two"}, 8);
        trace();
    }
    float fieldX() const { return 50.0F + dialog.label_width; }
};

TEST_F(FormDrawing, fills_a_box_of_three_more_lines) {
    const auto quads = shapes(render(dialog), GL_QUADS);
    // trunc((33.33 + 2) * 5 + 60 + 5) is 241.
    expectBox(quads[0], 50.0F, 241.0F, 50.0F + dialog.width, 60.0F);
}

TEST_F(FormDrawing, keeps_its_margin_at_the_bottom) {
    dialog.margin_x = 7.0F;
    dialog.margin_y = 11.0F;
    render(dialog);
    EXPECT_EQ(dialog.bottom, 247);
}

TEST_F(FormDrawing, writes_a_row_for_every_field) {
    const auto drawn = render(dialog);
    expectAt(textOf(drawn, "A"), 50.0F, 2.0F * (line + 2.0F) + 60.0F);
    expectAt(textOf(drawn, "one"), fieldX(), 2.0F * (line + 2.0F) + 60.0F);
    expectAt(textOf(drawn, "Beta"), 50.0F, 3.0F * (line + 2.0F) + 60.0F);
    expectAt(textOf(drawn, "two"), fieldX(), 3.0F * (line + 2.0F) + 60.0F);
    expectAt(textOf(drawn, ":"), fieldX() - lengthOf(":") - 2.0F, 2.0F * (line + 2.0F) + 60.0F);
}

TEST_F(FormDrawing, outlines_the_current_field_alone) {
    press({arrow_down});
    const auto loops = shapes(render(dialog), GL_LINE_LOOP);
    ASSERT_EQ(loops.size(), 3U);
    const auto left = static_cast<float>(static_cast<int>(fieldX()));
    // trunc((33.33 + 2) * 2 + 60 + 2) is 132.
    expectBox(loops[0], left, 132.0F, left + dialog.field_width, 132.0F + line + 2.0F);
}

TEST_F(FormDrawing, shows_the_edited_text_of_the_current_field) {
    press({'x'});
    EXPECT_THAT(words(render(dialog)), testing::Contains("onex"));
    EXPECT_THAT(dialog.field_values, ElementsAre("one", "two"));
}

TEST_F(FormDrawing, traces_the_current_field_once) {
    press({arrow_left});
    trace();
    render(dialog);
    EXPECT_EQ(trace(), "x_offset 20.8876, index 2\n");
}

TEST_F(FormDrawing, writes_a_limited_value_where_the_others_stand) {
    dialog.DefineFieldValues(1, {"two"}, 0);
    expectAt(textOf(render(dialog), "<two>"), fieldX(), 3.0F * (line + 2.0F) + 60.0F);
}

TEST_F(FormDrawing, shows_a_limited_value_between_angles) {
    dialog.DefineFieldValues(0, {"one", "other"}, 0);
    dialog.DefineFieldValues(1, {"two"}, 0);
    EXPECT_THAT(words(render(dialog)),
                testing::IsSupersetOf({std::string("<one>"), std::string("<two>")}));
    press({arrow_right});
    EXPECT_THAT(words(render(dialog)), testing::Contains("<other>"));
}

TEST_F(FormDrawing, copes_with_fewer_values_than_labels) {
    openForm({"A", "B"}, {"a"}, 8);
    press({arrow_down, arrow_up, 'x'});
    EXPECT_THAT(words(render(dialog)), testing::Contains("ax"));
}

TEST_F(FormDrawing, leaves_the_line_width) {
    stand_in::state.line_width = 3.5F;
    render(dialog);
    EXPECT_EQ(stand_in::state.line_width, 3.5F);
}

TEST_F(FormDrawing, marks_the_current_field_in_the_colour_of_the_highlight_alone) {
    dialog.SetTextColour(1.0F, 0.5F, 0.25F, 0.8F);
    const Colour text{1.0F, 0.5F, 0.25F, 0.8F};
    const auto drawn = render(dialog);
    EXPECT_EQ(shapes(drawn, GL_LINE_LOOP)[0].colour, green);
    for (const char* written : {"A", ":", "one", "Beta", "two"}) {
        EXPECT_EQ(textOf(drawn, written).colour, text) << written;
    }
}

TEST_F(FormDrawing, writes_in_the_texts_colour_after_a_limited_field_too) {
    dialog.DefineFieldValues(0, {"one"}, 0);
    const auto drawn = render(dialog);
    EXPECT_EQ(textOf(drawn, "<one>").colour, white);
    EXPECT_EQ(textOf(drawn, "Beta").colour, white);
}

TEST_F(FormDrawing, outlines_with_lines_that_grow_with_the_smaller_scale) {
    const auto outline = [&](int w, int h) {
        GlutMenu::CGlutMenu bar;
        initialiseBar(bar, {"A"}, w, h);
        return shapes(render(dialog), GL_LINE_LOOP)[0].line_width;
    };
    EXPECT_FLOAT_EQ(outline(1024, 768), 2.0F);
    EXPECT_FLOAT_EQ(outline(3840, 2160), 5.625F);
    EXPECT_FLOAT_EQ(outline(2048, 2304), 4.0F);
    EXPECT_FLOAT_EQ(outline(512, 2304), 2.0F);
    EXPECT_FLOAT_EQ(outline(3840, 384), 2.0F);
}

class FormCursor : public FormDrawing {};

TEST_F(FormCursor, is_two_pixels_wide_and_stands_clear_of_the_letters_on_both_sides) {
    press({arrow_down});
    for (const std::string before : {"two", "tw", "t", ""}) {
        SCOPED_TRACE(before);
        const auto drawn = render(dialog);
        ASSERT_EQ(cursors(drawn).size(), 1U);
        const auto at = cursors(drawn)[0].points;
        // Strokes reach a pixel beyond their glyphs.
        EXPECT_GE(at[0][0], fieldX() + lengthOf(before) + 2.0F);
        EXPECT_LT(at[0][0], fieldX() + lengthOf(before) + 3.0F);
        EXPECT_EQ(at[0][0], static_cast<float>(static_cast<int>(at[0][0])));
        EXPECT_EQ(at[2][0], at[0][0] + 2.0F);
        const std::string after = std::string("two").substr(before.size());
        if (!before.empty()) {
            expectAt(textOf(drawn, before), fieldX(), 3.0F * (line + 2.0F) + 60.0F);
        }
        if (!after.empty()) {
            EXPECT_GE(textOf(drawn, after).points[0][0], at[2][0] + 1.0F);
        }
        press({arrow_left});
    }
}

TEST_F(FormCursor, stands_between_the_lines_of_the_frame) {
    const auto drawn = render(dialog);
    const auto frame = shapes(drawn, GL_LINE_LOOP)[0];
    const auto cursor = cursors(drawn)[0];
    EXPECT_FLOAT_EQ(cursor.points[0][1], frame.points[0][1] + 2.0F);
    EXPECT_FLOAT_EQ(cursor.points[2][1], frame.points[2][1] - 2.0F);
}

TEST_F(FormCursor, before_the_start_is_drawn_at_the_start) {
    press({home});
    const auto at_start = cursors(render(dialog))[0].points;
    press({arrow_left});
    ASSERT_EQ(dialog.cursor_pos, -1);
    EXPECT_EQ(cursors(render(dialog))[0].points, at_start);
}

TEST_F(FormCursor, beyond_the_end_is_drawn_at_the_end) {
    const auto at_end = cursors(render(dialog))[0].points;
    dialog.cursor_pos = 9;
    EXPECT_EQ(cursors(render(dialog))[0].points, at_end);
}

TEST_F(FormCursor, moves_no_letter_when_it_blinks) {
    press({arrow_left});
    const auto lit = texts(render(dialog));
    CTextInput::cursor_visible = false;
    const auto drawn = render(dialog);
    EXPECT_TRUE(cursors(drawn).empty());
    const auto dark = texts(drawn);
    ASSERT_EQ(dark.size(), lit.size());
    for (std::size_t i = 0; i < lit.size(); ++i) {
        EXPECT_EQ(dark[i].points, lit[i].points) << lit[i].text;
        EXPECT_EQ(dark[i].text, lit[i].text);
    }
}

TEST_F(FormCursor, is_not_drawn_in_a_limited_field) {
    dialog.DefineFieldValues(0, {"one", "other"}, 0);
    EXPECT_TRUE(cursors(render(dialog)).empty());
}

TEST_F(FormCursor, is_not_drawn_in_a_field_without_a_value) {
    openForm({"A"}, {}, 8);
    EXPECT_TRUE(cursors(render(dialog)).empty());
}

TEST_F(FormCursor, is_not_drawn_beneath_another_dialog) {
    CTextInput upper;
    showMessage(upper);
    const auto drawn = render(upper);
    EXPECT_TRUE(cursors(drawn).empty());
    EXPECT_THAT(words(drawn), Contains("one"));
    upper.KeyboardHandler(escape, "");
    EXPECT_EQ(cursors(render(dialog)).size(), 1U);
}

// Fields of 8 'H', which are 104 pixels wide on the reference screen.
class LongValue : public FormDrawing {
  protected:
    const std::string value = "The quick brown mmm iii WWW jumps.";
    void open() { openForm({"A", "B"}, {value, value}, 8); }

    // What is shown of the current field's value: the text drawn in its row, joined.
    static std::vector<Drawn> inFirstRow(const std::vector<Drawn>& drawn) {
        std::vector<Drawn> found;
        for (const Drawn& text : texts(drawn)) {
            if (text.points[0][1] == texts(drawn)[0].points[0][1]) found.push_back(text);
        }
        // Without the label and its colon.
        found.erase(found.begin(), found.begin() + 2);
        return found;
    }
    static std::string joined(const std::vector<Drawn>& drawn) {
        std::string text;
        for (const Drawn& part : drawn) text += part.text;
        return text;
    }
};

TEST_F(LongValue, shows_its_end_while_the_cursor_is_there) {
    open();
    // The cursor takes 6 of the 104 pixels; "W jumps." is 87 wide, and another 'W' 15.
    EXPECT_EQ(joined(inFirstRow(render(dialog))), "W jumps.");
}

TEST_F(LongValue, shows_its_start_while_the_cursor_is_there) {
    open();
    press({home});
    const auto shown = inFirstRow(render(dialog));
    ASSERT_EQ(shown.size(), 1U);
    EXPECT_EQ(shown[0].text, "The quick");
    press({arrow_left});
    EXPECT_EQ(joined(inFirstRow(render(dialog))), "The quick");
}

TEST_F(LongValue, shows_its_start_while_the_cursor_is_near_to_it) {
    open();
    press({home, arrow_right});
    EXPECT_EQ(joined(inFirstRow(render(dialog))), "The quick");
}

TEST_F(LongValue, is_seen_on_both_sides_of_a_cursor_within_it) {
    open();
    press({home});
    for (int i = 0; i < 15; ++i) press({arrow_right});
    const auto shown = inFirstRow(render(dialog));
    ASSERT_EQ(shown.size(), 2U);
    // Half of the 98 pixels beside the cursor lie before it: "brown" is 50 wide.
    EXPECT_EQ(shown[0].text, "rown");
    EXPECT_EQ(shown[1].text, " mm");
}

TEST_F(LongValue, stays_within_its_field_and_shows_the_cursor_wherever_that_is) {
    open();
    // A tenth of a pixel for rounding.
    const float right = fieldX() + dialog.field_width + 0.1F;
    for (press({home}); dialog.cursor_pos < static_cast<int>(value.size()); press({arrow_right})) {
        SCOPED_TRACE(dialog.cursor_pos);
        const auto drawn = render(dialog);
        const auto shown = inFirstRow(drawn);
        ASSERT_FALSE(shown.empty());
        EXPECT_GE(shown.front().points[0][0], fieldX());
        EXPECT_LE(shown.back().points[0][0] + lengthOf(shown.back().text), right);
        const auto cursor = cursors(drawn)[0].points;
        EXPECT_GE(cursor[0][0], fieldX());
        EXPECT_LE(cursor[2][0], right);
        // What is seen is one stretch of the value with the cursor at its place in it.
        const std::size_t first = value.find(joined(shown));
        ASSERT_NE(first, std::string::npos);
        const auto place = static_cast<std::size_t>(dialog.cursor_pos);
        EXPECT_TRUE(shown.size() == 1 || shown[0].text.size() == place - first);
        // No more than a letter is missing at either end: 'm' is the widest, 18 pixels.
        EXPECT_GT(lengthOf(joined(shown)), dialog.field_width - 6.0F - 2.0F * 18.2F);
    }
}

TEST_F(LongValue, of_another_field_shows_what_fits_of_its_start) {
    open();
    const auto drawn = render(dialog);
    EXPECT_THAT(words(drawn), Contains("The quick"));
    EXPECT_LE(lengthOf("The quick"), dialog.field_width);
    EXPECT_GT(lengthOf("The quick "), dialog.field_width);
}

TEST_F(LongValue, that_just_fills_its_field_is_shown_whole) {
    for (const int width : {1024, 1366, 801, 3840}) {
        GlutMenu::CGlutMenu bar;
        initialiseBar(bar, {"A"}, width, 768);
        openForm({"A", "B"}, {"", "HHHHHHHHHHHHH"}, 13);
        EXPECT_THAT(words(render(dialog)), Contains("HHHHHHHHHHHHH")) << width;
        openForm({"A", "B"}, {"", "HHHHHHHHHHHHHi"}, 13);
        EXPECT_THAT(words(render(dialog)), Contains("HHHHHHHHHHHHH")) << width;
    }
}

TEST_F(LongValue, ends_before_a_letter_that_lacks_half_a_pixel) {
    GlutMenu::CGlutMenu bar;
    initialiseBar(bar, {"A"}, 2048, 768);
    // "mmmmmo" is 692 units wide; 8 'H' less the 6 pixels of the cursor are 691.46.
    openForm({"A"}, {"mmmmmo"}, 8);
    press({home});
    EXPECT_EQ(joined(inFirstRow(render(dialog))), "mmmmm");
}

TEST_F(LongValue, among_limited_ones_loses_its_end_and_no_bracket) {
    open();
    dialog.DefineFieldValues(0, {value}, 0);
    dialog.DefineFieldValues(1, {value}, 0);
    const Strings drawn = words(render(dialog));
    EXPECT_EQ(std::count(drawn.begin(), drawn.end(), "<The qui>"), 2);
    EXPECT_LE(lengthOf("<The qui>"), dialog.field_width);
    EXPECT_GT(lengthOf("<The quic>"), dialog.field_width);
}

TEST_F(LongValue, leaves_a_field_without_room_empty) {
    for (const int capacity : {0, -3}) {
        openForm({"A", "B", "C"}, {value, value, value}, capacity);
        dialog.DefineFieldValues(2, {value}, 0);
        EXPECT_THAT(words(render(dialog)),
                    ElementsAre("A", ":", "B", ":", "C", ":", "Title", "OK", "Cancel"));
    }
}

TEST_F(LongValue, is_not_changed_by_being_drawn) {
    open();
    render(dialog);
    EXPECT_THAT(dialog.field_values, ElementsAre(value, value));
    EXPECT_EQ(dialog.edit_text, value);
    EXPECT_EQ(dialog.cursor_pos, static_cast<int>(value.size()));
    EXPECT_EQ(dialog.text_length, static_cast<int>(value.size()));
}

TEST_F(LongValue, copes_with_a_window_of_no_width) {
    open();
    GlutMenu::CGlutMenu bar;
    initialiseBar(bar, {"A"}, 0, 0);
    dialog.WorkOutSize();
    EXPECT_THAT(words(render(dialog)), ElementsAre("A", ":", "B", ":", "Title", "OK", "Cancel"));
}

}  // namespace
