// Callbacks that change or destroy what called them. The address sanitizer sees what is touched too
// late; the assertions see that the user is left with menus that work.

#include <functional>
#include <memory>

#include "tests/glutmenu/dialog_fixture.h"

using GlutMenu::CGlutMenu;
using GlutMenu::CTextInput;
using testing::ElementsAre;

namespace {

// What the next selection does; the callback's user data.
using Action = std::function<void(int& item, CGlutMenu& menu)>;

void act(int& item, CGlutMenu* menu, void* user_data) {
    (*static_cast<Action*>(user_data))(item, *menu);
}

class SelectionThat : public ToolkitTest {
  protected:
    SelectionThat() : bar(std::make_unique<CGlutMenu>()) { build(); }

    void build() {
        initialiseBar(*bar, {"File", "Run"});
        bar->DefineKeyboardCallback(act, &action);
        bar->AddSubMenu(0, {"New", "Recent"}, act, &action, "");
        file = bar->GetSubMenu(0);
        file->AddSubMenu(1, {"One", "Two"}, act, &action, "");
        recent = file->GetSubMenu(1);
        bar->Resize(1.0F, 1.0F);
        bar->Activate();
    }

    bool press(std::initializer_list<int> keys) {
        bool consumed = false;
        for (const int key : keys) consumed = bar->keyboard_callback(key);
        return consumed;
    }
    // Chooses "One", two levels down, by keys and by clicks.
    bool chooseByKeys() { return press({return_key, arrow_down, return_key, return_key}); }
    bool chooseByClicks() {
        clickItem(*bar, *bar, 0);
        clickItem(*bar, *file, 1);
        return clickItem(*bar, *recent, 0);
    }

    void expectBarWorks() {
        EXPECT_TRUE(bar->active);
        EXPECT_FALSE(bar->submenu_open);
        bar->Activate();
        EXPECT_TRUE(press({return_key}));
        EXPECT_TRUE(bar->submenu_open);
        EXPECT_TRUE(press({escape}));
        EXPECT_FALSE(bar->submenu_open);
    }

    Action action;
    std::unique_ptr<CGlutMenu> bar;
    CGlutMenu* file = nullptr;
    CGlutMenu* recent = nullptr;
};

TEST_F(SelectionThat, deletes_its_own_menu_closes_the_rest) {
    action = [&](int&, CGlutMenu&) { file->DeleteSubMenu(1); };
    EXPECT_TRUE(chooseByKeys());
    EXPECT_FALSE(file->active);
    EXPECT_EQ(file->selected_item, -1);
    expectBarWorks();
}

TEST_F(SelectionThat, deletes_its_own_menu_by_a_click_closes_the_rest) {
    action = [&](int&, CGlutMenu&) { file->DeleteSubMenu(1); };
    EXPECT_TRUE(chooseByClicks());
    EXPECT_FALSE(file->active);
    expectBarWorks();
}

TEST_F(SelectionThat, deletes_its_parent_leaves_the_bar_working) {
    action = [&](int&, CGlutMenu&) { bar->DeleteSubMenu(0); };
    EXPECT_TRUE(chooseByKeys());
    EXPECT_FALSE(bar->submenu_open);
    EXPECT_TRUE(press({arrow_right}));
    EXPECT_EQ(bar->highlighted_item, 1);
}

TEST_F(SelectionThat, deletes_its_parent_by_a_click_leaves_the_bar_working) {
    action = [&](int&, CGlutMenu&) { bar->DeleteSubMenu(0); };
    EXPECT_TRUE(chooseByClicks());
    EXPECT_FALSE(bar->submenu_open);
}

TEST_F(SelectionThat, replaces_its_own_menu_closes_the_rest) {
    action = [&](int&, CGlutMenu&) { file->AddSubMenu(1, {"X"}, act, &action, ""); };
    EXPECT_TRUE(chooseByClicks());
    EXPECT_THAT(file->GetSubMenu(1)->items, ElementsAre("X"));
    expectBarWorks();
}

TEST_F(SelectionThat, replaces_its_parent_closes_the_rest) {
    action = [&](int&, CGlutMenu&) { bar->AddSubMenu(0, {"X"}, act, &action, ""); };
    EXPECT_TRUE(chooseByKeys());
    expectBarWorks();
}

TEST_F(SelectionThat, rebuilds_the_whole_tree_ends_with_the_new_one_closed) {
    action = [&](int&, CGlutMenu&) { build(); };
    EXPECT_TRUE(chooseByKeys());
    expectBarWorks();
    EXPECT_TRUE(chooseByClicks());
    expectBarWorks();
}

TEST_F(SelectionThat, initialises_its_own_menu_anew_closes_it) {
    action = [&](int&, CGlutMenu&) { initialiseList(*recent, {"Other"}); };
    EXPECT_TRUE(chooseByKeys());
    EXPECT_FALSE(recent->active);
    expectBarWorks();
}

TEST_F(SelectionThat, destroys_the_root_touches_nothing_afterwards) {
    action = [&](int&, CGlutMenu&) { bar.reset(); };
    EXPECT_TRUE(chooseByKeys());
    EXPECT_EQ(bar, nullptr);
}

TEST_F(SelectionThat, destroys_the_root_by_a_click_touches_nothing_afterwards) {
    action = [&](int&, CGlutMenu&) { bar.reset(); };
    EXPECT_TRUE(chooseByClicks());
    EXPECT_EQ(bar, nullptr);
}

TEST_F(SelectionThat, destroys_the_root_from_its_own_item_touches_nothing_afterwards) {
    action = [&](int&, CGlutMenu&) { bar.reset(); };
    EXPECT_TRUE(clickItem(*bar, *bar, 1));
    EXPECT_EQ(bar, nullptr);
}

TEST_F(SelectionThat, deactivates_the_bar_leaves_it_inactive) {
    action = [&](int&, CGlutMenu&) { bar->Deactive(true); };
    EXPECT_TRUE(press({arrow_right, return_key}));
    EXPECT_FALSE(bar->active);
    EXPECT_FALSE(press({return_key}));
}

TEST_F(SelectionThat, deactivates_its_own_chain_is_closed_once) {
    action = [&](int&, CGlutMenu& menu) { menu.Deactive(true); };
    EXPECT_TRUE(chooseByKeys());
    expectBarWorks();
}

TEST_F(SelectionThat, changes_the_item_reference_changes_the_menu) {
    action = [&](int& item, CGlutMenu&) { item = 0; };
    press({arrow_right, return_key});
    EXPECT_EQ(bar->selected_item, 0);
}

TEST_F(SelectionThat, renames_its_item_is_laid_out_again) {
    action = [&](int& item, CGlutMenu& menu) { menu.SetMenuText(item, "A far longer item text"); };
    const int before = recent->width;
    EXPECT_TRUE(chooseByKeys());
    EXPECT_GT(recent->width, before);
}

TEST_F(SelectionThat, opens_a_dialog_closes_the_menus_beneath_it) {
    CTextInput dialog;
    Strings lines = {"hello"};
    action = [&](int&, CGlutMenu&) {
        dialog.Initialise("T", lines, 0, 0, nullptr, nullptr);
        dialog.Display();
    };
    EXPECT_TRUE(chooseByClicks());
    EXPECT_EQ(GlutMenu::input_field, &dialog);
    EXPECT_FALSE(recent->active);
    EXPECT_TRUE(press({return_key}));
    EXPECT_EQ(GlutMenu::input_field, nullptr);
    expectBarWorks();
}

TEST_F(SelectionThat, plays_another_key_inside_is_harmless) {
    int depth = 0;
    action = [&](int&, CGlutMenu&) {
        if (++depth == 1) press({return_key});
    };
    EXPECT_TRUE(chooseByKeys());
    EXPECT_FALSE(recent->active);
    bar->Activate();
}

TEST_F(SelectionThat, ends_the_program_keeps_its_status) {
    action = [](int&, CGlutMenu&) { std::exit(0); };
    EXPECT_EXIT(chooseByKeys(), testing::ExitedWithCode(0), "");
}

using DialogAction = std::function<bool()>;

bool actOnText(std::string /*button*/, std::string /*text*/, void* user_data) {
    return (*static_cast<DialogAction*>(user_data))();
}

bool actOnForm(std::string /*button*/, Strings /*labels*/, Strings /*values*/, void* user_data) {
    return (*static_cast<DialogAction*>(user_data))();
}

class AnswerThat : public ToolkitTest {
  protected:
    AnswerThat() : dialog(std::make_unique<CTextInput>()) {}

    void ask() {
        dialog->Initialise("T", "Name", "Ada", 50, 60, 12, actOnText, &action);
        dialog->Display();
    }
    void askForm() {
        Strings labels = {"A"};
        Strings values = {"a"};
        dialog->Initialise("T", labels, values, 50, 60, 12, actOnForm, &action);
        dialog->Display();
    }
    void answer() { GlutMenu::input_field->KeyboardHandler(return_key, ""); }
    void click() {
        dialog->Render();
        int left = 0, top = 0, right = 0, bottom = 0;
        dialog->GetButtonDimension(0, left, top, right, bottom);
        EXPECT_TRUE(dialog->MouseHandler(0, 0, left + 2, top + 2));
    }
    void tell(CTextInput& other) {
        Strings lines = {"hello"};
        other.Initialise("U", lines, 0, 0, nullptr, nullptr);
        other.Display();
    }

    DialogAction action;
    std::unique_ptr<CTextInput> dialog;
};

TEST_F(AnswerThat, destroys_its_dialog_touches_nothing_afterwards) {
    for (const bool accept : {false, true}) {
        dialog = std::make_unique<CTextInput>();
        action = [&] {
            dialog.reset();
            return accept;
        };
        ask();
        answer();
        EXPECT_EQ(GlutMenu::input_field, nullptr);
        EXPECT_EQ(GlutMenu::num_dialogs_active, 0);
    }
}

TEST_F(AnswerThat, destroys_its_dialog_by_a_click_touches_nothing_afterwards) {
    action = [&] {
        dialog.reset();
        return true;
    };
    askForm();
    click();
    EXPECT_EQ(GlutMenu::input_field, nullptr);
}

TEST_F(AnswerThat, opens_another_dialog_leaves_that_one_open) {
    CTextInput notice;
    action = [&] {
        tell(notice);
        return true;
    };
    ask();
    answer();
    EXPECT_EQ(GlutMenu::input_field, &notice);
    EXPECT_EQ(notice.previous, nullptr);
    EXPECT_EQ(GlutMenu::num_dialogs_active, 1);
}

TEST_F(AnswerThat, refuses_under_another_dialog_comes_back_after_it) {
    CTextInput notice;
    action = [&] {
        tell(notice);
        return false;
    };
    ask();
    answer();
    EXPECT_EQ(GlutMenu::input_field, &notice);
    notice.KeyboardHandler(escape, "");
    EXPECT_EQ(GlutMenu::input_field, dialog.get());
}

TEST_F(AnswerThat, uses_its_dialog_for_the_next_question_leaves_it_open) {
    action = [&] {
        tell(*dialog);
        return true;
    };
    ask();
    answer();
    EXPECT_EQ(GlutMenu::input_field, dialog.get());
    EXPECT_EQ(GlutMenu::num_dialogs_active, 1);
    EXPECT_EQ(dialog->kind, 2);
    answer();
    EXPECT_EQ(GlutMenu::input_field, nullptr);
    EXPECT_EQ(GlutMenu::num_dialogs_active, 0);
}

TEST_F(AnswerThat, closes_its_dialog_itself_closes_it_once) {
    CTextInput beneath;
    tell(beneath);
    action = [&] {
        dialog->KeyboardHandler(escape, "");
        return true;
    };
    ask();
    answer();
    EXPECT_EQ(GlutMenu::input_field, &beneath);
    EXPECT_EQ(GlutMenu::num_dialogs_active, 1);
}

TEST_F(AnswerThat, redefines_the_buttons_is_delivered_whole) {
    action = [&] {
        dialog->DefineButtons({});
        return false;
    };
    ask();
    click();
    EXPECT_TRUE(dialog->buttons.empty());
    EXPECT_EQ(GlutMenu::input_field, dialog.get());
}

}  // namespace
