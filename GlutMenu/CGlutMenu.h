// GlutMenu: menus and a modal dialog drawn with GLUT's stroke font and OpenGL immediate mode over
// the application's own picture.
//
// Everything here belongs to the one GLUT thread; nothing is locked. Coordinates are pixels of a
// space `screen_width` x `screen_height` with the origin at the top left and y growing downwards,
// laid out for a reference screen of 1024 x 768 and scaled to the current one. No operation throws
// or reports an error: an index outside a list is ignored by setters and reads as empty, false,
// null or -1. Trace lines go to std::cout, each flushed at its end.

#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace GlutMenu {

class CGlutMenu;
class CTextInput;

// Delivers a selection. `item` is the menu's own `selected_item`; `menu` is the menu that holds the
// item. The callback may do anything: open dialogs, close, rebuild or destroy any menu, exit.
using MenuCallback = void (*)(int& item, CGlutMenu* menu, void* user_data);

// Deliver the answer of a single-field dialog and of a form. `button` is the label of the clicked
// button, empty when the answer was given with Return. True accepts the answer and closes the
// dialog, false keeps it open. A callback may re-use, replace or destroy its own dialog.
using TextCallback = bool (*)(std::string button, std::string text, void* user_data);
using FormCallback = bool (*)(std::string button, std::vector<std::string> labels,
                              std::vector<std::string> values, void* user_data);

// Written by CGlutMenu::Initialise, read by nobody; GLUT thread, no lock.
extern float char_width;
// Height of a text line in pixels: written by Initialise and ReshapeCallback, read by all layout.
extern float char_height;
// The bitmap font whose 'H' sets font_scale_x: the application may write it before Initialise.
extern void* font;
// The font that text is measured with: the application may write it before Initialise.
extern void* stroked_font;
// Top of the chain of open dialogs, null when none: written by CTextInput, read by the handlers.
extern CTextInput* input_field;
// Number of open dialogs: written by CTextInput, read by the handlers and timer_func.
extern int num_dialogs_active;
// A dialog the application may keep here: written by it, cleared by that dialog's destructor.
extern CTextInput* text_input;

// Blinks the text cursor: for the value 1138 while a dialog is open it toggles
// CTextInput::cursor_visible and asks for a redisplay. It never arms a timer itself.
void timer_func(int value);

// One menu: the horizontal bar at the top of the window, or a vertical list owned by an item of
// another menu. The root owns the whole tree.
class CGlutMenu {
  public:
    CGlutMenu();
    // Destroys the submenus, in key order, and those an earlier Initialise forgot.
    ~CGlutMenu();
    CGlutMenu(const CGlutMenu&) = delete;
    CGlutMenu& operator=(const CGlutMenu&) = delete;

    // Sets the item list and lays the menu out; a bar lies at (0, 0) whatever x and y say. The
    // unnamed arguments are ignored. Existing submenus are forgotten: they leave the table but live
    // on, out of reach, until this menu goes. Needs GLUT's fonts. Returns whether there are
    // items.
    bool Initialise(int screen_w, int screen_h, int left, int top, int, int, std::string new_title,
                    std::vector<std::string>& new_items, float, float, bool menu_bar, bool submenu);

    void SetParent(CGlutMenu* new_parent);
    // Shows the menu afresh: highlight on item 0, no selection.
    void Activate();
    // Hides this menu and tells its parent; with `up` also every ancestor below the bar.
    void Deactive(bool up);
    void NotifyDeactivationToParent();
    bool IsMenuVisible() const;

    void SetMenuText(int i, std::string text);
    std::string GetMenuText(int i) const;
    // Index of the first item with exactly this text, -1 when none.
    int GetMenuPosition(std::string text) const;
    std::string GetTitle() const;
    // The state tables take any index; an index never written reads as false.
    void SetMenuItemState(int i, bool enabled);
    bool GetMenuItemState(int i) const;
    void SetCheckState(int i, bool checked);
    bool GetCheckState(int i) const;

    // Colour parts are 0 to 1; no redraw is asked for.
    void SetTextColour(float r, float g, float b, float a);
    void SetBackgroundColour(float r, float g, float b, float a);
    void SetBorderColour(float r, float g, float b, float a);

    // The callback for this menu's own items; AddSubMenu fills the same slot of a submenu.
    void DefineKeyboardCallback(MenuCallback new_callback, void* new_user_data);

    // The child at item i, null when none.
    CGlutMenu* GetSubMenu(int i) const;
    // Gives item i a submenu, destroying the one it had. False, and no change, only for i < 0.
    bool AddSubMenu(int i, std::vector<std::string> new_items, MenuCallback new_callback,
                    void* new_user_data, std::string new_title);
    // Destroys the child at item i; the item still counts as one with a (null) submenu.
    void DeleteSubMenu(int i);

    // Draws this menu, its open submenus and the open dialog over the whole viewport. The root
    // draws the same whatever OpenGL state the program has set, and leaves that as it found it,
    // except that blending is off and depth testing on when it returns.
    void Render();

    // The handlers return whether the event was consumed; an open dialog consumes every event.
    // The letters d, e, f and g share their codes with the arrow keys and act as such.
    bool keyboard_callback(int key);
    bool special_key_callback(int key);
    // x, y in window pixels; button 0 is the left one, state 0 a press.
    bool mouse_callback(int button, int state, int mouse_x, int mouse_y);
    // Whether a selection was delivered since the last Activate; stores the item only then.
    bool Selected(int& item) const;

    static float GetScaleX();
    static float GetScaleY();
    // Widths in pixels of text drawn with renderBitmapString.
    static float GetStringLength(std::string text);
    static float GetCharLength(char c);

    // i - 1 for a positive i, else i.
    static int Predecessor(int i);
    // The baseline-left point of item i.
    void GetBottomLeft(int i, int& bx, int& by) const;
    // The opposite corner of item i: top right on a bar; bottom right of the slot whose top is
    // base_y in a vertical menu.
    void GetTopRight(int i, int& tx, int& ty, int base_y) const;
    // Returns h. A bar's h is shrunk by font_scale_y; callers use it as it is.
    int GetWidthAndHeight(int& w, int& h) const;
    // Recomputes the box and places every submenu.
    void Resize(float fx, float fy);
    // For the root, on every window reshape: w, h are the new window size in pixels, positive.
    void ReshapeCallback(int w, int h);
    // These two do nothing.
    void ResizeChildren(float fx, float fy);
    void SetScreenResolution(int w, int h);

    // Drawing helpers shared with CTextInput. The first two enter and leave the menu space; the
    // others draw in the current colour at z = 0.
    static void setOrthographicProjection();
    static void restorePersectionProjection();
    static void renderQuad(float x0, float y0, float x1, float y1);
    static void renderSquare(float x0, float y0, float x1, float y1);
    static void renderLine(float line_x, float y0, float y1);
    // Always draws with GLUT's stroke Roman font, baseline-left at (x, y, z); the font is ignored.
    static void renderBitmapString(float text_x, float text_y, float text_z, void* bitmap_font,
                                   std::string text);

    // The drawing space and its scale over 1024 x 768: written by Initialise and ReshapeCallback.
    static float screen_width;
    static float screen_height;
    static float scale_x;
    static float scale_y;
    // Pixels per unit of the stroke font: written by Initialise and ReshapeCallback.
    static float font_scale_x;
    static float font_scale_y;

    bool initialised;
    bool active;
    int32_t highlighted_item;
    bool is_menu_bar;
    float text_colour[4];
    float background_colour[4];
    float border_colour[4];
    std::vector<std::string> items;
    std::string title;
    float x, y;
    float margin_x, margin_y;
    int32_t y_offset;
    int32_t item_width;
    bool item_selected;
    int32_t selected_item;
    int32_t width, height;
    int32_t submenu_x, submenu_y;
    int32_t bar_width;
    bool is_submenu;
    bool submenu_open;
    CGlutMenu* parent;
    std::map<int, CGlutMenu*> submenus;
    std::map<int, bool> check_states;
    std::map<int, bool> item_states;
    MenuCallback callback;
    void* user_data;

  private:
    // The corners of GetBottomLeft and GetTopRight, in no fixed order.
    struct Rectangle {
        int bx, by, tx, ty;
    };
    // A menu that may be destroyed while it is remembered.
    struct Watched {
        CGlutMenu* menu;
        std::weak_ptr<const bool> alive;
    };

    static void CloseUpwards(CGlutMenu* menu);
    static void CloseNearestSurvivor(const std::vector<Watched>& chain);
    Watched Watch();
    std::vector<Watched> WatchAncestry();
    void Clear();
    void ForgetSubMenus();
    void Disown(const CGlutMenu* child);
    void ResetItemStates();
    bool IsIndex(int i) const;
    bool HasSubMenu(int i) const;
    bool IsInVerticalMenu() const;

    void SetScreen(int w, int h);
    static void ScaleFont();
    float SlotHeight() const;
    void PlaceSubMenus(float fx, float fy);
    void FirstSubMenuPosition(int i);

    Rectangle ItemRectangle(int i) const;
    bool Contains(float menu_x, float menu_y) const;
    int ItemAt(float menu_x, float menu_y) const;
    bool ClickItem(int i);
    bool MouseOnSubMenu(CGlutMenu* child, int button, int state, int mouse_x, int mouse_y);
    void CloseAfterClick(const Watched& child);
    bool HandleOwnKey(int key, int i);
    bool HandleReturn(int i);
    bool Deliver();
    bool OpenSubMenu(int i);
    bool HandleEscape();
    bool MoveRight(int i);
    bool MoveLeft(int i);
    bool HighlightNext(int i);
    bool HighlightPrevious(int i);

    void RenderLevel();
    void RenderTree();
    void RenderBackground() const;
    void RenderItem(int i) const;
    void RenderHighlight(int i) const;
    void RenderMarker(int i, int bx, int by) const;

    CGlutMenu* owner;                   // who destroys this menu; null for one the user holds
    std::vector<CGlutMenu*> forgotten;  // children an Initialise dropped, destroyed with this menu
    std::shared_ptr<const bool> alive;  // expires with the menu: callbacks may destroy it
};

// A modal dialog: one labelled field (kind 1), a message (kind 2) or a form of fields (kind 3),
// each with a row of buttons. Constructed once, initialised for each use, shown with Display.
class CTextInput {
  public:
    CTextInput();
    // An open dialog closes without calling its callback.
    ~CTextInput();
    CTextInput(const CTextInput&) = delete;
    CTextInput& operator=(const CTextInput&) = delete;

    // Single field. left, top are the box's corner, max_chars the field's capacity. Returns false,
    // leaving the dialog without buttons, for a null callback.
    bool Initialise(std::string new_title, std::string new_label, std::string text, int left,
                    int top, int max_chars, TextCallback new_callback, void* new_user_data);
    // Message: the callback is kept but never called.
    bool Initialise(std::string new_title, std::vector<std::string>& lines, int left, int top,
                    TextCallback new_callback, void* new_user_data);
    // Form: labels and values belong together by index. The first field is loaded for editing with
    // the cursor at its end.
    bool Initialise(std::string new_title, std::vector<std::string>& labels,
                    std::vector<std::string>& values, int left, int top, int max_chars,
                    FormCallback new_callback, void* new_user_data);

    // "OK" and "Cancel".
    void DefineDefaultButtons();
    void DefineButtons(std::vector<std::string> labels);
    // Size the buttons and the box; needs GLUT's fonts.
    void SizeButtons();
    void WorkOutSize();
    // Moves the dialog to the middle of the window and keeps it there on later size changes.
    void Center();
    // Lets a field take only the listed values, chosen with left and right; an empty list lifts
    // that. An index outside the list counts as none chosen yet.
    void DefineFieldValues(int field, std::vector<std::string> values, int index);
    // Sizes the dialog again after the screen changed.
    void Reinitialise();
    // Puts the dialog on top of the open ones. One that is open already moves to the top.
    bool Display();

    // Forms: stores the edited text in the old field and loads the new one; bad indices are
    // ignored.
    void SetText(int new_field, int old_field);
    // For any valid field the text being edited, else an empty text.
    std::string GetText(int i) const;

    // Input; `button` is the label that an accepted answer is delivered with. Needs an open dialog.
    void KeyboardHandler(int key, std::string button);
    void SpecialKeyHandler(int key);
    // x, y in window pixels. True when the dialog took the press, on a button or not.
    bool MouseHandler(int button, int state, int mouse_x, int mouse_y);

    // Draws the dialogs beneath and this one; expects the menu space set up by CGlutMenu::Render.
    void Render();
    // A button whose frame spans left to right and starts at top, one text line high.
    void renderButton(int left, int top, int right, std::string text);
    // The rectangle of button i; valid once Render has computed the lower edge of the box.
    void GetButtonDimension(int i, int& left, int& top, int& right, int& lower);
    // Called by the root menu: fx, fy are the ratios of the new to the old screen size.
    void ReshapeCallback(float new_scale_x, float new_scale_y, float fx, float fy);

    // Colour parts are 0 to 1; no redraw is asked for.
    void SetTextColour(float r, float g, float b, float a);
    void SetBackgroundColour(float r, float g, float b, float a);
    void SetBorderColour(float r, float g, float b, float a);
    void SetHighlightColour(float r, float g, float b, float a);

    // Blink phase of the text cursor: written by timer_func and Initialise, read by Render.
    static bool cursor_visible;

    int32_t cursor_pos;
    float x, y;
    int32_t max_length;
    int32_t text_length;
    int32_t current_field;
    float label_width, field_width;
    std::string label;
    std::string result;
    std::vector<std::string> field_labels, field_values;
    std::map<int, std::vector<std::string>> value_lists;
    std::map<int, int> value_index;
    CTextInput* previous;
    TextCallback callback;
    FormCallback form_callback;
    std::string title;
    void* user_data;
    float text_colour[4];
    float background_colour[4];
    float border_colour[4];
    float highlight_colour[4];
    std::vector<std::string> message_lines;
    float width;
    std::string edit_text;
    int32_t kind;
    float margin_x, margin_y;
    std::vector<std::string> buttons;
    float button_width;
    float centred;
    int32_t bottom;

  private:
    void Reset(int32_t new_kind, std::string new_title, int left, int top, int max_chars);
    bool IsOpen() const;
    void Unlink();
    void Close();

    bool IsField(int i) const;
    bool HasText() const;
    // The values a field is limited to, null when it takes any text.
    const std::vector<std::string>* ValueList(int field) const;
    void Confirm(const std::string& button);
    bool Accepts(const std::string& button) const;
    void MoveToField(int field);
    void PreviousField();
    void NextField();
    void Edit(int key);
    void InsertCharacter(char c);
    void DeleteBackwards();
    void MoveCursor(int32_t position);
    void MoveLeft();
    void MoveRight();
    void ChooseValue(const std::vector<std::string>& values, int index);
    int ButtonAt(int px, int py);

    float FieldWidth() const;
    static int ButtonBottom(int top);

    void RenderBox() const;
    void RenderSingleField();
    void RenderForm();
    void RenderFormField(int field) const;
    float FieldTop(float row) const;
    void RenderFieldFrame(float row) const;
    void RenderChoice(const std::string& value, float baseline) const;
    void RenderEditedText(float row, float baseline) const;
    void RenderFormCursor(float left, float top) const;
    void RenderMessage();
    void RenderLabel(const std::string& text, float baseline) const;
    std::string TextBeforeCursor() const;
    bool ShowsCursor() const;
    void RenderCursor(float top) const;
    void RenderTitleBar() const;
    void RenderButtons();

    int32_t showings;                   // counts Display calls: a re-shown dialog stays open
    std::shared_ptr<const bool> alive;  // expires with the dialog: callbacks may destroy it
};

}  // namespace GlutMenu
