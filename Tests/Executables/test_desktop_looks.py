"""What meets the eye: readable texts and a crisp icon, in light and dark, small and enlarged.

With a folder in TARNLY_SCREENSHOTS the pictures of the documentation are put there.
"""

import contextlib
import json
import os
from pathlib import Path

import pytest
from desktop import Desktop, Network, Portal, Rectangle, Tarnly
from desktop.picture import read_png
from desktop.tarnly import ADDRESSES, BUTTON, LABEL, LIST_ITEM, MENU_ITEM, PANEL, REACH, SETTINGS
from dnssd import PrivateDnssd
from harness import wait_until

CHECK_BOX, COMBO_BOX = "check box", "combo box"
READABLE = 4.5
PAINTED = 20.0
ICONS = Path(__file__).parents[2] / "packaging" / "icons" / "hicolor"
DARK_COLOURS = """[Colors:Window]
BackgroundNormal=42,46,50
ForegroundNormal=252,252,252
[Colors:Button]
BackgroundNormal=49,54,59
ForegroundNormal=252,252,252
[Colors:View]
BackgroundNormal=27,30,32
ForegroundNormal=252,252,252
[Colors:Selection]
BackgroundNormal=32,104,152
ForegroundNormal=252,252,252
"""
# What the panel says of a lesson, of its port first.
LESSON = {
    "en": [r"^Listening on port (\d+), ", r"^Simulator: flight loaded\.$", r"^1 client is paired\.$",
           r"^Recording for 0:(0[1-9]|[1-5]\d)\.$", r"^\d+ samples, the last one taken [\d.]+ s ago\.$"],
    "de": [r"^Erreichbar auf Port (\d+), ", r"^Simulator: Flug geladen\.$", r"^1 Gerät ist gekoppelt\.$",
           r"^Aufzeichnung seit 0:(0[1-9]|[1-5]\d)\.$", r"^\d+ Messpunkte, der letzte vor [\d,]+ s\.$"],
}
ON_KDE = {"XDG_CURRENT_DESKTOP": "KDE", "KDE_SESSION_VERSION": "5"}


@pytest.fixture(scope="module", params=[1, 2])
def desktop(request):
    with Desktop(1280, 960 * request.param) as started:
        started.scale = request.param
        started.start_tray(icon_size=22 * started.scale)
        yield started


@pytest.fixture(scope="module")
def dnssd():
    with PrivateDnssd() as running:
        yield running


@pytest.fixture
def network():
    with Network("192.168.1.20/24", "fd42:6c1e::20/64") as made:
        yield made


@pytest.fixture
def start(desktop, programs, network, dnssd):
    """A function that starts the program."""
    def start(prefix=network.prefix, **options):
        options["DBUS_SYSTEM_BUS_ADDRESS"] = dnssd.address
        return Tarnly(desktop, programs, "--name", "rig42", prefix=prefix, scale=desktop.scale, **options)
    return start


@pytest.fixture
def light(start):
    return start()


@pytest.fixture
def dark_by_portal(start, desktop):
    with Portal(desktop.bus_address, Portal.DARK):
        yield start()


@pytest.fixture
def dark_by_palette(start, programs):
    home = programs.new_folder()
    (home / "config").mkdir()
    (home / "config" / "kdeglobals").write_text(DARK_COLOURS)
    return start(home=home, **ON_KDE)


@pytest.fixture(params=["light", "dark_by_portal", "dark_by_palette"])
def tarnly(request, desktop):
    return request.getfixturevalue(request.param)


def is_dark(tarnly, title):
    return sum(tarnly.screen.picture(tarnly.window(title).area).background()) < 3 * 128


def wait_for_darkness(tarnly, title, expected=True):
    wait_until(lambda: is_dark(tarnly, title) == expected, f"{title!r} dark: {expected}")


def unreadable(tarnly, view, *roles):
    """The texts that do not stand out from what is behind them."""
    contrasts = [(tarnly.screen.picture(tarnly.area(element)).text_contrast(), element.name)
                 for element in view.showing(*roles)]
    assert contrasts
    return [(ratio, name) for ratio, name in contrasts if ratio < READABLE]


def expect_readable(tarnly, view, *roles):
    with contextlib.suppress(AssertionError):
        wait_until(lambda: not unreadable(tarnly, view, *roles), patience=PAINTED)
    assert unreadable(tarnly, view, *roles) == []


def save(tarnly, name, area):
    folder = os.environ.get("TARNLY_SCREENSHOTS")
    if folder and tarnly.scale == 2:
        tarnly.screen.picture(area).save(Path(folder) / f"{name}.png")


def close(tarnly, title):
    tarnly.screen.key("Escape")
    tarnly.wait_for_no_window(title)


def test_every_text_is_readable(tarnly, request):
    is_wanted_dark = request.node.callspec.params["tarnly"] != "light"
    panel = tarnly.open_panel()
    tarnly.port()
    wait_for_darkness(tarnly, PANEL, is_wanted_dark)
    expect_readable(tarnly, panel, LABEL, BUTTON)
    tarnly.screen.key("ctrl+comma")
    settings = tarnly.focused_view(SETTINGS)
    wait_for_darkness(tarnly, SETTINGS, is_wanted_dark)
    expect_readable(tarnly, settings, LABEL, CHECK_BOX)
    close(tarnly, SETTINGS)
    tarnly.press(tarnly.open_menu(), "Addresses…", MENU_ITEM)
    addresses = tarnly.focused_view(ADDRESSES)
    wait_until(lambda: len(addresses.showing(LIST_ITEM)) == 2, "the addresses")
    expect_readable(tarnly, addresses, LABEL, LIST_ITEM, BUTTON)
    close(tarnly, ADDRESSES)
    tarnly.press(tarnly.open_menu(), "Test from a phone…", MENU_ITEM)
    reach = tarnly.focused_view(REACH)
    tarnly.wait_for_text(r"^Nobody has reached this computer yet\.$", REACH)
    expect_readable(tarnly, reach, LABEL, BUTTON, COMBO_BOX)
    close(tarnly, REACH)
    expect_readable(tarnly, tarnly.open_menu(), MENU_ITEM)


def test_a_typed_password_is_readable(tarnly):
    settings = tarnly.open_settings()
    tarnly.screen.type("gate")
    field = tarnly.element(settings, "text", "Password")
    wait_until(lambda: tarnly.screen.picture(tarnly.area(field).shrunk(4)).text_contrast() >= READABLE,
               "readable bullets")


def test_open_windows_follow_the_desktop_into_the_dark_and_back(start, desktop):
    with Portal(desktop.bus_address, Portal.LIGHT) as portal:
        tarnly = start()
        settings = tarnly.open_settings()
        wait_for_darkness(tarnly, SETTINGS, False)
        for scheme, is_wanted_dark in [(Portal.DARK, True), (Portal.NO_PREFERENCE, False)]:
            portal.choose(scheme)
            wait_for_darkness(tarnly, SETTINGS, is_wanted_dark)
            expect_readable(tarnly, settings, LABEL, CHECK_BOX)


def differences(tarnly, area, drawn):
    """Where the icon in the tray is not as it was drawn; what is behind it may shine through."""
    rows = tarnly.screen.picture(area).rows
    return [(x, y) for y, (seen_row, row) in enumerate(zip(rows, drawn))
            for x, (seen, (*colour, opacity)) in enumerate(zip(seen_row, row))
            if opacity == 255 and seen != tuple(colour)]


def is_left_or_upper(place, size):
    return min(place) < size * 0.3


def test_the_icon_in_the_tray_is_drawn_dot_by_dot(light, desktop):
    size = 22 * desktop.scale
    drawn = read_png(ICONS / f"{size}x{size}" / "apps" / "tarnly.png")
    area = light.icon()
    assert (area.width, area.height) == (size, size)

    # A mark stands in the corner while the simulator is not ready to fly.
    wait_until(lambda: not any(is_left_or_upper(place, size) for place in differences(light, area, drawn)),
               "the icon as it was drawn")


def test_the_icon_has_a_mark_unless_a_flight_is_loaded(light, desktop, programs):
    size = 22 * desktop.scale
    drawn = read_png(ICONS / f"{size}x{size}" / "apps" / "tarnly.png")
    area = light.icon()

    def told_stage():
        ended = programs.run("tarnly", "--status", "--data-dir", light.data)
        return ended.status == 0 and json.loads(ended.output)["stage"]["name"]

    stage = wait_until(told_stage, "how it stands")
    wait_until(lambda: bool(differences(light, area, drawn)) == (stage != "flight_loaded"),
               f"an icon that fits {stage!r}")


def test_enlarged_windows_are_of_full_size(light, desktop):
    light.open_panel()
    assert light.window(PANEL).area.width == 360 * desktop.scale
    assert light.screen.area.contains(light.window(PANEL).area)


def test_the_border_of_the_panel_is_the_same_on_all_sides(light, desktop):
    light.open_panel()
    area = light.window(PANEL).area
    x, y = area.centre
    thickness = range(desktop.scale + 1)

    def borders():
        column = [row[0] for row in light.screen.picture(Rectangle(x, area.y, 1, area.height)).rows]
        row, = light.screen.picture(Rectangle(area.x, y, area.width, 1)).rows
        return [[line[i] for i in thickness] for line in (column, column[::-1], row, row[::-1])]

    def is_even():
        first, *others = borders()
        return first[0] == first[-2] != first[-1] and all(other == first for other in others)

    wait_until(is_even, "an even border")


@pytest.mark.parametrize("picture, scheme, language", [
    ("panel", Portal.LIGHT, "en"), ("panel-dark", Portal.DARK, "en"), ("panel-de", Portal.LIGHT, "de")])
def test_the_panel_during_a_lesson(start, desktop, programs, picture, scheme, language):
    listening, *lesson = LESSON[language]
    _, sim_port = programs.simulator("--start", "cruise")
    with Portal(desktop.bus_address, scheme):
        tarnly = start(prefix=(), sim_port=sim_port, LC_ALL=f"{language}.UTF-8", LANGUAGE=language)
        panel = tarnly.open_panel()
        client = tarnly.client(int(tarnly.wait_for_text(listening).group(1)))
        client.data("recording_start")
        for text in lesson:
            tarnly.wait_for_text(text)
        wait_for_darkness(tarnly, PANEL, scheme == Portal.DARK)
        expect_readable(tarnly, panel, LABEL, BUTTON)
        area = tarnly.window(PANEL).area
        margin = 16 * desktop.scale
        save(tarnly, picture, Rectangle(area.x - margin, 0, area.width + margin, area.bottom + margin))
        client.data("recording_stop")


def test_the_settings_with_a_password(light):
    settings = light.open_settings()
    light.screen.type("gate")
    wait_until(lambda: "Set." in light.texts(SETTINGS), "the caption")
    expect_readable(light, settings, LABEL, CHECK_BOX)
    save(light, "settings", light.window(SETTINGS).area)


def test_the_test_from_a_phone_while_it_waits(light):
    light.press(light.open_panel(), "Test from a phone…")
    reach = light.view(REACH)
    light.wait_for_text(r"^Nobody has reached this computer yet\.$", REACH)
    expect_readable(light, reach, LABEL, BUTTON, COMBO_BOX)
    save(light, "reach", light.window(REACH).area)


def test_a_usual_value_in_an_empty_field_is_readable(tarnly):
    settings = tarnly.open_settings()
    port = tarnly.element(settings, "text", "Port")
    wait_until(lambda: tarnly.screen.picture(tarnly.area(port).shrunk(4)).text_contrast() >= READABLE,
               "a readable usual port")


def test_the_addresses_on_a_network(light):
    light.press(light.open_panel(), "Addresses…")
    addresses = light.view(ADDRESSES)
    wait_until(lambda: len(addresses.showing(LIST_ITEM)) == 2, "the addresses")
    expect_readable(light, addresses, LABEL, LIST_ITEM, BUTTON)
    save(light, "addresses", light.window(ADDRESSES).area)
