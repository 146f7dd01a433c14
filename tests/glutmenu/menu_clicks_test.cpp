// Clicks on menus.

#include "tests/glutmenu/menu_input_fixture.h"

using GlutMenu::CGlutMenu;
using testing::ElementsAre;

namespace {

class Clicks : public MenuInputTest {};

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

TEST_F(Clicks, on_a_list_are_scaled_across_and_down) {
    openFile();
    stand_in::state.window_width = 2048;
    stand_in::state.window_height = 384;
    int bx = 0;
    int by = 0;
    file->GetBottomLeft(2, bx, by);
    EXPECT_TRUE(click(bar, 2 * (bx + 10), (by - 10) / 2));
    EXPECT_EQ(trace(), "Item Quit\n");
}

// "View" starts at 43, "File" ends there too; the hit reaches a margin to the left of an item, and
// the first item that is hit wins.
TEST_F(Clicks, on_a_shared_edge_hit_the_item_before) {
    EXPECT_TRUE(click(bar, 43, 20));
    EXPECT_EQ(trace(), "Item File\n");
    EXPECT_TRUE(click(bar, 44, 20));
    EXPECT_EQ(trace(), "Item View\n");
}

// Two margins lie between "View" and "Zoom".
TEST_F(Clicks, hit_an_item_from_a_margin_left_of_it_on) {
    int zoom = 0;
    int baseline = 0;
    bar.GetBottomLeft(2, zoom, baseline);
    EXPECT_FALSE(click(bar, zoom - 6, 20));
    EXPECT_TRUE(click(bar, zoom - 5, 20));
    EXPECT_EQ(trace(), "Item Zoom\n");
}

TEST_F(Clicks, miss_a_list_on_its_right_edge) {
    openFile();
    EXPECT_FALSE(click(bar, file->width, 60));
    expectAllClosed();
    openFile();
    EXPECT_TRUE(click(bar, file->width - 1, 60));
    EXPECT_EQ(trace(), "Item New\n");
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
    showMessage(dialog, 300, 300);
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

// A list whose open submenu was deleted lets a click through and stays open itself.
TEST_F(Clicks, on_the_bar_close_a_list_that_let_them_through) {
    file->DeleteSubMenu(1);
    openRecent();
    ASSERT_TRUE(file->submenu_open);
    EXPECT_TRUE(clickItem(bar, bar, 1));
    EXPECT_EQ(trace(), "Item View\n");
    EXPECT_FALSE(file->active);
    EXPECT_FALSE(file->submenu_open);
    EXPECT_EQ(file->selected_item, -1);
    EXPECT_EQ(file->highlighted_item, 0);
    EXPECT_TRUE(view->active);
    EXPECT_EQ(bar.selected_item, 1);
}

// Closing the nested list closes the one beside it too, which the click then opens again out of
// the bar's reach, so the bar closes it.
TEST_F(Clicks, on_a_list_whose_nested_list_let_them_through_end_at_the_bar) {
    recent->DeleteSubMenu(1);
    openRecent();
    press({arrow_down, return_key});
    ASSERT_TRUE(recent->submenu_open);
    EXPECT_TRUE(clickItem(bar, *file, 1));
    EXPECT_EQ(trace(), "Item Recent\n");
    EXPECT_FALSE(file->active);
    EXPECT_FALSE(file->submenu_open);
    EXPECT_FALSE(bar.submenu_open);
    EXPECT_TRUE(bar.active);
    EXPECT_EQ(bar.selected_item, -1);
}

}  // namespace
