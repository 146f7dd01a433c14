// How a dialog closes and what it answers, by keys and by its buttons.

#include "tests/glutmenu/dialog_fixture.h"

using testing::ElementsAre;

namespace {

class Closing : public DialogTest {};

TEST_F(Closing, by_escape_asks_no_callback) {
    openSingleField("Ada", 12);
    press({'x', escape});
    EXPECT_FALSE(isOpen(dialog));
    EXPECT_EQ(GlutMenu::num_dialogs_active, 0);
    EXPECT_TRUE(answers.given.empty());
    EXPECT_EQ(dialog.result, "Ada");
}

TEST_F(Closing, by_return_stores_and_delivers_the_text) {
    openSingleField("Ada", 12);
    press({'x', return_key});
    EXPECT_THAT(answers.given, ElementsAre("[] Adax"));
    EXPECT_EQ(dialog.result, "Adax");
    EXPECT_FALSE(isOpen(dialog));
}

TEST_F(Closing, asks_for_a_redisplay) {
    openSingleField("Ada", 12);
    const int before = stand_in::state.redisplays;
    press({return_key});
    EXPECT_GT(stand_in::state.redisplays, before);
}

TEST_F(Closing, is_refused_by_a_callback_and_keeps_the_text) {
    answers.accept = false;
    openSingleField("Ada", 12);
    press({'x', return_key});
    EXPECT_TRUE(isOpen(dialog));
    EXPECT_EQ(dialog.edit_text, "Adax");
    EXPECT_EQ(GlutMenu::num_dialogs_active, 1);
    openForm({"A"}, {"a"}, 4);
    press({return_key});
    EXPECT_TRUE(isOpen(dialog));
}

TEST_F(Closing, of_a_message_by_return_asks_nobody_and_empties_it) {
    Strings lines = {"One"};
    dialog.Initialise("T", lines, 50, 60, answerText, &answers);
    dialog.Display();
    press({return_key});
    EXPECT_FALSE(isOpen(dialog));
    EXPECT_TRUE(dialog.message_lines.empty());
    EXPECT_TRUE(answers.given.empty());
}

TEST_F(Closing, of_a_form_without_a_callback_needs_none) {
    Strings labels = {"A"};
    Strings values = {"a"};
    dialog.Initialise("T", labels, values, 50, 60, 8, nullptr, nullptr);
    dialog.Display();
    press({'x', return_key});
    EXPECT_FALSE(isOpen(dialog));
    EXPECT_THAT(dialog.field_values, ElementsAre("ax"));
}

class Button : public DialogTest {
  protected:
    Button() {
        openSingleField("Ada", 12);
        dialog.Render();
        trace();
    }
    // Presses the left mouse button in the middle of a button.
    bool click(int i) {
        int left = 0, top = 0, right = 0, bottom = 0;
        dialog.GetButtonDimension(i, left, top, right, bottom);
        return dialog.MouseHandler(0, 0, (left + right) / 2, (top + bottom) / 2);
    }
};

// The box is trunc(74.0 + 156) wide from x 50; "Cancel" and two 'I' make 58 + 6.13.
TEST_F(Button, lies_at_the_lower_right_of_the_box) {
    const float pitch = dialog.button_width * 1.2F;
    for (int i = 0; i < 2; ++i) {
        int left = 0, top = 0, right = 0, bottom = 0;
        dialog.GetButtonDimension(i, left, top, right, bottom);
        EXPECT_EQ(left, static_cast<int>(50.0F + dialog.width - static_cast<float>(2 - i) * pitch));
        EXPECT_EQ(right, static_cast<int>(static_cast<float>(left) + dialog.button_width));
        // The box ends at trunc(10 + 5 * 33.33 + 60); the button starts two lines above that.
        EXPECT_EQ(top, static_cast<int>(236.0F - 66.66F));
        EXPECT_EQ(bottom, 169 + 36);
    }
}

TEST_F(Button, rectangle_is_cut_off_to_whole_pixels) {
    dialog.button_width = 60.75F;
    GlutMenu::char_height = 33.6F;
    int left = 0, top = 0, right = 0, bottom = 0;
    dialog.GetButtonDimension(1, left, top, right, bottom);
    EXPECT_EQ(right, left + 60);
    // 236 - 67.2 and 168 + 36.6
    EXPECT_EQ(top, 168);
    EXPECT_EQ(bottom, 204);
}

TEST_F(Button, rectangle_is_never_turned_inside_out) {
    dialog.button_width = -80.0F;
    GlutMenu::char_height = -33.33F;
    int left = 0, top = 0, right = 0, bottom = 0;
    dialog.GetButtonDimension(0, left, top, right, bottom);
    EXPECT_LE(left, right);
    EXPECT_LE(top, bottom);
}

TEST_F(Button, click_confirms_with_its_label) {
    EXPECT_TRUE(click(1));
    EXPECT_THAT(answers.given, ElementsAre("[Cancel] Ada"));
    EXPECT_EQ(trace(), "Key code is 13 and shift state is 0\n");
    EXPECT_FALSE(isOpen(dialog));
}

TEST_F(Button, click_may_be_refused) {
    answers.accept = false;
    EXPECT_TRUE(click(0));
    EXPECT_THAT(answers.given, ElementsAre("[OK] Ada"));
    EXPECT_TRUE(isOpen(dialog));
}

TEST_F(Button, includes_its_edges) {
    answers.accept = false;
    int left = 0, top = 0, right = 0, bottom = 0;
    dialog.GetButtonDimension(0, left, top, right, bottom);
    dialog.MouseHandler(0, 0, left, top);
    dialog.MouseHandler(0, 0, right, bottom);
    EXPECT_EQ(answers.given.size(), 2U);
    dialog.MouseHandler(0, 0, left - 1, top);
    dialog.MouseHandler(0, 0, right + 1, top);
    dialog.MouseHandler(0, 0, left, top - 1);
    dialog.MouseHandler(0, 0, left, bottom + 1);
    EXPECT_EQ(answers.given.size(), 2U);
}

TEST_F(Button, missed_by_a_click_changes_nothing_and_consumes_it) {
    EXPECT_TRUE(dialog.MouseHandler(0, 0, 5, 5));
    EXPECT_TRUE(isOpen(dialog));
    EXPECT_TRUE(answers.given.empty());
}

TEST_F(Button, is_not_pressed_by_a_release_or_another_mouse_button) {
    EXPECT_FALSE(dialog.MouseHandler(0, 1, 200, 180));
    EXPECT_FALSE(dialog.MouseHandler(1, 0, 200, 180));
    EXPECT_TRUE(answers.given.empty());
}

TEST_F(Button, takes_no_click_while_no_dialog_is_open) {
    press({escape});
    EXPECT_FALSE(click(0));
    GlutMenu::num_dialogs_active = 1;
    EXPECT_FALSE(click(0));
}

TEST_F(Button, takes_no_click_while_no_dialog_is_counted) {
    GlutMenu::num_dialogs_active = 0;
    EXPECT_FALSE(click(0));
    EXPECT_TRUE(answers.given.empty());
}

TEST_F(Button, is_found_in_a_window_of_another_size) {
    stand_in::state.window_width = 512;
    stand_in::state.window_height = 1536;
    int left = 0, top = 0, right = 0, bottom = 0;
    dialog.GetButtonDimension(1, left, top, right, bottom);
    EXPECT_TRUE(dialog.MouseHandler(0, 0, (left + right) / 4, top + bottom));
    EXPECT_THAT(answers.given, ElementsAre("[Cancel] Ada"));
}

TEST_F(Button, takes_broken_pixels_for_those_they_lie_in) {
    answers.accept = false;
    stand_in::state.window_width = 2048;
    stand_in::state.window_height = 1536;
    int left = 0, top = 0, right = 0, bottom = 0;
    dialog.GetButtonDimension(1, left, top, right, bottom);
    dialog.MouseHandler(0, 0, 2 * left - 1, 2 * top);
    dialog.MouseHandler(0, 0, 2 * left, 2 * top - 1);
    EXPECT_TRUE(answers.given.empty());
    dialog.MouseHandler(0, 0, 2 * right + 1, 2 * bottom + 1);
    EXPECT_THAT(answers.given, ElementsAre("[Cancel] Ada"));
}

TEST_F(Button, overlapping_another_goes_first) {
    answers.accept = false;
    dialog.DefineButtons({"First", "Second"});
    dialog.button_width = 0.0F;
    dialog.width = 0.0F;
    int left = 0, top = 0, right = 0, bottom = 0;
    dialog.GetButtonDimension(0, left, top, right, bottom);
    dialog.MouseHandler(0, 0, left, top);
    EXPECT_THAT(answers.given, ElementsAre("[First] Ada"));
}

TEST_F(Button, closes_a_message_whatever_its_label) {
    openMessage({"One"});
    dialog.Render();
    EXPECT_TRUE(click(1));
    EXPECT_FALSE(isOpen(dialog));
}

}  // namespace
