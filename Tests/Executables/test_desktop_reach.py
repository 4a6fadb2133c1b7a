"""The window that finds out whether a device gets to the companion, with a device on another computer."""

import json
import subprocess
import sys
from pathlib import Path

import pytest
from desktop import Desktop, Network, Tarnly
from desktop.tarnly import BUTTON, REACH
from harness import wait_until
from two_hosts import NotPermitted, TwoHosts

PASSWORD = "gate"


@pytest.fixture(scope="module")
def desktop():
    with Desktop() as started:
        started.start_tray()
        yield started


@pytest.fixture
def hosts():
    try:
        with TwoHosts() as made:
            yield made
    except NotPermitted as reason:
        pytest.skip(f"no network namespaces here: {reason}")


@pytest.fixture
def tarnly(desktop, programs, hosts):
    home = programs.new_folder()
    (home / "data" / "Tarnly").mkdir(parents=True)
    (home / "data" / "Tarnly" / "settings.json").write_text(json.dumps({"password": PASSWORD, "startAtLogin": False}))
    return Tarnly(desktop, programs, home=home, prefix=hosts.near.prefix)


@pytest.fixture
def far(tarnly, hosts):
    """What a device on the other computer says of its attempt."""
    def far(*arguments):
        command = [*hosts.far.prefix, sys.executable, "-B", Path(__file__).parent / "far_browser.py",
                   hosts.ADDRESSES[0], tarnly.known_port, *arguments]
        done = subprocess.run(list(map(str, command)), capture_output=True, text=True, timeout=120, check=True)
        return done.stdout.strip()
    return far


def open_test(tarnly):
    panel = tarnly.open_panel()
    tarnly.known_port = tarnly.port()
    tarnly.press(panel, "Test from a phone…")
    return wait_for_waiting(tarnly)


def wait_for_waiting(tarnly):
    """Until it is known who had been there before."""
    tarnly.wait_for_text(r"^Nobody has reached this computer yet\.$", REACH)
    return tarnly.view(REACH)


def code(tarnly, folder):
    picture = folder / "screen.png"
    tarnly.screen.picture(tarnly.window(REACH).area).save(picture)
    found = subprocess.run(["zbarimg", "--quiet", "--raw", str(picture)], capture_output=True, text=True)
    return found.stdout.strip()


def test_a_device_that_opens_the_address_is_fine(tarnly, far, programs, hosts):
    view = open_test(tarnly)
    page = f"http://{hosts.ADDRESSES[0]}:{tarnly.known_port}/"
    wait_until(lambda: code(tarnly, programs.folder) == page, "a code of the page")
    assert tarnly.window(REACH).has_frame and tarnly.screen.area.contains(view.area)
    assert far() == "200"
    tarnly.wait_for_text(r"^10\.77\.0\.2 has reached this computer, and was shown the page\.$", REACH)
    assert "It is fine" in tarnly.texts(REACH)


def test_a_refused_password_has_arrived_and_may_be_corrected_meanwhile(tarnly, far):
    open_test(tarnly)
    assert far("wrong") == "False"
    tarnly.wait_for_text(r"^10\.77\.0\.2 has reached this computer, and its password was refused\.$", REACH)
    texts = tarnly.texts(REACH)
    assert "It arrived and was refused" in texts and any(text.startswith("Enter the password") for text in texts)
    assert far(PASSWORD) == "True"
    tarnly.wait_for_text(r"^It is fine$", REACH)


def test_who_was_there_before_does_not_count_and_it_can_be_closed_and_begun_again(tarnly, far):
    view = open_test(tarnly)
    assert far() == "200"
    tarnly.wait_for_text(r"^It is fine$", REACH)
    tarnly.press(view, "Test again")
    wait_for_waiting(tarnly)
    tarnly.screen.key("Escape")
    tarnly.wait_for_no_window(REACH)
    assert far() == "200"
    tarnly.wait_for_no_panel()
    open_test(tarnly)
    assert far() == "200"
    tarnly.wait_for_text(r"^It is fine$", REACH)


def test_the_keyboard_alone_does(tarnly, far):
    panel = tarnly.open_panel()
    tarnly.known_port = tarnly.port()
    tarnly.tab_to(panel, "Test from a phone…")
    tarnly.screen.key("Return")
    wait_for_waiting(tarnly)
    view = tarnly.focused_view(REACH)
    assert far() == "200"
    tarnly.wait_for_text(r"^It is fine$", REACH)
    tarnly.element(view, BUTTON, "Test again")
    tarnly.tab_to(view, "Test again")
    tarnly.screen.key("space")
    wait_for_waiting(tarnly)
    tarnly.tab_to(view, "Close")
    tarnly.screen.key("space")
    tarnly.wait_for_no_window(REACH)


def test_without_a_network_it_says_what_is_missing(desktop, programs):
    with Network() as network:
        tarnly = Tarnly(desktop, programs, prefix=network.prefix)
        tarnly.press(tarnly.open_panel(), "Test from a phone…")
        tarnly.wait_for_text(r"^It cannot be tested$", REACH)
        tarnly.wait_for_text(r"^This computer has no address in a network\.$", REACH)
