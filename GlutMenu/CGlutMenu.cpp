// The menu model: life and death, the item tables, and the tree of submenus.

#include "GlutMenu/CGlutMenu.h"

#include <GL/glut.h>

#include <algorithm>
#include <cstddef>
#include <utility>

#include "GlutMenu/Colour.h"

namespace GlutMenu {

float char_width = 12.0F;
float char_height = 15.0F;
void* font = GLUT_BITMAP_HELVETICA_18;
void* stroked_font = GLUT_STROKE_ROMAN;
CTextInput* input_field = nullptr;
int num_dialogs_active = 0;
CTextInput* text_input = nullptr;

float CGlutMenu::screen_width = 100.0F;
float CGlutMenu::screen_height = 100.0F;
float CGlutMenu::scale_x = 1.0F;
float CGlutMenu::scale_y = 1.0F;
float CGlutMenu::font_scale_x = 1.0F;
float CGlutMenu::font_scale_y = 1.0F;

namespace {

bool ReadState(const std::map<int, bool>& states, int i) {
    const auto found = states.find(i);
    return found != states.end() && found->second;
}

}  // namespace

CGlutMenu::CGlutMenu()
    : initialised(true),
      active(false),
      highlighted_item(0),
      is_menu_bar(false),
      text_colour{1.0F, 1.0F, 1.0F, 1.0F},
      background_colour{0.0F, 0.0F, 1.0F, 0.7F},
      border_colour{0.8F, 0.8F, 0.0F, 0.7F},
      x(-1.0F),
      y(-1.0F),
      margin_x(5.0F),
      margin_y(5.0F),
      y_offset(0),
      item_width(0),
      item_selected(false),
      selected_item(-1),
      width(0),
      height(0),
      submenu_x(0),
      submenu_y(0),
      bar_width(0),
      is_submenu(false),
      submenu_open(false),
      parent(nullptr),
      callback(nullptr),
      user_data(nullptr),
      owner(nullptr),
      alive(std::make_shared<const bool>()) {}

CGlutMenu::~CGlutMenu() {
    active = false;
    highlighted_item = -1;
    // A dying child strikes itself from both tables, hence no range loop over `forgotten`.
    for (auto& entry : submenus) delete entry.second;
    while (!forgotten.empty()) delete forgotten.back();
    if (owner != nullptr) owner->Disown(this);
}

void CGlutMenu::Disown(const CGlutMenu* child) {
    for (auto& entry : submenus) {
        if (entry.second == child) entry.second = nullptr;
    }
    forgotten.erase(std::remove(forgotten.begin(), forgotten.end(), child), forgotten.end());
}

void CGlutMenu::ForgetSubMenus() {
    for (const auto& entry : submenus) {
        CGlutMenu* child = entry.second;
        // A menu that somebody else made and put into the table stays theirs.
        if (child != nullptr && child->owner == this) forgotten.push_back(child);
    }
    submenus.clear();
    submenu_open = false;
}

void CGlutMenu::SetParent(CGlutMenu* new_parent) {
    parent = new_parent;
}

void CGlutMenu::Activate() {
    active = true;
    item_selected = false;
    selected_item = -1;
    highlighted_item = 0;
    // With no selected item there is none whose submenu could be open.
    submenu_open = false;
}

void CGlutMenu::Clear() {
    active = false;
    selected_item = -1;
    submenu_open = false;
    highlighted_item = 0;
}

void CGlutMenu::Deactive(bool up) {
    Clear();
    NotifyDeactivationToParent();
    if (up) CloseUpwards(parent);
}

void CGlutMenu::NotifyDeactivationToParent() {
    if (parent != nullptr) parent->submenu_open = false;
}

void CGlutMenu::CloseUpwards(CGlutMenu* menu) {
    while (menu != nullptr && !menu->is_menu_bar) {
        menu->Clear();
        menu->NotifyDeactivationToParent();
        menu = menu->parent;
    }
}

CGlutMenu::Watched CGlutMenu::Watch() {
    return {this, alive};
}

std::vector<CGlutMenu::Watched> CGlutMenu::WatchAncestry() {
    std::vector<Watched> chain;
    for (CGlutMenu* menu = this; menu != nullptr; menu = menu->parent) {
        chain.push_back(menu->Watch());
    }
    return chain;
}

// A menu that went took its open submenus along, so what is left of the chain to close starts at
// the first menu above it that is still there.
void CGlutMenu::CloseNearestSurvivor(const std::vector<Watched>& chain) {
    const auto survivor = std::find_if(chain.begin(), chain.end(),
                                       [](const Watched& menu) { return !menu.alive.expired(); });
    if (survivor == chain.end()) return;
    if (survivor != chain.begin()) survivor->menu->submenu_open = false;
    CloseUpwards(survivor->menu);
}

bool CGlutMenu::IsMenuVisible() const {
    return active;
}

// A negative number is beyond every list as an index.
bool CGlutMenu::IsIndex(int i) const {
    return static_cast<std::size_t>(i) < items.size();
}

bool CGlutMenu::HasSubMenu(int i) const {
    return submenus.find(i) != submenus.end();
}

bool CGlutMenu::IsInVerticalMenu() const {
    return parent != nullptr && !parent->is_menu_bar;
}

void CGlutMenu::SetMenuText(int i, std::string text) {
    if (!IsIndex(i)) return;
    items[static_cast<std::size_t>(i)] = std::move(text);
    Resize(1.0F, 1.0F);
}

std::string CGlutMenu::GetMenuText(int i) const {
    return IsIndex(i) ? items[static_cast<std::size_t>(i)] : std::string();
}

int CGlutMenu::GetMenuPosition(std::string text) const {
    const auto found = std::find(items.begin(), items.end(), text);
    return found == items.end() ? -1 : static_cast<int>(found - items.begin());
}

std::string CGlutMenu::GetTitle() const {
    return title;
}

void CGlutMenu::SetMenuItemState(int i, bool enabled) {
    item_states[i] = enabled;
}

bool CGlutMenu::GetMenuItemState(int i) const {
    return ReadState(item_states, i);
}

void CGlutMenu::SetCheckState(int i, bool checked) {
    check_states[i] = checked;
}

bool CGlutMenu::GetCheckState(int i) const {
    return ReadState(check_states, i);
}

void CGlutMenu::SetTextColour(float r, float g, float b, float a) {
    SetColour(text_colour, r, g, b, a);
}

void CGlutMenu::SetBackgroundColour(float r, float g, float b, float a) {
    SetColour(background_colour, r, g, b, a);
}

void CGlutMenu::SetBorderColour(float r, float g, float b, float a) {
    SetColour(border_colour, r, g, b, a);
}

void CGlutMenu::DefineKeyboardCallback(MenuCallback new_callback, void* new_user_data) {
    callback = new_callback;
    user_data = new_user_data;
}

bool CGlutMenu::Selected(int& item) const {
    if (item_selected) item = selected_item;
    return item_selected;
}

CGlutMenu* CGlutMenu::GetSubMenu(int i) const {
    const auto found = submenus.find(i);
    return found == submenus.end() ? nullptr : found->second;
}

void CGlutMenu::DeleteSubMenu(int i) {
    const auto found = submenus.find(i);
    if (found == submenus.end()) return;
    delete std::exchange(found->second, nullptr);
}

}  // namespace GlutMenu
