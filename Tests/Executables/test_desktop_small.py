"""Small screens: what does not fit is scrolled, and no button is out of sight.

With a folder in TARNLY_LOOKED_AT the pictures are put there.
"""

import os
from pathlib import Path

import pytest
from desktop import Desktop, Tarnly
from desktop.tarnly import ADDRESSES, BUTTON, PANEL, REACH, SETTINGS
from harness import wait_until

CHECK_BOX = "check box"
AT_LOGIN = "Start Tarnly at login"
CLIENTS = 10


@pytest.fixture(scope="module", params=[(1024, 600, 1), (1280, 720, 1.5)], ids=["1024x600", "1280x720 at 1.5"])
def desktop(request):
    width, height, scale = request.param
    with Desktop(width, height) as started:
        started.scale = scale
        started.start_tray(icon_size=round(22 * scale))
        yield started


@pytest.fixture
def tarnly(desktop, programs):
    home = programs.new_folder()
    (home / "data" / "Tarnly").mkdir(parents=True)
    (home / "data" / "Tarnly" / "settings.json").write_text("garbled")  # of which the panel warns at length
    return Tarnly(desktop, programs, home=home, scale=desktop.scale)


def save(tarnly, name):
    if folder := os.environ.get("TARNLY_LOOKED_AT"):
        name = f"{name}-{tarnly.screen.area.height}.png"
        tarnly.screen.picture(tarnly.screen.area).save(Path(folder) / name)


def in_sight(tarnly, title, element):
    """Whole, within its window, which is whole on the screen."""
    window = tarnly.window(title)
    area = tarnly.area(element)
    return window and tarnly.screen.area.contains(window.area) and window.area.shrunk(-2).contains(area)


def expect_in_sight(tarnly, title, role, name):
    element = tarnly.element(tarnly.view(title), role, name)
    wait_until(lambda: in_sight(tarnly, title, element), f"{name!r} in sight")


def test_the_lowest_setting_is_reached_by_the_keyboard_and_by_the_wheel(tarnly):
    settings = tarnly.open_settings()
    expect_in_sight(tarnly, SETTINGS, "text", "Password")
    save(tarnly, "settings")
    tarnly.tab_to(settings, AT_LOGIN)
    expect_in_sight(tarnly, SETTINGS, CHECK_BOX, AT_LOGIN)
    save(tarnly, "settings-end")
    box = tarnly.element(settings, CHECK_BOX, AT_LOGIN)
    tarnly.click(tarnly.area(box))
    wait_until(lambda: box.is_("checked"), "the box checked by a click")
    tarnly.tab_to(settings, "Password")
    expect_in_sight(tarnly, SETTINGS, "text", "Password")


def test_the_panel_with_many_clients_and_a_long_warning_keeps_its_buttons(tarnly):
    panel = tarnly.open_panel()
    port = tarnly.port()
    tarnly.wait_for_text(r"^The settings could not be read")
    clients = [tarnly.client(port) for _ in range(CLIENTS)]
    tarnly.wait_for_text(rf"^{len(clients)} clients are paired\.$")
    for name in ("Settings…", "Quit Tarnly"):
        expect_in_sight(tarnly, PANEL, BUTTON, name)
    save(tarnly, "panel")
    disconnects = [element for element in panel.showing(BUTTON) if element.name.startswith("Disconnect")]
    assert disconnects

    def is_at_the_end():
        tarnly.screen.key("Tab")
        return tarnly.focused(panel) == disconnects[-1].name

    wait_until(is_at_the_end, "the focus on a client")
    wait_until(lambda: tarnly.focused(panel) and any(
        element.is_("focused") and in_sight(tarnly, PANEL, element) for element in panel.showing(BUTTON)),
        "the focus in sight")
    expect_in_sight(tarnly, PANEL, BUTTON, "Quit Tarnly")


@pytest.mark.parametrize("button, title, last", [
    ("Addresses…", ADDRESSES, None), ("Test from a phone…", REACH, "Close"),
])
def test_the_other_windows_fit(tarnly, button, title, last):
    tarnly.press(tarnly.open_panel(), button)
    tarnly.focused_view(title)
    wait_until(lambda: tarnly.screen.area.contains(tarnly.window(title).area), f"{title!r} on the screen")
    save(tarnly, title.split()[-1].lower())
    if last:
        expect_in_sight(tarnly, title, BUTTON, last)
