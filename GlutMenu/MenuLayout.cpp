// Where everything of a menu lies. Results are truncated to whole pixels after each step that says
// so: neighbouring boxes meet only if all of them round alike.

#include <GL/glut.h>

#include <algorithm>
#include <iostream>
#include <memory>
#include <utility>

#include "GlutMenu/CGlutMenu.h"
#include "GlutMenu/Font.h"
#include "GlutMenu/Truncate.h"

namespace GlutMenu {

namespace {

constexpr float reference_margin = 5.0F;
constexpr float reference_char_height = 33.33F;
// 1 / 1024 and 768: the screen the layout is designed for.
constexpr float per_reference_width = 0.0009765625F;
constexpr float reference_height = 768.0F;
// Brings the stroke font, about 119 units above its baseline, to the line height.
constexpr float reference_font_scale_y = 0.30003F;

}  // namespace

bool CGlutMenu::Initialise(int screen_w, int screen_h, int left, int top, int /*unused*/,
                           int /*unused*/, std::string new_title,
                           std::vector<std::string>& new_items, float /*unused*/, float /*unused*/,
                           bool menu_bar, bool submenu) {
    is_menu_bar = menu_bar;
    margin_x = margin_y = reference_margin;
    is_submenu = submenu;
    ForgetSubMenus();
    x = menu_bar ? 0.0F : static_cast<float>(left);
    y = menu_bar ? 0.0F : static_cast<float>(top);
    title = std::move(new_title);
    items = new_items;
    ResetItemStates();
    char_width = 120.0F;
    SetScreen(screen_w, screen_h);
    ScaleFont();
    std::cout << "font x scaling is " << font_scale_x << std::endl;
    initialised = true;
    Resize(1.0F, 1.0F);
    highlighted_item = 0;
    return !items.empty();
}

// Check marks beyond a new, shorter list survive, so that a list may shrink and grow again.
void CGlutMenu::ResetItemStates() {
    item_states.clear();
    for (int i = 0; IsIndex(i); ++i) {
        item_states[i] = true;
        check_states[i] = false;
    }
}

void CGlutMenu::SetScreen(int w, int h) {
    screen_width = static_cast<float>(w);
    screen_height = static_cast<float>(h);
    scale_x = screen_width * per_reference_width;
    scale_y = screen_height / reference_height;
}

void CGlutMenu::ScaleFont() {
    const auto bitmap_width = static_cast<float>(glutBitmapWidth(font, 'H'));
    const auto stroke_width = static_cast<float>(StrokeUnits('H'));
    font_scale_x = bitmap_width / stroke_width * screen_width * per_reference_width;
    font_scale_y = reference_font_scale_y * scale_y;
    char_height = scale_y * reference_char_height;
}

float CGlutMenu::GetScaleX() {
    return scale_x;
}

float CGlutMenu::GetScaleY() {
    return scale_y;
}

float CGlutMenu::GetStringLength(std::string text) {
    int units = 0;
    for (const char c : text) units += StrokeUnits(c);
    return static_cast<float>(units) * font_scale_x;
}

float CGlutMenu::GetCharLength(char c) {
    return GlyphWidth(c);
}

int CGlutMenu::Predecessor(int i) {
    return i > 0 ? i - 1 : i;
}

float CGlutMenu::SlotHeight() const {
    return 2.0F * margin_y + char_height;
}

void CGlutMenu::GetBottomLeft(int i, int& bx, int& by) const {
    if (!is_menu_bar || !IsIndex(i)) {
        bx = Truncate(x);
        by = Truncate(SlotHeight() * static_cast<float>(i) + y + char_height +
                      static_cast<float>(y_offset));
        return;
    }
    float across = 0.0F;
    for (int j = 0; j < i; ++j) {
        across = TruncateToFloat(across + GetStringLength(GetMenuText(j) + " "));
    }
    across += x;
    bx = Truncate(2.0F * static_cast<float>(Predecessor(i)) * margin_x + across);
    by = Truncate(static_cast<float>(y_offset) + (y + char_height + margin_y));
}

void CGlutMenu::GetTopRight(int i, int& tx, int& ty, int base_y) const {
    if (is_menu_bar) {
        int bx = 0;
        int by = 0;
        GetBottomLeft(i, bx, by);
        tx = Truncate(static_cast<float>(bx) + GetStringLength(GetMenuText(i) + " "));
        ty = Truncate(static_cast<float>(by) - char_height);
        return;
    }
    tx = Truncate(2.0F * margin_x + static_cast<float>(item_width) + x);
    ty = Truncate(static_cast<float>(base_y) + char_height + margin_y +
                  2.0F * static_cast<float>(y_offset));
}

int CGlutMenu::GetWidthAndHeight(int& w, int& h) const {
    if (!is_menu_bar) {
        w = width;
        h = height;
        return h;
    }
    const int space = Truncate(GlyphWidth(' '));
    w = 0;
    for (const std::string& item : items) {
        w = Truncate(static_cast<float>(w) + (GetStringLength(item) + static_cast<float>(space)));
    }
    h = Truncate((static_cast<float>(y_offset) + (char_height + margin_y)) * font_scale_y);
    return h;
}

void CGlutMenu::Resize(float fx, float fy) {
    bar_width = 0;
    item_width = 0;
    for (const std::string& item : items) {
        const int item_length = Truncate(GetStringLength(item));
        if (is_menu_bar) bar_width += item_length;
        item_width = std::max(item_width, item_length);
    }
    item_width = Truncate(static_cast<float>(item_width) + GlyphWidth(' '));
    bar_width = Truncate(static_cast<float>(bar_width) + GlyphWidth(' '));
    if (is_menu_bar) {
        item_width = bar_width;
        height = Truncate(SlotHeight());
        width = Truncate(screen_width - x);
    } else {
        width = Truncate(2.0F * margin_x + static_cast<float>(item_width));
        height = Truncate(SlotHeight() * static_cast<float>(items.size()));
    }
    PlaceSubMenus(fx, fy);
}

void CGlutMenu::PlaceSubMenus(float fx, float fy) {
    for (const auto& [i, child] : submenus) {
        if (child == nullptr) continue;
        int bx = 0;
        int by = 0;
        GetBottomLeft(i, bx, by);
        if (is_menu_bar) {
            submenu_x = bx;
            submenu_y = Truncate(static_cast<float>(by) + y + margin_y);
        } else {
            submenu_x = Truncate(static_cast<float>(width + bx) + margin_x);
            submenu_y = Truncate(SlotHeight() * static_cast<float>(i) + y);
        }
        std::cout << "Resizing sub-menu " << GetMenuText(i) << std::endl;
        child->x = static_cast<float>(submenu_x);
        child->y = static_cast<float>(submenu_y);
        child->Resize(fx, fy);
    }
}

// Holds until the next Resize places the submenu among its siblings.
void CGlutMenu::FirstSubMenuPosition(int i) {
    int bx = 0;
    int by = 0;
    GetBottomLeft(i, bx, by);
    if (is_menu_bar) {
        submenu_x = Truncate(static_cast<float>(bx) + margin_x);
        submenu_y = Truncate(5.0F * margin_y + y);
        return;
    }
    submenu_x = Truncate(static_cast<float>(width + bx) + margin_x);
    submenu_y = Truncate((SlotHeight() * static_cast<float>(i) + y) - (char_height + char_height) -
                         margin_y);
}

bool CGlutMenu::AddSubMenu(int i, std::vector<std::string> new_items, MenuCallback new_callback,
                           void* new_user_data, std::string new_title) {
    if (i < 0) return false;
    auto child = std::make_unique<CGlutMenu>();
    FirstSubMenuPosition(i);
    child->parent = this;
    child->owner = this;
    const int top = Truncate((static_cast<float>(submenu_y) + char_height) + 2.0F * margin_y);
    child->Initialise(Truncate(screen_width), Truncate(screen_height), submenu_x, top, 0, 0,
                      std::move(new_title), new_items, 1.0F, 1.0F, false, true);
    child->SetTextColour(text_colour[0], text_colour[1], text_colour[2], 1.0F);
    child->DefineKeyboardCallback(new_callback, new_user_data);
    DeleteSubMenu(i);
    submenus[i] = child.release();
    submenu_open = false;
    return true;
}

void CGlutMenu::ReshapeCallback(int w, int h) {
    const float fx = static_cast<float>(w) / screen_width;
    const float fy = static_cast<float>(h) / screen_height;
    std::cout << "Reshape callback" << std::endl;
    std::cout << "Reshaping to " << w << "x" << h << std::endl;
    std::cout << "Reshapng factors " << fx << ", " << fy << std::endl;
    std::cout << "old (x,y) =  " << x << " " << y << std::endl;
    std::cout << "new (x,y) =  " << x << " " << y << std::endl;
    SetScreen(w, h);
    std::cout << "scale " << scale_x << ", " << scale_y << std::endl;
    margin_x = reference_margin * scale_x;
    margin_y = reference_margin * scale_y;
    ScaleFont();
    std::cout << "font scale " << font_scale_x << ", " << font_scale_y << std::endl;
    x *= fx;
    y *= fy;
    Resize(fx, fy);
    if (input_field != nullptr) input_field->ReshapeCallback(scale_x, scale_y, fx, fy);
}

void CGlutMenu::ResizeChildren(float /*fx*/, float /*fy*/) {}

void CGlutMenu::SetScreenResolution(int /*w*/, int /*h*/) {}

}  // namespace GlutMenu
