import contextlib
import os
import shutil
import tempfile
import time
from pathlib import Path
from unittest import mock

from gi.repository import GLib

from desktop.geometry import Rectangle
from desktop.screen import Screen
from desktop.screen_reader import ScreenReader, call, connect
from desktop.servers import PATIENCE, Servers

_BUS_CONFIG = """<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-BUS Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>unix:path={socket}</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
"""

_TRAY_CONFIG = """rounded = 0
background_color = #dcdcdc 100
panel_items = TS
panel_position = {edge} right
panel_size = 100% {height}
panel_background_id = 1
systray_padding = 4 4 4
systray_icon_size = {icon}
"""
_TRAY_COLOUR = (0xDC, 0xDC, 0xDC)

# What would tell a program of the person's own desktop.
_FOREIGN = ("WAYLAND_DISPLAY", "XDG_CURRENT_DESKTOP", "DESKTOP_SESSION", "KDE_FULL_SESSION",
            "SESSION_MANAGER", "AT_SPI_BUS_ADDRESS", "QT_QPA_PLATFORMTHEME", "QT_STYLE_OVERRIDE", "QT_SCALE_FACTOR",
            "QT_SCREEN_SCALE_FACTORS", "QT_FONT_DPI", "XMODIFIERS", "QT_IM_MODULE", "LANGUAGE", "TARNLY_TRANSLATIONS")


class Desktop:
    """A context manager that starts all but the tray; at its end nothing is left."""

    def __init__(self, width=1024, height=700):
        self._size = f"{width}x{height}x24"
        self._folder = Path(tempfile.mkdtemp(prefix="tarnly-desktop-"))
        self._servers = Servers(self._folder)
        self._tray = None
        self._ends = contextlib.ExitStack()
        self._ends.callback(shutil.rmtree, self._folder, ignore_errors=True)
        self._ends.callback(self._servers.end_all)

    def __enter__(self):
        try:
            self._start()
        except BaseException:
            self._ends.close()
            raise
        return self

    def __exit__(self, *exception):
        self._ends.close()

    def start_tray(self, edge="top", icon_size=22):
        """Returns when it takes icons."""
        config = self._folder / "tray"
        config.write_text(_TRAY_CONFIG.format(edge=edge, height=icon_size + 8, icon=icon_size))
        self._tray = self._servers.start("tint2", "-c", str(config), environment=self._own_environment)
        self._wait(lambda: self.screen.has_owner("_NET_SYSTEM_TRAY_S0"), "the tray")
        bottom = self.screen.area.height - 1
        corner = Rectangle(0, 0 if edge == "top" else bottom, 1, 1)
        self._wait(lambda: self.screen.picture(corner).background() == _TRAY_COLOUR, "the tray's background")

    def end_tray(self):
        self._servers.end(self._tray)
        self._wait(lambda: not self.screen.has_owner("_NET_SYSTEM_TRAY_S0"), "the end of the tray")

    def _start(self):
        own = self._ends.enter_context(mock.patch.dict(os.environ))
        for name in _FOREIGN:
            own.pop(name, None)
        self.environment = {
            "DISPLAY": self._start_server(),
            "XDG_RUNTIME_DIR": str(self._new_folder("run")),
            "DBUS_SESSION_BUS_ADDRESS": f"unix:path={self._folder / 'bus'}",
            "DBUS_SYSTEM_BUS_ADDRESS": f"unix:path={self._folder / 'no-bus'}",
            "QT_QPA_PLATFORM": "xcb",
            "QT_LINUX_ACCESSIBILITY_ALWAYS_ON": "1",
            "LC_ALL": "C.UTF-8",
        }
        home = str(self._new_folder("home"))
        self._own_environment = dict(os.environ) | self.environment | {
            "HOME": home, "XDG_CONFIG_HOME": home, "XDG_CACHE_HOME": home, "XDG_DATA_HOME": home}
        self.screen = Screen(self.environment["DISPLAY"])
        self._ends.callback(self.screen.close)
        self.screen.paint(0x4A, 0x60, 0x72)
        self._servers.start("openbox", environment=self._own_environment)
        self._start_buses()
        self.reader = ScreenReader(self.bus_address)
        self._ends.callback(self.reader.close)
        with self.screen.manager_probe() as is_managed:
            self._wait(is_managed, "the window manager")

    @property
    def bus_address(self):
        return self.environment["DBUS_SESSION_BUS_ADDRESS"]

    def _start_server(self):
        """The X server chooses the first display that is free, and says so when it takes clients."""
        reading, writing = os.pipe()
        with open(reading, "rb") as told:
            self._servers.start("Xvfb", "-displayfd", str(writing), "-screen", "0", self._size, "-dpi", "96",
                                "-nolisten", "tcp", pass_fds=[writing])
            os.close(writing)
            number = told.readline().decode().strip()
        assert number, f"the X server has ended:\n{self._servers.log()}"
        return f":{number}"

    def _start_buses(self):
        config = self._folder / "bus.conf"
        config.write_text(_BUS_CONFIG.format(socket=self._folder / "bus"))
        self._servers.start("dbus-daemon", f"--config-file={config}", "--nofork", "--nopidfile")
        self._wait(self._has_bus, "the bus")
        self._servers.start("/usr/libexec/at-spi-bus-launcher", "--launch-immediately",
                            environment=self._own_environment)
        self._wait(self._has_accessibility_bus, "the accessibility bus")

    def _has_bus(self):
        """Whether it takes clients: its socket is there a moment before."""
        try:
            connect(self.bus_address).close_sync(None)
            return True
        except GLib.Error:
            return False

    def _has_accessibility_bus(self):
        bus = connect(self.bus_address)
        try:
            return call(bus, "org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus", "GetAddress")[0]
        except GLib.Error:
            return None
        finally:
            bus.close_sync(None)

    def _new_folder(self, name):
        folder = self._folder / name
        folder.mkdir(mode=0o700)
        return folder

    def _wait(self, condition, what):
        deadline = time.monotonic() + PATIENCE
        while not condition():
            ended = self._servers.ended()
            assert not ended, f"{what} does not come: {ended} ended\n{self._servers.log()}"
            assert time.monotonic() < deadline, f"{what} does not come within {PATIENCE} s\n{self._servers.log()}"
            time.sleep(0.01)
