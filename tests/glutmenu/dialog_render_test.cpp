// What a dialog draws.

#include "tests/glutmenu/dialog_fixture.h"

using GlutMenu::CTextInput;
using stand_in::Colour;
using stand_in::Point;
using testing::ElementsAre;

namespace {

constexpr Colour white{1.0F, 1.0F, 1.0F, 1.0F};
constexpr Colour blue{0.0F, 0.0F, 1.0F, 0.7F};

class SingleField : public DialogTest {
  protected:
    SingleField() { openSingleField("Ada", 12); }
};

TEST_F(SingleField, fills_its_box_upwards_from_five_lines_below) {
    const auto quads = shapes(render(dialog), GL_QUADS);
    // trunc(10 + 5 * 33.33 + 60) is 236.
    expectBox(quads[0], 50.0F, 236.0F, 50.0F + dialog.width, 60.0F);
    EXPECT_EQ(quads[0].colour, blue);
    EXPECT_EQ(dialog.bottom, 236);
}

TEST_F(SingleField, writes_label_colon_and_text_on_one_line) {
    const auto drawn = render(dialog);
    const float baseline = 5.0F + 60.0F + 2.0F * line;
    expectAt(textOf(drawn, "Name"), 50.0F, baseline);
    expectAt(textOf(drawn, ":"), 50.0F + lengthOf("Name:") - lengthOf(":") - 2.0F, baseline);
    expectAt(textOf(drawn, "Ada"), 50.0F + lengthOf("Name:"), baseline);
    EXPECT_EQ(textOf(drawn, "Ada").colour, white);
}

TEST_F(SingleField, outlines_the_field) {
    const auto drawn = render(dialog);
    const float left = 50.0F + lengthOf("Name:");
    expectBox(shapes(drawn, GL_LINE_LOOP)[0], left, 60.0F + line + 5.0F, left + 156.0F,
              10.0F + 2.0F * line + 60.0F);
}

TEST_F(SingleField, draws_the_cursor_after_the_characters_before_it) {
    press({arrow_left});
    const auto cursor = shapes(render(dialog), GL_LINES);
    ASSERT_EQ(cursor.size(), 1U);
    const float at = 50.0F + lengthOf("Name:") + lengthOf("Ad");
    const float top = 60.0F + line + 5.0F;
    EXPECT_FLOAT_EQ(cursor[0].points[0][0], at);
    EXPECT_FLOAT_EQ(cursor[0].points[0][1], top);
    EXPECT_FLOAT_EQ(cursor[0].points[1][1], top + line);
    EXPECT_EQ(cursor[0].colour, white);
}

TEST_F(SingleField, draws_a_cursor_before_the_start_at_the_start) {
    press({home, arrow_left});
    const auto cursor = shapes(render(dialog), GL_LINES);
    EXPECT_FLOAT_EQ(cursor[0].points[0][0], 50.0F + lengthOf("Name:"));
}

TEST_F(SingleField, draws_a_cursor_beyond_the_end_at_the_end) {
    dialog.cursor_pos = 9;
    const auto cursor = shapes(render(dialog), GL_LINES);
    EXPECT_FLOAT_EQ(cursor[0].points[0][0], 50.0F + lengthOf("Name:") + lengthOf("Ada"));
}

TEST_F(SingleField, draws_no_cursor_in_the_dark_phase) {
    CTextInput::cursor_visible = false;
    EXPECT_TRUE(shapes(render(dialog), GL_LINES).empty());
}

TEST_F(SingleField, keeps_its_margin_above_and_below_the_field) {
    dialog.margin_x = 7.0F;
    dialog.margin_y = 11.0F;
    const auto drawn = render(dialog);
    // trunc(22 + 5 * 33.33 + 60) is 248.
    EXPECT_EQ(dialog.bottom, 248);
    const float left = 50.0F + lengthOf("Name:");
    expectBox(shapes(drawn, GL_LINE_LOOP)[0], left, 60.0F + line + 11.0F, left + 156.0F,
              22.0F + 2.0F * line + 60.0F);
    expectAt(textOf(drawn, "Ada"), left, 11.0F + 60.0F + 2.0F * line);
    EXPECT_FLOAT_EQ(shapes(drawn, GL_LINES)[0].points[0][1], 60.0F + line + 11.0F);
}

TEST_F(SingleField, is_topped_by_its_title_bar) {
    const auto drawn = render(dialog);
    const auto bar = shapes(drawn, GL_QUADS)[1];
    expectBox(bar, 50.0F, 60.0F, static_cast<float>(static_cast<int>(50.0F + dialog.width)), 95.0F);
    EXPECT_EQ(bar.colour, white);
    expectAt(textOf(drawn, "Title"), 50.0F, 60.0F + line);
    EXPECT_EQ(textOf(drawn, "Title").colour, blue);
}

TEST_F(SingleField, has_a_title_bar_of_whole_pixels) {
    GlutMenu::char_height = 33.6F;
    const auto bar = shapes(render(dialog), GL_QUADS)[1];
    EXPECT_EQ(bar.points[2][1], 95.0F);
}

TEST_F(SingleField, has_an_opaque_title_bar_though_the_text_is_not) {
    dialog.SetTextColour(0.5F, 0.6F, 0.7F, 0.2F);
    EXPECT_EQ(shapes(render(dialog), GL_QUADS)[1].colour, (Colour{0.5F, 0.6F, 0.7F, 1.0F}));
}

TEST_F(SingleField, title_bar_lies_on_whole_pixels) {
    dialog.x = 50.75F;
    dialog.y = 60.75F;
    dialog.width = 200.5F;
    // 200.5 + 50 and 33.33 + 60 + 2, each cut off
    expectBox(shapes(render(dialog), GL_QUADS)[1], 50.0F, 60.0F, 250.0F, 95.0F);
}

TEST_F(SingleField, title_stands_where_the_dialog_does_between_pixels) {
    dialog.x = 50.75F;
    dialog.y = 60.75F;
    expectAt(textOf(render(dialog), "Title"), 50.75F, 60.75F + line);
}

TEST_F(SingleField, draws_every_button_framed_around_its_label) {
    const auto drawn = render(dialog);
    const auto frames = shapes(drawn, GL_LINE_LOOP);
    const auto quads = shapes(drawn, GL_QUADS);
    ASSERT_EQ(frames.size(), 3U);
    ASSERT_EQ(quads.size(), 4U);  // the box and the title bar first
    for (int i = 0; i < 2; ++i) {
        int left = 0, top = 0, right = 0, bottom = 0;
        dialog.GetButtonDimension(i, left, top, right, bottom);
        expectBox(frames[static_cast<std::size_t>(i) + 1], static_cast<float>(left),
                  static_cast<float>(top), static_cast<float>(right), static_cast<float>(bottom));
        EXPECT_EQ(quads[static_cast<std::size_t>(i) + 2].points,
                  frames[static_cast<std::size_t>(i) + 1].points);
        const std::string& label = dialog.buttons[static_cast<std::size_t>(i)];
        const Point at = textOf(drawn, label).points[0];
        // Capitals are 100 units of 0.30003 pixels high.
        EXPECT_NEAR(at[0] + lengthOf(label) / 2.0F, static_cast<float>(left + right) / 2.0F, 0.01F);
        EXPECT_NEAR(at[1] - 30.003F / 2.0F, static_cast<float>(top + bottom) / 2.0F, 0.01F);
        EXPECT_GE(at[0], static_cast<float>(left));
    }
}

TEST_F(SingleField, leaves_the_line_width_and_the_matrices) {
    render(dialog);
    EXPECT_EQ(stand_in::state.line_width, 1.0F);
    EXPECT_EQ(stand_in::state.modelview_depth, 0);
}

class Message : public DialogTest {
  protected:
    Message() { openMessage({"One", "Two"}); }
};

TEST_F(Message, fills_a_box_of_three_more_lines) {
    const auto quads = shapes(render(dialog), GL_QUADS);
    // trunc((33.33 + 4) * 7 + 60) is 321.
    expectBox(quads[0], 50.0F, 321.0F, 50.0F + dialog.width, 60.0F);
    EXPECT_EQ(dialog.bottom, 321);
}

TEST_F(Message, cuts_its_lower_edge_off) {
    dialog.y = 60.5F;
    render(dialog);
    EXPECT_EQ(dialog.bottom, 321);
}

TEST_F(Message, writes_its_lines_from_the_second_row_on) {
    const auto drawn = render(dialog);
    expectAt(textOf(drawn, "One"), 50.0F, 2.0F * (line + 2.0F) + 60.0F);
    expectAt(textOf(drawn, "Two"), 50.0F, 3.0F * (line + 2.0F) + 60.0F);
    expectAt(textOf(drawn, "Press [RETURN]/[ENTER] to continue"), 50.0F,
             5.0F * (line + 2.0F) + 60.0F);
}

TEST_F(Message, draws_no_cursor) {
    EXPECT_TRUE(shapes(render(dialog), GL_LINES).empty());
}

TEST_F(Message, emptied_by_return_is_drawn_as_a_single_field_when_shown_again) {
    press({return_key});
    dialog.Display();
    const auto drawn = render(dialog);
    // trunc(10 + 5 * 33.33 + 60) is 236.
    expectBox(shapes(drawn, GL_QUADS)[0], 50.0F, 236.0F, 50.0F + dialog.width, 60.0F);
    EXPECT_THAT(words(drawn), ElementsAre(":", "Title", "OK", "Cancel"));
    const float left = 50.0F + dialog.label_width;
    expectAt(textOf(drawn, ":"), left - lengthOf(":") - 2.0F, 5.0F + 60.0F + 2.0F * line);
    expectBox(shapes(drawn, GL_LINE_LOOP)[0], left, 60.0F + line + 5.0F, left,
              10.0F + 2.0F * line + 60.0F);
}

class StackDrawing : public DialogTest {};

TEST_F(StackDrawing, lies_beneath_the_newest_dialog) {
    openSingleField("Ada", 12);
    CTextInput upper;
    Strings lines = {"hello"};
    upper.Initialise("Upper", lines, 50, 60, nullptr, nullptr);
    upper.Display();
    const Strings drawn = words(render(upper));
    EXPECT_EQ(drawn.front(), "Name");
    EXPECT_LT(std::find(drawn.begin(), drawn.end(), "Title"),
              std::find(drawn.begin(), drawn.end(), "Upper"));
}

TEST_F(StackDrawing, shows_the_cursor_of_the_newest_dialog_alone) {
    openSingleField("Ada", 12);
    CTextInput upper;
    upper.Initialise("Upper", "Name", "Bo", 400, 60, 12, answerText, &answers);
    upper.Display();
    const auto cursors = shapes(render(upper), GL_LINES);
    ASSERT_EQ(cursors.size(), 1U);
    EXPECT_FLOAT_EQ(cursors[0].points[0][0], 400.0F + lengthOf("Name:") + lengthOf("Bo"));
    upper.KeyboardHandler(escape, "");
    EXPECT_EQ(shapes(render(dialog), GL_LINES).size(), 1U);
}

TEST_F(StackDrawing, shows_no_cursor_beneath_a_message) {
    openSingleField("Ada", 12);
    CTextInput upper;
    showMessage(upper);
    EXPECT_TRUE(shapes(render(upper), GL_LINES).empty());
}

TEST_F(StackDrawing, shows_the_cursor_of_a_dialog_that_is_drawn_though_it_is_not_open) {
    openSingleField("Ada", 12);
    press({escape});
    EXPECT_EQ(shapes(render(dialog), GL_LINES).size(), 1U);
}

}  // namespace
