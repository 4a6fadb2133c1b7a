import threading

from gi.repository import Gio, GLib

from desktop.screen_reader import connect

_NAME, _PATH = "org.freedesktop.portal.Desktop", "/org/freedesktop/portal/desktop"
_SETTINGS = "org.freedesktop.portal.Settings"
_APPEARANCE, _SCHEME = "org.freedesktop.appearance", "color-scheme"
_INTERFACE = f"""<node><interface name="{_SETTINGS}">
<method name="Read">
  <arg name="namespace" type="s"/><arg name="key" type="s"/><arg name="value" type="v" direction="out"/>
</method>
<signal name="SettingChanged">
  <arg name="namespace" type="s"/><arg name="key" type="s"/><arg name="value" type="v"/>
</signal>
</interface></node>"""


class Portal:
    """The part of a desktop portal that tells whether the person wants dark windows; a context manager.

    It answers on a thread of its own.
    """

    NO_PREFERENCE, DARK, LIGHT = range(3)

    def __init__(self, bus_address, scheme):
        self._address = bus_address
        self._scheme = scheme
        self._context = GLib.MainContext()
        self._loop = GLib.MainLoop(self._context)
        self._thread = threading.Thread(target=self._serve, daemon=True)
        self._ready = threading.Event()

    def __enter__(self):
        self._thread.start()
        self._ready.wait()
        return self

    def __exit__(self, *exception):
        self._loop.quit()
        self._thread.join()
        self._bus.close_sync(None)

    def choose(self, scheme):
        """As a person does while programs run."""
        self._scheme = scheme
        news = GLib.Variant("(ssv)", (_APPEARANCE, _SCHEME, GLib.Variant("u", scheme)))
        self._bus.emit_signal(None, _PATH, _SETTINGS, "SettingChanged", news)
        self._bus.flush_sync(None)

    def _serve(self):
        self._context.push_thread_default()
        self._bus = connect(self._address)
        interface = Gio.DBusNodeInfo.new_for_xml(_INTERFACE).interfaces[0]
        self._bus.register_object(_PATH, interface, self._answer, None, None)
        request = GLib.Variant("(su)", (_NAME, Gio.BusNameOwnerFlags.NONE))
        self._bus.call_sync("org.freedesktop.DBus", "/", "org.freedesktop.DBus", "RequestName", request, None,
                            Gio.DBusCallFlags.NONE, -1, None)
        self._ready.set()
        self._loop.run()
        self._context.pop_thread_default()

    # This call wraps the value twice.
    def _answer(self, _bus, _sender, _path, _interface, _method, parameters, invocation):
        if parameters.unpack() == (_APPEARANCE, _SCHEME):
            value = GLib.Variant("v", GLib.Variant("u", self._scheme))
            invocation.return_value(GLib.Variant("(v)", (value,)))
        else:
            invocation.return_dbus_error("org.freedesktop.portal.Error.NotFound", "there is no such setting")
