#include "tests/glutmenu/soundness.h"

namespace soundness {

namespace {

using GlutMenu::CGlutMenu;
using GlutMenu::CTextInput;

std::string complaintOfMenu(const CGlutMenu& menu, const CGlutMenu& bar) {
    if (menu.submenu_open && menu.submenus.count(menu.selected_item) != 1)
        return "an open submenu is not there";
    const int last = static_cast<int>(menu.items.size()) - 1;
    if (menu.highlighted_item < 0 || (menu.highlighted_item > 0 && menu.highlighted_item > last))
        return "an item that is not there is highlighted";
    if (menu.is_menu_bar && &menu != &bar) return "there is a second bar";
    for (const auto& [item, child] : menu.submenus) {
        if (child == nullptr) continue;
        if (child->parent != &menu) return "a submenu does not know its parent";
        if (std::string found = complaintOfMenu(*child, bar); !found.empty()) return found;
    }
    return {};
}

std::string complaintOfDialogs(int dialogs) {
    int open = 0;
    for (const CTextInput* one = GlutMenu::input_field; one != nullptr; one = one->previous) {
        if (++open > dialogs) return "a dialog is open twice";
        if (one->cursor_pos < -1) return "a cursor is more than one before its text";
    }
    return open == GlutMenu::num_dialogs_active ? "" : "the open dialogs are not counted";
}

}  // namespace

std::string complaint(const CGlutMenu& bar, int dialogs) {
    std::string found = complaintOfMenu(bar, bar);
    return found.empty() ? complaintOfDialogs(dialogs) : found;
}

}  // namespace soundness
