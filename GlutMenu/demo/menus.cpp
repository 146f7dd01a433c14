#include "GlutMenu/demo/menus.h"

#include <cstdlib>
#include <iostream>
#include <string>
#include <vector>

#include "GlutMenu/demo/dialogs.h"

using GlutMenu::CGlutMenu;

namespace {

void Trace(const CGlutMenu& menu, int item) {
    std::cout << "Selected " << menu.GetMenuText(item) << std::endl;
}

void OnFile(int& item, CGlutMenu* menu, void* /*picture*/) {
    Trace(*menu, item);
    if (menu->GetMenuText(item) == "Quit") std::exit(0);
}

void OnView(int& item, CGlutMenu* menu, void* user_data) {
    auto& picture = *static_cast<Picture*>(user_data);
    Trace(*menu, item);
    bool& shown = menu->GetMenuText(item) == "Grid" ? picture.has_grid : picture.has_axes;
    shown = !shown;
    menu->SetCheckState(item, shown);
}

void OnColour(int& item, CGlutMenu* menu, void* user_data) {
    auto& picture = *static_cast<Picture*>(user_data);
    Trace(*menu, item);
    for (int i = 0; i < 3; ++i) {
        picture.colour[i] = i == item ? 0.5F : 0.2F;
        menu->SetCheckState(i, i == item);
    }
}

void OnDialog(int& item, CGlutMenu* menu, void* /*picture*/) {
    const std::string text = menu->GetMenuText(item);
    Trace(*menu, item);
    if (text == "Single field") ShowSingleField();
    if (text == "Message") ShowMessage("Message", {"A message of two lines,", "and the second."});
    if (text == "Form") ShowForm();
}

void AddView(CGlutMenu& bar, Picture& picture) {
    bar.AddSubMenu(1, {"Grid", "Axes", "Colour"}, OnView, &picture, "");
    CGlutMenu* view = bar.GetSubMenu(1);
    view->SetCheckState(0, picture.has_grid);
    view->SetCheckState(1, picture.has_axes);
    view->AddSubMenu(2, {"Red", "Green", "Blue"}, OnColour, &picture, "");
}

void AddFile(CGlutMenu& bar, Picture& picture) {
    bar.AddSubMenu(0, {"New", "Open", "Recent", "Quit"}, OnFile, &picture, "");
    CGlutMenu* file = bar.GetSubMenu(0);
    file->SetMenuItemState(1, false);
    file->AddSubMenu(2, {"First", "Second", "Older"}, OnFile, &picture, "");
    file->GetSubMenu(2)->AddSubMenu(2, {"Third", "Fourth"}, OnFile, &picture, "");
}

// The bar's own item: it rebuilds the whole tree from within a callback.
void OnBar(int& item, CGlutMenu* menu, void* user_data) {
    Trace(*menu, item);
    auto& picture = *static_cast<Picture*>(user_data);
    picture = Picture();
    BuildMenus(*menu, picture, static_cast<int>(CGlutMenu::screen_width),
               static_cast<int>(CGlutMenu::screen_height));
}

}  // namespace

void BuildMenus(CGlutMenu& bar, Picture& picture, int w, int h) {
    std::vector<std::string> items = {"File", "View", "Dialogs", "Reset"};
    bar.Initialise(w, h, 0, 0, 5, 5, "Menu Bar", items, 1.0F, 1.0F, true, false);
    bar.DefineKeyboardCallback(OnBar, &picture);
    bar.SetBackgroundColour(0.0F, 0.4F, 0.5F, 0.7F);
    AddFile(bar, picture);
    AddView(bar, picture);
    bar.AddSubMenu(2, {"Single field", "Message", "Form"}, OnDialog, nullptr, "");
    // Scales the margins and places the submenus below their items; AddSubMenu alone gives them a
    // first position only.
    bar.ReshapeCallback(w, h);
    bar.Activate();
}
