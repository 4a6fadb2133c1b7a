"""The programs as assistive technology sees them: names, roles and states instead of dots."""

import contextlib

import gi

gi.require_version("Gio", "2.0")
from gi.repository import Gio, GLib  # noqa: E402

from desktop.geometry import Rectangle  # noqa: E402

_REGISTRY = "org.a11y.atspi.Registry"
_ROOT = "/org/a11y/atspi/accessible/root"
_ACCESSIBLE = "org.a11y.atspi.Accessible"
_STATES = {"checked": 4, "enabled": 8, "focusable": 11, "focused": 12, "selected": 23, "showing": 25}
_PASSWORD_FIELD = 40
_ATTEMPTS = 20
_REPLY_MILLISECONDS = 60_000


def connect(address):
    flags = Gio.DBusConnectionFlags.AUTHENTICATION_CLIENT | Gio.DBusConnectionFlags.MESSAGE_BUS_CONNECTION
    return Gio.DBusConnection.new_for_address_sync(address, flags, None, None)


def call(bus, service, path, interface, method, *arguments, signature=""):
    """The values of the reply."""
    parameters = GLib.Variant(f"({signature})", arguments)
    return bus.call_sync(service, path, interface, method, parameters, None, Gio.DBusCallFlags.NONE,
                         _REPLY_MILLISECONDS, None).unpack()


class ScreenReader:
    """Connected to the accessibility bus that a session bus names."""

    def __init__(self, session_address):
        session = connect(session_address)
        address, = call(session, "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress")
        session.close_sync(None)
        self._bus = connect(address)
        self._popups = {}
        self._bus.signal_subscribe(None, "org.a11y.atspi.Event.Object", "StateChanged", None, None,
                                   Gio.DBusSignalFlags.NONE, self._state_changed)
        call(self._bus, _REGISTRY, "/org/a11y/atspi/registry", _REGISTRY, "RegisterEvent",
             "object:state-changed:showing", signature="s")

    def close(self):
        self._bus.close_sync(None)

    def knows(self, pid):
        """Whether a program tells what happens in it: it begins a while after its start."""
        with contextlib.suppress(GLib.Error):
            return self._application(pid) is not None
        return False

    def windows(self, pid):
        """The windows of a program, and what it has popped up."""
        self._hear()
        with contextlib.suppress(GLib.Error):
            root = self._application(pid)
            if root is not None:
                popups = [popup for popup in self._popups.values() if popup.service == root.service]
                return root.children() + [popup for popup in popups if popup.is_("showing")]
        return []

    def _application(self, pid):
        for application in Element(self._bus, _REGISTRY, _ROOT).children():
            with contextlib.suppress(GLib.Error):  # it may have ended
                if self._pid(application.service) == pid:
                    return application
        return None

    def _pid(self, service):
        bus = "org.freedesktop.DBus"
        return call(self._bus, bus, "/", bus, "GetConnectionUnixProcessID", service, signature="s")[0]

    # Popups are no children of their application: one learns of them when they appear.
    def _state_changed(self, _bus, sender, path, _interface, _signal, parameters):
        state, is_so = parameters.unpack()[:2]
        if state != "showing":
            return
        if not is_so:
            self._popups.pop((sender, path), None)
            return
        element = Element(self._bus, sender, path)
        with contextlib.suppress(GLib.Error):
            if element.parent().path == _ROOT and element not in element.parent().children():
                self._popups[(sender, path)] = element

    def _hear(self):
        context = GLib.MainContext.default()
        while context.iteration(False):
            pass


class Element:
    """A widget or a window. Raises `GLib.Error` once it has gone."""

    def __init__(self, bus, service, path):
        self._bus = bus
        self.service = service
        self.path = path

    def __eq__(self, other):
        return isinstance(other, Element) and (self.service, self.path) == (other.service, other.path)

    def __hash__(self):
        return hash((self.service, self.path))

    def __repr__(self):
        return f"{self.role} {self.name!r}"

    @property
    def name(self):
        return self._get(_ACCESSIBLE, "Name")

    @property
    def role(self):
        return self._call(_ACCESSIBLE, "GetRoleName")[0]

    @property
    def is_password_field(self):
        return self._call(_ACCESSIBLE, "GetRole")[0] == _PASSWORD_FIELD

    @property
    def area(self):
        of_the_screen = 0
        extents, = self._call("org.a11y.atspi.Component", "GetExtents", of_the_screen, signature="u")
        return Rectangle(*extents)

    @property
    def text(self):
        """What stands in a text field, as far as it tells."""
        return self._call("org.a11y.atspi.Text", "GetText", 0, -1, signature="ii")[0]

    def is_(self, state):
        low, _high = self._call(_ACCESSIBLE, "GetState")[0]
        return bool(low >> _STATES[state] & 1)

    def parent(self):
        return Element(self._bus, *self._get(_ACCESSIBLE, "Parent"))

    def children(self):
        return [Element(self._bus, *place) for place in self._call(_ACCESSIBLE, "GetChildren")[0]]

    def descendants(self):
        for child in self.children():
            yield child
            yield from child.descendants()

    def showing(self, *roles):
        """The descendants on the screen that have one of these roles, from top to bottom."""
        return _steadily(lambda: self._showing(roles))

    def names(self, *roles):
        """The names of those."""
        return _steadily(lambda: [element.name for element in self._showing(roles)])

    def _showing(self, roles):
        found = [(element.area, element) for element in self.descendants()
                 if element.role in roles and element.is_("showing")]
        return [element for _, element in sorted(found, key=lambda each: (each[0].y, each[0].x))]

    def _get(self, interface, name):
        return self._call("org.freedesktop.DBus.Properties", "Get", interface, name, signature="ss")[0]

    def _call(self, interface, method, *arguments, signature=""):
        return call(self._bus, self.service, self.path, interface, method, *arguments, signature=signature)


def _steadily(ask):
    """Asks anew when something has gone meanwhile."""
    for _ in range(_ATTEMPTS - 1):
        with contextlib.suppress(GLib.Error):
            return ask()
    return ask()
