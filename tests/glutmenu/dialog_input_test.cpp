// Keys of the open dialog.

#include "tests/glutmenu/dialog_fixture.h"

using GlutMenu::CTextInput;
using testing::ElementsAre;

namespace {

constexpr int backspace = 8;
constexpr int tab = 9;
constexpr int back_tab = 25;
constexpr int delete_key = 127;

class Typing : public DialogTest {};

TEST_F(Typing, traces_every_key_and_the_shift_bit_alone) {
    openSingleField("", 12);
    trace();
    stand_in::state.modifiers = GLUT_ACTIVE_SHIFT | GLUT_ACTIVE_CTRL | 8;
    press({'a'});
    stand_in::state.modifiers = GLUT_ACTIVE_ALT;
    press({1});
    EXPECT_EQ(trace(),
              "Key code is 97 and shift state is 1\n"
              "Key code is 1 and shift state is 0\n");
}

TEST_F(Typing, without_any_open_dialog_is_ignored) {
    openSingleField("Ada", 12);
    press({escape});
    trace();
    press({'x'});
    EXPECT_EQ(dialog.edit_text, "Ada");
    EXPECT_EQ(trace(), "");
}

TEST_F(Typing, appends_at_the_end) {
    openSingleField("Ada", 12);
    type("!~ ");
    EXPECT_EQ(dialog.edit_text, "Ada!~ ");
    EXPECT_EQ(dialog.cursor_pos, 6);
    EXPECT_EQ(dialog.text_length, 6);
}

TEST_F(Typing, asks_for_a_redisplay) {
    openSingleField("Ada", 12);
    const int before = stand_in::state.redisplays;
    press({'x'});
    EXPECT_GT(stand_in::state.redisplays, before);
}

TEST_F(Typing, inserts_at_the_cursor) {
    openSingleField("Ada", 12);
    press({arrow_left, 'x'});
    EXPECT_EQ(dialog.edit_text, "Adxa");
    EXPECT_EQ(dialog.cursor_pos, 3);
    press({home, 'y'});
    EXPECT_EQ(dialog.edit_text, "yAdxa");
}

TEST_F(Typing, takes_the_first_and_the_last_printable_code_only) {
    openSingleField("", 12);
    press({31, 32, 126, 128, 233, 255, 1, 0, -1});
    EXPECT_EQ(dialog.edit_text, " ~");
}

TEST_F(Typing, at_the_capacity_only_rings) {
    openSingleField("Ada", 3);
    trace();
    press({'x'});
    EXPECT_EQ(dialog.edit_text, "Ada");
    EXPECT_EQ(dialog.cursor_pos, 3);
    EXPECT_EQ(trace(), "Key code is 120 and shift state is 0\n\a");
}

TEST_F(Typing, rings_at_once) {
    openSingleField("Ada", 3);
    const OutputByFlush console;
    press({'x'});
    EXPECT_THAT(console.flushed, ElementsAre("Key code is 120 and shift state is 0\n", "\a"));
}

TEST_F(Typing, at_the_capacity_leaves_other_keys_quiet) {
    openSingleField("Ada", 3);
    trace();
    press({1});
    EXPECT_EQ(trace(), "Key code is 1 and shift state is 0\n");
}

TEST_F(Typing, into_a_message_does_nothing) {
    openMessage({"One"});
    press({'x', backspace, home, end, arrow_left, arrow_right, arrow_up, arrow_down, tab});
    EXPECT_EQ(dialog.edit_text, "");
    EXPECT_EQ(dialog.cursor_pos, 0);
}

TEST_F(Typing, letters_that_share_codes_with_arrows_types_them) {
    openSingleField("", 12);
    type("defg");
    EXPECT_EQ(dialog.edit_text, "defg");
}

TEST_F(Typing, backspace_and_delete_both_delete_backwards) {
    openSingleField("abcd", 12);
    press({backspace});
    EXPECT_EQ(dialog.edit_text, "abc");
    press({arrow_left, delete_key});
    EXPECT_EQ(dialog.edit_text, "ac");
    EXPECT_EQ(dialog.cursor_pos, 1);
    EXPECT_EQ(dialog.text_length, 2);
}

TEST_F(Typing, backspace_at_the_start_has_no_effect) {
    openSingleField("abc", 12);
    press({home, backspace, delete_key});
    EXPECT_EQ(dialog.edit_text, "abc");
    EXPECT_EQ(dialog.cursor_pos, 0);
}

TEST_F(Typing, backspace_beyond_the_end_only_moves) {
    openSingleField("abc", 12);
    dialog.cursor_pos = 5;
    press({backspace});
    EXPECT_EQ(dialog.edit_text, "abc");
    EXPECT_EQ(dialog.cursor_pos, 4);
}

TEST_F(Typing, beyond_the_end_appends) {
    openSingleField("abc", 12);
    dialog.cursor_pos = 5;
    press({'x'});
    EXPECT_EQ(dialog.edit_text, "abcx");
    EXPECT_EQ(dialog.cursor_pos, 6);
}

class Cursor : public DialogTest {};

TEST_F(Cursor, steps_once_past_the_start_where_typing_appends) {
    openSingleField("abc", 12);
    press({home, arrow_left});
    EXPECT_EQ(dialog.cursor_pos, -1);
    press({arrow_left});
    EXPECT_EQ(dialog.cursor_pos, -1);
    press({backspace});
    EXPECT_EQ(dialog.edit_text, "abc");
    press({'x'});
    EXPECT_EQ(dialog.edit_text, "abcx");
    EXPECT_EQ(dialog.cursor_pos, 0);
}

TEST_F(Cursor, wraps_from_the_end_to_the_start) {
    openSingleField("abc", 12);
    press({arrow_right});
    EXPECT_EQ(dialog.cursor_pos, 0);
    press({arrow_right});
    EXPECT_EQ(dialog.cursor_pos, 1);
}

TEST_F(Cursor, comes_back_from_before_the_start) {
    openSingleField("abc", 12);
    press({home, arrow_left, arrow_right});
    EXPECT_EQ(dialog.cursor_pos, 0);
}

TEST_F(Cursor, goes_home_and_to_the_end) {
    openSingleField("abc", 12);
    press({home});
    EXPECT_EQ(dialog.cursor_pos, 0);
    press({end});
    EXPECT_EQ(dialog.cursor_pos, 3);
}

TEST_F(Cursor, asks_for_a_redisplay_with_every_move) {
    openSingleField("abc", 12);
    for (const int key : {home, end, arrow_left, arrow_right}) {
        const int before = stand_in::state.redisplays;
        press({key});
        EXPECT_GT(stand_in::state.redisplays, before) << key;
    }
}

TEST_F(Cursor, ignores_page_keys_and_vertical_arrows_of_a_single_field) {
    openSingleField("abc", 12);
    const int before = stand_in::state.redisplays;
    dialog.SpecialKeyHandler(104);
    dialog.SpecialKeyHandler(105);
    dialog.SpecialKeyHandler(108);
    press({arrow_up, arrow_down});
    EXPECT_EQ(dialog.cursor_pos, 3);
    EXPECT_EQ(stand_in::state.redisplays, before);
}

class Form : public DialogTest {
  protected:
    Form() { openForm({"A", "B", "C"}, {"one", "two!", "three"}, 8); }
    void pressWithShift(int key) {
        stand_in::state.modifiers = GLUT_ACTIVE_SHIFT;
        press({key});
        stand_in::state.modifiers = 0;
    }
};

TEST_F(Form, tab_stores_the_field_and_loads_the_next) {
    press({'x', tab});
    EXPECT_EQ(dialog.current_field, 1);
    EXPECT_THAT(dialog.field_values, ElementsAre("onex", "two!", "three"));
    EXPECT_EQ(dialog.edit_text, "two!");
    EXPECT_EQ(dialog.cursor_pos, 4);
    EXPECT_EQ(dialog.text_length, 4);
}

TEST_F(Form, tab_on_the_last_field_wraps_to_the_first) {
    press({tab, tab, tab});
    EXPECT_EQ(dialog.current_field, 0);
    EXPECT_EQ(dialog.edit_text, "one");
}

TEST_F(Form, shift_tab_on_the_first_field_wraps_to_the_last) {
    pressWithShift(tab);
    EXPECT_EQ(dialog.current_field, 2);
    EXPECT_EQ(dialog.edit_text, "three");
    pressWithShift(back_tab);
    EXPECT_EQ(dialog.current_field, 1);
}

TEST_F(Form, back_tab_without_shift_is_ignored) {
    press({back_tab});
    EXPECT_EQ(dialog.current_field, 0);
}

TEST_F(Form, up_and_down_move_between_fields_and_wrap) {
    press({arrow_down});
    EXPECT_EQ(dialog.current_field, 1);
    press({arrow_down, arrow_down});
    EXPECT_EQ(dialog.current_field, 0);
    press({arrow_up});
    EXPECT_EQ(dialog.current_field, 2);
    press({arrow_up});
    EXPECT_EQ(dialog.current_field, 1);
}

TEST_F(Form, asks_for_a_redisplay_when_it_changes_fields) {
    for (const int key : {tab, arrow_up, arrow_down}) {
        const int before = stand_in::state.redisplays;
        press({key});
        EXPECT_GT(stand_in::state.redisplays, before) << key;
    }
}

TEST_F(Form, goes_home_and_to_the_end_of_the_current_field) {
    press({tab, home});
    EXPECT_EQ(dialog.cursor_pos, 0);
    press({'x'});
    EXPECT_EQ(dialog.edit_text, "xtwo!");
    press({end});
    EXPECT_EQ(dialog.cursor_pos, 5);
}

TEST_F(Form, return_gives_every_value_with_the_edited_one) {
    press({tab, '?', return_key});
    EXPECT_THAT(answers.given, ElementsAre("[] A=one B=two!? C=three"));
    EXPECT_FALSE(isOpen(dialog));
}

TEST_F(Form, get_text_of_any_field_is_the_text_being_edited) {
    press({'x'});
    EXPECT_EQ(dialog.GetText(0), "onex");
    EXPECT_EQ(dialog.GetText(2), "onex");
    EXPECT_EQ(dialog.GetText(3), "");
    EXPECT_EQ(dialog.GetText(-1), "");
}

TEST_F(Form, set_text_ignores_bad_indices) {
    press({'x'});
    dialog.SetText(1, 7);
    EXPECT_THAT(dialog.field_values, ElementsAre("one", "two!", "three"));
    EXPECT_EQ(dialog.edit_text, "two!");
    dialog.SetText(-1, 0);
    EXPECT_THAT(dialog.field_values, ElementsAre("two!", "two!", "three"));
    EXPECT_EQ(dialog.edit_text, "");
}

TEST_F(Form, set_text_is_for_forms_only) {
    openSingleField("Ada", 12);
    dialog.SetText(0, 0);
    EXPECT_EQ(dialog.edit_text, "Ada");
}

TEST_F(Form, with_a_current_field_out_of_range_changes_nothing) {
    dialog.current_field = 9;
    press({'x', return_key});
    EXPECT_THAT(answers.given, ElementsAre("[] A=one B=two! C=three"));
}

TEST_F(Form, value_longer_than_the_capacity_can_only_shrink) {
    openForm({"A"}, {"much too long"}, 4);
    press({'x', backspace});
    EXPECT_EQ(dialog.edit_text, "much too lon");
}

class FormWithoutFields : public DialogTest {
  protected:
    FormWithoutFields() { openForm({}, {}, 8); }
};

TEST_F(FormWithoutFields, has_no_field_to_go_back_to) {
    const int before = stand_in::state.redisplays;
    press({arrow_up});
    stand_in::state.modifiers = GLUT_ACTIVE_SHIFT;
    press({tab});
    EXPECT_EQ(dialog.current_field, 0);
    EXPECT_EQ(stand_in::state.redisplays, before);
}

TEST_F(FormWithoutFields, answers_with_nothing_whatever_was_typed) {
    press({'x', return_key});
    EXPECT_THAT(answers.given, ElementsAre("[]"));
    EXPECT_EQ(dialog.result, "");
}

class ValueList : public DialogTest {
  protected:
    ValueList() {
        openForm({"A", "B"}, {"red", "b"}, 8);
        dialog.DefineFieldValues(0, {"red", "green", "blue"}, 0);
    }
};

TEST_F(ValueList, right_takes_the_next_value_and_wraps) {
    press({arrow_right});
    EXPECT_EQ(dialog.edit_text, "green");
    EXPECT_EQ(dialog.value_index[0], 1);
    press({arrow_right, arrow_right});
    EXPECT_EQ(dialog.edit_text, "red");
}

TEST_F(ValueList, left_takes_the_value_before_and_wraps) {
    press({arrow_left});
    EXPECT_EQ(dialog.edit_text, "blue");
    EXPECT_EQ(dialog.value_index[0], 2);
    press({arrow_left});
    EXPECT_EQ(dialog.edit_text, "green");
    press({arrow_left});
    EXPECT_EQ(dialog.edit_text, "red");
}

TEST_F(ValueList, asks_for_a_redisplay_with_every_choice) {
    for (const int key : {arrow_left, arrow_right}) {
        const int before = stand_in::state.redisplays;
        press({key});
        EXPECT_GT(stand_in::state.redisplays, before) << key;
    }
}

TEST_F(ValueList, cannot_be_typed_into) {
    press({'x', backspace, delete_key});
    EXPECT_EQ(dialog.edit_text, "red");
}

TEST_F(ValueList, binds_its_own_field_only) {
    press({tab, 'x'});
    EXPECT_EQ(dialog.edit_text, "bx");
}

TEST_F(ValueList, is_answered_with_the_chosen_value) {
    press({arrow_right, return_key});
    EXPECT_THAT(answers.given, ElementsAre("[] A=green B=b"));
}

TEST_F(ValueList, without_values_leaves_the_field_free) {
    dialog.DefineFieldValues(0, {}, 5);
    press({'x', arrow_left});
    EXPECT_EQ(dialog.edit_text, "redx");
    EXPECT_EQ(dialog.cursor_pos, 3);
}

TEST_F(ValueList, index_out_of_range_is_harmless) {
    for (const int index : {-7, 3, 99}) {
        dialog.DefineFieldValues(0, {"red", "green", "blue"}, index);
        press({arrow_right});
        EXPECT_EQ(dialog.edit_text, "red") << index;
        dialog.DefineFieldValues(0, {"red", "green", "blue"}, index);
        press({arrow_left});
        EXPECT_EQ(dialog.edit_text, "blue") << index;
    }
}

TEST_F(ValueList, of_a_field_that_does_not_exist_is_harmless) {
    dialog.DefineFieldValues(12, {"x"}, 0);
    dialog.DefineFieldValues(-1, {"x"}, 0);
    press({tab, tab, return_key});
    EXPECT_THAT(answers.given, ElementsAre("[] A=red B=b"));
}

}  // namespace
