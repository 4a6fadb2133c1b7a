"""Trays over D-Bus, as most desktops have them now: their host comes and goes apart from its watcher."""

import json

import pytest
from Xlib import X
from Xlib import display as xdisplay
from Xlib.ext import xtest

from desktop import Desktop, Tarnly
from desktop.notifier import StatusNotifier
from desktop.tarnly import PANEL
from harness import wait_until


@pytest.fixture(scope="module")
def desktop():
    with Desktop() as started:
        yield started


def wait_for_icon(notifier, count=1):
    wait_until(lambda: len(notifier.items) == count, f"icon number {count}")


def test_a_host_gets_an_icon_whose_activation_opens_and_closes_the_panel(desktop, programs):
    with StatusNotifier(desktop.bus_address) as notifier:
        tarnly = Tarnly(desktop, programs)
        wait_for_icon(notifier)
        assert not tarnly.has_windows()
        tarnly.wait_for_reader()
        notifier.activate(500, 5)
        assert tarnly.screen.area.contains(tarnly.focused_view(PANEL).area)
        tarnly.screen.key("Escape")
        tarnly.wait_for_no_panel()
        notifier.activate(500, 5)
        tarnly.view(PANEL)
        notifier.activate(500, 5)
        tarnly.wait_for_no_window(PANEL)


def test_a_watcher_alone_is_no_tray_and_its_host_may_come_later(desktop, programs):
    with StatusNotifier(desktop.bus_address, has_host=False) as notifier:
        tarnly = Tarnly(desktop, programs)
        wait_until(lambda: tarnly.window(PANEL), "the window")
        assert not notifier.items
        notifier.set_host(True)
        wait_for_icon(notifier)
        tarnly.wait_for_no_window(PANEL)


def test_a_host_that_goes_leaves_a_window_and_gets_an_icon_when_it_is_back(desktop, programs):
    with StatusNotifier(desktop.bus_address) as notifier:
        tarnly = Tarnly(desktop, programs)
        wait_for_icon(notifier)
        notifier.set_host(False)
        wait_until(lambda: tarnly.window(PANEL), "the window")
        notifier.set_host(True)
        wait_for_icon(notifier, 2)
        tarnly.wait_for_no_window(PANEL)


def test_a_watcher_that_ends_leaves_a_window(desktop, programs):
    with StatusNotifier(desktop.bus_address) as notifier:
        tarnly = Tarnly(desktop, programs)
        wait_for_icon(notifier)
    wait_until(lambda: tarnly.window(PANEL), "the window")


def test_a_recording_that_cannot_be_written_is_told_by_one_notification(desktop, programs):
    home = programs.new_folder()
    (home / "data" / "Tarnly").mkdir(parents=True)
    (home / "data" / "Tarnly" / "Recordings").write_text("in the way of the folder")
    with StatusNotifier(desktop.bus_address) as notifier:
        tarnly = Tarnly(desktop, programs, home=home)
        wait_for_icon(notifier)
        tarnly.wait_for_reader()
        notifier.activate(500, 5)
        client = tarnly.client(tarnly.port())
        client.data("recording_start")
        wait_until(lambda: notifier.notices, "a notification")
        tarnly.wait_for_text(r"^Recording for (0:(0[2-9]|[1-5]\d)|[1-9])")
        (title, text), = notifier.notices
        assert title == "The recording cannot be written" and "Recordings" in text


def test_what_is_told_before_there_is_an_icon_is_told_once_there_is(desktop, programs):
    home = programs.new_folder()
    (home / "data" / "Tarnly").mkdir(parents=True)
    (home / "data" / "Tarnly" / "Recordings").write_text("in the way of the folder")
    with StatusNotifier(desktop.bus_address, has_host=False) as notifier:
        tarnly = Tarnly(desktop, programs, "--background", home=home)

        def status():
            ended = programs.run("tarnly", "--status", "--data-dir", tarnly.data)
            return json.loads(ended.output) if ended.status == 0 else {}

        client = tarnly.client(wait_until(lambda: status().get("port"), "the port"))
        client.data("recording_start")
        wait_until(lambda: (status().get("recording") or {}).get("running_for_s", 0) > 3, "its news at the windows")
        assert not notifier.items and not notifier.notices
        notifier.set_host(True)
        wait_until(lambda: notifier.notices, "the notification")
        assert [title for title, _ in notifier.notices] == ["The recording cannot be written"]


@pytest.fixture
def held_pointer(desktop):
    """A window of somebody else in which the button is down; a function that lets it go."""
    display = xdisplay.Display(desktop.environment["DISPLAY"])
    window = display.screen().root.create_window(
        700, 500, 50, 50, 0, X.CopyFromParent, override_redirect=True,
        event_mask=X.ButtonPressMask | X.ButtonReleaseMask)
    window.map()
    display.sync()
    desktop.screen.move(725, 525)
    xtest.fake_input(display, X.ButtonPress, 1)
    display.sync()

    def let_go():
        xtest.fake_input(display, X.ButtonRelease, 1)
        display.sync()

    yield let_go
    display.close()


def test_a_click_elsewhere_closes_the_panel_that_a_tray_opened_with_the_button_down(
        desktop, programs, held_pointer):
    with StatusNotifier(desktop.bus_address) as notifier:
        tarnly = Tarnly(desktop, programs)
        wait_for_icon(notifier)
        tarnly.wait_for_reader()
        notifier.activate(500, 5)
        tarnly.view(PANEL)
        held_pointer()

        def is_closed_by_a_click():
            tarnly.screen.click(5, tarnly.screen.area.height - 5)
            return tarnly.window(PANEL) is None

        wait_until(is_closed_by_a_click, "the end of the panel")
