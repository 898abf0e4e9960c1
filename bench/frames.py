"""Looks at parts of an X display and clicks on it, in a fraction of a millisecond: through Xlib itself, not through a
tool that is started for each look."""
import ctypes
import ctypes.util
import time

ALL_PLANES = 0xFFFFFFFF
Z_PIXMAP = 2
BETWEEN_LOOKS = 0.001  # seconds: looking without a pause would take a core from the program that is looked at


class XImage(ctypes.Structure):
    """The beginning of Xlib's XImage."""
    _fields_ = [("width", ctypes.c_int), ("height", ctypes.c_int), ("xoffset", ctypes.c_int), ("format", ctypes.c_int),
                ("data", ctypes.c_void_p), ("byte_order", ctypes.c_int), ("bitmap_unit", ctypes.c_int),
                ("bitmap_bit_order", ctypes.c_int), ("bitmap_pad", ctypes.c_int), ("depth", ctypes.c_int),
                ("bytes_per_line", ctypes.c_int)]


class Frames:
    """The pixels of one display."""

    def __init__(self, display):
        self._x = ctypes.CDLL(ctypes.util.find_library("X11"))
        self._test = ctypes.CDLL(ctypes.util.find_library("Xtst"))
        self._x.XOpenDisplay.restype = ctypes.c_void_p
        self._x.XDefaultRootWindow.restype = ctypes.c_ulong
        self._x.XGetImage.restype = ctypes.POINTER(XImage)
        self._x.XGetImage.argtypes = [ctypes.c_void_p, ctypes.c_ulong, *[ctypes.c_int] * 2, *[ctypes.c_uint] * 2,
                                      ctypes.c_ulong, ctypes.c_int]
        self._x.XDestroyImage.argtypes = [ctypes.c_void_p]
        self._display = ctypes.c_void_p(self._x.XOpenDisplay(display.encode()))
        self._root = self._x.XDefaultRootWindow(self._display)

    def place(self, window):
        """Place of a window on the screen, without its frame: x, y, width, height."""
        root = ctypes.c_ulong()
        ints = [ctypes.c_int() for _ in range(4)]
        sizes = [ctypes.c_uint() for _ in range(4)]
        handle = ctypes.c_ulong(int(window))
        self._x.XGetGeometry(self._display, handle, ctypes.byref(root), ctypes.byref(ints[0]), ctypes.byref(ints[1]),
                             *map(ctypes.byref, sizes))
        self._x.XTranslateCoordinates(self._display, handle, ctypes.c_ulong(self._root), 0, 0, ctypes.byref(ints[2]),
                                      ctypes.byref(ints[3]), ctypes.byref(root))
        return ints[2].value, ints[3].value, sizes[0].value, sizes[1].value

    def look(self, x, y, width, height):
        """The pixels of a part of the screen, as bytes."""
        image = self._x.XGetImage(self._display, self._root, x, y, width, height, ALL_PLANES, Z_PIXMAP)
        pixels = ctypes.string_at(image.contents.data, image.contents.bytes_per_line * height)
        self._x.XDestroyImage(image)
        return pixels

    def seconds_until(self, part, pixels, start, timeout=60):
        """Seconds from `start` until the part of the screen shows exactly these pixels."""
        while time.perf_counter() - start < timeout:
            seen = self.look(*part)
            now = time.perf_counter()
            if seen == pixels:
                return now - start
            time.sleep(BETWEEN_LOOKS)
        raise TimeoutError(f"the screen did not show at {part} what it showed before")

    def move(self, x, y):
        self._test.XTestFakeMotionEvent(self._display, -1, x, y, 0)
        self._x.XFlush(self._display)

    def click(self):
        """Presses and releases the first button where the pointer is; answers the moment of the release."""
        self._test.XTestFakeButtonEvent(self._display, 1, 1, 0)
        self._x.XFlush(self._display)
        time.sleep(0.05)
        start = time.perf_counter()
        self._test.XTestFakeButtonEvent(self._display, 1, 0, 0)
        self._x.XFlush(self._display)
        return start
