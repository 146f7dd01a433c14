// The menu's tables, its tree and its life.

#include <iostream>
#include <memory>
#include <streambuf>

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
    struct CountingBuffer : std::streambuf {
        int overflow(int c) override {
            if (c == '\n') ++lines;
            return c;
        }
        int sync() override {
            ++flushes;
            return 0;
        }
        int lines = 0;
        int flushes = 0;
    } buffer;
    initialiseBar(menu, {"A"});
    menu.AddSubMenu(0, {"B"}, nullptr, nullptr, "");
    std::streambuf* const before = std::cout.rdbuf(&buffer);
    menu.ReshapeCallback(800, 600);
    std::cout.rdbuf(before);
    EXPECT_EQ(buffer.lines, 8);
    EXPECT_EQ(buffer.flushes, buffer.lines);
}

// A bar whose first item has a submenu, whose second item has one in turn.
class Tree : public Model {
  protected:
    Tree() {
        initialiseBar(menu, {"A", "B"});
        menu.SetTextColour(0.5F, 0.6F, 0.7F, 0.2F);
        menu.AddSubMenu(0, {"C", "D"}, ignoreSelection, &data, "Title");
        child = menu.GetSubMenu(0);
        child->AddSubMenu(1, {"E"}, nullptr, nullptr, "");
        grandchild = child->GetSubMenu(1);
        trace();
    }

    void openAll() {
        for (CGlutMenu* each : {&menu, child, grandchild}) {
            each->Activate();
            each->highlighted_item = 1;
            each->selected_item = 0;
            each->submenu_open = true;
        }
    }

    int data = 0;
    CGlutMenu* child = nullptr;
    CGlutMenu* grandchild = nullptr;
};

void expectCleared(const CGlutMenu& menu) {
    EXPECT_FALSE(menu.active);
    EXPECT_EQ(menu.selected_item, -1);
    EXPECT_FALSE(menu.submenu_open);
    EXPECT_EQ(menu.highlighted_item, 0);
}

TEST_F(Tree, child_knows_its_parent_callback_and_title) {
    EXPECT_EQ(child->parent, &menu);
    EXPECT_EQ(child->callback, ignoreSelection);
    EXPECT_EQ(child->user_data, &data);
    EXPECT_EQ(child->GetTitle(), "Title");
    EXPECT_TRUE(child->is_submenu);
    EXPECT_FALSE(child->is_menu_bar);
    EXPECT_FALSE(child->active);
}

TEST_F(Tree, child_takes_the_text_colour_opaque_and_no_other) {
    EXPECT_THAT(child->text_colour, testing::ElementsAre(0.5F, 0.6F, 0.7F, 1.0F));
    EXPECT_THAT(child->background_colour, testing::ElementsAre(0.0F, 0.0F, 1.0F, 0.7F));
}

TEST_F(Tree, refuses_a_negative_item) {
    EXPECT_FALSE(menu.AddSubMenu(-1, {"X"}, nullptr, nullptr, ""));
    EXPECT_EQ(menu.submenus.size(), 1U);
    EXPECT_EQ(trace(), "");
}

TEST_F(Tree, takes_a_submenu_for_an_item_it_does_not_have) {
    EXPECT_TRUE(menu.AddSubMenu(9, {"X"}, nullptr, nullptr, ""));
    EXPECT_NE(menu.GetSubMenu(9), nullptr);
}

TEST_F(Tree, takes_an_empty_submenu) {
    EXPECT_TRUE(menu.AddSubMenu(1, {}, nullptr, nullptr, ""));
    EXPECT_TRUE(menu.GetSubMenu(1)->items.empty());
}

TEST_F(Tree, replaces_a_submenu_and_closes) {
    menu.submenu_open = true;
    EXPECT_TRUE(menu.AddSubMenu(0, {"X", "Y", "Z"}, nullptr, nullptr, ""));
    EXPECT_EQ(menu.GetSubMenu(0)->items.size(), 3U);
    EXPECT_EQ(menu.submenus.size(), 1U);
    EXPECT_FALSE(menu.submenu_open);
}

TEST_F(Tree, keeps_the_key_of_a_deleted_submenu) {
    menu.DeleteSubMenu(0);
    EXPECT_EQ(menu.submenus.count(0), 1U);
    EXPECT_EQ(menu.GetSubMenu(0), nullptr);
    menu.DeleteSubMenu(0);
    menu.DeleteSubMenu(5);
    EXPECT_EQ(menu.submenus.size(), 1U);
}

TEST_F(Tree, forgets_its_submenus_when_initialised_again_and_keeps_them_alive) {
    menu.submenu_open = true;
    initialiseBar(menu, {"A"});
    EXPECT_TRUE(menu.submenus.empty());
    EXPECT_FALSE(menu.submenu_open);
    EXPECT_EQ(child->items.size(), 2U);
    EXPECT_EQ(child->GetSubMenu(1), grandchild);
}

TEST_F(Tree, forgotten_submenu_may_still_close_upwards) {
    openAll();
    initialiseBar(menu, {"A"});
    menu.AddSubMenu(0, {"X"}, nullptr, nullptr, "");
    menu.submenu_open = true;
    grandchild->Deactive(true);
    expectCleared(*child);
    EXPECT_FALSE(menu.submenu_open);
}

TEST_F(Tree, forgotten_submenu_may_be_destroyed_by_its_user) {
    initialiseBar(menu, {"A"});
    delete child;
    EXPECT_TRUE(menu.submenus.empty());
}

TEST_F(Tree, submenu_destroyed_by_its_user_leaves_its_key) {
    delete child;
    EXPECT_EQ(menu.submenus.count(0), 1U);
    EXPECT_EQ(menu.GetSubMenu(0), nullptr);
}

TEST_F(Tree, does_not_own_a_forgotten_submenu_that_was_put_into_the_table_by_hand) {
    auto guest = std::make_unique<CGlutMenu>();
    {
        CGlutMenu host;
        initialiseBar(host, {"A"});
        host.submenus[0] = guest.get();
        initialiseBar(host, {"A"});
    }
    EXPECT_FALSE(guest->active);
}

TEST_F(Tree, deactivates_one_menu_alone) {
    openAll();
    grandchild->Deactive(false);
    expectCleared(*grandchild);
    EXPECT_FALSE(child->submenu_open);
    EXPECT_TRUE(child->active);
    EXPECT_EQ(child->highlighted_item, 1);
    EXPECT_TRUE(menu.submenu_open);
}

TEST_F(Tree, deactivates_upwards_to_the_bar) {
    openAll();
    grandchild->Deactive(true);
    expectCleared(*grandchild);
    expectCleared(*child);
    EXPECT_FALSE(menu.submenu_open);
    EXPECT_TRUE(menu.active);
    EXPECT_EQ(menu.highlighted_item, 1);
}

TEST_F(Tree, deactivates_a_bar_that_is_asked_itself) {
    openAll();
    menu.Deactive(true);
    expectCleared(menu);
    EXPECT_TRUE(child->active);
}

TEST_F(Tree, tells_the_parent_of_a_deactivation) {
    openAll();
    child->NotifyDeactivationToParent();
    EXPECT_FALSE(menu.submenu_open);
    EXPECT_TRUE(child->submenu_open);
    menu.NotifyDeactivationToParent();
}

TEST_F(Tree, takes_another_parent) {
    CGlutMenu other;
    child->SetParent(&other);
    EXPECT_EQ(child->parent, &other);
    child->SetParent(&menu);
}

TEST_F(Tree, traces_every_submenu_it_places_in_key_order) {
    menu.AddSubMenu(1, {"F"}, nullptr, nullptr, "");
    menu.AddSubMenu(7, {"G"}, nullptr, nullptr, "");
    trace();
    menu.Resize(1.0F, 1.0F);
    EXPECT_EQ(trace(),
              "Resizing sub-menu A\n"
              "Resizing sub-menu D\n"
              "Resizing sub-menu B\n"
              "Resizing sub-menu \n");
}

TEST_F(Tree, skips_a_deleted_submenu_when_placing) {
    menu.DeleteSubMenu(0);
    menu.Resize(1.0F, 1.0F);
    EXPECT_EQ(trace(), "");
}

}  // namespace
