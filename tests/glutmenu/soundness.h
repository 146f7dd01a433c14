// What both players of random events, in tests and in the fuzzer, walk through and look at.
#pragma once

#include <iterator>
#include <string>

#include "GlutMenu/CGlutMenu.h"

namespace soundness {

// The first thing that no sequence of events may lead to, in the tree below `bar` and in the stack
// of dialogs, of which there are `dialogs`; empty where all is sound.
std::string complaint(const GlutMenu::CGlutMenu& bar, int dialogs);

// Down from the bar, as far as below(limit), a number from 0 to limit - 1, says.
template <class Below>
GlutMenu::CGlutMenu* anyMenu(GlutMenu::CGlutMenu& bar, Below&& below) {
    GlutMenu::CGlutMenu* menu = &bar;
    while (!menu->submenus.empty() && below(3) != 0) {
        auto entry = menu->submenus.begin();
        std::advance(entry, below(static_cast<int>(menu->submenus.size())));
        if (entry->second == nullptr) break;
        menu = entry->second;
    }
    return menu;
}

}  // namespace soundness
