// Menus that are played on, and a callback that notes their selections.
#pragma once

#include <initializer_list>

#include "tests/glutmenu/toolkit_test.h"

// Selections in the order of their delivery, by the texts of their items.
struct Selections {
    Strings made;
    GlutMenu::CGlutMenu* last_menu = nullptr;
    int* last_item = nullptr;
};

// A selection callback whose user data is a Selections.
void note(int& item, GlutMenu::CGlutMenu* menu, void* user_data);

// File (New, Recent (One, Older (Two)), Quit), View (Grid, Axes), Zoom.
class MenuInputTest : public ToolkitTest {
  protected:
    MenuInputTest();

    // Plays keys and returns what the last one returned.
    bool press(std::initializer_list<int> keys);
    void openFile() { press({return_key}); }
    void openRecent() { press({return_key, arrow_down, arrow_right}); }

    void expectAllClosed();

    Selections selections;
    GlutMenu::CGlutMenu bar;
    GlutMenu::CGlutMenu* file = nullptr;
    GlutMenu::CGlutMenu* recent = nullptr;
    GlutMenu::CGlutMenu* view = nullptr;
};
