"""Observes the display's bell."""

import ctypes

# Numbers of the X keyboard extension.
_CORE_KEYBOARD = 0x100
_BELL_NOTIFY = 8


class Bell:
    """The number of bells since this object was made."""

    def __init__(self):
        self._x11 = ctypes.CDLL("libX11.so.6")
        self._x11.XOpenDisplay.restype = ctypes.c_void_p
        self._display = ctypes.c_void_p(self._x11.XOpenDisplay(None))
        assert self._display, "only an X display has a bell"
        number = ctypes.c_int()
        versions = [ctypes.byref(ctypes.c_int(1)), ctypes.byref(ctypes.c_int(0))]
        self._x11.XkbQueryExtension(self._display, None, ctypes.byref(number), None, *versions)
        self._event = number.value
        self._x11.XkbSelectEvents(self._display, _CORE_KEYBOARD, 1 << _BELL_NOTIFY, 1 << _BELL_NOTIFY)
        self._x11.XSync(self._display, 0)
        self._count = 0

    def close(self):
        self._x11.XCloseDisplay(self._display)

    def count(self):
        event = (ctypes.c_long * 24)()
        while self._x11.XPending(self._display):
            self._x11.XNextEvent(self._display, event)
            fields = ctypes.cast(event, ctypes.POINTER(_XkbAnyEvent)).contents
            self._count += fields.type == self._event and fields.xkb_type == _BELL_NOTIFY
        return self._count


class _XkbAnyEvent(ctypes.Structure):
    _fields_ = [("type", ctypes.c_int), ("serial", ctypes.c_ulong), ("send_event", ctypes.c_int),
                ("display", ctypes.c_void_p), ("time", ctypes.c_ulong), ("xkb_type", ctypes.c_int)]
