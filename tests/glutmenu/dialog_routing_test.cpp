// What a menu hands to the open dialog: everything, and each event as what it is.

#include "tests/glutmenu/dialog_fixture.h"

using GlutMenu::CGlutMenu;
using testing::ElementsAre;

namespace {

constexpr int page_up = 104;
constexpr int shift_key = 112;

// A form beside a bar whose first item's drop-down is open.
class Routing : public DialogTest {
  protected:
    Routing() {
        initialiseBar(bar, {"File", "View"});
        bar.AddSubMenu(0, {"New", "Quit"}, nullptr, nullptr, "");
        bar.Resize(1.0F, 1.0F);
        bar.Activate();
        bar.keyboard_callback(return_key);
        drop = bar.GetSubMenu(0);
        openForm({"A", "B"}, {"one", "two"}, 12);
        trace();
    }
    ~Routing() override { expectMenusUntouched(); }

    void expectMenusUntouched() {
        EXPECT_TRUE(bar.submenu_open);
        EXPECT_EQ(bar.highlighted_item, 0);
        EXPECT_EQ(drop->highlighted_item, 0);
    }

    CGlutMenu bar;
    CGlutMenu* drop = nullptr;
};

TEST_F(Routing, types_the_letters_that_share_their_codes_with_arrows) {
    for (const char c : {'d', 'e', 'f', 'g', 'j', 'k'}) EXPECT_TRUE(bar.keyboard_callback(c));
    EXPECT_EQ(dialog.edit_text, "onedefgjk");
    EXPECT_EQ(dialog.current_field, 0);
}

TEST_F(Routing, moves_by_the_special_keys_of_the_same_codes) {
    EXPECT_TRUE(bar.special_key_callback(arrow_down));
    EXPECT_EQ(dialog.current_field, 1);
    EXPECT_EQ(dialog.edit_text, "two");
    EXPECT_TRUE(bar.special_key_callback(arrow_left));
    EXPECT_EQ(dialog.cursor_pos, 2);
    EXPECT_TRUE(bar.special_key_callback(home));
    EXPECT_EQ(dialog.cursor_pos, 0);
    EXPECT_TRUE(bar.special_key_callback(end));
    EXPECT_EQ(dialog.cursor_pos, 3);
    EXPECT_TRUE(bar.special_key_callback(arrow_up));
    EXPECT_EQ(dialog.edit_text, "one");
    EXPECT_EQ(trace(), "");
}

TEST_F(Routing, consumes_special_keys_that_the_dialog_ignores) {
    for (const int key : {1, page_up, shift_key}) EXPECT_TRUE(bar.special_key_callback(key)) << key;
    EXPECT_EQ(dialog.edit_text, "one");
}

TEST_F(Routing, answers_by_return_without_a_buttons_label) {
    EXPECT_TRUE(bar.keyboard_callback(return_key));
    EXPECT_THAT(answers.given, ElementsAre("[] A=one B=two"));
}

TEST_F(Routing, closes_by_escape) {
    EXPECT_TRUE(bar.keyboard_callback(escape));
    EXPECT_FALSE(isOpen(dialog));
}

TEST_F(Routing, clicks_the_dialogs_buttons) {
    dialog.Render();
    int left = 0, top = 0, right = 0, bottom = 0;
    dialog.GetButtonDimension(1, left, top, right, bottom);
    EXPECT_TRUE(bar.mouse_callback(0, 1, left, bottom));
    EXPECT_TRUE(bar.mouse_callback(1, 0, left, bottom));
    EXPECT_TRUE(bar.mouse_callback(2, 0, left, bottom));
    EXPECT_TRUE(bar.mouse_callback(0, 0, bottom, left));
    EXPECT_TRUE(answers.given.empty());
    EXPECT_TRUE(bar.mouse_callback(0, 0, left, bottom));
    EXPECT_THAT(answers.given, ElementsAre("[Cancel] A=one B=two"));
}

TEST_F(Routing, consumes_clicks_on_the_menus) {
    EXPECT_TRUE(clickItem(bar, bar, 1));
    EXPECT_TRUE(clickItem(bar, *drop, 1));
    EXPECT_TRUE(isOpen(dialog));
    EXPECT_EQ(trace(), "");
}

TEST_F(Routing, works_from_every_menu) {
    EXPECT_TRUE(drop->keyboard_callback('f'));
    EXPECT_EQ(dialog.edit_text, "onef");
    EXPECT_TRUE(drop->special_key_callback(arrow_down));
    EXPECT_EQ(dialog.edit_text, "two");
    dialog.Render();
    int left = 0, top = 0, right = 0, bottom = 0;
    dialog.GetButtonDimension(0, left, top, right, bottom);
    EXPECT_TRUE(drop->mouse_callback(0, 0, left, bottom));
    EXPECT_THAT(answers.given, ElementsAre("[OK] A=onef B=two"));
}

TEST_F(Routing, works_from_a_menu_that_is_not_active) {
    CGlutMenu other;
    EXPECT_TRUE(other.keyboard_callback('x'));
    EXPECT_TRUE(other.special_key_callback(arrow_down));
    EXPECT_TRUE(other.mouse_callback(0, 0, 5, 5));
    EXPECT_EQ(dialog.field_values[0], "onex");
    EXPECT_EQ(dialog.current_field, 1);
}

}  // namespace
