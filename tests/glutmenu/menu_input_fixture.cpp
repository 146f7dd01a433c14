#include "tests/glutmenu/menu_input_fixture.h"

using GlutMenu::CGlutMenu;

void note(int& item, CGlutMenu* menu, void* user_data) {
    auto& selections = *static_cast<Selections*>(user_data);
    selections.made.push_back(menu->GetMenuText(item));
    selections.last_menu = menu;
    selections.last_item = &item;
}

MenuInputTest::MenuInputTest() {
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

bool MenuInputTest::press(std::initializer_list<int> keys) {
    bool consumed = false;
    for (const int key : keys) consumed = bar.special_key_callback(key);
    return consumed;
}

void MenuInputTest::expectAllClosed() {
    EXPECT_TRUE(bar.active);
    EXPECT_FALSE(bar.submenu_open);
    for (const CGlutMenu* menu : {file, recent, view}) {
        EXPECT_FALSE(menu->active);
        EXPECT_FALSE(menu->submenu_open);
        EXPECT_EQ(menu->selected_item, -1);
        EXPECT_EQ(menu->highlighted_item, 0);
    }
}
