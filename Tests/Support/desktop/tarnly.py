import contextlib
import re
import time

from client import Client
from desktop.geometry import Rectangle
from gi.repository import GLib
from harness import executable, reserved_port, wait_until

PANEL, SETTINGS, ADDRESSES, REACH = "Tarnly", "Tarnly Settings", "Tarnly Addresses", "Tarnly Test from a Phone"
# Sooner after the panel's end, a click on the icon counts as the one that ended it.
SAME_CLICK = 0.4
BUTTON, LABEL, MENU, MENU_ITEM = "push button", "label", "popup menu", "menu item"
LIST_ITEM = "list item"


class Tarnly:
    """The companion on a desktop, as a person handles it, where the desktop enlarges it by `scale`.

    It has been started there before, unless this is its `first_start`. `home` is the folder of its data and its configuration; given again, both are there again. `prefix` is a
    command that becomes the program.
    """

    def __init__(self, desktop, programs, *options, home=None, sim_port=None, prefix=(), scale=1,
                 first_start=False, **environment):
        self.desktop = desktop
        self.screen = desktop.screen
        self._programs = programs
        self.home = home or programs.new_folder()
        self.data = self.home / "data" / "Tarnly"
        self.settings_file = self.data / "settings.json"
        self.autostart_entry = self.home / "config" / "autostart" / "tarnly.desktop"
        any_port = [] if "--port" in options else ["--port", 0]
        self.options = ["--sim-port", sim_port or nobody_there(programs), *any_port, *options]
        self.scale = scale
        if not first_start:
            self.data.mkdir(parents=True, mode=0o700, exist_ok=True)
            with contextlib.suppress(FileExistsError), open(self.data / "desktop.json", "x") as memory:
                memory.write('{"introduced":true,"knownDevices":[]}')
        self.environment = desktop.environment | environment | {
            "HOME": str(self.home), "XDG_CONFIG_HOME": str(self.home / "config"),
            "XDG_DATA_HOME": str(self.home / "data"), "QT_SCALE_FACTOR": str(scale)}
        self.program = programs.start(*prefix, executable("tarnly"), *self.options, **self.environment)

    def start_again(self, *options):
        """Another start with the same options and these; its program."""
        return self._programs.start("tarnly", *self.options, *options, **self.environment)

    # What is on the screen

    def window(self, title):
        """Absent while it is not on the screen."""
        return next((window for window in self._windows() if window.title == title), None)

    def has_windows(self):
        return bool(self._windows())

    def titles(self):
        """Of the windows on the screen."""
        return {window.title for window in self._windows()}

    def _windows(self):
        return [window for window in self.screen.windows(self.program.pid)
                if window.title and window.is_on_screen and not window.is_embedded]

    def icon(self):
        """Where it is in the tray, once it is there."""
        return wait_until(self.find_icon, "the icon in the tray")

    def wait_for_reader(self):
        """Until what it opens is told to assistive technology, which learns of a popup only when that appears."""
        wait_until(lambda: self.desktop.reader.knows(self.program.pid), "what the program tells")

    def find_icon(self):
        windows = self.screen.windows(self.program.pid)
        return next((window.area for window in windows if window.is_embedded and window.is_on_screen), None)

    # What assistive technology finds

    def view(self, name):
        """The window or popup of that name, once it is where it stays."""
        return wait_until(lambda: self._find_placed_view(name), f"a window {name!r}")

    def _find_placed_view(self, name):
        view, window = self.find_view(name), self.window(name)
        area = view and window and _told(lambda: self.area(view))
        is_placed = area and all(abs(told - real) < self.scale for told, real in zip(area, window.area))
        return view if is_placed else None

    def focused_view(self, name):
        """The window, once it takes the keys."""
        view = self.view(name)
        wait_until(lambda: self.focused(view) and self._takes_keys(name), f"the focus in {name!r}")
        return view

    def _takes_keys(self, name):
        """What the program believes may be on its way only, or over already. A popup gets the keys by a grab."""
        window = self.window(name)
        return window and (not window.is_managed or window.id == self.screen.focus())

    def find_view(self, name):
        return _told(lambda: next((view for view in self.desktop.reader.windows(self.program.pid)
                                   if view.name == name and view.role != MENU), None))

    def menu(self):
        return wait_until(self.find_menu, "a menu")

    def find_menu(self):
        return _told(lambda: next((view for view in self.desktop.reader.windows(self.program.pid)
                                   if view.role == MENU), None))

    def element(self, view, role, name):
        """A widget on the screen, once it is there."""
        return wait_until(lambda: self._find(view, role, name), f"{role} {name!r} in {view!r}")

    def _find(self, view, role, name):
        return _told(lambda: next((element for element in view.showing(role) if element.name == name), None))

    def area(self, element):
        """Where it is on the screen: programs tell it before the enlargement."""
        return Rectangle(*(round(self.scale * number) for number in element.area))

    def texts(self, name=PANEL):
        """The captions of a window, from top to bottom; none while it is not there."""
        view = self.find_view(name)
        return _told(lambda: view.names(LABEL)) or [] if view else []

    def wait_for_text(self, pattern, name=PANEL):
        """The match of the first caption that `pattern` is found in."""
        pattern = re.compile(pattern)
        return wait_until(lambda: next(filter(None, map(pattern.search, self.texts(name))), None),
                          f"a text {pattern.pattern!r} in {name!r}")

    def focused(self, view):
        """The name of the widget that takes the keys. The current item of a list always claims to be it."""
        return _told(lambda: next((element.name for element in view.descendants()
                                   if element.is_("focused") and element.role != LIST_ITEM), None))

    # What a person does

    def click(self, area, button="left"):
        self.screen.click(*area.centre, button)

    def press(self, view, name, role=BUTTON):
        self.click(self.area(self.element(view, role, name)))

    def tab(self, view):
        """The name of the widget to which the tab key leads."""
        before = self.focused(view)
        self.screen.key("Tab")
        return wait_until(lambda: self.focused(view) != before and self.focused(view), "the next focus")

    def tab_to(self, view, name):
        if self.focused(view) != name:
            wait_until(lambda: self.tab(view) == name, f"a way to {name!r} by the tab key")

    def open_panel(self):
        """By a click on the icon."""
        self.wait_for_reader()
        self.click(self.icon())
        return self.focused_view(PANEL)

    def open_menu(self):
        self.wait_for_reader()
        self.click(self.icon(), "right")
        return self.menu()

    def open_settings(self):
        self.press(self.open_panel(), "Settings…")
        return self.focused_view(SETTINGS)

    def ask_to_close(self):
        """Closes the panel's window as its frame does, and returns the question that comes, once it takes the keys."""
        self.focused_view(PANEL)
        self.screen.key("alt+F4")
        return wait_until(self._find_focused_question, "the question")

    def _find_focused_question(self):
        return _told(lambda: next((view for view in self.desktop.reader.windows(self.program.pid)
                                   if "Quit Tarnly?" in view.names(LABEL)
                                   and any(element.is_("focused") for element in view.showing(BUTTON))), None))

    def wait_for_no_window(self, title):
        wait_until(lambda: self.window(title) is None, f"the end of {title!r}")

    def wait_for_no_panel(self):
        """Until a click on the icon opens it again."""
        self.wait_for_no_window(PANEL)
        time.sleep(SAME_CLICK)

    def port(self):
        """Which the panel tells, while it is open."""
        return int(self.wait_for_text(r"^Listening on port (\d+), ").group(1))

    def client(self, port, password=None, paired=True):
        client = self._programs.close_at_end(Client(port))
        if paired:
            client.pair(password)
        return client


def nobody_there(programs):
    """A port at which no simulator answers."""
    stack = programs.close_at_end(contextlib.ExitStack())
    return stack.enter_context(reserved_port())


def _told(ask):
    """What a program tells; nothing when what was asked about has gone meanwhile."""
    try:
        return ask()
    except GLib.Error:
        return None
