"""The settings window: every edit is in the file, and in force, at once."""

import json
import stat

import pytest
from desktop import Desktop, Tarnly
from desktop.tarnly import LABEL, SETTINGS
from dnssd import PrivateDnssd
from gi.repository import Gio, GLib
from harness import executable, wait_until

FIELD, CHECK_BOX = "text", "check box"
WIDTH, PADDING = 420, 20
AT_LOGIN = "Start Tarnly at login"
FOUND = "Let tablets find this computer"
GROUPS = ["Pairing", "Network", "Simulator", "Start"]
SET, NOT_SET = "Set.", "Not set — open pairing."
REFUSED = {"accepted": False, "reason": "incorrect password"}


@pytest.fixture(scope="module")
def desktop():
    with Desktop() as started:
        started.start_tray()
        yield started


@pytest.fixture
def tarnly(desktop, programs):
    return Tarnly(desktop, programs)


@pytest.fixture
def dnssd():
    with PrivateDnssd() as running:
        yield running


def settings_of(tarnly):
    """Absent before anything was saved."""
    try:
        return json.loads(tarnly.settings_file.read_text())
    except FileNotFoundError:
        return None


def wait_for_settings(tarnly, **expected):
    wait_until(lambda: settings_of(tarnly) == expected,
               lambda: f"the settings {expected}, which are {settings_of(tarnly)}")


def caption(tarnly):
    found = [text for text in tarnly.texts(SETTINGS) if text in (SET, NOT_SET)]
    return found[0] if len(found) == 1 else None


def wait_for_caption(tarnly, text):
    wait_until(lambda: caption(tarnly) == text, f"the caption {text!r}")


def wait_for_focus(element):
    wait_until(lambda: element.is_("focused"), f"the focus on {element!r}")


def wait_until_checked(box, is_checked=True):
    wait_until(lambda: box.is_("checked") == is_checked, f"{box!r} checked: {is_checked}")


def write_settings(home, text):
    folder = home / "data" / "Tarnly"
    folder.mkdir(parents=True)
    (folder / "settings.json").write_text(text)


def write_entry(home):
    entry = home / "config" / "autostart" / "tarnly.desktop"
    entry.parent.mkdir(parents=True)
    command = f"{executable('tarnly')} --background"
    entry.write_text(f"[Desktop Entry]\nType=Application\nName=Tarnly\nExec={command}\n")
    return entry


def entries(folder):
    """What a desktop looks at there: not the file that is about to become an entry."""
    return set(folder.glob("*.desktop"))


def run_by_desktop(entry, programs, environment):
    """Starts what an autostart entry names, as a desktop reads it."""
    entry = Gio.DesktopAppInfo.new_from_filename(str(entry))
    assert entry.get_show_in(None) and not entry.get_is_hidden()
    _, arguments = GLib.shell_parse_argv(entry.get_commandline())
    return programs.start(*[argument.replace("%%", "%") for argument in arguments], **environment)


def test_the_shortcut_opens_the_settings_with_the_password_first(tarnly):
    tarnly.open_panel()
    tarnly.screen.key("ctrl+comma")
    settings = tarnly.view(SETTINGS)
    wait_for_focus(tarnly.element(settings, FIELD, "Password"))
    window = tarnly.window(SETTINGS)
    assert window.area.width == WIDTH and window.has_frame
    assert tarnly.screen.area.contains(window.area)


def test_the_window_shows_all_settings_in_their_groups(tarnly):
    settings = tarnly.open_settings()
    shown = settings.showing(FIELD, CHECK_BOX)
    assert [(element.role, element.name) for element in shown] == [
        (FIELD, "Password"),
        (FIELD, "Name"),
        (CHECK_BOX, FOUND),
        (FIELD, "Port"),
        (FIELD, "Web pages"),
        (FIELD, "Computer"),
        (FIELD, "Web port"),
        (FIELD, "Saved flights"),
        (FIELD, "Fixes"),
        (CHECK_BOX, AT_LOGIN),
    ]
    assert [text for text in tarnly.texts(SETTINGS) if text in GROUPS] == GROUPS
    assert shown[0].is_password_field
    assert [element.name for element in shown if element.is_("checked")] == [FOUND]
    inner = settings.area.shrunk(PADDING)
    assert all(inner.contains(element.area) for element in shown)
    assert tarnly.screen.area.contains(tarnly.window(SETTINGS).area)


def test_opening_the_settings_saves_nothing(tarnly):
    tarnly.open_settings()
    tarnly.program.end()
    assert settings_of(tarnly) is None
    assert not tarnly.autostart_entry.exists()


def test_every_key_of_a_password_is_saved(tarnly):
    tarnly.open_settings()
    typed = ""
    for character in "s3 Ü%\"Q":
        tarnly.screen.type(character)
        typed += character
        wait_for_settings(tarnly, password=typed, startAtLogin=False)
        assert stat.S_IMODE(tarnly.settings_file.stat().st_mode) == 0o600
    wait_for_caption(tarnly, SET)


def test_the_password_is_not_told_to_others(tarnly):
    settings = tarnly.open_settings()
    field = tarnly.element(settings, FIELD, "Password")
    tarnly.screen.type("gate")
    wait_for_caption(tarnly, SET)
    assert field.text == ""


def test_a_password_is_in_force_at_once_and_the_status_line_stays(tarnly):
    tarnly.open_panel()
    port = tarnly.port()
    paired = tarnly.client(port)
    tarnly.screen.key("ctrl+comma")
    tarnly.focused_view(SETTINGS)
    tarnly.screen.type("gate")
    wait_for_settings(tarnly, password="gate", startAtLogin=False)
    assert tarnly.client(port, paired=False).data("pair") == REFUSED
    assert tarnly.client(port, paired=False).data("pair", {"password": "gat"}) == REFUSED
    tarnly.client(port, password="gate")
    paired.data("sim_info")
    tarnly.wait_for_no_panel()
    tarnly.open_panel()
    tarnly.wait_for_text(r"pairing open\.$")


def test_clearing_the_password_opens_the_pairing(desktop, programs):
    home = programs.new_folder()
    write_settings(home, '{"password":"gate","startAtLogin":false}')
    tarnly = Tarnly(desktop, programs, home=home)
    tarnly.open_panel()
    tarnly.wait_for_text(r"pairing password required\.$")
    port = tarnly.port()
    assert tarnly.client(port, paired=False).data("pair") == REFUSED
    tarnly.screen.key("ctrl+comma")
    tarnly.focused_view(SETTINGS)
    wait_for_caption(tarnly, SET)
    tarnly.screen.key("ctrl+a")
    tarnly.screen.key("BackSpace")
    wait_for_settings(tarnly, startAtLogin=False)
    wait_for_caption(tarnly, NOT_SET)
    tarnly.client(port)


def test_the_mouse_switches_the_start_at_login(tarnly):
    settings = tarnly.open_settings()
    box = tarnly.element(settings, CHECK_BOX, AT_LOGIN)
    tarnly.click(box.area)
    wait_for_settings(tarnly, startAtLogin=True)
    wait_until(tarnly.autostart_entry.exists, "the entry")
    wait_until_checked(box)
    tarnly.click(box.area)
    wait_for_settings(tarnly, startAtLogin=False)
    wait_until(lambda: not tarnly.autostart_entry.exists(), "the end of the entry")
    wait_until_checked(box, False)


def test_the_keyboard_switches_the_start_at_login(tarnly):
    settings = tarnly.open_settings()
    box = tarnly.element(settings, CHECK_BOX, AT_LOGIN)
    wait_for_focus(tarnly.element(settings, FIELD, "Password"))
    tarnly.tab_to(settings, AT_LOGIN)
    wait_for_focus(box)
    tarnly.screen.key("space")
    wait_until_checked(box)
    wait_until(tarnly.autostart_entry.exists, "the entry")
    tarnly.screen.key("space")
    wait_until_checked(box, False)
    wait_until(lambda: not tarnly.autostart_entry.exists(), "the end of the entry")


def test_the_desktop_starts_it_at_login_in_the_background_with_its_settings(desktop, programs, dnssd):
    home = programs.new_folder()
    write_settings(home, json.dumps({"startAtLogin": False, "name": 'two "words" 100% $HOME'}))
    tarnly = Tarnly(desktop, programs, "--name", "once", home=home, DBUS_SYSTEM_BUS_ADDRESS=dnssd.address)
    settings = tarnly.open_settings()
    tarnly.click(tarnly.element(settings, CHECK_BOX, AT_LOGIN).area)
    wait_until(tarnly.autostart_entry.exists, "the entry")
    assert tarnly.program.end() == 0
    tarnly.program = run_by_desktop(tarnly.autostart_entry, programs, tarnly.environment)
    tarnly.icon()
    assert not tarnly.has_windows()
    tarnly.open_panel()
    tarnly.wait_for_text(r'advertising as "two "words" 100% \$HOME"')
    assert settings_of(tarnly) == {"startAtLogin": True, "name": 'two "words" 100% $HOME'}
    assert tarnly.autostart_entry.exists()


def test_another_name_is_published_at_once(desktop, programs, dnssd):
    tarnly = Tarnly(desktop, programs, DBUS_SYSTEM_BUS_ADDRESS=dnssd.address)
    settings = tarnly.open_settings()
    tarnly.tab_to(settings, "Name")
    tarnly.screen.type("Left rig")
    tarnly.screen.key("Tab")
    wait_for_settings(tarnly, startAtLogin=False, name="Left rig")
    tarnly.screen.key("Escape")
    tarnly.wait_for_no_window(SETTINGS)
    tarnly.wait_for_no_panel()
    tarnly.open_panel()
    tarnly.wait_for_text(r'advertising as "Left rig", ')


def test_what_cannot_be_is_said_and_not_saved(tarnly):
    settings = tarnly.open_settings()
    tarnly.tab_to(settings, "Port")
    tarnly.screen.type("70000")
    tarnly.wait_for_text(r"^Not saved: a number from 0 to 65535 is wanted\.$", SETTINGS)
    tarnly.screen.key("Escape")
    tarnly.wait_for_no_window(SETTINGS)
    assert settings_of(tarnly) is None


def test_the_settings_outlive_the_program(tarnly, desktop, programs):
    settings = tarnly.open_settings()
    tarnly.screen.type("gate")
    tarnly.click(tarnly.element(settings, CHECK_BOX, AT_LOGIN).area)
    wait_for_settings(tarnly, password="gate", startAtLogin=True)
    assert tarnly.program.end() == 0
    again = Tarnly(desktop, programs, home=tarnly.home)
    settings = again.open_settings()
    wait_for_caption(again, SET)
    assert again.element(settings, CHECK_BOX, AT_LOGIN).is_("checked")
    assert again.autostart_entry.exists()
    again.screen.key("End")
    again.screen.type("way")
    wait_for_settings(again, password="gateway", startAtLogin=True)


@pytest.mark.parametrize("text", ['{"password":"gate"', '{"password":7,"startAtLogin":true}', "", "[]"])
def test_a_corrupt_file_means_the_defaults_and_stays(desktop, programs, text):
    home = programs.new_folder()
    write_settings(home, text)
    tarnly = Tarnly(desktop, programs, home=home)
    settings = tarnly.open_settings()
    wait_for_caption(tarnly, NOT_SET)
    assert not tarnly.element(settings, CHECK_BOX, AT_LOGIN).is_("checked")
    assert tarnly.program.end() == 0
    assert tarnly.settings_file.read_text() == text


def test_an_entry_that_the_settings_do_not_want_is_removed_at_the_start(desktop, programs):
    home = programs.new_folder()
    write_settings(home, '{"startAtLogin":false}')
    entry = write_entry(home)
    Tarnly(desktop, programs, home=home).icon()
    assert not entry.exists()


def test_an_entry_that_the_settings_want_is_written_at_the_start(desktop, programs):
    home = programs.new_folder()
    write_settings(home, '{"startAtLogin":true}')
    tarnly = Tarnly(desktop, programs, home=home)
    tarnly.icon()
    assert tarnly.autostart_entry.exists()


def test_settings_in_another_folder_have_an_entry_of_their_own(desktop, programs):
    home = programs.new_folder()
    entry = write_entry(home)
    tarnly = Tarnly(desktop, programs, "--data-dir", home / "rig", "--background", home=home)
    settings = tarnly.open_settings()
    tarnly.click(tarnly.element(settings, CHECK_BOX, AT_LOGIN).area)
    other, = wait_until(lambda: entries(entry.parent) - {entry}, "another entry")
    assert tarnly.program.end() == 0
    assert entry.exists()
    tarnly.program = run_by_desktop(other, programs, tarnly.environment)
    settings = tarnly.open_settings()
    assert tarnly.element(settings, CHECK_BOX, AT_LOGIN).is_("checked")


def test_an_entry_that_cannot_be_written_is_told_and_the_wish_is_kept(desktop, programs):
    home = programs.new_folder()
    (home / "config").mkdir()
    (home / "config" / "autostart").write_text("a file in the folder's place")
    tarnly = Tarnly(desktop, programs, home=home)
    settings = tarnly.open_settings()
    box = tarnly.element(settings, CHECK_BOX, AT_LOGIN)
    tarnly.click(box.area)
    tarnly.program.wait_for_line(r"^\[Tarnly\] SMAppService register failed: .+")
    wait_until_checked(box)
    wait_until(lambda: settings_of(tarnly) == {"startAtLogin": True}, "the settings")  # a thread of its own saves
    assert len(tarnly.program.output()) == 1


@pytest.mark.parametrize("key", ["Escape", "ctrl+w"])
def test_a_key_closes_the_settings_and_the_program_goes_on(tarnly, key):
    tarnly.open_settings()
    tarnly.wait_for_no_panel()
    tarnly.screen.key(key)
    tarnly.wait_for_no_window(SETTINGS)
    tarnly.open_panel()
    tarnly.client(tarnly.port())


def test_reopened_settings_are_as_they_were(tarnly):
    tarnly.open_settings()
    tarnly.screen.type("gate")
    wait_for_settings(tarnly, password="gate", startAtLogin=False)
    tarnly.screen.key("Escape")
    tarnly.wait_for_no_window(SETTINGS)
    tarnly.wait_for_no_panel()
    tarnly.open_settings()
    wait_for_caption(tarnly, SET)
