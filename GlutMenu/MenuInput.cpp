// Keys and clicks. Every handler returns whether it consumed the event. A handler that returns true
// may have run the selection callback, which may destroy any menu, so callers only touch what they
// know to be alive after that.

#include <GL/glut.h>

#include <algorithm>
#include <cstddef>
#include <iostream>

#include "GlutMenu/CGlutMenu.h"
#include "GlutMenu/Keys.h"
#include "GlutMenu/Truncate.h"

namespace GlutMenu {

namespace {

// The value a GLUT timer passes to timer_func to make the cursor blink.
constexpr int blink_timer = 1138;

bool IsDialogOpen() {
    return num_dialogs_active != 0 && input_field != nullptr;
}

bool IsLeftPress(int button, int state) {
    return button == left_button && state == pressed;
}

bool IsBetween(float value, int end, int other_end) {
    return static_cast<float>(std::min(end, other_end)) <= value &&
           value <= static_cast<float>(std::max(end, other_end));
}

}  // namespace

void timer_func(int value) {
    if (value != blink_timer || num_dialogs_active == 0) return;
    CTextInput::cursor_visible = !CTextInput::cursor_visible;
    glutPostRedisplay();
}

bool CGlutMenu::special_key_callback(int key) {
    if (!IsDialogOpen()) return keyboard_callback(key);
    input_field->SpecialKeyHandler(key);
    return true;
}

bool CGlutMenu::keyboard_callback(int key) {
    if (IsDialogOpen()) {
        input_field->KeyboardHandler(key, "");
        return true;
    }
    if (!active) return false;
    if (submenu_open) {
        if (!HasSubMenu(selected_item)) return true;
        CGlutMenu* child = GetSubMenu(selected_item);
        if (child == nullptr) return false;
        if (child->keyboard_callback(key)) return true;
        child->Deactive(false);
        submenu_open = false;
    }
    if (!IsIndex(highlighted_item)) {
        active = false;
        return false;
    }
    return HandleOwnKey(key, highlighted_item);
}

bool CGlutMenu::HandleOwnKey(int key, int i) {
    switch (key) {
        case key_return:
            return HandleReturn(i);
        case key_escape:
            return HandleEscape();
        case GLUT_KEY_LEFT:
            return MoveLeft(i);
        case GLUT_KEY_RIGHT:
            return MoveRight(i);
        case GLUT_KEY_UP:
            return !is_menu_bar && HighlightPrevious(i);
        case GLUT_KEY_DOWN:
            return !is_menu_bar && HighlightNext(i);
        default:
            return false;
    }
}

bool CGlutMenu::HandleReturn(int i) {
    if (GetMenuItemState(i)) {
        selected_item = i;
        if (HasSubMenu(i)) return OpenSubMenu(i);
        if (callback != nullptr) return Deliver();
    }
    if (!submenu_open) CloseUpwards(this);
    return true;
}

bool CGlutMenu::Deliver() {
    item_selected = true;
    const std::vector<Watched> chain = WatchAncestry();
    callback(selected_item, this, user_data);
    CloseNearestSurvivor(chain);
    return true;
}

bool CGlutMenu::OpenSubMenu(int i) {
    submenu_open = true;
    CGlutMenu* child = GetSubMenu(i);
    if (child != nullptr) child->Activate();
    return true;
}

bool CGlutMenu::HandleEscape() {
    if (is_menu_bar) {
        Activate();
    } else if (active) {
        CloseUpwards(this);
    }
    return true;
}

bool CGlutMenu::MoveLeft(int i) {
    if (is_menu_bar) return HighlightPrevious(i);
    CloseUpwards(this);
    return true;
}

// At a leaf the refused key travels up to the bar, which then moves on to its next item.
bool CGlutMenu::MoveRight(int i) {
    if (is_menu_bar) return HighlightNext(i);
    if (HasSubMenu(i)) return keyboard_callback(key_return);
    CloseUpwards(this);
    return false;
}

bool CGlutMenu::HighlightNext(int i) {
    highlighted_item = IsIndex(i + 1) ? i + 1 : 0;
    return true;
}

bool CGlutMenu::HighlightPrevious(int i) {
    highlighted_item = i == 0 ? static_cast<int32_t>(items.size()) - 1 : i - 1;
    return true;
}

bool CGlutMenu::mouse_callback(int button, int state, int mouse_x, int mouse_y) {
    if (IsDialogOpen()) {
        input_field->MouseHandler(button, state, mouse_x, mouse_y);
        return true;
    }
    if (!active) return false;
    if (submenu_open && HasSubMenu(selected_item)) {
        CGlutMenu* child = GetSubMenu(selected_item);
        if (child == nullptr) return false;
        if (MouseOnSubMenu(child, button, state, mouse_x, mouse_y)) return true;
    }
    if (!IsLeftPress(button, state)) return false;
    const auto x_ratio = static_cast<float>(glutGet(GLUT_WINDOW_WIDTH)) / screen_width;
    const auto y_ratio = static_cast<float>(glutGet(GLUT_WINDOW_HEIGHT)) / screen_height;
    const int hit =
        ItemAt(static_cast<float>(mouse_x) / x_ratio, static_cast<float>(mouse_y) / y_ratio);
    if (hit >= 0) return ClickItem(hit);
    if (parent != nullptr) Deactive(false);
    return false;
}

bool CGlutMenu::MouseOnSubMenu(CGlutMenu* child, int button, int state, int mouse_x, int mouse_y) {
    const Watched self = Watch();
    const Watched below = child->Watch();
    const bool consumed = child->mouse_callback(button, state, mouse_x, mouse_y);
    if (!consumed || self.alive.expired()) return consumed;
    if (IsLeftPress(button, state) && !submenu_open) CloseAfterClick(below);
    return true;
}

// The click ended the open drop-down: a selection closes the whole chain, anything else leaves this
// menu ready for the next choice. Only a selection can have destroyed the child.
void CGlutMenu::CloseAfterClick(const Watched& child) {
    if (child.alive.expired()) {
        CloseUpwards(this);
        return;
    }
    CloseUpwards(child.menu);
    if (!child.menu->item_selected) Activate();
}

bool CGlutMenu::Contains(float menu_x, float menu_y) const {
    return x <= menu_x && menu_x < x + static_cast<float>(width) && y <= menu_y &&
           menu_y <= y + static_cast<float>(height);
}

// The rectangle that is highlighted for item i; a bar's stays between the bar's edges.
CGlutMenu::Rectangle CGlutMenu::ItemRectangle(int i) const {
    Rectangle area{};
    GetBottomLeft(i, area.bx, area.by);
    if (!is_menu_bar) area.by = Truncate(static_cast<float>(area.by) - char_height);
    GetTopRight(i, area.tx, area.ty, area.by);
    if (is_menu_bar) {
        area.by = Truncate(static_cast<float>(area.by) + margin_y);
        area.ty = Truncate(static_cast<float>(area.ty) - 2.0F * margin_y);
    }
    return area;
}

int CGlutMenu::ItemAt(float menu_x, float menu_y) const {
    if (!Contains(menu_x, menu_y)) return -1;
    for (int i = 0; IsIndex(i); ++i) {
        const Rectangle area = ItemRectangle(i);
        const int left = Truncate(static_cast<float>(area.bx) - margin_x);
        if (IsBetween(menu_x, left, area.tx) && IsBetween(menu_y, area.by, area.ty)) {
            return i;
        }
    }
    return -1;
}

bool CGlutMenu::ClickItem(int i) {
    std::cout << "Item " << GetMenuText(i) << std::endl;
    if (submenu_open) {
        CloseUpwards(GetSubMenu(selected_item));
        Activate();
    }
    highlighted_item = i;
    return keyboard_callback(key_return);
}

}  // namespace GlutMenu
