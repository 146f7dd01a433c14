"""What a test does to the screen as an X client of its own, which no tool on the screen can do."""

import ctypes
import time

Handle = ctypes.c_ulong  # of a window, a cursor, an atom
OVERRIDE_REDIRECT = 1 << 9  # which attribute is set

_x = ctypes.CDLL("libX11.so.6")
_fixes = ctypes.CDLL("libXfixes.so.3")


class Attributes(ctypes.Structure):
    """Xlib's XSetWindowAttributes."""

    _fields_ = [
        ("background_pixmap", Handle), ("background_pixel", Handle), ("border_pixmap", Handle),
        ("border_pixel", Handle), ("bit_gravity", ctypes.c_int), ("win_gravity", ctypes.c_int),
        ("backing_store", ctypes.c_int), ("backing_planes", Handle), ("backing_pixel", Handle),
        ("save_under", ctypes.c_int), ("event_mask", ctypes.c_long),
        ("do_not_propagate_mask", ctypes.c_long), ("override_redirect", ctypes.c_int),
        ("colormap", Handle), ("cursor", Handle),
    ]


class CursorImage(ctypes.Structure):
    """XFixes' picture of the mouse pointer as the screen shows it."""

    _fields_ = [
        ("x", ctypes.c_short), ("y", ctypes.c_short), ("width", ctypes.c_ushort),
        ("height", ctypes.c_ushort), ("xhot", ctypes.c_ushort), ("yhot", ctypes.c_ushort),
        ("serial", Handle), ("pixels", ctypes.POINTER(ctypes.c_ulong)),
        ("atom", Handle), ("name", ctypes.c_char_p),
    ]


_x.XOpenDisplay.restype = ctypes.c_void_p
_x.XOpenDisplay.argtypes = [ctypes.c_char_p]
_x.XDefaultRootWindow.restype = Handle
_x.XDefaultRootWindow.argtypes = [ctypes.c_void_p]
_x.XCreateSimpleWindow.restype = Handle
_x.XCreateSimpleWindow.argtypes = [
    ctypes.c_void_p, Handle, ctypes.c_int, ctypes.c_int, ctypes.c_uint, ctypes.c_uint,
    ctypes.c_uint, Handle, Handle]
_x.XChangeWindowAttributes.argtypes = [ctypes.c_void_p, Handle, Handle, ctypes.POINTER(Attributes)]
_x.XCreateFontCursor.restype = Handle
_x.XCreateFontCursor.argtypes = [ctypes.c_void_p, ctypes.c_uint]
_x.XDefineCursor.argtypes = [ctypes.c_void_p, Handle, Handle]
for _call in (_x.XMapRaised, _x.XDestroyWindow):
    _call.argtypes = [ctypes.c_void_p, Handle]
_x.XSync.argtypes = [ctypes.c_void_p, ctypes.c_int]
_x.XCloseDisplay.argtypes = [ctypes.c_void_p]
_x.XFree.argtypes = [ctypes.c_void_p]
_fixes.XFixesQueryExtension.argtypes = [
    ctypes.c_void_p, ctypes.POINTER(ctypes.c_int), ctypes.POINTER(ctypes.c_int)]
_fixes.XFixesGetCursorImage.restype = ctypes.POINTER(CursorImage)
_fixes.XFixesGetCursorImage.argtypes = [ctypes.c_void_p]


class XClient:
    """A connection to the screen, to be used as a context."""

    def __init__(self, screen):
        self._display = _x.XOpenDisplay(screen.display.encode())
        if not self._display:
            raise AssertionError("no connection to the screen")
        self._root = _x.XDefaultRootWindow(self._display)
        _fixes.XFixesQueryExtension(self._display, ctypes.c_int(), ctypes.c_int())

    def __enter__(self):
        return self

    def __exit__(self, *_):
        _x.XCloseDisplay(self._display)

    def _done(self):
        _x.XSync(self._display, 0)

    def destroy(self, window):
        """Destroys another client's window."""
        _x.XDestroyWindow(self._display, int(window))
        self._done()

    def cover(self, width, height):
        """Covers the screen with a window that no window manager touches; answers the window."""
        window = _x.XCreateSimpleWindow(self._display, self._root, 0, 0, width, height, 0, 0, 0xFF0000)
        attributes = Attributes(override_redirect=1)
        _x.XChangeWindowAttributes(self._display, window, OVERRIDE_REDIRECT,
                                   ctypes.byref(attributes))
        _x.XMapRaised(self._display, window)
        self._done()
        return window

    def pointer(self):
        """The picture of the mouse pointer as now shown: (width, height, pixels)."""
        image = _fixes.XFixesGetCursorImage(self._display)
        size = image.contents.width * image.contents.height
        picture = (image.contents.width, image.contents.height,
                   tuple(image.contents.pixels[:size]))
        _x.XFree(image)
        return picture

    def looks_of(self, shapes):
        """All that each of these shapes of the cursor font looks like, a moving one from moment to
        moment, with the pointer on a window of ours that covers the screen meanwhile."""
        window = self.cover(4096, 4096)
        looks = []
        for shape in shapes:
            cursor = _x.XCreateFontCursor(self._display, shape)
            _x.XDefineCursor(self._display, window, cursor)
            self._done()
            looks.append({self.pointer() for _ in range(100) if not time.sleep(0.02)})
        self.destroy(window)
        return looks
