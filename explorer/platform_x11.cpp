#include "explorer/platform_x11.h"

#include <GL/glx.h>
#include <X11/Xatom.h>
#include <X11/Xlib.h>
#include <X11/Xutil.h>
#include <X11/cursorfont.h>

#include <array>
#include <cstdlib>
#include <iostream>

// After all others: it makes macros of min and max.
#include <X11/Xlibint.h>
#undef max
#undef min

namespace {

// The window whose destruction is watched for. Written once, before the main loop.
Window watchedWindow = None;

// It was destroyed. GLUT thread only, as all that Xlib calls back here.
bool destroyed = false;

// How Xlib reads a DestroyNotify, and what it does on an X error, when nobody watches.
Bool (*readDestroyNotify)(Display*, XEvent*, xEvent*) = nullptr;
XErrorHandler otherErrors = nullptr;

// freeglut has no callback for a DestroyNotify, but one for an UnmapNotify, which has the same
// fields at the same places. Called while Xlib reads; may not call Xlib.
Bool readDestruction(Display* display, XEvent* event, xEvent* wire) {
    const Bool wanted = readDestroyNotify(display, event, wire);
    if (event->xdestroywindow.window != watchedWindow) return wanted;
    destroyed = true;
    event->type = UnmapNotify;
    event->xunmap.from_configure = False;
    return wanted;
}

// What is still asked for a window that has gone is refused. The program cannot end in here, where
// Xlib waits for an answer; it does when freeglut reports the window as hidden.
int ignoreAfterDestruction(Display* display, XErrorEvent* error) {
    return destroyed ? 0 : otherErrors(display, error);
}

// Looks for a window manager's wish to close the window.
struct CloseRequest {
    Atom kind;
    bool found = false;
};

// Takes no event, so that Xlib shows all that have arrived. None of its functions may be called in
// here, and its type for an argument is this.
// NOLINTNEXTLINE(readability-non-const-parameter)
Bool noteCloseRequest(Display*, XEvent* event, XPointer argument) {
    auto& request = *static_cast<CloseRequest*>(static_cast<void*>(argument));
    const bool isOne =
        event->type == ClientMessage && static_cast<Atom>(event->xclient.data.l[0]) == request.kind;
    request.found = request.found || isOne;
    return False;
}

}  // namespace

bool hasXWindow() {
    return glXGetCurrentDisplay() != nullptr;
}

void setWindowClass() {
    Display* display = glXGetCurrentDisplay();
    if (display == nullptr) return;
    char instance[] = "tessary";
    char windowClass[] = "Tessary";
    XClassHint hint = {instance, windowClass};
    XSetClassHint(display, glXGetCurrentDrawable(), &hint);
}

bool windowIsToEnd() {
    Display* display = glXGetCurrentDisplay();
    if (display == nullptr) return false;
    CloseRequest request{.kind = XInternAtom(display, "WM_DELETE_WINDOW", False)};
    XEvent event;
    XCheckIfEvent(display, &event, noteCloseRequest, reinterpret_cast<XPointer>(&request));
    return request.found || destroyed;
}

void setUtf8Title(const std::string& text) {
    Display* display = glXGetCurrentDisplay();
    if (display == nullptr) return;
    const Atom name = XInternAtom(display, "_NET_WM_NAME", False);
    const Atom utf8 = XInternAtom(display, "UTF8_STRING", False);
    XChangeProperty(display, glXGetCurrentDrawable(), name, utf8, 8, PropModeReplace,
                    reinterpret_cast<const unsigned char*>(text.data()),
                    static_cast<int>(text.size()));
}

void setWindowIcon(const std::vector<unsigned long>& pictures) {
    Display* display = glXGetCurrentDisplay();
    if (display == nullptr) return;
    const Atom icon = XInternAtom(display, "_NET_WM_ICON", False);
    XChangeProperty(display, glXGetCurrentDrawable(), icon, XA_CARDINAL, 32, PropModeReplace,
                    reinterpret_cast<const unsigned char*>(pictures.data()),
                    static_cast<int>(pictures.size()));
}

void setPointer(Pointer look) {
    constexpr std::array<unsigned, 3> SHAPES = {XC_left_ptr, XC_crosshair, XC_watch};
    static std::array<Cursor, SHAPES.size()> cursors = {};
    static Cursor shown = None;
    Display* display = glXGetCurrentDisplay();
    if (display == nullptr) return;
    Cursor& cursor = cursors[static_cast<std::size_t>(look)];
    if (cursor == None) cursor = XCreateFontCursor(display, SHAPES[static_cast<std::size_t>(look)]);
    if (cursor == shown) return;
    shown = cursor;
    XDefineCursor(display, glXGetCurrentDrawable(), cursor);
}

void flushRequests() {
    if (Display* display = glXGetCurrentDisplay()) XFlush(display);
}

void displayThoughCovered() {
    Display* display = glXGetCurrentDisplay();
    if (display == nullptr) return;
    XEvent event = {};
    event.xvisibility.type = VisibilityNotify;
    event.xvisibility.display = display;
    event.xvisibility.window = glXGetCurrentDrawable();
    event.xvisibility.state = VisibilityPartiallyObscured;
    XPutBackEvent(display, &event);
}

void watchForDestruction() {
    Display* display = glXGetCurrentDisplay();
    if (display == nullptr || readDestroyNotify != nullptr) return;
    watchedWindow = glXGetCurrentDrawable();
    readDestroyNotify = XESetWireToEvent(display, DestroyNotify, readDestruction);
    otherErrors = XSetErrorHandler(ignoreAfterDestruction);
}

bool windowIsGone() {
    Display* display = glXGetCurrentDisplay();
    if (display == nullptr) return false;
    // A search that finds nothing reads all events that have arrived; asking for their number would
    // not, while older ones wait.
    XEvent event;
    XCheckTypedEvent(display, LASTEvent, &event);
    return destroyed;
}

void endWithoutWindow() {
    std::cerr << "The window was destroyed by another program" << std::endl;
    std::exit(1);
}
