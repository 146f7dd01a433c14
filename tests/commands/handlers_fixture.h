// The menus as start-up builds them, over a catalogue of two entries.
#pragma once

#include <string>
#include <vector>

#include "commands/menu_handlers.h"
#include "commands/menu_tree.h"
#include "explorer/navigation.h"
#include "tests/support/stand_ins.h"

namespace stand_ins {

class Handlers : public CommandsTest {
  protected:
    Handlers() {
        setCatalogue({someEntry("first", 1), someEntry("second", 2)});
        createMenu();
        forget();
        image_refreshed = true;  // as idle leaves it, so that clearing it shows
    }

    // Chooses a command of the "Fractals" menu.
    static void fractalsCommand(const std::string& text) { choose(submenu({"Fractals"}), text); }

    // A menu of one item with this text, for commands that no menu of the program holds.
    GlutMenu::CGlutMenu& loneItem(const std::string& text) { return menuOf({text}); }

    // A menu that holds these items, where the program's has others before them.
    GlutMenu::CGlutMenu& menuOf(std::vector<std::string> items) {
        other.Initialise(1024, 768, 0, 0, 5, 5, "", items, 1.0f, 1.0f, false, true);
        other.DefineKeyboardCallback(selection_callback, nullptr);
        return other;
    }

  private:
    GlutMenu::CGlutMenu other;
};

}  // namespace stand_ins
