// Keys and clicks on menus.

#include "tests/glutmenu/toolkit_test.h"

using GlutMenu::CGlutMenu;
using testing::ElementsAre;

namespace {

// Selections in the order of their delivery, as "menu text/user data".
struct Selections {
    Strings made;
    CGlutMenu* last_menu = nullptr;
    int* last_item = nullptr;
};

void note(int& item, CGlutMenu* menu, void* user_data) {
    auto& selections = *static_cast<Selections*>(user_data);
    selections.made.push_back(menu->GetMenuText(item));
    selections.last_menu = menu;
    selections.last_item = &item;
}

// File (New, Recent (One, Older (Two)), Quit), View (Grid, Axes), Zoom.
class Input : public ToolkitTest {
  protected:
    Input() {
        initialiseBar(bar, {"File", "View", "Zoom"});
        bar.DefineKeyboardCallback(note, &selections);
        bar.AddSubMenu(0, {"New", "Recent", "Quit"}, note, &selections, "");
        file = bar.GetSubMenu(0);
        file->AddSubMenu(1, {"One", "Older"}, note, &selections, "");
        recent = file->GetSubMenu(1);
        recent->AddSubMenu(1, {"Two"}, note, &selections, "");
        bar.AddSubMenu(1, {"Grid", "Axes"}, note, &selections, "");
        view = bar.GetSubMenu(1);
        bar.Resize(1.0F, 1.0F);
        bar.Activate();
        trace();
    }

    // Plays keys and returns what the last one returned.
    bool press(std::initializer_list<int> keys) {
        bool consumed = false;
        for (const int key : keys) consumed = bar.special_key_callback(key);
        return consumed;
    }
    void openFile() { press({return_key}); }
    void openRecent() { press({return_key, arrow_down, arrow_right}); }

    void expectAllClosed() {
        EXPECT_TRUE(bar.active);
        EXPECT_FALSE(bar.submenu_open);
        for (const CGlutMenu* menu : {file, recent, view}) {
            EXPECT_FALSE(menu->active);
            EXPECT_FALSE(menu->submenu_open);
            EXPECT_EQ(menu->selected_item, -1);
            EXPECT_EQ(menu->highlighted_item, 0);
        }
    }

    Selections selections;
    CGlutMenu bar;
    CGlutMenu* file = nullptr;
    CGlutMenu* recent = nullptr;
    CGlutMenu* view = nullptr;
};

class Keys : public Input {};

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

TEST_F(Keys, go_to_the_open_dialog_and_no_menu) {
    GlutMenu::CTextInput dialog;
    Strings lines = {"hello"};
    dialog.Initialise("T", lines, 10, 20, nullptr, nullptr);
    dialog.Display();
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

class Clicks : public Input {};

TEST_F(Clicks, open_a_submenu_and_trace_the_item) {
    EXPECT_TRUE(clickItem(bar, bar, 1));
    EXPECT_EQ(trace(), "Item View\n");
    EXPECT_EQ(bar.highlighted_item, 1);
    EXPECT_TRUE(view->active);
    EXPECT_TRUE(bar.submenu_open);
}

TEST_F(Clicks, deliver_a_leaf_and_close) {
    clickItem(bar, bar, 0);
    EXPECT_TRUE(clickItem(bar, *file, 2));
    EXPECT_THAT(selections.made, ElementsAre("Quit"));
    expectAllClosed();
}

TEST_F(Clicks, deliver_a_nested_leaf_and_close_all) {
    clickItem(bar, bar, 0);
    EXPECT_TRUE(clickItem(bar, *file, 1));
    EXPECT_TRUE(recent->active);
    EXPECT_TRUE(clickItem(bar, *recent, 0));
    EXPECT_THAT(selections.made, ElementsAre("One"));
    expectAllClosed();
}

TEST_F(Clicks, deliver_a_leaf_of_the_bar) {
    EXPECT_TRUE(clickItem(bar, bar, 2));
    EXPECT_THAT(selections.made, ElementsAre("Zoom"));
}

TEST_F(Clicks, keep_the_selection_of_a_drop_down_for_selected) {
    clickItem(bar, bar, 0);
    clickItem(bar, *file, 2);
    int item = 77;
    EXPECT_TRUE(file->Selected(item));
    EXPECT_EQ(bar.highlighted_item, 0);
    EXPECT_EQ(bar.selected_item, 0);
}

TEST_F(Clicks, on_a_disabled_item_close_the_drop_down_and_bring_the_bar_home) {
    view->SetMenuItemState(0, false);
    clickItem(bar, bar, 1);
    EXPECT_TRUE(clickItem(bar, *view, 0));
    EXPECT_TRUE(selections.made.empty());
    expectAllClosed();
    EXPECT_EQ(bar.highlighted_item, 0);
    EXPECT_EQ(bar.selected_item, -1);
}

TEST_F(Clicks, on_another_bar_item_switch_to_its_submenu) {
    clickItem(bar, bar, 0);
    EXPECT_TRUE(clickItem(bar, bar, 1));
    EXPECT_FALSE(file->active);
    EXPECT_TRUE(view->active);
    EXPECT_EQ(bar.selected_item, 1);
}

TEST_F(Clicks, on_an_item_of_the_parent_list_close_the_nested_one_first) {
    clickItem(bar, bar, 0);
    clickItem(bar, *file, 1);
    EXPECT_TRUE(clickItem(bar, *file, 0));
    EXPECT_THAT(selections.made, ElementsAre("New"));
    expectAllClosed();
}

TEST_F(Clicks, outside_everything_close_the_chain_and_fall_through) {
    clickItem(bar, bar, 0);
    clickItem(bar, *file, 1);
    EXPECT_FALSE(click(bar, 700, 600));
    expectAllClosed();
}

TEST_F(Clicks, outside_the_bar_leave_it_active) {
    EXPECT_FALSE(click(bar, 700, 600));
    EXPECT_TRUE(bar.active);
}

TEST_F(Clicks, on_the_free_end_of_the_bar_fall_through) {
    EXPECT_FALSE(click(bar, 900, 20));
    EXPECT_EQ(trace(), "");
}

TEST_F(Clicks, with_another_button_or_on_release_do_nothing) {
    EXPECT_FALSE(bar.mouse_callback(2, 0, 5, 20));
    EXPECT_FALSE(bar.mouse_callback(0, 1, 5, 20));
    EXPECT_FALSE(bar.submenu_open);
    clickItem(bar, bar, 0);
    EXPECT_FALSE(bar.mouse_callback(0, 1, 700, 600));
    EXPECT_FALSE(bar.mouse_callback(3, 0, 700, 600));
    EXPECT_TRUE(file->active);
}

TEST_F(Clicks, are_not_consumed_by_an_inactive_menu) {
    bar.Deactive(false);
    EXPECT_FALSE(click(bar, 5, 20));
}

TEST_F(Clicks, are_scaled_from_the_window_to_the_menu) {
    stand_in::state.window_width = 2048;
    stand_in::state.window_height = 384;
    EXPECT_TRUE(click(bar, 2 * 50, 10));
    EXPECT_EQ(trace(), "Item View\n");
}

// "View" starts at 43, "File" ends there too; the hit reaches a margin to the left of an item, and
// the first item that is hit wins.
TEST_F(Clicks, on_a_shared_edge_hit_the_item_before) {
    EXPECT_TRUE(click(bar, 43, 20));
    EXPECT_EQ(trace(), "Item File\n");
    EXPECT_TRUE(click(bar, 44, 20));
    EXPECT_EQ(trace(), "Item View\n");
}

TEST_F(Clicks, hit_to_the_edges_of_the_box) {
    EXPECT_TRUE(click(bar, 0, 0));
    press({escape});
    EXPECT_TRUE(click(bar, 0, 43));
    press({escape});
    EXPECT_FALSE(click(bar, 0, 44));
    EXPECT_FALSE(click(bar, -1, 20));
}

TEST_F(Clicks, between_two_slots_of_a_list_close_it) {
    clickItem(bar, bar, 0);
    // The first slot ends at 80, the second starts at trunc(43.33 + 43 + 33.33) - 33.33.
    EXPECT_FALSE(click(bar, 20, 83));
    EXPECT_FALSE(file->active);
    EXPECT_FALSE(bar.submenu_open);
}

TEST_F(Clicks, fall_through_while_a_deleted_submenu_is_open) {
    bar.DeleteSubMenu(1);
    clickItem(bar, bar, 1);
    EXPECT_TRUE(bar.submenu_open);
    EXPECT_FALSE(clickItem(bar, bar, 0));
}

TEST_F(Clicks, recover_from_an_open_submenu_that_has_no_key) {
    bar.submenu_open = true;
    bar.selected_item = 2;
    EXPECT_TRUE(clickItem(bar, bar, 1));
    EXPECT_TRUE(view->active);
    EXPECT_EQ(bar.selected_item, 1);
}

TEST_F(Clicks, go_to_the_open_dialog_and_are_consumed) {
    GlutMenu::CTextInput dialog;
    Strings lines = {"hello"};
    dialog.Initialise("T", lines, 300, 300, nullptr, nullptr);
    dialog.Display();
    EXPECT_TRUE(clickItem(bar, bar, 0));
    EXPECT_TRUE(bar.mouse_callback(2, 1, 700, 700));
    EXPECT_FALSE(bar.submenu_open);
    EXPECT_EQ(GlutMenu::input_field, &dialog);
}

TEST_F(Clicks, with_no_items_fall_through) {
    CGlutMenu empty;
    initialiseBar(empty, {});
    empty.Activate();
    EXPECT_FALSE(click(empty, 5, 5));
    EXPECT_TRUE(empty.active);
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
