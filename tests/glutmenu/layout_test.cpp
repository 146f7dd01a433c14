// The layout's rules one by one. Whole menus are in geometry_test.cpp.

#include <array>

#include "tests/glutmenu/toolkit_test.h"

using GlutMenu::CGlutMenu;

namespace {

// An item: bottom left x and y, top right x and y.
using Corners = std::array<int, 4>;

Corners cornersOf(const CGlutMenu& menu, int i) {
    Corners at{};
    menu.GetBottomLeft(i, at[0], at[1]);
    const float top = static_cast<float>(at[1]) - GlutMenu::char_height;
    menu.GetTopRight(i, at[2], at[3], static_cast<int>(top));
    return at;
}

std::array<int, 2> positionOf(const CGlutMenu& menu) {
    return {static_cast<int>(menu.x), static_cast<int>(menu.y)};
}

class Layout : public ToolkitTest {
  protected:
    CGlutMenu menu;
};

TEST_F(Layout, scales_the_font_to_the_screen) {
    initialiseBar(menu, {"A"}, 2048, 1536);
    EXPECT_FLOAT_EQ(CGlutMenu::scale_x, 2.0F);
    EXPECT_FLOAT_EQ(CGlutMenu::scale_y, 2.0F);
    EXPECT_FLOAT_EQ(CGlutMenu::font_scale_x, 2.0F * 13.0F / 89.0F);
    EXPECT_FLOAT_EQ(CGlutMenu::font_scale_y, 0.60006F);
    EXPECT_FLOAT_EQ(GlutMenu::char_height, 66.66F);
    EXPECT_FLOAT_EQ(GlutMenu::char_width, 120.0F);
}

TEST_F(Layout, tells_its_scale_in_either_direction) {
    initialiseBar(menu, {"A"}, 2048, 384);
    EXPECT_EQ(CGlutMenu::GetScaleX(), 2.0F);
    EXPECT_EQ(CGlutMenu::GetScaleY(), 0.5F);
}

TEST_F(Layout, puts_a_bar_into_the_corner_wherever_it_was_asked_to_be) {
    Strings items = {"A"};
    menu.Initialise(1024, 768, 33, 44, 0, 0, "", items, 1.0F, 1.0F, true, false);
    EXPECT_EQ(menu.x, 0.0F);
    EXPECT_EQ(menu.y, 0.0F);
}

TEST_F(Layout, puts_a_list_where_it_was_asked_to_be) {
    initialiseList(menu, {"A"}, 33, 44);
    EXPECT_EQ(menu.x, 33.0F);
    EXPECT_EQ(menu.y, 44.0F);
}

TEST_F(Layout, of_a_bar_reaches_to_the_right_edge) {
    initialiseBar(menu, {"A", "B"});
    menu.x = 100.0F;
    menu.Resize(1.0F, 1.0F);
    EXPECT_EQ(menu.width, 924);
}

TEST_F(Layout, of_an_empty_list_has_no_height_and_is_one_blank_wide) {
    initialiseList(menu, {});
    EXPECT_EQ(menu.height, 0);
    EXPECT_EQ(menu.width, 10 + 15);
}

TEST_F(Layout, of_a_bar_index_out_of_range_follows_the_vertical_rule) {
    initialiseBar(menu, {"A", "B"});
    int bx = 0;
    int by = 0;
    menu.GetBottomLeft(2, bx, by);
    EXPECT_EQ(bx, 0);
    EXPECT_EQ(by, 119);
    menu.GetBottomLeft(-1, bx, by);
    EXPECT_EQ(by, -10);
}

TEST_F(Layout, keeps_the_extra_vertical_offset_in_every_formula) {
    initialiseList(menu, {"A", "B"}, 10, 100);
    menu.y_offset = 7;
    int bx = 0;
    int by = 0;
    menu.GetBottomLeft(1, bx, by);
    EXPECT_EQ(by, 183);
    int tx = 0;
    int ty = 0;
    menu.GetTopRight(1, tx, ty, 150);
    EXPECT_EQ(ty, 202);
    menu.is_menu_bar = true;
    menu.GetBottomLeft(1, bx, by);
    EXPECT_EQ(by, 145);
}

TEST_F(Layout, counts_the_extra_vertical_offset_in_the_reported_height_of_a_bar) {
    initialiseBar(menu, {"A", "B"});
    menu.y_offset = 40;
    int w = 0;
    int h = 0;
    // trunc((40 + 33.33 + 5) * 0.30003)
    EXPECT_EQ(menu.GetWidthAndHeight(w, h), 23);
    EXPECT_EQ(h, 23);
}

TEST_F(Layout, of_a_list_is_reported_as_it_is) {
    initialiseList(menu, {"A", "Bb"});
    int w = 0;
    int h = 0;
    EXPECT_EQ(menu.GetWidthAndHeight(w, h), menu.height);
    EXPECT_EQ(w, menu.width);
    EXPECT_EQ(h, menu.height);
}

TEST_F(Layout, measures_text_by_its_glyphs) {
    initialiseBar(menu, {"A"});
    EXPECT_FLOAT_EQ(CGlutMenu::GetStringLength("Hi :"), lengthOf("Hi :"));
    EXPECT_EQ(CGlutMenu::GetStringLength(""), 0.0F);
    EXPECT_EQ(CGlutMenu::GetStringLength("\xC3\xA9"), 0.0F);
    EXPECT_FLOAT_EQ(CGlutMenu::GetCharLength('H'), 13.0F);
}

TEST_F(Layout, measures_text_with_the_stroked_font_of_the_moment) {
    initialiseBar(menu, {"A"});
    GlutMenu::stroked_font = nullptr;
    EXPECT_FLOAT_EQ(CGlutMenu::GetStringLength("HH"), 2.0F * 13.0F / 89.0F);
}

TEST_F(Layout, has_no_predecessor_below_zero) {
    EXPECT_EQ(CGlutMenu::Predecessor(3), 2);
    EXPECT_EQ(CGlutMenu::Predecessor(1), 0);
    EXPECT_EQ(CGlutMenu::Predecessor(0), 0);
    EXPECT_EQ(CGlutMenu::Predecessor(-2), -2);
}

TEST_F(Layout, follows_a_changed_text) {
    initialiseList(menu, {"A", "B"});
    menu.SetMenuText(1, "A much longer text");
    EXPECT_EQ(menu.item_width, static_cast<int>(lengthOf("A much longer text")) + 15);
}

TEST_F(Layout, of_a_submenu_beside_a_list_starts_at_the_slot_of_its_item) {
    initialiseList(menu, {"A", "B", "C"}, 40, 60);
    menu.AddSubMenu(2, {"D"}, nullptr, nullptr, "");
    // trunc(trunc(2 * 43.33 + 60 - 2 * 33.33 - 5) + 33.33 + 10) at first.
    EXPECT_EQ(menu.GetSubMenu(2)->y, 118.0F);
    menu.Resize(1.0F, 1.0F);
    // trunc(2 * 43.33 + 60)
    EXPECT_EQ(menu.GetSubMenu(2)->y, 146.0F);
}

TEST_F(Layout, of_a_new_submenu_takes_a_screen_of_whole_pixels) {
    initialiseBar(menu, {"A"});
    CGlutMenu::screen_width = 1024.75F;
    CGlutMenu::screen_height = 768.75F;
    menu.AddSubMenu(0, {"B"}, nullptr, nullptr, "");
    EXPECT_EQ(CGlutMenu::screen_width, 1024.0F);
    EXPECT_EQ(CGlutMenu::screen_height, 768.0F);
}

TEST_F(Layout, stays_when_a_text_out_of_range_is_set) {
    initialiseList(menu, {"A", "B"});
    menu.width = 1;
    menu.SetMenuText(-1, "x");
    menu.SetMenuText(2, "x");
    EXPECT_EQ(menu.width, 1);
    EXPECT_EQ(menu.items, (Strings{"A", "B"}));
}

TEST_F(Layout, has_margins_of_five_after_every_initialisation) {
    initialiseBar(menu, {"A"});
    menu.ReshapeCallback(2048, 2304);
    ASSERT_EQ(menu.margin_x, 10.0F);
    ASSERT_EQ(menu.margin_y, 15.0F);
    initialiseBar(menu, {"A"}, 2048, 2304);
    EXPECT_EQ(menu.margin_x, 5.0F);
    EXPECT_EQ(menu.margin_y, 5.0F);
    EXPECT_EQ(menu.height, 109);
}

// A bar away from the corner. On the reference screen "File " is 43 wide and "View " 53.
class MovedBar : public ToolkitTest {
  protected:
    MovedBar() {
        initialiseBar(bar, {"File", "View", "Zoom"});
        bar.x = 100.0F;
        bar.y = 20.0F;
    }
    CGlutMenu& addToView() {
        bar.AddSubMenu(1, {"Grid"}, nullptr, nullptr, "");
        return *bar.GetSubMenu(1);
    }

    CGlutMenu bar;
};

TEST_F(MovedBar, moves_its_items) {
    // 20 + 33.33 + 5 is where the texts stand; two margins more lie between "View" and "Zoom".
    EXPECT_EQ(cornersOf(bar, 0), (Corners{100, 58, 143, 24}));
    EXPECT_EQ(cornersOf(bar, 1), (Corners{143, 58, 196, 24}));
    EXPECT_EQ(cornersOf(bar, 2), (Corners{206, 58, 271, 24}));
}

TEST_F(MovedBar, cuts_the_place_of_an_item_off_after_adding_its_parts_up) {
    bar.x = 100.75F;
    bar.margin_x = 5.25F;
    bar.y = 20.5F;
    bar.margin_y = 5.25F;
    // 43 + 53 + 100.75 + 10.5 and 20.5 + 33.33 + 5.25
    EXPECT_EQ(cornersOf(bar, 2)[0], 207);
    EXPECT_EQ(cornersOf(bar, 2)[1], 59);
}

TEST_F(MovedBar, cuts_the_way_to_the_right_edge_off) {
    bar.x = 100.25F;
    bar.Resize(1.0F, 1.0F);
    EXPECT_EQ(bar.width, 923);
}

TEST_F(MovedBar, puts_a_new_submenu_five_margins_and_a_line_below_its_top) {
    // The submenu starts at trunc(5 * 5 + 20) and is moved down by 33.33 + 10.
    EXPECT_EQ(positionOf(addToView()), (std::array<int, 2>{148, 88}));
}

TEST_F(MovedBar, hangs_its_submenus_below_its_items) {
    CGlutMenu& drop = addToView();
    bar.Resize(1.0F, 1.0F);
    // The text stands at 58, the bar at 20, and the margin is 5.
    EXPECT_EQ(positionOf(drop), (std::array<int, 2>{143, 58 + 20 + 5}));
}

TEST_F(MovedBar, is_clicked_where_it_lies) {
    bar.Resize(1.0F, 1.0F);
    bar.Activate();
    trace();
    EXPECT_FALSE(click(bar, 99, 40));
    EXPECT_FALSE(click(bar, 110, 19));
    EXPECT_TRUE(click(bar, 110, 20));
    EXPECT_TRUE(click(bar, 210, 63));
    EXPECT_FALSE(click(bar, 210, 64));
    EXPECT_EQ(trace(), "Item File\nItem Zoom\n");
}

class Reshape : public Layout {};

TEST_F(Reshape, doubles_what_runs_across_when_the_window_gets_twice_as_wide) {
    initialiseList(menu, {"A"}, 30, 50);
    menu.ReshapeCallback(2048, 768);
    EXPECT_EQ(menu.x, 60.0F);
    EXPECT_EQ(menu.y, 50.0F);
    EXPECT_EQ(CGlutMenu::scale_x, 2.0F);
    EXPECT_EQ(menu.margin_x, 10.0F);
    EXPECT_EQ(menu.margin_y, 5.0F);
    EXPECT_FLOAT_EQ(GlutMenu::char_height, 33.33F);
}

TEST_F(Reshape, leaves_the_margins_of_submenus) {
    initialiseBar(menu, {"A"});
    menu.AddSubMenu(0, {"B"}, nullptr, nullptr, "");
    menu.ReshapeCallback(2048, 1536);
    EXPECT_EQ(menu.GetSubMenu(0)->margin_x, 5.0F);
}

TEST_F(Reshape, traces_its_steps) {
    initialiseList(menu, {"A", "Sub"}, 30, 50);
    menu.AddSubMenu(1, {"B"}, nullptr, nullptr, "");
    trace();
    menu.ReshapeCallback(2048, 384);
    EXPECT_EQ(trace(),
              "Reshape callback\n"
              "Reshaping to 2048x384\n"
              "Reshapng factors 2, 0.5\n"
              "old (x,y) =  30 50\n"
              "new (x,y) =  30 50\n"
              "scale 2, 0.5\n"
              "font scale 0.292135, 0.150015\n"
              "Resizing sub-menu Sub\n");
}

TEST_F(Reshape, passes_the_factors_to_the_open_dialog_after_the_menu_moved) {
    initialiseBar(menu, {"A"});
    GlutMenu::CTextInput dialog;
    showMessage(dialog);
    menu.ReshapeCallback(2048, 384);
    EXPECT_EQ(dialog.x, 20.0F);
    EXPECT_EQ(dialog.y, 10.0F);
    EXPECT_FLOAT_EQ(dialog.label_width, static_cast<float>(static_cast<int>(lengthOf(
                                            "Press [RETURN]/[ENTER] to continue", 2048.0F))));
}

TEST_F(Reshape, copes_with_a_window_of_one_pixel) {
    initialiseBar(menu, {"A", "B"});
    menu.AddSubMenu(0, {"B"}, nullptr, nullptr, "");
    menu.ReshapeCallback(1, 1);
    menu.ReshapeCallback(1024, 768);
    EXPECT_EQ(menu.height, 43);
    EXPECT_EQ(menu.GetSubMenu(0)->y, 43.0F);
}

TEST_F(Reshape, copes_with_a_window_of_no_size) {
    initialiseBar(menu, {"A", "B"});
    menu.ReshapeCallback(0, 0);
    menu.ReshapeCallback(1024, 768);
    EXPECT_EQ(menu.height, 43);
}

TEST_F(Layout, has_two_operations_that_do_nothing) {
    initialiseBar(menu, {"A", "B"});
    menu.ResizeChildren(2.0F, 2.0F);
    menu.SetScreenResolution(10, 10);
    EXPECT_EQ(menu.width, 1024);
    EXPECT_EQ(CGlutMenu::screen_width, 1024.0F);
}

}  // namespace
