// What a dialog is initialised with, and how big it is.

#include <tuple>

#include "tests/glutmenu/dialog_fixture.h"

using GlutMenu::CTextInput;
using testing::ElementsAre;

namespace {

float whole(float value) {
    return static_cast<float>(static_cast<int>(value));
}

const std::string last_line = "Press [RETURN]/[ENTER] to continue";

class Dialog : public DialogTest {};

TEST_F(Dialog, starts_empty_in_the_corner) {
    EXPECT_EQ(dialog.x, 0.0F);
    EXPECT_EQ(dialog.y, 0.0F);
    EXPECT_EQ(dialog.max_length, 0);
    EXPECT_EQ(dialog.cursor_pos, 0);
    EXPECT_EQ(dialog.text_length, 0);
    EXPECT_EQ(dialog.current_field, 0);
    EXPECT_EQ(dialog.label_width, 0.0F);
    EXPECT_EQ(dialog.field_width, 0.0F);
    EXPECT_EQ(dialog.bottom, 0);
    EXPECT_EQ(dialog.width, 25.0F);
    EXPECT_EQ(dialog.margin_x, 5.0F);
    EXPECT_EQ(dialog.margin_y, 5.0F);
    EXPECT_EQ(dialog.button_width, 100.0F);
    EXPECT_EQ(dialog.centred, 0.0F);
    EXPECT_EQ(dialog.previous, nullptr);
    EXPECT_TRUE(CTextInput::cursor_visible);
}

TEST_F(Dialog, starts_with_the_colours_of_menus_and_a_green_highlight) {
    EXPECT_THAT(dialog.text_colour, ElementsAre(1.0F, 1.0F, 1.0F, 1.0F));
    EXPECT_THAT(dialog.background_colour, ElementsAre(0.0F, 0.0F, 1.0F, 0.7F));
    EXPECT_THAT(dialog.border_colour, ElementsAre(0.8F, 0.8F, 0.0F, 0.7F));
    EXPECT_THAT(dialog.highlight_colour, ElementsAre(0.0F, 1.0F, 0.0F, 0.7F));
}

TEST_F(Dialog, takes_other_colours) {
    dialog.SetTextColour(0.1F, 0.2F, 0.3F, 0.4F);
    dialog.SetBackgroundColour(0.2F, 0.3F, 0.4F, 0.5F);
    dialog.SetBorderColour(0.3F, 0.4F, 0.5F, 0.6F);
    dialog.SetHighlightColour(0.4F, 0.5F, 0.6F, 0.7F);
    EXPECT_THAT(dialog.text_colour, ElementsAre(0.1F, 0.2F, 0.3F, 0.4F));
    EXPECT_THAT(dialog.background_colour, ElementsAre(0.2F, 0.3F, 0.4F, 0.5F));
    EXPECT_THAT(dialog.border_colour, ElementsAre(0.3F, 0.4F, 0.5F, 0.6F));
    EXPECT_THAT(dialog.highlight_colour, ElementsAre(0.4F, 0.5F, 0.6F, 0.7F));
}

TEST_F(Dialog, with_a_single_field_edits_its_initial_text) {
    CTextInput::cursor_visible = false;
    EXPECT_TRUE(dialog.Initialise("Title", "Name", "Ada", 30, 40, 12, answerText, &answers));
    EXPECT_EQ(dialog.kind, 1);
    EXPECT_EQ(dialog.title, "Title");
    EXPECT_EQ(dialog.label, "Name");
    EXPECT_EQ(dialog.result, "Ada");
    EXPECT_EQ(dialog.edit_text, "Ada");
    EXPECT_EQ(dialog.cursor_pos, 3);
    EXPECT_EQ(dialog.text_length, 3);
    EXPECT_EQ(dialog.max_length, 12);
    EXPECT_EQ(dialog.x, 30.0F);
    EXPECT_EQ(dialog.y, 40.0F);
    EXPECT_EQ(dialog.user_data, &answers);
    EXPECT_TRUE(CTextInput::cursor_visible);
    EXPECT_THAT(dialog.buttons, ElementsAre("OK", "Cancel"));
}

TEST_F(Dialog, with_a_single_field_is_as_wide_as_label_and_field) {
    openSingleField("Ada", 12);
    EXPECT_FLOAT_EQ(dialog.label_width, lengthOf("Name:"));
    EXPECT_FLOAT_EQ(dialog.field_width, 12.0F * 13.0F);
    EXPECT_EQ(dialog.width, whole(lengthOf("Name:") + 156.0F));
}

TEST_F(Dialog, cuts_an_initial_text_to_the_capacity) {
    openSingleField("Ada Lovelace", 5);
    EXPECT_EQ(dialog.result, "Ada L");
    openSingleField("Ada", -2);
    EXPECT_EQ(dialog.result, "");
}

TEST_F(Dialog, with_a_single_field_needs_a_callback) {
    EXPECT_FALSE(dialog.Initialise("Title", "Name", "Ada", 30, 40, 12, nullptr, nullptr));
    EXPECT_EQ(dialog.edit_text, "Ada");
    EXPECT_EQ(dialog.text_length, 3);
    EXPECT_TRUE(dialog.buttons.empty());
}

TEST_F(Dialog, that_could_not_be_initialised_answers_nobody) {
    openSingleField("Ada", 12);
    press({escape});
    dialog.Initialise("Title", "Name", "Ada", 30, 40, 12, nullptr, nullptr);
    dialog.Display();
    press({return_key});
    EXPECT_TRUE(answers.given.empty());
    EXPECT_FALSE(isOpen(dialog));
}

TEST_F(Dialog, with_a_message_tells_how_to_go_on) {
    Strings lines = {"One", "Two"};
    EXPECT_TRUE(dialog.Initialise("Title", lines, 30, 40, answerText, &answers));
    EXPECT_EQ(dialog.kind, 2);
    EXPECT_THAT(dialog.message_lines, ElementsAre("One", "Two", "", last_line));
    EXPECT_EQ(dialog.max_length, 0);
    EXPECT_EQ(dialog.cursor_pos, 0);
    EXPECT_EQ(dialog.edit_text, "");
    EXPECT_EQ(dialog.user_data, &answers);
    EXPECT_THAT(dialog.buttons, ElementsAre("OK", "Cancel"));
}

TEST_F(Dialog, with_a_message_is_as_wide_as_its_longest_line) {
    openMessage({"One"});
    EXPECT_EQ(dialog.label_width, whole(lengthOf(last_line)));
    EXPECT_EQ(dialog.width, dialog.label_width + 4.0F);
    EXPECT_EQ(dialog.field_width, 0.0F);
    openMessage({"A line that is a good deal longer than that"});
    EXPECT_EQ(dialog.label_width, whole(lengthOf("A line that is a good deal longer than that")));
}

TEST_F(Dialog, with_a_message_leaves_the_lines_it_was_given) {
    Strings lines = {"One"};
    dialog.Initialise("Title", lines, 0, 0, nullptr, nullptr);
    EXPECT_THAT(lines, ElementsAre("One"));
}

TEST_F(Dialog, may_be_initialised_with_its_own_lines) {
    openMessage({"One"});
    dialog.Initialise("Title", dialog.message_lines, 0, 0, nullptr, nullptr);
    EXPECT_THAT(dialog.message_lines, ElementsAre("One", "", last_line, "", last_line));
}

TEST_F(Dialog, with_a_form_edits_the_first_field_at_its_end) {
    Strings labels = {"Title", "Count"};
    Strings values = {"Tiles", "12"};
    EXPECT_TRUE(dialog.Initialise("T", labels, values, 30, 40, 9, answerForm, &answers));
    EXPECT_EQ(dialog.kind, 3);
    EXPECT_EQ(dialog.x, 30.0F);
    EXPECT_EQ(dialog.y, 40.0F);
    EXPECT_EQ(dialog.max_length, 9);
    EXPECT_EQ(dialog.current_field, 0);
    EXPECT_EQ(dialog.edit_text, "Tiles");
    EXPECT_EQ(dialog.cursor_pos, 5);
    EXPECT_EQ(dialog.text_length, 5);
    EXPECT_THAT(dialog.field_labels, ElementsAre("Title", "Count"));
    EXPECT_THAT(dialog.field_values, ElementsAre("Tiles", "12"));
    EXPECT_THAT(dialog.buttons, ElementsAre("OK", "Cancel"));
}

TEST_F(Dialog, initialised_again_edits_the_first_field_whichever_had_the_focus) {
    openForm({"A", "B", "C"}, {"one", "two!", "three"}, 9);
    press({arrow_down, arrow_down, home});
    openForm({"D", "E", "F"}, {"four", "five!", "six"}, 9);
    EXPECT_EQ(dialog.current_field, 0);
    EXPECT_EQ(dialog.edit_text, "four");
    EXPECT_EQ(std::make_tuple(dialog.cursor_pos, dialog.text_length), std::make_tuple(4, 4));
    press({'!', return_key});
    EXPECT_THAT(answers.given, ElementsAre("[] D=four! E=five! F=six"));
}

TEST_F(Dialog, with_a_form_is_as_wide_as_longest_label_and_field) {
    openForm({"Title", "Shape"}, {"a", "b"}, 9);
    // "Shape" is 81 + 71 + 67 + 71 + 69 units wide, "Title" less.
    EXPECT_FLOAT_EQ(dialog.label_width, whole(lengthOf("Shape")) + lengthOf(":"));
    EXPECT_FLOAT_EQ(dialog.field_width, 9.0F * 13.0F);
    EXPECT_EQ(dialog.width, whole(dialog.label_width + dialog.field_width));
}

TEST_F(Dialog, with_a_form_returns_every_value_unchanged_at_once) {
    openForm({"Title", "Count"}, {"Tiles", "12"}, 9);
    press({return_key});
    EXPECT_THAT(answers.given, ElementsAre("[] Title=Tiles Count=12"));
}

TEST_F(Dialog, with_a_form_may_have_no_fields_at_all) {
    openForm({}, {}, 9);
    press({arrow_up, arrow_down, 9, 'x'});
    press({return_key});
    EXPECT_THAT(answers.given, ElementsAre("[]"));
}

TEST_F(Dialog, forgets_everything_of_its_former_kind) {
    openForm({"Title", "Count"}, {"Tiles", "12"}, 9);
    dialog.DefineFieldValues(0, {"a"}, 0);
    press({arrow_down, escape});
    openSingleField("Ada", 12);
    EXPECT_TRUE(dialog.field_labels.empty() && dialog.field_values.empty());
    EXPECT_TRUE(dialog.value_lists.empty());
    press({return_key});
    EXPECT_THAT(answers.given, ElementsAre("[] Ada"));
}

TEST_F(Dialog, is_never_narrower_than_its_buttons) {
    openSingleField("", 0);
    // "Cancel" and an 'I' on either side, twice, 1.2 times that apart.
    const float button = whole(lengthOf("Cancel")) + 2.0F * lengthOf("I");
    EXPECT_FLOAT_EQ(dialog.button_width, button);
    EXPECT_EQ(dialog.width, whole(button * 2.4F));
}

TEST_F(Dialog, multiplies_the_row_of_its_buttons_in_double_precision) {
    GlutMenu::CGlutMenu bar;
    initialiseBar(bar, {"A"}, 4618, 768);
    openSingleField("", 0);
    // 2 * 1.2 * 276.66666 is just short of 664, which single precision would make of it.
    ASSERT_FLOAT_EQ(dialog.button_width, 276.66666F);
    EXPECT_EQ(dialog.width, 663.0F);
}

TEST_F(Dialog, widens_for_more_buttons) {
    openSingleField("", 0);
    dialog.DefineButtons({"Yes", "No", "Perhaps"});
    const float button = whole(lengthOf("Perhaps")) + 2.0F * lengthOf("I");
    EXPECT_THAT(dialog.buttons, ElementsAre("Yes", "No", "Perhaps"));
    EXPECT_FLOAT_EQ(dialog.button_width, button);
    EXPECT_EQ(dialog.width, whole(button * 3.6F));
}

TEST_F(Dialog, cuts_the_row_of_defined_buttons_off) {
    openSingleField("", 0);
    dialog.DefineButtons({"OK", "Cancel"});
    // 2 * 1.2 * (55 + 6.13)
    EXPECT_EQ(dialog.width, 146.0F);
}

TEST_F(Dialog, multiplies_the_row_of_defined_buttons_in_single_precision) {
    GlutMenu::CGlutMenu bar;
    initialiseBar(bar, {"A"}, 4618, 768);
    openSingleField("", 0);
    dialog.DefineButtons({"OK", "Cancel"});
    ASSERT_FLOAT_EQ(dialog.button_width, 276.66666F);
    EXPECT_EQ(dialog.width, 664.0F);
}

TEST_F(Dialog, may_have_no_buttons) {
    openSingleField("Ada", 12);
    const float width = dialog.width;
    dialog.DefineButtons({});
    EXPECT_FLOAT_EQ(dialog.button_width, 2.0F * lengthOf("I"));
    EXPECT_EQ(dialog.width, width);
    EXPECT_TRUE(dialog.MouseHandler(0, 0, 50, 60));
}

TEST_F(Dialog, of_every_kind_shows_the_cursor_at_first) {
    CTextInput::cursor_visible = false;
    Strings lines = {"One"};
    dialog.Initialise("Title", lines, 30, 40, answerText, &answers);
    EXPECT_TRUE(CTextInput::cursor_visible);
    CTextInput::cursor_visible = false;
    Strings values = {"a"};
    dialog.Initialise("Title", lines, values, 30, 40, 9, answerForm, &answers);
    EXPECT_TRUE(CTextInput::cursor_visible);
}

class DialogReshape : public DialogTest {};

TEST_F(DialogReshape, moves_and_traces) {
    openSingleField("Ada", 12);
    trace();
    dialog.ReshapeCallback(9.0F, 9.0F, 2.0F, 0.5F);
    EXPECT_EQ(dialog.x, 100.0F);
    EXPECT_EQ(dialog.y, 30.0F);
    EXPECT_EQ(trace(),
              "CTextInput::ReshapeCallback\n"
              "CTextInput::(x,y) 50, 60\n"
              "New CTextInput::(x,y) 100, 30\n");
}

TEST_F(DialogReshape, scales_the_buttons_and_their_edge) {
    openSingleField("Ada", 12);
    dialog.bottom = 333;
    dialog.button_width = 60.0F;
    dialog.ReshapeCallback(1.0F, 1.0F, 2.0F, 0.5F);
    EXPECT_EQ(dialog.bottom, 166);
    EXPECT_EQ(dialog.button_width, 120.0F);
}

TEST_F(DialogReshape, of_a_stacked_dialog_starts_with_the_one_beneath) {
    openMessage({"One"});
    CTextInput upper;
    upper.Initialise("U", "Name", "", 10, 20, 5, answerText, &answers);
    upper.Display();
    trace();
    upper.ReshapeCallback(1.0F, 1.0F, 2.0F, 0.5F);
    EXPECT_EQ(trace(),
              "CTextInput::ReshapeCallback\n"
              "CTextInput::(x,y) 50, 60\n"
              "New CTextInput::(x,y) 100, 30\n"
              "CTextInput::ReshapeCallback\n"
              "CTextInput::(x,y) 10, 20\n"
              "New CTextInput::(x,y) 20, 10\n");
}

TEST_F(DialogReshape, takes_the_text_length_of_the_result) {
    openSingleField("Ada", 12);
    press({'x'});
    dialog.Reinitialise();
    EXPECT_EQ(dialog.text_length, 3);
    EXPECT_EQ(dialog.edit_text, "Adax");
}

TEST_F(DialogReshape, sizes_a_message_and_shows_the_cursor) {
    openMessage({"One"});
    CTextInput::cursor_visible = false;
    dialog.label = "left over";
    dialog.result = "left over";
    dialog.max_length = dialog.cursor_pos = dialog.text_length = 3;
    dialog.width = 0.0F;
    dialog.Reinitialise();
    EXPECT_EQ(dialog.label + dialog.result, "");
    EXPECT_EQ(std::make_tuple(dialog.max_length, dialog.cursor_pos, dialog.text_length),
              std::make_tuple(0, 0, 0));
    EXPECT_EQ(dialog.width, dialog.label_width + 4.0F);
    EXPECT_TRUE(CTextInput::cursor_visible);
}

TEST_F(DialogReshape, shows_the_cursor_of_fields) {
    openSingleField("Ada", 12);
    CTextInput::cursor_visible = false;
    dialog.Reinitialise();
    EXPECT_TRUE(CTextInput::cursor_visible);
    openForm({"A"}, {"a"}, 9);
    CTextInput::cursor_visible = false;
    dialog.Reinitialise();
    EXPECT_TRUE(CTextInput::cursor_visible);
}

TEST_F(DialogReshape, sizes_a_form_and_centres_it_again) {
    openForm({"A"}, {"a"}, 9);
    dialog.Center();
    stand_in::state.window_height = 400;
    dialog.width = dialog.label_width = 0.0F;
    dialog.Reinitialise();
    EXPECT_FLOAT_EQ(dialog.width, dialog.label_width + 117.0F);
    EXPECT_EQ(dialog.y, 200.0F - 33.0F);
}

}  // namespace
