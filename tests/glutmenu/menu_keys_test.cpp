// Keys on menus, and the blink of the text cursor.

#include "tests/glutmenu/menu_input_fixture.h"

using testing::ElementsAre;

namespace {

class Keys : public MenuInputTest {};

TEST_F(Keys, are_not_consumed_by_an_inactive_menu) {
    bar.Deactive(false);
    EXPECT_FALSE(press({return_key}));
    EXPECT_FALSE(press({escape}));
    EXPECT_FALSE(bar.submenu_open);
}

TEST_F(Keys, right_and_left_move_along_the_bar_and_wrap) {
    EXPECT_TRUE(press({arrow_right}));
    EXPECT_EQ(bar.highlighted_item, 1);
    EXPECT_TRUE(press({arrow_right, arrow_right}));
    EXPECT_EQ(bar.highlighted_item, 0);
    EXPECT_TRUE(press({arrow_left}));
    EXPECT_EQ(bar.highlighted_item, 2);
    EXPECT_TRUE(press({arrow_left}));
    EXPECT_EQ(bar.highlighted_item, 1);
}

TEST_F(Keys, up_and_down_are_none_of_the_bars) {
    EXPECT_FALSE(press({arrow_up}));
    EXPECT_FALSE(press({arrow_down}));
    EXPECT_EQ(bar.highlighted_item, 0);
}

TEST_F(Keys, return_opens_a_fresh_submenu) {
    file->highlighted_item = 2;
    file->item_selected = true;
    EXPECT_TRUE(press({return_key}));
    EXPECT_TRUE(bar.submenu_open);
    EXPECT_EQ(bar.selected_item, 0);
    EXPECT_TRUE(file->active);
    EXPECT_FALSE(file->item_selected);
    EXPECT_EQ(file->highlighted_item, 0);
    EXPECT_EQ(file->selected_item, -1);
}

TEST_F(Keys, up_and_down_move_within_a_drop_down_and_wrap) {
    openFile();
    EXPECT_TRUE(press({arrow_up}));
    EXPECT_EQ(file->highlighted_item, 2);
    EXPECT_TRUE(press({arrow_down}));
    EXPECT_EQ(file->highlighted_item, 0);
    press({arrow_down, arrow_down, arrow_up});
    EXPECT_EQ(file->highlighted_item, 1);
}

TEST_F(Keys, return_delivers_a_leaf_and_closes_the_chain) {
    openFile();
    EXPECT_TRUE(press({return_key}));
    EXPECT_THAT(selections.made, ElementsAre("New"));
    EXPECT_EQ(selections.last_menu, file);
    EXPECT_EQ(selections.last_item, &file->selected_item);
    EXPECT_TRUE(file->item_selected);
    expectAllClosed();
}

TEST_F(Keys, return_delivers_a_leaf_three_levels_down_and_closes_them_all) {
    openRecent();
    press({arrow_down, return_key});
    EXPECT_TRUE(recent->GetSubMenu(1)->active);
    EXPECT_TRUE(press({return_key}));
    EXPECT_THAT(selections.made, ElementsAre("Two"));
    expectAllClosed();
    EXPECT_FALSE(recent->GetSubMenu(1)->active);
}

TEST_F(Keys, return_delivers_a_leaf_of_the_bar_which_stays_active) {
    press({arrow_left});
    EXPECT_TRUE(press({return_key}));
    EXPECT_THAT(selections.made, ElementsAre("Zoom"));
    EXPECT_TRUE(bar.active);
    EXPECT_TRUE(bar.item_selected);
    EXPECT_EQ(bar.selected_item, 2);
    EXPECT_EQ(bar.highlighted_item, 2);
}

TEST_F(Keys, return_on_a_leaf_without_a_callback_only_closes) {
    file->DefineKeyboardCallback(nullptr, nullptr);
    openFile();
    EXPECT_TRUE(press({return_key}));
    EXPECT_FALSE(file->item_selected);
    expectAllClosed();
}

TEST_F(Keys, return_on_a_disabled_item_only_closes) {
    file->SetMenuItemState(0, false);
    openFile();
    EXPECT_TRUE(press({return_key}));
    EXPECT_TRUE(selections.made.empty());
    EXPECT_FALSE(file->item_selected);
    expectAllClosed();
}

TEST_F(Keys, return_on_a_disabled_item_does_not_open_its_submenu) {
    bar.SetMenuItemState(0, false);
    EXPECT_TRUE(press({return_key}));
    expectAllClosed();
}

TEST_F(Keys, return_on_an_item_without_a_state_counts_as_disabled) {
    bar.item_states.clear();
    EXPECT_TRUE(press({return_key}));
    EXPECT_FALSE(bar.submenu_open);
}

TEST_F(Keys, return_opens_nothing_visible_for_a_deleted_submenu) {
    bar.DeleteSubMenu(1);
    press({arrow_right});
    EXPECT_TRUE(press({return_key}));
    EXPECT_TRUE(bar.submenu_open);
    EXPECT_EQ(bar.selected_item, 1);
    EXPECT_FALSE(press({arrow_left}));
    EXPECT_FALSE(press({escape}));
}

TEST_F(Keys, are_consumed_when_the_open_submenu_has_no_key) {
    bar.submenu_open = true;
    bar.selected_item = 2;
    EXPECT_TRUE(press({arrow_right}));
    EXPECT_EQ(bar.highlighted_item, 0);
}

TEST_F(Keys, escape_closes_the_whole_chain) {
    openRecent();
    EXPECT_TRUE(press({escape}));
    expectAllClosed();
}

TEST_F(Keys, escape_on_the_bar_brings_its_highlight_home) {
    press({arrow_right});
    EXPECT_TRUE(press({escape}));
    EXPECT_EQ(bar.highlighted_item, 0);
    EXPECT_EQ(bar.selected_item, -1);
    EXPECT_TRUE(bar.active);
}

TEST_F(Keys, left_closes_a_drop_down_and_leaves_the_bars_highlight) {
    press({arrow_right});
    openFile();
    EXPECT_TRUE(press({arrow_left}));
    expectAllClosed();
    EXPECT_EQ(bar.highlighted_item, 1);
}

TEST_F(Keys, right_on_a_leaf_closes_the_drop_down_and_moves_along_the_bar) {
    openFile();
    EXPECT_TRUE(press({arrow_right}));
    expectAllClosed();
    EXPECT_EQ(bar.highlighted_item, 1);
}

TEST_F(Keys, right_on_a_nested_leaf_closes_all_and_moves_along_the_bar) {
    openRecent();
    EXPECT_TRUE(press({arrow_right}));
    expectAllClosed();
    EXPECT_EQ(bar.highlighted_item, 1);
}

TEST_F(Keys, right_opens_a_nested_submenu) {
    openFile();
    press({arrow_down});
    EXPECT_TRUE(press({arrow_right}));
    EXPECT_TRUE(file->submenu_open);
    EXPECT_TRUE(recent->active);
    EXPECT_TRUE(bar.submenu_open);
}

TEST_F(Keys, right_on_a_disabled_item_with_a_submenu_closes_as_return_does) {
    file->SetMenuItemState(1, false);
    openFile();
    EXPECT_TRUE(press({arrow_down, arrow_right}));
    expectAllClosed();
    EXPECT_EQ(bar.highlighted_item, 0);
}

TEST_F(Keys, a_drop_down_has_no_use_for_close_it) {
    openFile();
    EXPECT_FALSE(press({'x'}));
    expectAllClosed();
    openFile();
    EXPECT_FALSE(press({104}));
    expectAllClosed();
}

TEST_F(Keys, above_the_arrows_are_not_consumed) {
    for (const int key : {104, 105, 106, 107, 108, 112, 127}) EXPECT_FALSE(press({key}));
}

TEST_F(Keys, d_e_f_and_g_act_as_arrows) {
    EXPECT_TRUE(bar.keyboard_callback('f'));
    EXPECT_EQ(bar.highlighted_item, 1);
    EXPECT_TRUE(bar.keyboard_callback('d'));
    EXPECT_EQ(bar.highlighted_item, 0);
    bar.keyboard_callback(return_key);
    EXPECT_TRUE(bar.keyboard_callback('g'));
    EXPECT_EQ(file->highlighted_item, 1);
    EXPECT_TRUE(bar.keyboard_callback('e'));
    EXPECT_EQ(file->highlighted_item, 0);
}

TEST_F(Keys, on_a_highlight_out_of_range_end_the_menu) {
    bar.highlighted_item = 3;
    EXPECT_FALSE(press({arrow_left}));
    EXPECT_FALSE(bar.active);
    bar.Activate();
    bar.highlighted_item = -1;
    EXPECT_FALSE(press({arrow_left}));
    EXPECT_FALSE(bar.active);
}

TEST_F(Keys, in_an_empty_submenu_fall_to_its_parent) {
    bar.AddSubMenu(1, {}, note, &selections, "");
    view = bar.GetSubMenu(1);
    press({arrow_right, return_key});
    EXPECT_TRUE(view->active);
    EXPECT_TRUE(press({arrow_left}));
    EXPECT_FALSE(view->active);
    EXPECT_FALSE(bar.submenu_open);
    EXPECT_EQ(bar.highlighted_item, 0);
}

// The keys while the drop-down of "View", which has no items, is open.
class KeysInEmptyDropDown : public Keys {
  protected:
    KeysInEmptyDropDown() {
        bar.AddSubMenu(1, {}, note, &selections, "");
        view = bar.GetSubMenu(1);
        press({arrow_right, return_key});
    }
    void expectClosed() {
        EXPECT_FALSE(view->active);
        EXPECT_FALSE(bar.submenu_open);
        EXPECT_TRUE(bar.active);
        EXPECT_TRUE(selections.made.empty());
    }
};

TEST_F(KeysInEmptyDropDown, return_closes_it_and_opens_it_again) {
    EXPECT_TRUE(press({return_key}));
    EXPECT_TRUE(view->active);
    EXPECT_TRUE(bar.submenu_open);
    EXPECT_EQ(bar.selected_item, 1);
    EXPECT_TRUE(selections.made.empty());
}

TEST_F(KeysInEmptyDropDown, right_closes_it_and_moves_along_the_bar) {
    EXPECT_TRUE(press({arrow_right}));
    EXPECT_EQ(bar.highlighted_item, 2);
    expectClosed();
}

TEST_F(KeysInEmptyDropDown, escape_closes_it_and_brings_the_bar_home) {
    EXPECT_TRUE(press({escape}));
    EXPECT_EQ(bar.highlighted_item, 0);
    EXPECT_EQ(bar.selected_item, -1);
    expectClosed();
}

TEST_F(KeysInEmptyDropDown, of_no_use_to_the_bar_close_it_and_are_not_consumed) {
    for (const int key : {arrow_up, arrow_down, int{'x'}, int{' '}, home}) {
        press({return_key});
        ASSERT_TRUE(view->active);
        EXPECT_FALSE(press({key})) << key;
        EXPECT_EQ(bar.highlighted_item, 1);
        expectClosed();
    }
}

TEST_F(Keys, in_an_empty_nested_list_fall_to_the_list_above) {
    file->AddSubMenu(0, {}, note, &selections, "");
    openFile();
    press({return_key});
    ASSERT_TRUE(file->GetSubMenu(0)->active);
    EXPECT_TRUE(press({arrow_down}));
    EXPECT_FALSE(file->GetSubMenu(0)->active);
    EXPECT_FALSE(file->submenu_open);
    EXPECT_TRUE(file->active);
    EXPECT_EQ(file->highlighted_item, 1);
    EXPECT_TRUE(bar.submenu_open);
}

TEST_F(Keys, go_to_the_open_dialog_and_no_menu) {
    GlutMenu::CTextInput dialog;
    showMessage(dialog);
    EXPECT_TRUE(bar.special_key_callback(arrow_right));
    EXPECT_TRUE(bar.keyboard_callback('f'));
    EXPECT_EQ(bar.highlighted_item, 0);
    EXPECT_TRUE(bar.keyboard_callback(return_key));
    EXPECT_EQ(GlutMenu::input_field, nullptr);
    EXPECT_FALSE(bar.submenu_open);
}

TEST_F(Keys, go_to_the_menu_when_only_one_of_the_two_signs_of_a_dialog_is_there) {
    GlutMenu::num_dialogs_active = 1;
    EXPECT_TRUE(press({arrow_right}));
    EXPECT_EQ(bar.highlighted_item, 1);
    GlutMenu::CTextInput dialog;
    GlutMenu::input_field = &dialog;
    GlutMenu::num_dialogs_active = 0;
    EXPECT_TRUE(press({arrow_right}));
    EXPECT_EQ(bar.highlighted_item, 2);
}

class Timer : public ToolkitTest {};

TEST_F(Timer, blinks_the_cursor_while_a_dialog_is_open) {
    GlutMenu::num_dialogs_active = 1;
    GlutMenu::timer_func(1138);
    EXPECT_FALSE(GlutMenu::CTextInput::cursor_visible);
    EXPECT_EQ(stand_in::state.redisplays, 1);
    GlutMenu::timer_func(1138);
    EXPECT_TRUE(GlutMenu::CTextInput::cursor_visible);
}

TEST_F(Timer, does_nothing_for_another_value_or_without_a_dialog) {
    GlutMenu::timer_func(1138);
    GlutMenu::num_dialogs_active = 1;
    GlutMenu::timer_func(1137);
    EXPECT_TRUE(GlutMenu::CTextInput::cursor_visible);
    EXPECT_EQ(stand_in::state.redisplays, 0);
}

}  // namespace
