// The tree of submenus: who owns whom, who is told of what.

#include <memory>

#include "tests/glutmenu/toolkit_test.h"

using GlutMenu::CGlutMenu;

namespace {

void ignoreSelection(int& /*item*/, CGlutMenu* /*menu*/, void* /*user_data*/) {}

// A bar whose first item has a submenu, whose second item has one in turn.
class Tree : public ToolkitTest {
  protected:
    Tree() {
        initialiseBar(menu, {"A", "B"});
        menu.SetTextColour(0.5F, 0.6F, 0.7F, 0.2F);
        menu.SetBackgroundColour(0.1F, 0.2F, 0.3F, 0.4F);
        menu.SetBorderColour(0.5F, 0.4F, 0.3F, 0.2F);
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
    CGlutMenu menu;
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
    EXPECT_THAT(child->border_colour, testing::ElementsAre(0.8F, 0.8F, 0.0F, 0.7F));
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

TEST_F(Tree, deactivates_every_list_on_the_way_up) {
    grandchild->AddSubMenu(0, {"F"}, nullptr, nullptr, "");
    CGlutMenu* const deepest = grandchild->GetSubMenu(0);
    openAll();
    deepest->Activate();
    deepest->Deactive(true);
    for (const CGlutMenu* list : {deepest, grandchild, child}) expectCleared(*list);
    EXPECT_FALSE(menu.submenu_open);
    EXPECT_TRUE(menu.active);
    EXPECT_EQ(menu.highlighted_item, 1);
    EXPECT_EQ(menu.selected_item, 0);
}

TEST_F(Tree, deactivates_a_root_that_is_a_list) {
    menu.is_menu_bar = false;
    openAll();
    grandchild->Deactive(true);
    expectCleared(menu);
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

TEST_F(Tree, places_its_submenus_again_when_a_text_changes) {
    menu.SetMenuText(1, "Longer");
    EXPECT_EQ(trace(),
              "Resizing sub-menu A\n"
              "Resizing sub-menu D\n");
}

TEST_F(Tree, skips_a_deleted_submenu_when_placing) {
    menu.AddSubMenu(1, {"F"}, nullptr, nullptr, "");
    menu.DeleteSubMenu(0);
    trace();
    menu.Resize(1.0F, 1.0F);
    EXPECT_EQ(trace(), "Resizing sub-menu B\n");
}

}  // namespace
