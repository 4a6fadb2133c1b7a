"""On a desktop without a tray the panel is a window; trays come and go."""

import pytest
from desktop import Desktop, Tarnly
from desktop.tarnly import ADDRESSES, BUTTON, LABEL, PANEL, SETTINGS
from harness import wait_until

WIDTH = 360


@pytest.fixture(scope="module")
def desktop():
    with Desktop() as started:
        yield started


@pytest.fixture
def tarnly(desktop, programs):
    return Tarnly(desktop, programs, "--name", "rig42")


@pytest.fixture
def tray(desktop):
    """A function that starts a tray, which ends with the test."""
    yield desktop.start_tray
    desktop.end_tray()


def wait_for_window(tarnly):
    return wait_until(lambda: tarnly.window(PANEL), "the window")


def is_minimized(tarnly):
    return any(window.is_minimized for window in tarnly.screen.windows(tarnly.program.pid))


def test_the_panel_is_an_ordinary_window(tarnly):
    panel = tarnly.focused_view(PANEL)
    window = tarnly.window(PANEL)
    assert window.has_frame and window.area.width == WIDTH
    assert tarnly.screen.area.contains(window.area)
    port = tarnly.port()
    simulator = tarnly.wait_for_text(r"^Simulator: .*").group()
    unpublished = tarnly.wait_for_text(r"^Not published by DNS-SD: .*").group()
    assert panel.names(LABEL, BUTTON) == [
        "Tarnly", f'Listening on port {port}, not advertised: no DNS-SD daemon, pairing open.', unpublished, "Addresses…",
        "Test from a phone…", simulator, "No client is paired.", "No recording is running.", "Settings…", "Quit Tarnly"]
    tarnly.client(port)
    tarnly.wait_for_text(r"^1 client is paired\.$")


def test_the_window_stays_when_another_one_comes_and_on_escape(tarnly):
    panel = tarnly.focused_view(PANEL)
    tarnly.screen.key("Escape")
    tarnly.press(panel, "Settings…")
    tarnly.view(SETTINGS)
    screen = tarnly.screen.area.shrunk(5)
    tarnly.screen.click(screen.right, screen.bottom)  # in the other corner may be a frame, with a menu that stays
    assert tarnly.window(PANEL)


def test_the_tab_key_goes_through_the_buttons_in_order(tarnly):
    panel = tarnly.focused_view(PANEL)
    tarnly.tab_to(panel, "Addresses…")
    assert [tarnly.tab(panel) for _ in range(4)] == ["Test from a phone…", "Settings…", "Quit Tarnly", "Addresses…"]


@pytest.mark.parametrize("key", ["space", "Return", "KP_Enter"])
def test_a_key_presses_a_button(tarnly, key):
    tarnly.tab_to(tarnly.focused_view(PANEL), "Addresses…")
    tarnly.screen.key(key)
    tarnly.view(ADDRESSES)


def test_the_keyboard_alone_does_for_settings_and_end(tarnly):
    panel = tarnly.focused_view(PANEL)
    tarnly.screen.key("ctrl+comma")
    tarnly.focused_view(SETTINGS)
    tarnly.screen.key("Escape")
    tarnly.wait_for_no_window(SETTINGS)
    tarnly.tab_to(panel, "Quit Tarnly")  # the window manager may take its time to give back the focus
    tarnly.screen.key("ctrl+q")
    assert tarnly.program.wait() == 0


def test_closing_the_window_asks_and_cancel_keeps_it(tarnly):
    question = tarnly.ask_to_close()
    tarnly.press(question, "Cancel")
    tarnly.element(tarnly.focused_view(PANEL), BUTTON, "Quit Tarnly")
    tarnly.client(tarnly.port())


def test_closing_the_window_asks_and_can_minimize_it(tarnly):
    tarnly.ask_to_close()
    tarnly.screen.key("Return")
    wait_until(lambda: is_minimized(tarnly), "the minimized window")
    assert tarnly.program.process.poll() is None


def test_closing_the_window_asks_and_can_quit(tarnly):
    question = tarnly.ask_to_close()
    tarnly.press(question, "Quit Tarnly")
    assert tarnly.program.wait() == 0


def test_the_question_goes_with_the_window_that_it_asks_about(tarnly, tray):
    tarnly.ask_to_close()
    tray()
    tarnly.icon()
    wait_until(lambda: not tarnly.has_windows(), "the end of the question")
    tarnly.wait_for_no_panel()
    panel = tarnly.open_panel()
    tarnly.element(panel, BUTTON, "Quit Tarnly")


def test_a_tray_that_comes_later_takes_the_icon_and_the_window_goes(tarnly, tray):
    wait_for_window(tarnly)
    tray()
    icon = tarnly.icon()
    tarnly.wait_for_no_panel()
    panel = tarnly.open_panel()
    assert icon.bottom <= panel.area.y
    tarnly.screen.key("Escape")
    tarnly.wait_for_no_window(PANEL)


def test_the_window_comes_when_the_tray_goes(desktop, programs):
    desktop.start_tray()
    tarnly = Tarnly(desktop, programs)
    tarnly.icon()
    desktop.end_tray()
    window = wait_for_window(tarnly)
    assert window.has_frame and not is_minimized(tarnly)


def test_a_tray_may_come_and_go_and_come(desktop, programs, tray):
    tray()
    tarnly = Tarnly(desktop, programs)
    tarnly.icon()
    for _ in range(2):
        desktop.end_tray()
        wait_for_window(tarnly)
        tray()
        tarnly.icon()
        tarnly.wait_for_no_panel()
    tarnly.open_panel()
    tarnly.client(tarnly.port())


def test_settings_stay_open_while_a_tray_comes(tarnly, tray):
    tarnly.focused_view(PANEL)
    tarnly.screen.key("ctrl+comma")
    tarnly.focused_view(SETTINGS)
    tray()
    tarnly.icon()
    tarnly.wait_for_no_window(PANEL)
    tarnly.screen.type("gate")
    wait_until(tarnly.settings_file.exists, "the settings")
    assert tarnly.window(SETTINGS)


def test_in_the_background_the_first_start_is_minimized_too(desktop, programs):
    tarnly = Tarnly(desktop, programs, "--background", first_start=True)
    wait_until(lambda: is_minimized(tarnly), "the minimized window")
    assert not tarnly.has_windows()


def test_in_the_background_the_window_is_minimized(desktop, programs):
    tarnly = Tarnly(desktop, programs, "--background")
    wait_until(lambda: is_minimized(tarnly), "the minimized window")
    assert not tarnly.has_windows()


def test_in_the_background_a_tray_that_comes_takes_the_icon_and_no_window_comes(desktop, programs, tray):
    tarnly = Tarnly(desktop, programs, "--background")
    tray()
    tarnly.icon()
    assert not tarnly.has_windows() and not is_minimized(tarnly)
    tarnly.open_panel()
