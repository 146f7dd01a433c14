// The menu's tables and its life.

#include "tests/glutmenu/toolkit_test.h"

using GlutMenu::CGlutMenu;

namespace {

void ignoreSelection(int& /*item*/, CGlutMenu* /*menu*/, void* /*user_data*/) {}

class Model : public ToolkitTest {
  protected:
    CGlutMenu menu;
};

TEST_F(Model, starts_inactive_and_unplaced) {
    EXPECT_TRUE(menu.initialised);
    EXPECT_FALSE(menu.active);
    EXPECT_FALSE(menu.IsMenuVisible());
    EXPECT_EQ(menu.highlighted_item, 0);
    EXPECT_EQ(menu.selected_item, -1);
    EXPECT_EQ(menu.x, -1.0F);
    EXPECT_EQ(menu.y, -1.0F);
    EXPECT_EQ(menu.y_offset, 0);
    EXPECT_EQ(menu.parent, nullptr);
    EXPECT_EQ(menu.callback, nullptr);
    EXPECT_EQ(menu.user_data, nullptr);
    EXPECT_FALSE(menu.submenu_open);
    EXPECT_TRUE(menu.items.empty() && menu.submenus.empty() && menu.check_states.empty());
    EXPECT_FALSE(menu.is_menu_bar);
    EXPECT_FALSE(menu.is_submenu);
}

TEST_F(Model, starts_without_a_size_and_with_the_margins_of_the_reference_screen) {
    int w = -1;
    int h = -1;
    EXPECT_EQ(menu.GetWidthAndHeight(w, h), 0);
    EXPECT_EQ(w, 0);
    EXPECT_EQ(h, 0);
    EXPECT_EQ(menu.item_width, 0);
    EXPECT_EQ(menu.bar_width, 0);
    EXPECT_EQ(menu.submenu_x, 0);
    EXPECT_EQ(menu.submenu_y, 0);
    EXPECT_EQ(menu.margin_x, 5.0F);
    EXPECT_EQ(menu.margin_y, 5.0F);
}

TEST_F(Model, starts_with_white_text_on_blue_under_a_yellow_highlight) {
    EXPECT_THAT(menu.text_colour, testing::ElementsAre(1.0F, 1.0F, 1.0F, 1.0F));
    EXPECT_THAT(menu.background_colour, testing::ElementsAre(0.0F, 0.0F, 1.0F, 0.7F));
    EXPECT_THAT(menu.border_colour, testing::ElementsAre(0.8F, 0.8F, 0.0F, 0.7F));
}

TEST_F(Model, takes_other_colours) {
    menu.SetTextColour(0.1F, 0.2F, 0.3F, 0.4F);
    menu.SetBackgroundColour(0.5F, 0.6F, 0.7F, 0.8F);
    menu.SetBorderColour(0.9F, 1.0F, 0.0F, 0.1F);
    EXPECT_THAT(menu.text_colour, testing::ElementsAre(0.1F, 0.2F, 0.3F, 0.4F));
    EXPECT_THAT(menu.background_colour, testing::ElementsAre(0.5F, 0.6F, 0.7F, 0.8F));
    EXPECT_THAT(menu.border_colour, testing::ElementsAre(0.9F, 1.0F, 0.0F, 0.1F));
    EXPECT_EQ(stand_in::state.redisplays, 0);
}

TEST_F(Model, tells_whether_it_was_initialised_with_items) {
    Strings none;
    Strings one = {"A"};
    EXPECT_FALSE(menu.Initialise(1024, 768, 0, 0, 0, 0, "", none, 0.0F, 0.0F, false, false));
    EXPECT_TRUE(menu.Initialise(1024, 768, 0, 0, 0, 0, "", one, 0.0F, 0.0F, false, true));
    EXPECT_TRUE(menu.is_submenu);
    EXPECT_FALSE(menu.is_menu_bar);
    menu.initialised = false;
    menu.Initialise(1024, 768, 0, 0, 0, 0, "", one, 0.0F, 0.0F, false, false);
    EXPECT_TRUE(menu.initialised);
}

TEST_F(Model, traces_the_font_scale_of_its_initialisation) {
    initialiseBar(menu, {"A"}, 2048, 768);
    EXPECT_EQ(trace(), "font x scaling is 0.292135\n");
}

TEST_F(Model, keeps_its_title) {
    initialiseBar(menu, {"A"});
    EXPECT_EQ(menu.GetTitle(), "Bar");
}

TEST_F(Model, finds_the_first_item_with_exactly_a_text) {
    initialiseBar(menu, {"Sin", "Sinh", "Sin"});
    EXPECT_EQ(menu.GetMenuPosition("Sin"), 0);
    EXPECT_EQ(menu.GetMenuPosition("Sinh"), 1);
    EXPECT_EQ(menu.GetMenuPosition("sin"), -1);
    EXPECT_EQ(menu.GetMenuPosition("Si"), -1);
    EXPECT_EQ(menu.GetMenuPosition(""), -1);
}

TEST_F(Model, finds_nothing_before_it_has_items) {
    EXPECT_EQ(menu.GetMenuPosition("A"), -1);
}

TEST_F(Model, answers_an_empty_text_out_of_range) {
    initialiseBar(menu, {"A"});
    EXPECT_EQ(menu.GetMenuText(0), "A");
    EXPECT_EQ(menu.GetMenuText(1), "");
    EXPECT_EQ(menu.GetMenuText(-1), "");
}

TEST_F(Model, enables_and_unchecks_every_item_at_first) {
    initialiseBar(menu, {"A", "B"});
    EXPECT_TRUE(menu.GetMenuItemState(0) && menu.GetMenuItemState(1));
    EXPECT_FALSE(menu.GetCheckState(0) || menu.GetCheckState(1));
    EXPECT_EQ(menu.check_states.count(1), 1U);
}

TEST_F(Model, reads_states_never_written_as_false) {
    initialiseBar(menu, {"A"});
    EXPECT_FALSE(menu.GetMenuItemState(1));
    EXPECT_FALSE(menu.GetCheckState(6));
    EXPECT_EQ(menu.check_states.count(6), 0U);
}

TEST_F(Model, takes_states_of_items_it_does_not_have) {
    initialiseBar(menu, {"A"});
    menu.SetCheckState(6, true);
    menu.SetMenuItemState(-3, true);
    EXPECT_TRUE(menu.GetCheckState(6));
    EXPECT_TRUE(menu.GetMenuItemState(-3));
}

TEST_F(Model, keeps_only_check_marks_beyond_a_shorter_list) {
    initialiseList(menu, {"A", "B", "C"});
    menu.SetCheckState(0, true);
    menu.SetCheckState(2, true);
    initialiseList(menu, {"A"});
    EXPECT_FALSE(menu.GetCheckState(0));
    EXPECT_TRUE(menu.GetCheckState(2));
    EXPECT_FALSE(menu.GetMenuItemState(2));
}

TEST_F(Model, highlights_its_first_item_after_every_initialisation) {
    initialiseBar(menu, {"A", "B"});
    menu.highlighted_item = 1;
    initialiseBar(menu, {"A", "B"});
    EXPECT_EQ(menu.highlighted_item, 0);
}

TEST_F(Model, may_be_initialised_with_its_own_items) {
    initialiseBar(menu, {"A", "B"});
    menu.Initialise(1024, 768, 0, 0, 0, 0, "", menu.items, 1.0F, 1.0F, true, false);
    EXPECT_EQ(menu.items, (Strings{"A", "B"}));
}

TEST_F(Model, is_fresh_when_activated) {
    menu.item_selected = true;
    menu.selected_item = 3;
    menu.highlighted_item = 3;
    menu.submenu_open = true;
    menu.Activate();
    EXPECT_TRUE(menu.IsMenuVisible());
    EXPECT_FALSE(menu.item_selected);
    EXPECT_EQ(menu.selected_item, -1);
    EXPECT_EQ(menu.highlighted_item, 0);
    EXPECT_FALSE(menu.submenu_open);
}

TEST_F(Model, hands_out_a_selection_without_clearing_it) {
    int item = 77;
    EXPECT_FALSE(menu.Selected(item));
    EXPECT_EQ(item, 77);
    menu.item_selected = true;
    menu.selected_item = 2;
    EXPECT_TRUE(menu.Selected(item));
    EXPECT_EQ(item, 2);
    EXPECT_TRUE(menu.Selected(item));
}

TEST_F(Model, stores_its_callback) {
    int data = 0;
    menu.DefineKeyboardCallback(ignoreSelection, &data);
    EXPECT_EQ(menu.callback, ignoreSelection);
    EXPECT_EQ(menu.user_data, &data);
}

TEST_F(Model, flushes_every_line_it_traces) {
    initialiseBar(menu, {"A"});
    menu.AddSubMenu(0, {"B"}, nullptr, nullptr, "");
    const OutputByFlush console;
    menu.ReshapeCallback(800, 600);
    EXPECT_THAT(console.flushed, testing::SizeIs(8));
    EXPECT_THAT(console.flushed, testing::Each(testing::MatchesRegex("[^\n]+\n")));
    EXPECT_EQ(console.pending, "");
}

}  // namespace
