// A dialog's place among the open ones.

#include <memory>

#include "tests/glutmenu/dialog_fixture.h"

using GlutMenu::CTextInput;

namespace {

class Stack : public DialogTest {};

TEST_F(Stack, takes_a_displayed_dialog_on_top) {
    EXPECT_TRUE(openMessage({"One"}));
    EXPECT_EQ(GlutMenu::input_field, &dialog);
    EXPECT_EQ(GlutMenu::num_dialogs_active, 1);
    EXPECT_EQ(dialog.previous, nullptr);
    EXPECT_EQ(stand_in::state.redisplays, 1);
}

TEST_F(Stack, returns_to_the_dialog_beneath) {
    CTextInput upper;
    openMessage({"One"});
    showMessage(upper);
    EXPECT_EQ(upper.previous, &dialog);
    EXPECT_EQ(GlutMenu::num_dialogs_active, 2);
    upper.KeyboardHandler(escape, "");
    EXPECT_EQ(GlutMenu::input_field, &dialog);
    EXPECT_EQ(GlutMenu::num_dialogs_active, 1);
}

TEST_F(Stack, holds_a_dialog_displayed_twice_once) {
    openMessage({"One"});
    dialog.Display();
    EXPECT_EQ(dialog.previous, nullptr);
    EXPECT_EQ(GlutMenu::num_dialogs_active, 1);
    press({escape});
    EXPECT_EQ(GlutMenu::input_field, nullptr);
    EXPECT_EQ(GlutMenu::num_dialogs_active, 0);
}

TEST_F(Stack, moves_a_dialog_displayed_again_from_beneath_to_the_top) {
    CTextInput upper;
    openMessage({"One"});
    showMessage(upper);
    dialog.Display();
    EXPECT_EQ(GlutMenu::input_field, &dialog);
    EXPECT_EQ(dialog.previous, &upper);
    EXPECT_EQ(upper.previous, nullptr);
    EXPECT_EQ(GlutMenu::num_dialogs_active, 2);
}

TEST_F(Stack, closes_up_over_a_dialog_closed_in_its_middle) {
    CTextInput middle;
    CTextInput upper;
    openMessage({"One"});
    showMessage(middle);
    showMessage(upper);
    middle.KeyboardHandler(escape, "");
    EXPECT_EQ(GlutMenu::input_field, &upper);
    EXPECT_EQ(upper.previous, &dialog);
    EXPECT_EQ(GlutMenu::num_dialogs_active, 2);
}

TEST_F(Stack, loses_a_destroyed_dialog) {
    auto upper = std::make_unique<CTextInput>();
    CTextInput top;
    openMessage({"One"});
    showMessage(*upper);
    showMessage(top);
    upper.reset();
    EXPECT_EQ(top.previous, &dialog);
    EXPECT_EQ(GlutMenu::num_dialogs_active, 2);
}

TEST_F(Stack, is_empty_when_its_only_dialog_is_destroyed) {
    auto only = std::make_unique<CTextInput>();
    showMessage(*only);
    only.reset();
    EXPECT_EQ(GlutMenu::input_field, nullptr);
    EXPECT_EQ(GlutMenu::num_dialogs_active, 0);
}

TEST_F(Stack, is_untouched_by_the_end_of_a_dialog_that_was_not_open) {
    openMessage({"One"});
    { CTextInput other; }
    EXPECT_EQ(GlutMenu::input_field, &dialog);
    EXPECT_EQ(GlutMenu::num_dialogs_active, 1);
}

TEST_F(Stack, forgets_the_kept_dialog_with_its_end) {
    auto kept = std::make_unique<CTextInput>();
    GlutMenu::text_input = kept.get();
    { CTextInput other; }
    EXPECT_EQ(GlutMenu::text_input, kept.get());
    kept.reset();
    EXPECT_EQ(GlutMenu::text_input, nullptr);
}

}  // namespace
