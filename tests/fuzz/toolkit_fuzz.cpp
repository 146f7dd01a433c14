// Keys, clicks, reshapes, texts and callbacks of any kind on menus and dialogs of any shape; after
// every event the tree and the stack of dialogs must be sound.
#include <iostream>
#include <vector>

#include "GlutMenu/CGlutMenu.h"
#include "tests/fuzz/input_bytes.h"
#include "tests/fuzz/require.h"
#include "tests/glutmenu/glut_stand_in.h"
#include "tests/glutmenu/soundness.h"

namespace {

using GlutMenu::CGlutMenu;
using GlutMenu::CTextInput;
using Strings = std::vector<std::string>;

constexpr int MOST_EVENTS = 600, DEEPEST_CALL = 6;

class Player {
  public:
    Player(const std::uint8_t* data, std::size_t size) : in(data, size) { build(); }

    void play();

    // What a selection and an answer do.
    void react(CGlutMenu& menu, int item);
    bool answer();

  private:
    Strings texts(int most);
    void build();
    void grow(CGlutMenu& menu, int depth);
    CGlutMenu* anyMenu() {
        return soundness::anyMenu(bar, [this](int limit) { return in.below(limit); });
    }
    CTextInput& anyDialog() { return in.oneIn(2) ? first : second; }
    void showDialog();
    void initialise(CTextInput& dialog);

    void playKey();
    void playClick();
    void playReshape();
    void playEvent();

    InputBytes in;
    int depth = 0;  // of calls out of callbacks
    CGlutMenu bar;
    CTextInput first, second;
};

void select(int& item, CGlutMenu* menu, void* player) {
    static_cast<Player*>(player)->react(*menu, item);
}

bool answerText(std::string, std::string, void* player) {
    return static_cast<Player*>(player)->answer();
}

bool answerForm(std::string, Strings, Strings, void* player) {
    return static_cast<Player*>(player)->answer();
}

Strings Player::texts(int most) {
    Strings made(static_cast<std::size_t>(in.below(most)));
    for (std::string& text : made) text = in.text(24);
    return made;
}

void Player::grow(CGlutMenu& menu, int levels) {
    const int count = static_cast<int>(menu.items.size());
    for (int i = -1; i <= count; ++i) {
        const int kind = in.byte();
        if (kind & 1) menu.SetCheckState(i, (kind & 2) != 0);
        if (kind & 4) menu.SetMenuItemState(i, (kind & 8) != 0);
        if (levels == 0 || (kind & 16) == 0) continue;
        menu.AddSubMenu(i, texts(6), (kind & 32) != 0 ? nullptr : select, this, "");
        if (menu.GetSubMenu(i) != nullptr) grow(*menu.GetSubMenu(i), levels - 1);
    }
}

void Player::build() {
    Strings items = texts(6);
    items.push_back("last");
    bar.Initialise(1024, 768, 0, 0, 0, 0, "", items, 1.0F, 1.0F, true, false);
    bar.DefineKeyboardCallback(select, this);
    grow(bar, 2);
    bar.Resize(1.0F, 1.0F);
    bar.Activate();
}

void Player::react(CGlutMenu& menu, int item) {
    if (depth >= DEEPEST_CALL) return;
    ++depth;
    switch (in.below(16)) {
        case 0:
            bar.Deactive(true);
            break;
        case 1:
            menu.Deactive(in.oneIn(2));
            break;
        case 2:
            anyMenu()->DeleteSubMenu(in.below(5));
            break;
        case 3:
            grow(*anyMenu(), 2);
            break;
        case 4:
            build();
            break;
        case 5:
            showDialog();
            break;
        case 6:
            menu.SetMenuText(item, in.text(40));
            break;
        case 7:
            menu.SetMenuItemState(item, false);
            break;
        case 8: {
            Strings items = texts(5);
            menu.Initialise(800, 600, in.number(), in.number(), 0, 0, "", items, 1.0F, 1.0F,
                            menu.is_menu_bar, true);
            break;
        }
        case 9:
            playKey();
            break;
        case 10:
            playClick();
            break;
        default:
            menu.SetCheckState(item, !menu.GetCheckState(item));
            break;
    }
    --depth;
}

bool Player::answer() {
    if (depth >= DEEPEST_CALL) return true;
    ++depth;
    const int kind = in.byte();
    if (kind & 1) showDialog();
    if (kind & 2) build();
    if (kind & 4) anyDialog().KeyboardHandler(27, "");
    --depth;
    return (kind & 8) == 0;
}

void Player::initialise(CTextInput& dialog) {
    Strings some = texts(5), values = texts(5);
    const int left = in.number(), top = in.number(), length = in.below(64) - 1;
    switch (in.below(4)) {
        case 0:
            dialog.Initialise("T", "Label", in.text(60), left, top, length, answerText, this);
            break;
        case 1:
            dialog.Initialise("T", some, left, top, nullptr, nullptr);
            break;
        case 2:
            dialog.Initialise("T", some, values, left, top, length, answerForm, this);
            dialog.DefineFieldValues(in.below(4), texts(4), in.below(9) - 4);
            break;
        default:
            dialog.DefineButtons(texts(4));
            break;
    }
}

void Player::showDialog() {
    CTextInput& dialog = anyDialog();
    initialise(dialog);
    if (in.oneIn(2)) dialog.Center();
    dialog.Display();
}

void Player::playKey() {
    const int key = in.byte();
    stand_in::state.modifiers = in.byte();
    if (in.oneIn(2)) {
        bar.keyboard_callback(key);
    } else {
        bar.special_key_callback(key);
    }
}

// On an item as often as anywhere.
void Player::playClick() {
    int x = in.number();
    int y = in.number();
    if (in.oneIn(2)) {
        anyMenu()->GetBottomLeft(in.below(4), x, y);
        x += 5;
        y -= 10;
    }
    bar.mouse_callback(in.below(5), in.below(2), x, y);
}

void Player::playReshape() {
    stand_in::state.window_width = 1 + in.byte() * in.byte();
    stand_in::state.window_height = 1 + in.byte() * in.byte();
    bar.ReshapeCallback(stand_in::state.window_width, stand_in::state.window_height);
}

void Player::playEvent() {
    switch (in.below(12)) {
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
            return react(*anyMenu(), in.below(7) - 1);
        case 6:
        case 7:
            return playClick();
        default:
            return playKey();
    }
}

void Player::play() {
    for (int event = 0; event < MOST_EVENTS && !in.isEmpty(); ++event) {
        playEvent();
        const std::string complaint = soundness::complaint(bar, 2);
        require(complaint.empty(), complaint.c_str());
        require(stand_in::state.modelview_depth == 0 && stand_in::state.projection_depth == 0,
                "the matrix stacks are left as found");
        require(stand_in::state.misplaced_calls == 0 && !stand_in::state.in_shape,
                "shapes are drawn as OpenGL wants them");
        stand_in::state.calls.clear();
        stand_in::state.drawn.clear();
    }
    bar.Render();
}

void reset() {
    stand_in::reset();
    GlutMenu::stroked_font = GLUT_STROKE_ROMAN;
    CTextInput::cursor_visible = true;
    CGlutMenu menu;
    Strings items = {"any"};
    menu.Initialise(1024, 768, 0, 0, 0, 0, "", items, 1.0F, 1.0F, true, false);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    std::cout.setstate(std::ios::badbit);  // nothing is made of what is traced
    reset();
    Player(data, size).play();
    require(GlutMenu::input_field == nullptr && GlutMenu::num_dialogs_active == 0,
            "a dialog that goes is closed");
    return 0;
}
