"""The icon in the tray, and the panel that it opens."""

import json
import signal
import socket

import pytest
from Xlib import Xatom
from Xlib import display as xdisplay

from desktop import Desktop, Tarnly
from desktop.tarnly import ADDRESSES, BUTTON, LABEL, MENU_ITEM, PANEL, SETTINGS
from dnssd import PrivateDnssd
from harness import wait_until

WIDTH, PADDING = 360, 12
# Where neither panel nor menu reaches.
ELSEWHERE = 100, 600


@pytest.fixture(scope="module")
def desktop():
    with Desktop() as started:
        started.start_tray()
        yield started


@pytest.fixture
def tarnly(desktop, programs):
    return Tarnly(desktop, programs, "--name", "rig42")


@pytest.fixture
def dnssd():
    with PrivateDnssd() as running:
        yield running


def test_it_starts_as_an_icon_without_a_window(tarnly):
    tarnly.icon()
    assert not tarnly.has_windows()


def test_the_first_start_shows_the_panel_beside_the_icon_and_no_other_does(desktop, programs):
    tarnly = Tarnly(desktop, programs, first_start=True)
    icon = tarnly.icon()
    panel = tarnly.view(PANEL).area
    assert tarnly.screen.area.contains(panel) and icon.bottom <= panel.y <= icon.bottom + 10
    memory = tarnly.data / "desktop.json"
    wait_until(lambda: memory.exists() and json.loads(memory.read_text())["introduced"], "the memory of it")
    assert tarnly.program.end(signal.SIGTERM) == 0
    later = Tarnly(desktop, programs, home=tarnly.home, first_start=True)
    later.icon()
    later.open_menu()  # by now it would be there
    later.screen.key("Escape")
    assert not later.window(PANEL)


def test_a_first_start_in_the_background_opens_nothing(desktop, programs):
    tarnly = Tarnly(desktop, programs, "--background", first_start=True)
    tarnly.icon()
    tarnly.open_menu()
    tarnly.screen.key("Escape")
    assert not tarnly.window(PANEL)


@pytest.fixture
def symbol_colour(desktop):
    """A function that has the tray tell in which colour it paints symbols, as a desktop's panel may."""
    display = xdisplay.Display(desktop.environment["DISPLAY"])
    owner = display.get_selection_owner(display.intern_atom("_NET_SYSTEM_TRAY_S0"))
    told = display.intern_atom("_NET_SYSTEM_TRAY_COLORS")

    def tell(*colour):
        owner.change_property(told, Xatom.CARDINAL, 32, [part * 0x101 for part in colour] * 4)
        display.sync()

    yield tell
    owner.delete_property(told)
    display.close()


def test_a_tray_with_a_colour_for_symbols_gets_an_icon_of_that_colour(tarnly, symbol_colour):
    blue, green, purple = (0x1F, 0x6F, 0xD0), (0, 0xFF, 0), (0x80, 0, 0x80)

    def colours():
        return tarnly.screen.picture(tarnly.icon()).colours()

    wait_until(lambda: blue in colours(), "the coloured icon")
    for colour in (green, purple):  # as when the panel becomes a dark one
        symbol_colour(*colour)
        wait_until(lambda: colour in colours(), f"an icon in {colour}")  # noqa: B023
        assert blue not in colours()


def test_a_click_on_the_icon_opens_the_panel_beside_it(tarnly):
    icon = tarnly.icon()
    tarnly.open_panel()
    panel = tarnly.window(PANEL).area
    assert tarnly.screen.area.contains(panel)
    assert panel.width == WIDTH
    assert icon.bottom <= panel.y <= icon.bottom + 10
    assert panel.x <= icon.x and icon.right <= panel.right
    assert not tarnly.window(PANEL).has_frame


def test_the_panel_opens_above_a_tray_at_the_bottom(desktop, programs):
    desktop.end_tray()
    desktop.start_tray(edge="bottom")
    try:
        tarnly = Tarnly(desktop, programs)
        icon = tarnly.icon()
        tarnly.open_panel()
        panel = tarnly.window(PANEL).area
        assert tarnly.screen.area.contains(panel)
        assert icon.y - 10 <= panel.bottom <= icon.y
    finally:
        desktop.end_tray()
        desktop.start_tray()


def test_the_panel_tells_what_it_does_and_where_to_go_on(tarnly):
    panel = tarnly.open_panel()
    port = tarnly.port()
    simulator = tarnly.wait_for_text(r"^Simulator: .*").group()
    unpublished = tarnly.wait_for_text(r"^Not published by DNS-SD: .*").group()
    shown = panel.showing(LABEL, BUTTON)
    assert [(element.role, element.name) for element in shown] == [
        (LABEL, "Tarnly"),
        (LABEL, f"Listening on port {port}, not advertised: no DNS-SD daemon, pairing open."),
        (LABEL, unpublished),
        (BUTTON, "Addresses…"),
        (BUTTON, "Test from a phone…"),
        (LABEL, simulator),
        (LABEL, "No client is paired."),
        (LABEL, "No recording is running."),
        (BUTTON, "Settings…"),
        (BUTTON, "Quit Tarnly"),
    ]


def test_the_panel_fits_its_content(tarnly):
    panel = tarnly.open_panel()
    tarnly.port()
    tarnly.wait_for_text(r"^Simulator: ")
    frame = wait_until(lambda: panel.area == tarnly.window(PANEL).area and panel.area, "the final size")
    shown = [element.area for element in panel.showing(LABEL, BUTTON)]
    assert all(frame.shrunk(PADDING).contains(area) for area in shown)
    assert (shown[0].y, shown[-1].bottom) == (frame.y + PADDING, frame.bottom - PADDING)
    *column, settings, quit_button = shown
    assert all(upper.bottom <= lower.y for upper, lower in zip(column, column[1:]))
    assert column[-1].bottom <= settings.y == quit_button.y and settings.right <= quit_button.x


def test_a_click_elsewhere_closes_the_panel(tarnly):
    tarnly.open_panel()
    tarnly.screen.click(*ELSEWHERE)
    tarnly.wait_for_no_window(PANEL)


def test_a_click_on_another_window_closes_the_panel(tarnly):
    settings = tarnly.open_settings()
    tarnly.wait_for_no_panel()
    tarnly.open_panel()
    tarnly.click(settings.area)
    tarnly.wait_for_no_window(PANEL)
    assert tarnly.window(SETTINGS)


def test_a_second_click_on_the_icon_closes_the_panel(tarnly):
    for _ in range(3):
        tarnly.open_panel()
        tarnly.click(tarnly.icon())
        tarnly.wait_for_no_panel()
        assert not tarnly.has_windows()


def test_escape_closes_the_panel(tarnly):
    tarnly.open_panel()
    tarnly.screen.key("Escape")
    tarnly.wait_for_no_window(PANEL)


def test_the_panel_is_usable_by_keyboard(tarnly):
    panel = tarnly.open_panel()
    tarnly.tab_to(panel, "Addresses…")
    assert [tarnly.tab(panel) for _ in range(6)] == [
        "Test from a phone…", "Settings…", "Quit Tarnly", "Addresses…", "Test from a phone…", "Settings…"]
    tarnly.screen.key("Return")
    tarnly.view(SETTINGS)
    tarnly.wait_for_no_window(PANEL)


@pytest.mark.parametrize("button, title", [("Addresses…", ADDRESSES), ("Settings…", SETTINGS)])
def test_a_button_opens_a_window_and_the_panel_goes(tarnly, button, title):
    tarnly.press(tarnly.open_panel(), button)
    tarnly.view(title)
    tarnly.wait_for_no_window(PANEL)
    assert tarnly.window(title).has_frame


def test_the_context_menu_offers_the_same(tarnly):
    menu = tarnly.open_menu()
    assert menu.names(MENU_ITEM) == ["Show Tarnly", "Addresses…", "Test from a phone…", "Settings…", "Quit Tarnly"]
    assert tarnly.screen.area.contains(menu.area)


@pytest.mark.parametrize("item, title",
                         [("Show Tarnly", PANEL), ("Addresses…", ADDRESSES), ("Settings…", SETTINGS)])
def test_an_item_of_the_context_menu_opens_its_window(tarnly, item, title):
    tarnly.press(tarnly.open_menu(), item, MENU_ITEM)
    tarnly.view(title)
    wait_until(lambda: tarnly.window(title), f"the window {title!r}")


def test_the_button_quits(tarnly):
    tarnly.press(tarnly.open_panel(), "Quit Tarnly")
    assert tarnly.program.wait() == 0


def test_ctrl_q_quits(tarnly):
    tarnly.open_panel()
    tarnly.screen.key("ctrl+q")
    assert tarnly.program.wait() == 0


def test_the_context_menu_quits(tarnly):
    tarnly.press(tarnly.open_menu(), "Quit Tarnly", MENU_ITEM)
    assert tarnly.program.wait() == 0


@pytest.mark.parametrize("number", [signal.SIGTERM, signal.SIGINT])
def test_a_signal_quits_with_all_windows_open(tarnly, number):
    tarnly.open_settings()
    tarnly.wait_for_no_panel()
    tarnly.open_panel()
    assert tarnly.program.end(number) == 0


def test_quitting_ends_the_clients_connections(tarnly):
    tarnly.open_panel()
    client = tarnly.client(tarnly.port())
    tarnly.screen.key("ctrl+q")
    assert tarnly.program.wait() == 0
    assert client.ends_without_reply()


def test_the_open_panel_counts_the_paired_clients(tarnly):
    tarnly.open_panel()
    port = tarnly.port()
    tarnly.client(port, paired=False)
    first = tarnly.client(port)
    tarnly.wait_for_text(r"^1 client is paired\.$")
    second = tarnly.client(port)
    tarnly.wait_for_text(r"^2 clients are paired\.$")
    first.close()
    tarnly.wait_for_text(r"^1 client is paired\.$")
    second.close()
    tarnly.wait_for_text(r"^No client is paired\.$")


def test_a_client_has_a_row_and_a_button_that_disconnects_it(tarnly):
    panel = tarnly.open_panel()
    port = tarnly.port()
    client = tarnly.client(port)
    tarnly.wait_for_text("^this computer$")
    tarnly.wait_for_text("^since .*, 0 values$")
    tarnly.press(panel, "Disconnect this computer")
    assert client.ends_without_reply()
    tarnly.wait_for_text(r"^No client is paired\.$")
    tarnly.client(port)  # it may come back
    tarnly.wait_for_text(r"^1 client is paired\.$")


def test_the_panel_opens_with_what_is_so_now(tarnly):
    tarnly.open_panel()
    port = tarnly.port()
    tarnly.screen.key("Escape")
    tarnly.wait_for_no_panel()
    tarnly.client(port)
    tarnly.open_panel()
    tarnly.wait_for_text(r"^1 client is paired\.$")


def test_the_open_panel_follows_a_recording(tarnly):
    tarnly.open_panel()
    client = tarnly.client(tarnly.port())
    client.data("recording_start")
    # There is no simulator, and that is told.
    running = r"^Recording for 0:(\d\d), no samples yet\.$"
    earlier = int(tarnly.wait_for_text(running).group(1))
    wait_until(lambda: int(tarnly.wait_for_text(running).group(1)) > earlier, "a longer recording")
    client.data("recording_stop")
    tarnly.wait_for_text(r"^No recording is running\.$")


def test_the_panel_says_the_words_that_programs_are_told(tarnly, programs):
    tarnly.open_panel()
    tarnly.port()
    words = tarnly.wait_for_text(r"^Simulator: .*").group()
    ended = programs.run("tarnly", "--status", "--data-dir", tarnly.data)
    told = json.loads(ended.output)
    assert words.startswith(told["stage"]["words"] + ".")
    assert told["words"] in tarnly.texts()


def test_a_failed_start_is_told_and_the_program_stays(desktop, programs):
    with socket.create_server(("127.0.0.1", 0)) as occupant:
        tarnly = Tarnly(desktop, programs, "--port", occupant.getsockname()[1])
        tarnly.open_panel()
        tarnly.wait_for_text(r"^Failed to start: .*in use")
        tarnly.screen.key("ctrl+comma")
        tarnly.view(SETTINGS)


def test_a_long_name_is_told_whole(desktop, programs, dnssd):
    name = "thesimulatorinthehangarbehindtheoldtowerofthesmallairfield"
    tarnly = Tarnly(desktop, programs, "--name", name, DBUS_SYSTEM_BUS_ADDRESS=dnssd.address)
    icon = tarnly.icon()
    panel = tarnly.open_panel()
    tarnly.wait_for_text(f'^Listening on port .*, advertising as "{name}", pairing open\\.$')
    wait_until(lambda: panel.area == tarnly.window(PANEL).area, "the panel's final size")
    assert panel.area.width == WIDTH
    assert panel.area.y >= icon.bottom and tarnly.screen.area.contains(panel.area)
    shown = [element.area for element in panel.showing(LABEL, BUTTON)]
    assert all(panel.area.shrunk(PADDING).contains(area) for area in shown)


def test_it_works_without_a_session_bus(desktop, programs):
    tarnly = Tarnly(desktop, programs, DBUS_SESSION_BUS_ADDRESS=f"unix:path={programs.folder}/no-bus")
    tarnly.click(tarnly.icon())
    wait_until(lambda: tarnly.window(PANEL), "the panel")

    def quits_by_a_key():  # without the bus nobody tells when the panel takes keys
        tarnly.screen.key("ctrl+q")
        return tarnly.program.process.poll() is not None

    wait_until(quits_by_a_key, "the end")
    assert tarnly.program.wait() == 0
