// Random keys, clicks, reshapes and callbacks on a random tree; after every event the tree must be
// sound. Seeds are fixed, so that a failure can be repeated.

#include <algorithm>
#include <cstddef>
#include <memory>
#include <random>

#include "tests/glutmenu/dialog_fixture.h"
#include "tests/glutmenu/soundness.h"

using GlutMenu::CGlutMenu;
using GlutMenu::CTextInput;

namespace {

constexpr int events_per_seed = 4000;

class Player : public DialogTest, public testing::WithParamInterface<unsigned> {
  public:
    // What a selection does: most often nothing, else anything a program may do in a callback.
    void react(CGlutMenu& menu, int item);
    bool answer();

  protected:
    Player() : random(GetParam()) { build(); }

    int below(int limit) {
        return static_cast<int>(random() % static_cast<unsigned>(std::max(limit, 1)));
    }
    bool oneIn(int chances) { return below(chances) == 0; }

    Strings randomTexts(int limit);
    void build();
    void grow(CGlutMenu& menu, int depth);
    void startOver();
    CGlutMenu* anyMenu() {
        return soundness::anyMenu(bar, [this](int limit) { return below(limit); });
    }
    void showDialog();

    void playKey();
    void playClick();
    void playReshape();
    void playEvent();

    std::mt19937 random;
    CGlutMenu bar;
    CTextInput second;
};

void select(int& item, CGlutMenu* menu, void* user_data) {
    static_cast<Player*>(user_data)->react(*menu, item);
}

bool answerDialog(std::string /*button*/, std::string /*text*/, void* user_data) {
    return static_cast<Player*>(user_data)->answer();
}

bool answerFormDialog(std::string /*button*/, Strings /*labels*/, Strings /*values*/,
                      void* user_data) {
    return static_cast<Player*>(user_data)->answer();
}

Strings Player::randomTexts(int limit) {
    Strings found(static_cast<std::size_t>(below(limit)));
    for (std::string& text : found) {
        text.resize(static_cast<std::size_t>(below(12)));
        for (char& c : text) c = static_cast<char>(below(256));
    }
    return found;
}

void Player::grow(CGlutMenu& menu, int depth) {
    const int count = static_cast<int>(menu.items.size());
    for (int i = -1; i <= count; ++i) {
        if (oneIn(3)) menu.SetCheckState(i, oneIn(2));
        if (oneIn(10)) menu.SetMenuItemState(i, false);
        if (depth == 0 || !oneIn(2)) continue;
        menu.AddSubMenu(i, randomTexts(6), oneIn(5) ? nullptr : select, this, "");
        if (menu.GetSubMenu(i) != nullptr) grow(*menu.GetSubMenu(i), depth - 1);
    }
}

void Player::build() {
    Strings items = randomTexts(6);
    items.push_back("last");
    bar.Initialise(1024, 768, 0, 0, 0, 0, "", items, 1.0F, 1.0F, true, false);
    bar.DefineKeyboardCallback(select, this);
    grow(bar, 3);
    bar.Resize(1.0F, 1.0F);
    bar.Activate();
}

// A tree that closed for good, or lies under dialogs, teaches nothing more.
void Player::startOver() {
    while (GlutMenu::input_field != nullptr) GlutMenu::input_field->KeyboardHandler(escape, "");
    build();
}

void Player::react(CGlutMenu& menu, int item) {
    switch (below(16)) {
        case 0:
            return bar.Deactive(true);
        case 1:
            return menu.Deactive(oneIn(2));
        case 2:
            return anyMenu()->DeleteSubMenu(below(5));
        case 3:
            return grow(*anyMenu(), 2);
        case 4:
            return build();
        case 5:
            return showDialog();
        case 6:
            return menu.SetMenuText(item, "other");
        case 7:
            return menu.SetMenuItemState(item, false);
        case 8: {
            Strings items = randomTexts(5);
            menu.Initialise(800, 600, 10, 10, 0, 0, "", items, 1.0F, 1.0F, menu.is_menu_bar, true);
            return;
        }
        case 9:
            return playKey();
        default:
            return menu.SetCheckState(item, !menu.GetCheckState(item));
    }
}

bool Player::answer() {
    if (oneIn(4)) showDialog();
    return !oneIn(3);
}

void Player::showDialog() {
    CTextInput& one = oneIn(2) ? dialog : second;
    Strings texts = randomTexts(5);
    Strings values = randomTexts(5);
    const int length = below(12) - 1;
    switch (below(4)) {
        case 0:
            one.Initialise("T", "Label", "text", 10, 10, length, answerDialog, this);
            break;
        case 1:
            one.Initialise("T", texts, 10, 10, nullptr, nullptr);
            break;
        case 2:
            one.Initialise("T", texts, values, 10, 10, length, answerFormDialog, this);
            one.DefineFieldValues(below(4), randomTexts(4), below(9) - 4);
            break;
        default:
            one.DefineButtons(randomTexts(4));
            break;
    }
    if (oneIn(2)) one.Center();
    one.Display();
}

void Player::playKey() {
    // What opens menus and chooses comes up more often than what closes them.
    static const std::vector<int> favourites = {return_key, return_key,  return_key,  arrow_down,
                                                arrow_down, arrow_right, arrow_right, arrow_left,
                                                arrow_up,   escape,      8,           9,
                                                25,         home,        end,         127};
    const int key = oneIn(8) ? below(256) : favourites[static_cast<std::size_t>(below(16))];
    stand_in::state.modifiers = below(16);
    if (oneIn(2)) {
        bar.keyboard_callback(key);
    } else {
        bar.special_key_callback(key);
    }
}

// On an item as often as anywhere.
void Player::playClick() {
    int x = below(stand_in::state.window_width);
    int y = below(stand_in::state.window_height);
    if (oneIn(2)) {
        anyMenu()->GetBottomLeft(below(4), x, y);
        x += 5;
        y -= 10;
    }
    bar.mouse_callback(oneIn(8) ? below(5) : 0, oneIn(8) ? 1 : 0, x, y);
}

void Player::playReshape() {
    stand_in::state.window_width = 1 + below(3000);
    stand_in::state.window_height = 1 + below(2000);
    bar.ReshapeCallback(stand_in::state.window_width, stand_in::state.window_height);
}

void Player::playEvent() {
    switch (below(30)) {
        case 0:
            return playReshape();
        case 1:
            return bar.Render();
        case 2:
            return GlutMenu::timer_func(1138);
        case 3:
            return bar.Activate();
        case 4:
            return showDialog();
        case 5:
            return react(*anyMenu(), below(5));
        default:
            return oneIn(3) ? playClick() : playKey();
    }
}

TEST_P(Player, never_upsets_the_tree) {
    for (int event = 0; event < events_per_seed; ++event) {
        SCOPED_TRACE("event " + std::to_string(event));
        playEvent();
        ASSERT_EQ(soundness::complaint(bar, 2), "");
        ASSERT_EQ(stand_in::state.modelview_depth, 0);
        ASSERT_EQ(stand_in::state.projection_depth, 0);
        if (HasFatalFailure()) return;
        stand_in::state.calls.clear();
        stand_in::state.drawn.clear();
        trace();
        if (event % 50 == 49) startOver();
    }
}

INSTANTIATE_TEST_SUITE_P(Seeds, Player, testing::Range(1U, 9U));

}  // namespace
