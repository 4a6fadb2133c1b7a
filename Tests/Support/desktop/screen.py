"""The X server as a person meets it: windows to look at, a pointer and a keyboard."""

import contextlib

from Xlib import XK, X, Xatom
from Xlib import display as xdisplay
from Xlib import error as xerror
from Xlib.ext import xtest
from Xlib.protocol import event

from desktop.geometry import Rectangle
from desktop.picture import Picture

_MODIFIERS = {"ctrl": "Control_L", "shift": "Shift_L", "alt": "Alt_L"}
_BUTTONS = {"left": 1, "right": 3}
_UNICODE = 0x01000000
_ICONIC = 3


class Screen:
    def __init__(self, name):
        self._display = xdisplay.Display(name)
        self._root = self._display.screen().root
        self.area = Rectangle(0, 0, self._root.get_geometry().width, self._root.get_geometry().height)

    def close(self):
        self._display.close()

    def paint(self, red, green, blue):
        """The surface behind all windows."""
        self._root.change_attributes(background_pixel=red << 16 | green << 8 | blue)
        self._root.clear_area()
        self._display.sync()

    # Windows

    def windows(self, pid):
        """What a program shows on the screen, icons in the tray included."""
        return [window for window in map(self._window, self._all(self._root))
                if window is not None and window.pid == pid]

    def focus(self):
        """The id of the window that the keys go to."""
        focus = self._display.get_input_focus().focus
        return getattr(focus, "id", focus)

    def has_owner(self, selection):
        return self._display.get_selection_owner(self._atom(selection)) != X.NONE

    @contextlib.contextmanager
    def manager_probe(self):
        """A function that tells whether the window manager takes care of windows.

        It asks for a window each time: a manager that is still starting loses what it is asked for, although it has
        announced itself, and a window that is asked for once then stays away for good.
        """
        window = self._root.create_window(0, 0, 1, 1, 0, X.CopyFromParent)

        def is_managed():
            window.map()
            return window.get_full_property(self._atom("WM_STATE"), X.AnyPropertyType) is not None

        try:
            yield is_managed
        finally:
            window.destroy()
            self._display.sync()

    def _all(self, parent):
        try:
            children = parent.query_tree().children
        except xerror.BadWindow:
            return
        for child in children:
            yield child
            yield from self._all(child)

    def _window(self, window):
        """Absent for a window that has gone meanwhile, and for one of no program."""
        try:
            pid = window.get_full_property(self._atom("_NET_WM_PID"), Xatom.CARDINAL)
            return Window(self, window, pid.value[0]) if pid else None
        except (xerror.BadWindow, xerror.BadDrawable):
            return None

    def _atom(self, name):
        return self._display.intern_atom(name)

    # Pointer and keyboard

    def move(self, x, y):
        xtest.fake_input(self._display, X.MotionNotify, x=x, y=y)
        self._display.sync()

    def click(self, x, y, button="left"):
        self.move(x, y)
        for kind in (X.ButtonPress, X.ButtonRelease):
            xtest.fake_input(self._display, kind, _BUTTONS[button])
        self._display.sync()

    def key(self, combination):
        """For example "Tab" or "ctrl+comma"."""
        *modifiers, name = combination.split("+")
        symbols = [XK.string_to_keysym(_MODIFIERS[modifier]) for modifier in modifiers]
        self._press(symbols, XK.string_to_keysym(name))

    def type(self, text):
        for character in text:
            self._press([], ord(character) if ord(character) < 0x100 else _UNICODE + ord(character))

    def _press(self, modifiers, symbol):
        keys = [self._key(modifier)[0] for modifier in modifiers]
        key, needs_shift = self._key(symbol)
        if needs_shift:
            keys.append(self._key(XK.XK_Shift_L)[0])
        for held in keys:
            xtest.fake_input(self._display, X.KeyPress, held)
        xtest.fake_input(self._display, X.KeyPress, key)
        xtest.fake_input(self._display, X.KeyRelease, key)
        for held in reversed(keys):
            xtest.fake_input(self._display, X.KeyRelease, held)
        self._display.sync()

    def _key(self, symbol):
        """The key for a symbol, and whether it takes the shift key."""
        found = [(key, level) for key, level in self._display.keysym_to_keycodes(symbol) if level < 2]
        if not found:
            found = [(self._teach(symbol), 0)]
        key, level = min(found, key=lambda place: place[1])
        return key, level == 1

    def _teach(self, symbol):
        """Gives a key that means nothing the symbol: the keyboard is an American one."""
        first, last = self._display.display.info.min_keycode, self._display.display.info.max_keycode
        mapping = self._display.get_keyboard_mapping(first, last - first + 1)
        key = first + max(index for index, symbols in enumerate(mapping) if not any(symbols))
        self._display.change_keyboard_mapping(key, [[symbol, symbol]])
        self._display.sync()
        change = event.MappingNotify(request=X.MappingKeyboard, first_keycode=key, count=1, sequence_number=0)
        self._display.refresh_keyboard_mapping(change)
        return key

    # Looking, and taking what was copied

    def picture(self, rectangle=None):
        x, y, width, height = rectangle or self.area
        data = self._root.get_image(x, y, width, height, X.ZPixmap, 0xFFFFFFFF).data
        rows = []
        for start in range(0, len(data), 4 * width):
            line = data[start:start + 4 * width]
            rows.append(list(zip(line[2::4], line[1::4], line[0::4])))
        return Picture(rows)

    def clipboard(self):
        """Its text; absent when there is none."""
        target = self._root.create_window(0, 0, 1, 1, 0, X.CopyFromParent)
        name = self._atom("TARNLY_TEST")
        target.convert_selection(self._atom("CLIPBOARD"), self._atom("UTF8_STRING"), name, X.CurrentTime)
        while (answer := self._display.next_event()).type != X.SelectionNotify:
            pass
        found = target.get_full_property(name, X.AnyPropertyType) if answer.property != X.NONE else None
        target.destroy()
        return found.value.decode() if found else None


class Window:
    """A window as it was when it was looked up."""

    def __init__(self, screen, window, pid):
        self._screen = screen
        self._window = window
        self.pid = pid
        self.id = window.id
        self.is_on_screen = window.get_attributes().map_state == X.IsViewable
        size = window.get_geometry()
        place = window.translate_coords(screen._root, 0, 0)
        self.area = Rectangle(-place.x, -place.y, size.width, size.height)
        self.title = self._text("_NET_WM_NAME")
        state = self._property("WM_STATE")
        self.is_minimized = state is not None and state[0] == _ICONIC
        self.is_managed = state is not None
        # Neither managed nor a popup: in another program's window.
        self.is_embedded = not self.is_managed and window.query_tree().parent != screen._root

    @property
    def has_frame(self):
        """Whether the window manager has put one around it."""
        extents = self._property("_NET_FRAME_EXTENTS")
        return extents is not None and any(extents)

    def _property(self, name):
        found = self._window.get_full_property(self._screen._atom(name), X.AnyPropertyType)
        return found.value if found else None

    def _text(self, name):
        value = self._property(name)
        return value.decode() if value else None
