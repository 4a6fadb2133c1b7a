import threading

from gi.repository import Gio, GLib

from desktop.screen_reader import call, connect

_NAME = "org.kde.StatusNotifierWatcher"
_PATH = "/StatusNotifierWatcher"
_ITEM = "/StatusNotifierItem"
_INTERFACE = """<node><interface name="org.kde.StatusNotifierWatcher">
  <method name="RegisterStatusNotifierItem"><arg type="s" direction="in"/></method>
  <method name="RegisterStatusNotifierHost"><arg type="s" direction="in"/></method>
  <property name="RegisteredStatusNotifierItems" type="as" access="read"/>
  <property name="IsStatusNotifierHostRegistered" type="b" access="read"/>
  <property name="ProtocolVersion" type="i" access="read"/>
  <signal name="StatusNotifierHostRegistered"/>
  <signal name="StatusNotifierHostUnregistered"/>
</interface></node>"""


_NOTICES_NAME, _NOTICES_PATH = "org.freedesktop.Notifications", "/org/freedesktop/Notifications"
_NOTICES = """<node><interface name="org.freedesktop.Notifications">
  <method name="Notify">
    <arg type="s" direction="in"/><arg type="u" direction="in"/><arg type="s" direction="in"/>
    <arg type="s" direction="in"/><arg type="s" direction="in"/><arg type="as" direction="in"/>
    <arg type="a{sv}" direction="in"/><arg type="i" direction="in"/><arg type="u" direction="out"/>
  </method>
</interface></node>"""


class StatusNotifier:
    """A tray over D-Bus, without a picture: the watcher that icons register with, whose host comes and goes; and
    the desktop's notifications, as pairs of title and text in `notices`.

    A context manager. Runs on a thread of its own, since icons ask while a test waits.
    """

    def __init__(self, bus_address, has_host=True):
        self._bus_address = bus_address
        self._has_host = has_host
        self.items = []
        self.notices = []
        self._context = GLib.MainContext()
        self._loop = GLib.MainLoop(self._context)
        self._ready = threading.Event()
        self._thread = threading.Thread(target=self._serve, daemon=True)

    def __enter__(self):
        self._thread.start()
        assert self._ready.wait(30), "the watcher does not come up"
        return self

    def __exit__(self, *exception):
        self._loop.quit()
        self._thread.join()

    def set_host(self, has_host):
        self._has_host = has_host
        name = "StatusNotifierHostRegistered" if has_host else "StatusNotifierHostUnregistered"
        self._bus.emit_signal(None, _PATH, _NAME, name, None)

    def activate(self, x, y):
        """As a click on the latest icon."""
        call(self._bus, self.items[-1], _ITEM, "org.kde.StatusNotifierItem", "Activate", x, y, signature="ii")

    def _serve(self):
        self._context.push_thread_default()
        self._bus = connect(self._bus_address)
        interface = Gio.DBusNodeInfo.new_for_xml(_INTERFACE).interfaces[0]
        self._bus.register_object(_PATH, interface, self._called, self._asked, None)
        notices = Gio.DBusNodeInfo.new_for_xml(_NOTICES).interfaces[0]
        self._bus.register_object(_NOTICES_PATH, notices, self._notified, None, None)
        Gio.bus_own_name_on_connection(self._bus, _NOTICES_NAME, Gio.BusNameOwnerFlags.NONE, None, None)
        Gio.bus_own_name_on_connection(self._bus, _NAME, Gio.BusNameOwnerFlags.NONE,
                                       lambda *_: self._ready.set(), None)
        self._loop.run()
        self._bus.close_sync(None)
        self._context.pop_thread_default()

    def _called(self, _bus, sender, _path, _interface, method, _arguments, invocation):
        if method == "RegisterStatusNotifierItem":
            self.items.append(sender)
        invocation.return_value(None)

    def _notified(self, _bus, _sender, _path, _interface, _method, arguments, invocation):
        _program, _replaced, _icon, title, text, *_ = arguments.unpack()
        self.notices.append((title, text))
        invocation.return_value(GLib.Variant("(u)", (len(self.notices),)))

    def _asked(self, _bus, _sender, _path, _interface, name):
        return {
            "RegisteredStatusNotifierItems": GLib.Variant("as", self.items),
            "IsStatusNotifierHostRegistered": GLib.Variant("b", self._has_host),
            "ProtocolVersion": GLib.Variant("i", 0),
        }[name]
