// The demo's menu tree and what its items do.

#pragma once

#include "GlutMenu/CGlutMenu.h"

// What the menus change and the picture shows.
struct Picture {
    bool has_grid = true;
    bool has_axes = false;
    float colour[3] = {0.2F, 0.25F, 0.3F};
};

// Builds the bar for a window of w x h pixels and shows it. Items find the picture they change
// through the pointer, so it must outlive the bar.
void BuildMenus(GlutMenu::CGlutMenu& bar, Picture& picture, int w, int h);
